"""Makes what is derived from the catalogue: header, modules, version scripts and reference."""
