"""What the driver of random calls includes: every routine with its arguments described and a function that calls it."""

import re

from .header import c_literal, fortran_call

_OPENING = """\
// Made from the catalogue, do not edit. Every routine, described and callable, and words and numbers that
// routines know.
"""
_INTENTS = {"in": "In", "out": "Out", "inout": "InOut", "none": "InOut", None: "In"}
_BASES = {"integer": "Integer", "logical": "Logical", "real": "Real", "complex": "Real", "character": "Character",
          "any": "Buffer", "record": "Buffer", "procedure": "Procedure"}
_BUFFER = 1 << 16  # of a buffer of any type
_LITERAL = re.compile(r"'([^'\n]{1,40})'")


def outputs(catalogue, options):
    return {"private/qxport_calls.inc": calls(catalogue, options.target)}


def calls(catalogue, target):
    records = {record.name: record.bytes for record in catalogue.records}
    thunks, rows, arguments = [], [], []
    for routine in (r for r in catalogue.routines if r.exists_on(target)):
        for symbol in [routine.symbol] + ([routine.alias] if routine.alias else []):
            thunks.append(_thunk(routine, symbol))
            described = _arguments(routine, records, target)
            rows.append(_row(routine, symbol, len(arguments), len(described)))
            arguments += [f"    {argument}," for argument in described]
    words = [f'    "{word}",' for word in _words(catalogue)]
    numbers = [f"    {c_literal(constant)}," for area in catalogue.areas for constant in area.constants
               if constant.kind.base == "integer"]
    return "\n".join(
        [_OPENING, "namespace fuzz {", "namespace {", "", *thunks, "}  // namespace", "",
         "namespace {", "", "constexpr Argument ARGUMENTS[] = {", *arguments, "};", "",
         "constexpr Routine TABLE[] = {", *rows, "};", "",
         "constexpr const char *LITERALS[] = {", *words, "};", "",
         "constexpr int64_t NUMBERS_OF_CONSTANTS[] = {", *numbers, "};", "", "}  // namespace", "",
         "const std::span<const Routine> ROUTINES = TABLE;",
         "const std::span<const char *const> WORDS = LITERALS;",
         "const std::span<const int64_t> NUMBERS = NUMBERS_OF_CONSTANTS;", "", "}  // namespace fuzz", ""])


def _thunk(routine, symbol):
    """A function that takes the addresses of the arguments, the hidden lengths, and where the result goes."""
    first, lengths, result = [], [], "(void)result;"
    if routine.result and routine.result.base == "character":
        first = ["static_cast<char *>(a[0])", "l[0]"]
    offset = 1 if first else 0
    arguments = [_passed(argument, index + offset) for index, argument in enumerate(routine.args)]
    for argument in (a for a in routine.args if a.kind.base == "character"):
        lengths.append(f"l[{len(lengths) + offset}]")
    call = f"{symbol}({', '.join(first + arguments + lengths)})"
    if routine.result and not first:
        call, result = f"*static_cast<{routine.result.c_value} *>(result) = {call}", ""
    unused = "" if arguments or first else " (void)a;"
    unused += "" if lengths or first else " (void)l;"
    return (f"void call_{_name(symbol)}(void *const *a, const qxport_charlen *l, void *result) {{\n"
            f"  {call};{' ' + result if result else ''}{unused}\n}}\n")


def _name(symbol):
    return symbol.replace("$", "D")


def _passed(argument, index):
    if argument.kind.base == "procedure":
        return f"reinterpret_cast<void (*)()>(a[{index}])"
    if argument.value:
        return f"*static_cast<{argument.kind.c_value} *>(a[{index}])"
    return f"static_cast<{argument.kind.c_target} *>(a[{index}])"


def _arguments(routine, records, target):
    rows = []
    if routine.result and routine.result.base == "character":
        rows.append(f'{{"", Base::Character, {routine.result.size if routine.result.size != "*" else 0}, '
                    "Intent::Out, 1, -1, false, false}")
    names = {argument.name: index + len(rows) for index, argument in enumerate(routine.args)}
    return rows + [_argument(argument, names, records, target) for argument in routine.args]


def _row(routine, symbol, first, count):
    call = fortran_call(routine).replace('"', '\\"')
    return f'    {{"{symbol}", "{call}", call_{_name(symbol)}, {{ARGUMENTS + {first}, {count}}}}},'


def _argument(argument, names, records, target):
    kind = argument.kind
    size = records.get(kind.record) or kind.bytes
    if kind.base == "character":
        size = 0 if kind.size == "*" else int(kind.size)
    elif kind.size == "ptr":
        size = int(target) // 8
    elif kind.base == "any":
        size = _BUFFER
    count, counted_by = _shape(argument, names)
    flags = f"{str(argument.optional).lower()}, {str(argument.value).lower()}"
    return (f'{{"{argument.name}", Base::{_BASES[kind.base]}, {size or 0}, Intent::{_INTENTS[argument.intent]}, '
            f"{count}, {counted_by}, {flags}}}")


def _shape(argument, names):
    """The number of elements (-1 where the caller may choose), and the argument that tells it (-1 for none)."""
    shape = argument.shape
    if shape is None or argument.kind.base == "any":
        return 1, -1
    if shape.isdecimal():
        return int(shape), -1
    return -1, names.get(shape, -1)


def _words(catalogue):
    """Names of records, components and constants, and what the examples say: what a routine may know."""
    words = set()
    for kind in catalogue.record_kinds:
        words |= {kind.name} | {component.name for component in kind.components}
    for group in catalogue.constant_groups:
        words |= {constant.name for constant in group.names}
    for routine in catalogue.routines:
        words |= {word for word in _LITERAL.findall(routine.example or "") if not re.search(r'[\\"/~]|\.\.', word)}
    return sorted(words)
