"""Prints the symbols of one kind that the catalogue names: catalogue_names.py API_DIRECTORY data|service."""

import sys
import tomllib
from pathlib import Path

KEYS = {"data": "name", "service": "symbol"}

directory, kind = sys.argv[1:]
names = set()
for path in Path(directory).glob("*.toml"):
    tables = tomllib.loads(path.read_text(encoding="utf-8"))
    names |= {entry[KEYS[kind]] for entry in tables.get(kind, [])}
print("\n".join(sorted(names)))
