"""The library of wide variants: a procedure for each that looks at the arguments of 8 bytes, and calls what takes 4."""

import re

from .ckeywords import safe
from .default_kinds import own_procedure, symbol, thunks, wide_arguments
from .header import broken, fortran_call, prototype

WIDTH = 118
# By the name of a file of src/i8: the families whose variants it holds.
PARTS = {"traditional": ("portability", "frame", "core"), "desktop": ("compat",), "posix": ("posix",)}
_OPENING = "// Made from the catalogue, do not edit. Variants of the routines for default kinds of 8 bytes.\n"
_KINDS = {"integer": "Integer", "logical": "Logical", "real": "Real"}
# More elements than any host or record has; where a routine looks at fewer, its entry says so.
_MOST = "INT32_MAX"


def outputs(catalogue, options):
    made = {}
    listed = thunks(catalogue, options.target)
    for part, families in PARTS.items():
        variants = [variant for area, of_area in listed if area.family in families for variant in of_area]
        made[f"private/qxport_i8_{part}.inc"] = "\n".join([_OPENING, *(_thunk(variant) for variant in variants)])
    return made


def _thunk(variant):
    declaration = prototype(variant.routine, symbol(variant.routine)).removesuffix(";")
    names = _names(declaration)
    lines = [f"// {fortran_call(variant.routine)}", *broken(f"QXPORT_I8_API {declaration};", WIDTH), *broken(f"{declaration} {{", WIDTH)]
    converted = {i: _Conversion(variant, i, names) for i in variant.converted()}
    lines += [f"  {conversion.declaration}" for conversion in converted.values()]
    lines += _refusal(variant, [c.name for c in converted.values() if c.can_fail], names)
    lines += [f"  {line}" for line in _call(variant, converted, names)]
    return "\n".join([*lines, "}", ""])


def _names(declaration):
    """The parameters' names, in order, the result of a CHARACTER function and hidden lengths included."""
    inside = declaration[declaration.index("(") + 1:declaration.rindex(")")]
    # A procedure is written `void (*name)(void)`.
    return [re.sub(r".*[ *]", "", re.sub(r"\)\(void\)\Z", "", parameter)) for parameter in inside.split(", ") if parameter != "void"]


class _Conversion:
    def __init__(self, variant, place, names):
        given, taken = variant.routine.args[place], variant.taken[place]
        first = 2 if _is_text(variant.routine.result) else 0
        source, self.name = names[first + place], f"n{place + 1}"
        kind = _KINDS[given.kind.base]
        if variant.callee is None:
            self.declaration, self.can_fail = f"const Widened {self.name}({source});", False
            return
        form = {"in": "In", "out": "Out"}.get(taken.intent, "Out" if taken.name == "ierror" else "InOut")
        is_integer = form != "Out" and kind == "Integer" and variant.original.refused != "low"
        self.can_fail = is_integer or bool(given.shape and not given.shape.isdecimal())
        if given.shape:
            form = "InElements" if form == "In" else "OutElements"
            source = f"{source}, {_count(variant, given, names[first:])}"
        self.declaration = f"{'const ' if form.startswith('In') and form != 'InOut' else ''}{form}<{kind}> {self.name}({source});"


def _count(variant, argument, names):
    """How many elements of an array are converted."""
    if argument.shape.isdecimal():
        return argument.shape
    counts = [names[i] for i, other in enumerate(variant.routine.args) if other.name == argument.shape]
    if len(counts) != 1:
        raise ValueError(f"{variant.original.name}: argument {argument.name}: how many elements it has nobody tells")
    return f"counted({counts[0]}, {argument.most if argument.most is not None else _MOST})"


def _is_text(kind):
    return kind is not None and kind.base == "character"


def _refusal(variant, checked, names):
    if not checked:
        return []
    routine = variant.original
    by_name = dict(zip((argument.name for argument in routine.args), names[2 if _is_text(routine.result) else 0:]))
    answer = "" if not routine.result or _is_text(routine.result) else f" {_answer(routine)}"
    lines = [f"  if (const int32_t problem = problem_of({', '.join(checked)}); problem != 0) {{"]
    if "ierror" in by_name:
        lines.append(f"    *{by_name['ierror']} = refused(problem);")
    else:
        lines.append("    set_and_record_local(problem);")
        lines += [f"    {line}" for line in _blanks(routine, by_name, names)]
    return [*lines, f"    return{answer};", "  }"]


def _blanks(routine, by_name, names):
    """Of a routine that answers a text: none."""
    if routine.refused != "blank":
        return []
    lines = [f"blank_fill({names[0]}, {names[1]});"] if _is_text(routine.result) else []
    for argument in (a for a in routine.args if a.intent == "out"):
        name = by_name[argument.name]
        if argument.kind.base == "character":
            lines.append(f"blank_fill({name}, {name}_len);")
        else:
            lines += [f"if ({name} != nullptr)", f"  *{name} = -1;"]
    return lines


def _answer(routine):
    if routine.refused is None:
        return "0"
    return {"EOVERFLOW": "problem", "-EOVERFLOW": "-problem", "NaN": "__builtin_nan(\"\")"}.get(routine.refused, str(routine.refused))


def _call(variant, converted, names):
    callee = variant.callee.specific + "_" if variant.callee else own_procedure(variant.original)
    first = 2 if _is_text(variant.routine.result) else 0
    passed = names[:first]
    for place in range(len(variant.routine.args)):
        passed.append(converted[place].name if place in converted else names[first + place])
    passed += names[first + len(variant.routine.args):]
    returns = "return " if variant.routine.result and not first else ""
    return broken(f"{returns}{callee}({', '.join(passed)});", WIDTH)
