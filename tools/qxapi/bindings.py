"""Which symbol the Fortran modules bind a routine to: the traditional one, or a strong alias of their own.

A plain binding is an interface of the routine itself, so a compiler can name the argument that is wrong. An alias is
safe from other procedures of the name, and is where the module's view may differ from the traditional one.
"""

import re
from collections import Counter

from .compiler_names import INTRINSICS, OTHERS
from .entries import is_regular, keys, module_names

BINDINGS = ("plain", "alias")
# Names that only these libraries use: a program has no procedure of its own there.
_OURS_ALONE = re.compile(r"i?pxf\w+\Z|\w+qq(i8)?\Z")


def with_bindings(tables):
    """`tables`, a list of (path, parsed file), with the key `binding` in each routine that a module offers."""
    shared = shared_names(entry for _, table in tables for entry in _offered(table))
    return [(path, _with_bindings(table, shared)) for path, table in tables]


def shared_names(entries):
    """The names under which a module offers several of the routines `entries`."""
    counts = Counter(name for entry in entries for name in (module_names(entry)[0], *entry.get("also", [])))
    return {name for name, count in counts.items() if count > 1}


def plain_obstacles(entry):
    """Why the module cannot bind a routine to its traditional symbol."""
    name, reasons = entry["name"], []
    if not is_regular(entry) or module_names(entry)[0] != name:
        reasons.append("the module offers it under another name")
    if entry.get("result", "").startswith("logical"):
        reasons.append("a LOGICAL answer is 0 or 1 behind an alias only")
    if name in INTRINSICS or name in OTHERS:
        reasons.append(f"compilers know a procedure `{name}`")
    return reasons


def _offered(table):
    listed = table.get("routine")
    return [entry for entry in listed if _is_offered(entry)] if isinstance(listed, list) else []


def _is_offered(entry):
    return isinstance(entry, dict) and not keys(entry, "routine") and module_names(entry)[0] is not None


def _with_bindings(table, shared):
    if not _offered(table):
        return table
    routines = [_binding(entry, shared) | entry if _is_offered(entry) else entry for entry in table["routine"]]
    return table | {"routine": routines}


def _binding(entry, shared):
    """The binding of an entry that names none."""
    ours_alone = _OURS_ALONE.match(entry["name"]) and entry["name"] not in shared
    return {"binding": "plain" if ours_alone and not plain_obstacles(entry) else "alias"}
