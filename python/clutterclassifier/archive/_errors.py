"""Errors that end a whole run; an error of one file is an outcome."""


class NotReady(RuntimeError):
    """A worker cannot work for the run."""


class LostScheduler(ConnectionError):
    """The connection to the scheduler broke; outputs that were complete stay."""
