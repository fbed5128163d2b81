"""What the library's own sources include: the record kinds as structures and tables, and the rows of constants."""

from .ckeywords import safe
from .records import is_text

_OPENING = """\
// Made from the catalogue, do not edit. The kinds of record that a program names by a handle.
#pragma once

#include "records/component.h"

namespace qxport {
"""
_C_TYPES = {"integer(4)": "int32_t ", "integer(8)": "int64_t ", "string": "char *", "strings": "char **"}
_COMPONENT_TYPES = {"integer(4)": "Int32", "integer(8)": "Int64", "string": "String", "strings": "Strings"}


def outputs(catalogue, options):
    return {
        "private/qxport_records.h": records(catalogue.record_kinds),
        "private/qxport_constants.inc": constants([g for g in catalogue.constant_groups if g.by_name]),
        "private/qxport_numbers.inc": numbers(catalogue.constant_groups),
    }


def records(kinds):
    """The header of the record kinds, which `kinds` lists in the order of their codes."""
    parts = [_OPENING, _enumeration(kinds)]
    parts += [_structure(kind) for kind in kinds]
    parts += [_components(kind) for kind in kinds if _reachable(kind)]
    return "\n".join(parts + [_kinds(kinds), "}  // namespace qxport", ""])


def _enumeration(kinds):
    lines = [f"  {kind.name.capitalize()} = {kind.kind}," for kind in kinds]
    return "\n".join(["enum class Kind : uint32_t {"] + lines + ["};", ""])


def _structure(kind):
    lines = [f"// {kind.name}: {kind.summary}", f"struct {_struct(kind)} {{", "  uint32_t kind;"]
    lines += [f"  {_member(component)};" for component in kind.components]
    lines += [f"  size_t {_length(component)};" for component in kind.components if component.type == "string"]
    return "\n".join(lines + ["};", ""])


def _struct(kind):
    return f"{kind.name.capitalize()}Record"


def _member(component):
    name = safe(component.name)
    if is_text(component.type):
        return f"char {name}{component.type.removeprefix('character').replace('(', '[').replace(')', ']')}"
    sign = "u" if component.unsigned else ""
    return f"{sign}{_C_TYPES[component.type]}{name}" + (f"[{component.count}]" if component.count else "")


def _length(component):
    """The private word beside an owned string, which has no terminator of its own."""
    return f"{component.name}_length"


def _reachable(kind):
    return [component for component in kind.components if component.access]


def _table(kind):
    return f"{kind.name.upper()}_COMPONENTS"


def _components(kind):
    lines = [_row(kind, component) for component in _reachable(kind)]
    return "\n".join([f"inline constexpr Component {_table(kind)}[] = {{"] + lines + ["};", ""])


def _row(kind, component):
    fields = {
        "name": f'FoldedName("{component.name}")',
        "type": f"ComponentType::{_component_type(kind, component)}",
        "offset": _offset(kind, safe(component.name)),
        "capacity": component.capacity or component.count or 0,
        "length_offset": _length_offset(kind, component),
        "settable": _truth("set" in component.access),
        "checked": _truth(not component.unchecked),
    }
    return "  {" + ",\n   ".join(f".{name} = {value}" for name, value in fields.items()) + "},"


def _component_type(kind, component):
    if is_text(component.type):
        return "Text"
    if any(other.count_of == component.name for other in kind.components):
        return "Count"
    return "Int32Array" if component.count else _COMPONENT_TYPES[component.type]


def _offset(kind, member):
    return f"offsetof({_struct(kind)}, {member})"


def _length_offset(kind, component):
    if component.type == "string":
        return _offset(kind, _length(component))
    return _offset(kind, safe(component.count_of)) if component.count_of else 0


def _truth(value):
    return "true" if value else "false"


def _kinds(kinds):
    """In the order of their codes, so that a code less 1 is an index."""
    lines = [
        f'  {{.name = FoldedName("{kind.name}"),\n   .kind = Kind::{kind.name.capitalize()},\n'
        f"   .size = sizeof({_struct(kind)}),\n   .components = {_table(kind) if _reachable(kind) else '{}'}}},"
        for kind in kinds
    ]
    return "\n".join(["inline constexpr RecordKind RECORD_KINDS[] = {"] + lines + ["};", ""])


def constants(groups):
    """A row for each name, in order: what includes them defines CONSTANT(name, value)."""
    return _table_of(groups, "CONSTANT", lambda constant: constant.name)


def numbers(groups):
    """The same for what prints the module of numbers, by NUMBER(name, value)."""
    return _table_of(groups, "NUMBER", lambda constant: constant.parameter)


def _table_of(groups, macro, name_of):
    lines = [f"// Made from the catalogue, do not edit. {macro}(name, value): the host's value or the binding's own."]
    for group in groups:
        lines.append(f"// {group.title}")
        for constant in group.names:
            lines += _rows(f'{macro}("{name_of(constant)}", {{}})'.format, constant)
    return "\n".join(lines + [""])


def _rows(row, constant):
    name = constant.name
    if constant.value is not None:
        return [row(_literal(constant.value))]
    if constant.may_lack:
        return [f"#ifdef {name}", row(name), "#else", row(-1), "#endif"]
    return [row(name)]


def _literal(value):
    """The least integer has no literal of its own: its positive counterpart does not fit."""
    return f"(-{-(value + 1)} - 1)" if value == -(1 << 31) else value
