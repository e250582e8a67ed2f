"""Why a whole run ends; what is wrong with one file is an outcome instead."""


class NotReady(RuntimeError):
    """A worker cannot work for the run."""


class LostScheduler(ConnectionError):
    """The connection to the scheduler broke; what was complete by then is complete."""
