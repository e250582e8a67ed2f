"""Names, units and attributes of radar quantities, as CfRadial 2 / WMO FM 301 have them."""

from ._model.fields import BY_ARGUMENT, BY_NAME, QUANTITIES, Quantity, quantity_of

__all__ = ["BY_ARGUMENT", "BY_NAME", "QUANTITIES", "Quantity", "quantity_of"]
