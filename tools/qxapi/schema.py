"""Checks that concern one entry of the catalogue: its keys, their types and what they say."""

import re

from .entries import ENTRIES, MAX_NAME, PREFIX, SYMBOL, entry_name, fortran_name, keys
from .front import FAMILIES
from .kinds import parse_kind
from .record_schema import constant_group_reasons, record_reasons
from .routine_schema import routine_reasons

LIBRARIES = ("qxport", "qxcore")


def problems(path, table):
    """Every reason for which a file's entries are not valid, each with its place."""
    found = []

    def report(name, reasons):
        found.extend(f"{path}: {name}: {reason}" for reason in reasons)

    report("area", _area(path, table))
    for what in ENTRIES:
        entries = table.get(what, [])
        if not _is_list_of_tables(entries):
            report(what, [f"`{what}` must be written as [[{what}]]"])
            continue
        for number, entry in enumerate(entries, 1):
            report(entry_name(entry, what, number), _CHECKS[what](entry))
            if what == "routine":
                report(entry_name(entry, what, number), _families(entry, table))
    return found


def _is_list_of_tables(value):
    return isinstance(value, list) and all(isinstance(entry, dict) for entry in value)


def _area(path, table):
    reasons = [f"unknown table `{key}`" for key in table if key != "area" and key not in ENTRIES]
    area = table.get("area")
    if not isinstance(area, dict):
        return reasons + ["missing table `area`"]
    if broken := keys(area, "area"):
        return reasons + broken
    reasons += fortran_name(area["name"], "area", MAX_NAME - len(PREFIX))
    if area["name"] in ("index", "record_types", "numbers", *FAMILIES):
        reasons.append(f"area name `{area['name']}` is reserved")
    if area["family"] not in FAMILIES:
        reasons.append(f"family `{area['family']}` is none of {', '.join(FAMILIES)}")
    if area["library"] not in LIBRARIES:
        reasons.append(f"library `{area['library']}` is neither of {', '.join(LIBRARIES)}")
    if path.stem != f"{area['family']}_{area['name']}":
        reasons.append(f"the file of family `{area['family']}` and area `{area['name']}` must be named "
                       f"{area['family']}_{area['name']}.toml")
    if table.get("service") and area["library"] != "qxcore":
        reasons.append("only an area of the library qxcore has services")
    return reasons


def _families(entry, table):
    """Why a routine cannot be in the modules of the further families that its entry names."""
    named, area = entry.get("families"), table.get("area")
    if not isinstance(named, list) or not isinstance(area, dict):
        return []
    others = [family for family in FAMILIES if family != area.get("family")]
    reasons = [f"`families`: `{name}` is none of {', '.join(others)}" for name in named if name not in others]
    return reasons + (["`families` of a routine that is in no module"] if entry.get("module") is False else [])


def _constant(entry):
    if reasons := keys(entry, "constant"):
        return reasons
    reasons = fortran_name(entry["name"], "constant", lower=False)
    kind = parse_kind(entry["type"])
    if not kind or kind.base not in ("integer", "real", "logical", "character") or str(kind) == "character(*)":
        return reasons + [f"bad type `{entry['type']}` of a constant"]
    return reasons + _constant_value(kind, entry["value"])


def _constant_value(kind, value):
    accepted = {"integer": (int,), "real": (int, float), "logical": (bool,), "character": (str,)}[kind.base]
    if type(value) not in accepted:
        return [f"value {value!r} is not of type {kind}"]
    if kind.base == "integer":
        bits = 32 if kind.size == "ptr" else int(kind.size) * 8
        if not -(1 << (bits - 1)) <= value < 1 << (bits - 1):
            return [f"value {value} is out of the range of {kind}"]
    if kind.base == "real" and not abs(value) < 3.4e38:
        return [f"value {value} is out of the range of real(4)"]
    if kind.base == "character" and (len(value) > int(kind.size) or not value.isascii() or not value.isprintable()):
        return [f"value {value!r} is not of type {kind}"]
    return []


def _record(entry):
    if reasons := keys(entry, "type"):
        return reasons
    reasons = fortran_name(entry["name"], "type")
    size, seen = 0, set()
    for number, field in enumerate(entry["fields"], 1):
        if broken := keys(field, "field"):
            return reasons + [f"field {number}: {reason}" for reason in broken]
        reasons += fortran_name(field["name"], "field")
        if field["name"] in seen:
            reasons.append(f"duplicate field `{field['name']}`")
        seen.add(field["name"])
        kind = parse_kind(field["type"])
        if not kind or kind.bytes is None:
            return reasons + [f"field `{field['name']}`: bad type `{field['type']}`"]
        if field.get("count", 1) < 1:
            return reasons + [f"field `{field['name']}`: count must be positive"]
        if size % kind.alignment:
            reasons.append(f"field `{field['name']}` at offset {size} is not aligned: Fortran would pad before it")
        size += kind.bytes * field.get("count", 1)
    if size != entry["bytes"]:
        reasons.append(f"the fields take {size} bytes, not {entry['bytes']}")
    return reasons


def _data(entry):
    if reasons := keys(entry, "data"):
        return reasons
    reasons = [] if SYMBOL.match(entry["name"]) else [f"`{entry['name']}` is not a valid symbol"]
    if not re.search(rf"(?<![\w$]){re.escape(entry['name'])}(?![\w$])", entry["c"]):
        reasons.append(f"the declaration `{entry['c']}` does not declare `{entry['name']}`")
    if re.search(r"\bextern\b|;", entry["c"]):
        reasons.append("`c` is written without `extern` and semicolon")
    if "fortran" in entry:
        kind = parse_kind(entry["fortran"])
        reasons += fortran_name(entry["name"], "variable", lower=False)
        if not kind or kind.base not in ("integer", "real"):
            reasons.append(f"bad type `{entry['fortran']}` of a variable")
    return reasons


def _service(entry):
    if reasons := keys(entry, "service"):
        return reasons
    reasons = [] if SYMBOL.match(entry["symbol"]) else [f"`{entry['symbol']}` is not a valid symbol"]
    if not re.search(rf"(?<![\w$]){re.escape(entry['symbol'])}\s*\(", entry["c"]):
        reasons.append(f"the prototype `{entry['c']}` does not declare `{entry['symbol']}`")
    if ";" in entry["c"]:
        reasons.append("`c` is written without semicolon")
    return reasons


_CHECKS = {
    "constant": _constant,
    "type": _record,
    "record": record_reasons,
    "constant_group": constant_group_reasons,
    "data": _data,
    "service": _service,
    "routine": routine_reasons,
}
