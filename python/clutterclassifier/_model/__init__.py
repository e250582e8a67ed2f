"""Classes and inputs, names of fields, sweeps as datasets: below all other rooms."""
