"""The steps as functions on numpy arrays. The package itself gives out their public names."""
