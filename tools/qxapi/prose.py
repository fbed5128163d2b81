"""What the reference says of an entry, before any markup: spans of text, synopses, descriptions."""

import re

from .compiler_names import INTRINSICS
from .declarations import declaration_lines, wrapped
from .entries import PREFIX
from .header import broken, prototype

COMPILE = "gfortran prog.f90 $(pkg-config --cflags --libs qxport)"
SYNOPSIS_WIDTH = 76
CONSTANTS = """
The names that `pxfconst`, `ipxfconst` and `pxfisconst` know; their case does not matter. The values are those of the
host that the library was built for. Where a value stands beside a name it is the binding's own, the same on every host.

Each is also a parameter of the module `qxport_numbers`.
"""
NUMBERS_TITLE = "Numbers of the host"
NUMBERS_SUMMARY = "the host's numbers as parameters"
NUMBERS_TEXT = """
INTEGER(4) parameters with the numbers of the host that the library was built for: a name that is misspelt fails when
the program is compiled. All names under `constants` are in the module, without underscores at their beginning, and
those below. The module is not part of `qxport`, because programs have long declared such names themselves.
"""
USE_NUMBERS = "use qxport_numbers, only: F_WRLCK, O_CREAT, SEEK_SET, SIGINT, ENOENT"
CODE_INDENT = "    "
INTENTS = {"in": "input", "out": "output", "inout": "input and output", "none": "input, may be written"}


def blocks(text):
    """A text as (what, content): a "paragraph" of spans, a "list" of items, each spans, or lines of "code"."""
    found = []
    for part in re.split(r"\n[ \t]*\n", text.strip("\n")):
        if all(line.startswith(CODE_INDENT) for line in part.split("\n")):
            found.append(("code", [line[len(CODE_INDENT):].rstrip() for line in part.split("\n")]))
        elif part.startswith("- "):
            found.append(("list", [spans(item) for item in re.split(r"(?:^|\n)- ", part)[1:]]))
        elif part.strip():
            found.append(("paragraph", spans(part)))
    return found


def plain(text):
    """The words of a text in one line, without markup."""
    return " ".join(text.replace("`", "").split())


def spans(text):
    """`text` split at its backticks: (True, ...) is a name or code, (False, ...) is prose."""
    pieces = " ".join(text.split()).split("`")
    return [(bool(number % 2), piece) for number, piece in enumerate(pieces) if piece]


def synopsis(routine):
    """The routine as Fortran source declares it; as C does where Fortran cannot name it."""
    if routine.generic:
        return [f"use qxport, only: {routine.generic}", ""] + _fortran(routine, routine.generic)
    if routine.symbol == f"{routine.name}_" and "$" not in routine.name:
        external = "external" if not routine.result else f"{routine.result.fortran}, external"
        return [f"{external} :: {routine.name}", ""] + _fortran(routine, routine.name)
    return ["#include <qxport/qxport.h>", ""] + c_synopsis(routine)


def c_synopsis(routine):
    return broken(prototype(routine), SYNOPSIS_WIDTH)


def _fortran(routine, name):
    listed = ", ".join(argument.name for argument in routine.args)
    heading = f"{routine.result.fortran} function {name}" if routine.result else f"subroutine {name}"
    lines = wrapped(f"{heading}({listed})", SYNOPSIS_WIDTH)
    for argument in routine.args:
        lines += [f"  {line}" for line in declaration_lines(argument, argument.kind.record, documented=True)]
    return lines


def argument_facts(argument):
    """What an argument is, in a few words: type, shape, intent, and the like."""
    facts = [f"{argument.kind.fortran} array ({argument.shape})" if argument.shape else argument.kind.fortran]
    facts += [INTENTS[argument.intent]] if argument.intent else []
    facts += ["optional"] if argument.optional else []
    facts += ["by value"] if argument.value else []
    return facts + ([f"in {argument.unit}"] if argument.unit else [])


def field_type(field):
    """Short, since it stands in a narrow column."""
    return f"{field.kind} × {field.count}" if field.count else str(field.kind)


def creation(kind):
    """The call that makes a record."""
    return f"call pxfstructcreate('{kind.name}', jhandle, ierror)"


def component_type(component):
    """What a Fortran program sees of a component."""
    if component.type in ("string", "strings"):
        return "character" if component.type == "string" else "character array"
    return f"{component.type} array" if component.count else component.type


def component_capacity(component):
    """How much a component holds; empty for a number."""
    if component.count or component.count_of:
        return f"{component.count or f'`{component.count_of}`'} elements"
    if component.capacity:
        return f"{component.capacity} characters"
    return "any length" if component.type == "string" else ""


def reachable(kind):
    """The components that a program can name."""
    return [component for component in kind.components if component.access]


def mentions(routine, page):
    """Whether the reference of a routine leads to a page."""
    return page in routine.related or f"`{page}`" in routine.text


def host_value(constant):
    """The value of a named constant, in words where it is the host's."""
    if constant.value is not None:
        return f"always {constant.value}"
    return "the host's, or -1 where it has none" if constant.may_lack else "the host's"


def notes(routine):
    """Where the routine does not exist, or is not offered, in which other modules it is, what may be taken for it."""
    found = []
    if len(set(routine.targets)) == 1:
        found.append(f"This routine exists on {routine.targets[0]} targets only.")
    if routine.module_why:
        found.append(f"It is not in the Fortran module: {_sentence(routine.module_why)}")
    for family in routine.families:
        found.append(f"The module `{PREFIX}{family}` has it too.")
    if routine.generic and any(argument.intent == "out" for argument in routine.args):
        found.append("In the module the outputs are INTENT(INOUT): what a failure leaves alone keeps its value.")
    if routine.generic in INTRINSICS:
        found.append(f"GNU Fortran has an intrinsic procedure `{routine.generic}` of its own, and may take that one without "
                     "a word for a call that does not fit this interface: arguments of another kind, another number of "
                     "them. With `-std=f2018`, or another standard, such a call does not compile.")
    return found


def _sentence(text):
    text = text.strip()
    return text if text.endswith(".") else f"{text}."


def constant_value(constant):
    if isinstance(constant.value, bool):
        return f".{str(constant.value).lower()}."
    return f"'{constant.value}'" if isinstance(constant.value, str) else str(constant.value)
