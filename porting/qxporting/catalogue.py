"""The catalogue of the installed library, and what its modules offer by which name."""

import difflib
import json
from dataclasses import dataclass, field
from pathlib import Path

from .failure import CANNOT, Failure

FORMAT = 1
NUMBERS = "numbers"  # the area of the host's numbers, which no file of the catalogue is


@dataclass
class Entity:
    """What a module offers under one name: a constant, a type, a variable, or the routines behind a name."""

    name: str
    what: str  # constant, type, variable, routine or number
    module: str  # the module that has it
    areas: set = field(default_factory=set)  # the areas and families that have it
    routines: list = field(default_factory=list)
    fields: tuple = ()

    def takes(self, type_name):
        """Whether a routine of this name has an argument of the type."""
        wanted = f"type({type_name})"
        return any(argument["type"] == wanted for routine in self.routines for argument in routine["arguments"])


class Catalogue:
    def __init__(self, content):
        self.version = content["version"]
        self.target = content["target"]
        self.areas = content["areas"]
        self.entities = {}
        self.not_offered = {}
        self.symbols = {}
        for area in self.areas:
            self._read(area)

    def _read(self, area):
        for routine in area["routines"]:
            self.symbols[routine["symbol"]] = routine
            offer = routine["module"]
            if not offer:
                self.not_offered[routine["name"].lower()] = routine
                continue
            for name in (offer["name"], *offer["also"]):
                entity = self._entity(name, "routine", area)
                entity.areas |= set(offer["families"])
                entity.routines.append(routine)
        for constant in area["constants"]:
            self._entity(constant["name"], "constant", area)
        for variable in area["variables"]:
            self._entity(variable["name"], "variable", area)
        for record in area["types"]:
            self._entity(record["name"], "type", area).fields = tuple(record["fields"])
        for number in area["numbers"]:
            # The host's numbers are in a module of their own: programs have long had such names themselves.
            name = number["parameter"]
            self.entities.setdefault(name.lower(), Entity(name, "number", "qxport_numbers", {NUMBERS}))

    def _entity(self, name, what, area):
        entity = self.entities.get(name.lower())
        if entity is None or entity.what == "number":
            entity = self.entities[name.lower()] = Entity(name, what, "qxport")
        entity.areas |= {area["name"], area["family"]}
        return entity

    @property
    def area_names(self):
        """All that a part of the library is called by."""
        return sorted({name for entity in self.entities.values() for name in entity.areas})

    def nearest(self, name, count=3):
        """Names of the catalogue that look like `name`."""
        known = list(self.entities) + list(self.not_offered)
        found = difflib.get_close_matches(name.lower(), known, count, 0.7)
        return [self.entities[n].name if n in self.entities else n for n in found]


def load(share):
    path = Path(share, "catalogue.json")
    try:
        content = json.loads(path.read_text(encoding="utf-8"))
    except (OSError, ValueError) as error:
        raise Failure(f"{path}: the catalogue cannot be read: {error}", CANNOT) from error
    if not isinstance(content, dict) or content.get("format") != FORMAT:
        raise Failure(f"{path}: this is not a catalogue of format {FORMAT}", CANNOT)
    return Catalogue(content)
