"""The C and C++ header: a prototype of every exported routine."""

import re
import textwrap

from .ckeywords import safe

WIDTH = 110

_OPENING = """\
/* Made from the catalogue of routines, do not edit. Version {version}, {bits}-bit. */
#ifndef QXPORT_H
#define QXPORT_H

#include <stdint.h>

/* The length of a CHARACTER argument, passed by value after all other arguments. */
typedef intptr_t qxport_charlen;

/* The libraries' own build gives these the attributes of its definitions. */
#ifndef QXPORT_API
#define QXPORT_API
#endif
#ifndef QXPORT_CORE_API
#define QXPORT_CORE_API
#endif
#ifndef QXPORT_MODULE_API
#define QXPORT_MODULE_API
#endif
#ifndef QXPORT_DATA
#define QXPORT_DATA
#endif
#ifndef QXPORT_SERVICE_API
#define QXPORT_SERVICE_API
#endif

#if defined __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdollar-in-identifier-extension"
#endif

#ifdef __cplusplus
#define QXPORT_STATIC_ASSERT static_assert
extern "C" {{
#else
#define QXPORT_STATIC_ASSERT _Static_assert
#endif
"""

_CLOSING = """\
#ifdef __cplusplus
}
#endif

#undef QXPORT_STATIC_ASSERT

#if defined __clang__
#pragma clang diagnostic pop
#endif

#endif
"""


def outputs(catalogue, options):
    return {"include/qxport/qxport.h": header(catalogue, options)}


def header(catalogue, options):
    parts = [_OPENING.format(version=options.version_text, bits=options.target)]
    parts += [_record(record) for record in catalogue.records]
    parts += [part for area in catalogue.areas if (part := _area(area, options.target))]
    return "\n".join(parts + [_CLOSING])


def _area(area, target):
    # A core routine is undefined in the main library; were its prototype weak there too, the reference would
    # be weak and could stay unresolved. So each library marks its own routines only.
    api = "QXPORT_CORE_API" if area.library == "qxcore" else "QXPORT_API"
    parts = [_constant(constant) + "\n" for constant in area.constants]
    parts += [f"QXPORT_DATA extern {cell.c};\n" for cell in area.data]
    for routine in (r for r in area.routines if r.exists_on(target)):
        parts.append(_routine(routine, api))
    if area.services:
        parts.append("\n/* Services of the Fortran run-time that the library calls by their C names. */\n")
        parts += [f"QXPORT_SERVICE_API {' '.join(service.c.split())};\n" for service in area.services]
    return _comment(area.title) + "".join(parts) if parts else ""


def _comment(text):
    text = " ".join(text.split()).replace("*/", "* /").replace("/*", "/ *")
    return textwrap.fill(text, WIDTH, initial_indent="/* ", subsequent_indent="   ", break_on_hyphens=False) + " */\n"


def _constant(constant):
    return f"#define QXPORT_{constant.name.upper()} {c_literal(constant)}"


def c_literal(constant):
    """The constant's value as a C expression."""
    kind, value = constant.kind, constant.value
    if kind.base == "logical":
        return str(int(value))
    if kind.base == "character":
        padded = value.ljust(int(kind.size))
        return '"' + padded.replace("\\", "\\\\").replace('"', '\\"').replace("?", "\\?") + '"'
    if kind.base == "real":
        text = repr(float(value)) + ("F" if kind.size == "4" else "")
        return f"({text})" if value < 0 else text
    text = _integer(value, 8 * (kind.bytes or 4), "INT64_C({})" if kind.size == "8" else "{}")
    return f"((intptr_t){text})" if kind.size == "ptr" else text


def _integer(value, bits, literal):
    """The least integer has no literal of its own: its positive counterpart does not fit."""
    if value == -(1 << (bits - 1)):
        return f"(-{literal.format(-(value + 1))} - 1)"
    return f"(-{literal.format(-value)})" if value < 0 else literal.format(value)


def _record(record):
    lines, taken = [f"struct qxport_{record.name} {{"], set()
    for field in record.fields:
        name = safe(field.name, taken)
        taken.add(name)
        lines.append(f"  {_component(field, name)};")
    lines += ["} __attribute__((packed));"]
    size = f"sizeof(struct qxport_{record.name}) == {record.bytes}"
    lines += [f'QXPORT_STATIC_ASSERT({size}, "the layout of {record.name}");', ""]
    return _comment(f"Record {record.name}.") + "\n".join(lines)


def _component(field, name):
    count = f"[{field.count}]" if field.count else ""
    if field.kind.base == "character":
        return f"char {name}{count}[{field.kind.size}]"
    if field.kind.base == "complex":
        return f"{'float' if field.kind.size == '4' else 'double'} {name}{count}[2]"
    return f"{field.kind.c_value} {name}{count}"


def _routine(routine, api):
    text = "\n" + _comment(fortran_call(routine)) + _lines(f"{api} {prototype(routine)}")
    if routine.alias:
        text += _lines(f"QXPORT_MODULE_API {prototype(routine, routine.alias)}")
    return text


def _lines(text):
    return "\n".join(broken(text, WIDTH)) + "\n"


def broken(text, width):
    """A declaration as lines, broken after commas only, so that an argument stays in one piece."""
    lines = [""]
    for piece in re.findall(r"[^,]+,? *", text):
        if len(lines[-1]) + len(piece.rstrip()) > width:
            lines.append("    ")
        lines[-1] += piece
    return [line.rstrip() for line in lines]


def fortran_call(routine):
    """The call as its user writes it."""
    names = [f"[{a.name}]" if a.optional else a.name for a in routine.args]
    call = f"{routine.generic or routine.name}({', '.join(names)})".upper()
    return f"answer = {call}" if routine.result else f"CALL {call}"


def prototype(routine, symbol=None):
    """The C prototype under the routine's own symbol or another."""
    taken, arguments, lengths = set(), [], []

    def add(declaration, name, to):
        name = safe(name, taken)
        taken.add(name)
        to.append(declaration.format(name))
        return name

    returned = "void"
    if routine.result and routine.result.base == "character":
        add("char *{}", "answer", arguments)
        add("qxport_charlen {}", "answer_len", arguments)
    elif routine.result:
        returned = routine.result.c_value
    names = {argument.name for argument in routine.args}
    for argument in routine.args:
        add(_declaration(argument), argument.name, arguments)
    taken |= names
    for argument in (a for a in routine.args if a.kind.base == "character"):
        add("qxport_charlen {}", f"{argument.name}_len", lengths)
    listed = ", ".join(arguments + lengths) or "void"
    return f"{returned} {symbol or routine.symbol}({listed});"


def _declaration(argument):
    if argument.kind.base == "procedure":
        return "void (*{})(void)"
    if argument.value:
        return f"{argument.kind.c_value} {{}}"
    const = "const " if argument.intent == "in" else ""
    return f"{const}{argument.kind.c_target} *{{}}"
