"""What an entry of the catalogue may hold: the keys of each table, and the names it may give."""

import re

MAX_NAME = 63  # of a Fortran name
PREFIX = "qxport_"  # of modules, aliases and specific procedures
ENTRIES = ("constant", "type", "record", "constant_group", "data", "routine", "service")
SYMBOL = re.compile(r"[A-Za-z_$][A-Za-z0-9_$]*\Z")
_FORTRAN = re.compile(r"[A-Za-z][A-Za-z0-9_]*\Z")

_TEXT = (str,)
_ANY_VALUE = (int, float, bool, str)
# key: (accepted types, required)
TABLES = {
    "area": {k: (_TEXT, True) for k in ("name", "family", "title", "library", "text")},
    "constant": {"name": (_TEXT, True), "type": (_TEXT, True), "value": (_ANY_VALUE, True), "text": (_TEXT, True)},
    "type": {"name": (_TEXT, True), "bytes": ((int,), True), "text": (_TEXT, True), "fields": ((list,), True)},
    "field": {
        "name": (_TEXT, True),
        "type": (_TEXT, True),
        "count": ((int,), False),
        "unit": (_TEXT, False),
        "text": (_TEXT, True),
    },
    "record": {
        "name": (_TEXT, True),
        "kind": ((int,), True),
        "summary": (_TEXT, True),
        "text": (_TEXT, True),
        "components": ((list,), True),
    },
    "component": {
        "name": (_TEXT, True),
        "type": (_TEXT, True),
        "access": (_TEXT, True),
        "text": (_TEXT, True),
        "capacity": ((int,), False),
        "count": ((int,), False),
        "count_of": (_TEXT, False),
        "unit": (_TEXT, False),
        "unchecked": ((bool,), False),
        "unsigned": ((bool,), False),
    },
    "constant_group": {
        "title": (_TEXT, True),
        "text": (_TEXT, True),
        "names": ((list,), True),
        "by_name": ((bool,), False),
    },
    "host_constant": {
        "name": (_TEXT, True),
        "text": (_TEXT, True),
        "value": ((int,), False),
        "may_lack": ((bool,), False),
    },
    "data": {"name": (_TEXT, True), "c": (_TEXT, True), "fortran": (_TEXT, False), "text": (_TEXT, True)},
    "service": {k: (_TEXT, True) for k in ("symbol", "c", "text")},
    "routine": {
        "name": (_TEXT, True),
        "kind": (_TEXT, True),
        "summary": (_TEXT, True),
        "text": (_TEXT, True),
        "origin": (_TEXT, True),
        "symbol": (_TEXT, False),
        "module_name": (_TEXT, False),
        "result": (_TEXT, False),
        "result_text": (_TEXT, False),
        "args": ((list,), False),
        "errors": ((list,), False),
        "example": (_TEXT, False),
        "related": ((list,), False),
        "like": (_TEXT, False),
        "module": ((bool,), False),
        "module_why": (_TEXT, False),
        "binding": (_TEXT, False),
        "also": ((list,), False),
        "families": ((list,), False),
        "targets": ((list,), False),
        "eight": (_TEXT, False),
        "refused": ((int, str), False),
    },
    "argument": {
        "name": (_TEXT, True),
        "type": (_TEXT, True),
        "text": (_TEXT, True),
        "intent": (_TEXT, False),
        "shape": (_TEXT, False),
        "unit": (_TEXT, False),
        "optional": ((bool,), False),
        "value": ((bool,), False),
        "interface": (_TEXT, False),
        "result": (_TEXT, False),
        "most": ((int,), False),
    },
    "error": {"number": ((str, int), True), "when": (_TEXT, True)},
}


_NAMES = {"service": "symbol", "constant_group": "title"}


def entry_name(entry, what, number):
    name = entry.get(_NAMES.get(what, "name"))
    return name if isinstance(name, str) and name else f"{what} {number}"


def keys(entry, table):
    """The unknown, missing and mistyped keys of an entry."""
    if not isinstance(entry, dict):
        return [f"each {table} must be a table"]
    reasons = [f"unknown key `{key}`" for key in entry if key not in TABLES[table]]
    for key, (types, required) in TABLES[table].items():
        if key not in entry:
            reasons += [f"missing key `{key}`"] if required else []
        elif type(entry[key]) not in types:
            reasons.append(f"`{key}` must be {' or '.join(t.__name__ for t in types)}")
        elif isinstance(entry[key], str) and key not in ("value", "access"):
            reasons += [f"`{key}` is empty"] if not entry[key].strip() else []
            reasons += [f"`{key}` has an unpaired backtick"] if key == "text" and entry[key].count("`") % 2 else []
    return reasons


def fortran_name(name, what, limit=MAX_NAME, lower=True):
    """Why `name` cannot be a Fortran name of the catalogue, as a list of reasons."""
    if not _FORTRAN.match(name) or (lower and name != name.lower()):
        return [f"`{name}` is not a valid {what} name"]
    if len(name) > limit:
        return [f"{what} name `{name}` has more than {limit} characters"]
    return []


def is_regular(entry):
    """Whether a routine's symbol is what a compiler makes of its name."""
    name = entry["name"]
    return "symbol" not in entry or (entry["symbol"] == f"{name}_" and bool(_FORTRAN.match(name)))


def module_names(entry):
    """The name that the module offers a routine under and its external procedure's, None where it has no interface."""
    regular = is_regular(entry)
    generic = entry.get("module_name", entry["name"] if regular else None)
    if not generic or not entry.get("module", True):
        return None, None
    if entry.get("binding") == "plain":
        return generic, generic
    return generic, PREFIX + (entry["name"] if regular else generic)


def alias_symbol(entry):
    """The symbol that a routine has for the module alone, or None."""
    generic, specific = module_names(entry)
    return f"{specific}_" if specific != generic else None


def page_name(name):
    """A name as part of a file name: a `$` would be special to a shell and to a build tool."""
    return name.replace("$", "_").lstrip("_") or name
