"""Checks that concern one record kind of the POSIX binding, or one group of its named constants."""

import re

from .entries import MAX_NAME, fortran_name, keys
from .kinds import parse_kind
from .records import ACCESSES, is_text
from .routine_schema import summary_reasons

MAX_LOOKUP = 24  # characters of a name that a program hands over as text
_HOST_NAME = re.compile(r"_*[A-Z][A-Z0-9_]*\Z")


def record_reasons(entry):
    """Every reason for which a record kind is not valid."""
    if reasons := keys(entry, "record"):
        return reasons
    reasons = fortran_name(entry["name"], "record", MAX_LOOKUP) + summary_reasons(entry)
    if entry["kind"] < 1:
        reasons.append("`kind` must be positive")
    seen = {}
    for number, component in enumerate(entry["components"], 1):
        broken = keys(component, "component") or _component(component, seen)
        name = component.get("name", number) if isinstance(component, dict) else number
        reasons += [f"component {name}: {reason}" for reason in broken]
        if not broken:
            seen[component["name"]] = component
    return reasons


def _component(component, former):
    reasons = fortran_name(component["name"], "component", MAX_LOOKUP)
    if component["name"] in former:
        reasons.append("duplicate component name")
    if component["access"] not in ACCESSES:
        reasons.append(f"bad access `{component['access']}`")
    return reasons + _type(component) + _count_of(component, former)


def _type(component):
    kind = component["type"]
    if kind not in ("integer(4)", "integer(8)", "string", "strings") and not is_text(kind):
        return [f"bad type `{kind}`"]
    reasons = []
    if is_text(kind) != ("capacity" in component):
        reasons.append("`capacity` belongs to a component of type character(n), and to no other")
    elif is_text(kind) and not 0 < component["capacity"] <= parse_kind(kind).bytes:
        reasons.append(f"capacity {component['capacity']} is not that of {kind}")
    if "count" in component and (kind != "integer(4)" or component["count"] < 1):
        reasons.append("`count` is a positive number of integer(4)")
    if component.get("unchecked") and kind != "integer(8)":
        reasons.append("only an integer(8) can be `unchecked`")
    if component.get("unsigned") and (kind != "integer(4)" or component["access"]):
        reasons.append("only an integer(4) that no routine reads can be `unsigned`")
    return reasons


def _count_of(component, former):
    if (component["type"] == "strings") != ("count_of" in component):
        return ["`count_of` belongs to a component of type strings, and to no other"]
    if "count_of" not in component:
        return []
    counter = former.get(component["count_of"])
    if not counter or counter["type"] != "integer(4)" or "count" in counter:
        return [f"`{component['count_of']}` is no integer(4) component before it"]
    if "set" in counter["access"]:
        return [f"`{component['count_of']}` counts strings, so a program cannot set it"]
    return []


def constant_group_reasons(entry):
    """Every reason for which a group of constants is not valid."""
    if reasons := keys(entry, "constant_group"):
        return reasons
    reasons = []
    for number, constant in enumerate(entry["names"], 1):
        broken = keys(constant, "host_constant") or _host_constant(constant, entry.get("by_name", True))
        name = constant.get("name", number) if isinstance(constant, dict) else number
        reasons += [f"constant {name}: {reason}" for reason in broken]
    return reasons


def _host_constant(constant, by_name):
    reasons, most = [], MAX_LOOKUP if by_name else MAX_NAME
    if not _HOST_NAME.match(constant["name"]) or len(constant["name"]) > most:
        reasons.append(f"`{constant['name']}` is not an upper-case name of at most {most} characters")
    if "value" in constant and not -(1 << 31) <= constant["value"] < 1 << 31:
        reasons.append(f"value {constant['value']} is out of the range of integer(4)")
    if "value" in constant and constant.get("may_lack"):
        reasons.append("`value` and `may_lack` exclude one another")
    return reasons
