"""Checks that concern one routine of the catalogue."""

import re

from .bindings import BINDINGS, plain_obstacles
from .entries import MAX_NAME, PREFIX, SYMBOL, fortran_name, is_regular, keys, module_names
from .ckeywords import UNSAFE
from .kinds import parse_kind

TARGETS = ("32-bit", "64-bit")
INTENTS = ("in", "out", "inout", "none")
_SHAPE = re.compile(r"((\d+|[a-z]\w*),\s*)*(\d+|[a-z]\w*|\*)\Z")


def routine_reasons(entry):
    """Every reason for which the entry of a routine is not valid."""
    if "like" in entry:
        return [f"`like`: `{entry['like']}` is no routine of this file that is described itself"]
    if reasons := keys(entry, "routine"):
        return reasons
    return (
        _name(entry)
        + _module(entry)
        + _binding(entry)
        + _result(entry)
        + summary_reasons(entry)
        + _lists(entry)
        + _args(entry)
    )


def _name(entry):
    name = entry["name"]
    if is_regular(entry):
        reasons = fortran_name(name, "routine")
        if name.startswith("qxport"):
            reasons.append(f"names that start with `{PREFIX}` are reserved for the modules and aliases")
        return reasons
    reasons = [] if SYMBOL.match(name) else [f"`{name}` is not a valid routine name"]
    reasons += [] if len(name) <= MAX_NAME else [f"routine name `{name}` has more than {MAX_NAME} characters"]
    if not SYMBOL.match(entry["symbol"]) or entry["symbol"] in UNSAFE:
        reasons.append(f"`{entry['symbol']}` is not a valid symbol")
    return reasons


def _module(entry):
    reasons = []
    if entry.get("module", True) is False:
        if "module_name" in entry:
            reasons.append("`module_name` contradicts `module = false`")
        if "module_why" not in entry:
            reasons.append("missing key `module_why` with `module = false`")
    elif "module_why" in entry:
        reasons.append("`module_why` without `module = false`")
    generic, specific = module_names(entry)
    if generic:
        reasons += fortran_name(generic, "module") if "module_name" in entry else []
        if len(specific) > MAX_NAME >= len(entry["name"]):
            reasons.append(f"the alias name `{specific}` has more than {MAX_NAME} characters")
        if "example" not in entry:
            reasons.append("missing key `example` of a routine in a module")
    return reasons


def _binding(entry):
    binding = entry.get("binding")
    if binding is None:
        return []
    if binding not in BINDINGS:
        return [f"binding `{binding}` is neither of {', '.join(BINDINGS)}"]
    if not module_names(entry)[0]:
        return ["`binding` of a routine that is in no module"]
    return [f"no plain binding: {reason}" for reason in plain_obstacles(entry)] if binding == "plain" else []


def _result(entry):
    if entry["kind"] == "subroutine":
        return [f"`{key}` of a subroutine" for key in ("result", "result_text") if key in entry]
    if entry["kind"] != "function":
        return [f"kind `{entry['kind']}` is neither function nor subroutine"]
    reasons = [f"a function without `{key}`" for key in ("result", "result_text") if key not in entry]
    if "result" in entry:
        kind = parse_kind(entry["result"])
        # A complex or a record comes back in ways that differ between C and Fortran compilers.
        if not kind or kind.base not in ("integer", "real", "logical", "character"):
            reasons.append(f"bad result type `{entry['result']}`")
        elif str(kind) == "character(*)" and module_names(entry)[0]:
            reasons.append("a function of type character(*) cannot be in a module: it needs a fixed length")
    return reasons


def summary_reasons(entry):
    """Why a summary does not fit behind a name and a dash."""
    summary, reasons = entry["summary"].strip(), []
    if summary.endswith("."):
        reasons.append("the summary ends with a full stop")
    if "\n" in summary:
        reasons.append("the summary has more than one line")
    if re.match(r"[A-Z][a-z]", summary):
        reasons.append("the summary starts with a capital")
    return reasons


def _lists(entry):
    reasons = []
    for number, error in enumerate(entry.get("errors", []), 1):
        reasons += [f"error {number}: {reason}" for reason in keys(error, "error")]
    for key in ("related", "also", "families"):
        if not all(isinstance(name, str) for name in entry.get(key, [])):
            reasons.append(f"`{key}` must be a list of names")
    if "targets" in entry:
        targets = entry["targets"]
        if not targets or any(target not in TARGETS for target in targets):
            reasons.append(f"`targets` must be a list of {' and '.join(TARGETS)}")
    return reasons


def _args(entry):
    reasons, seen = [], set()
    for number, argument in enumerate(entry.get("args", []), 1):
        broken = keys(argument, "argument")
        if not broken:
            broken = _argument(argument)
            broken += ["duplicate argument name"] if argument["name"] in seen else []
            seen.add(argument["name"])
        name = argument.get("name", number) if isinstance(argument, dict) else number
        reasons += [f"argument {name}: {reason}" for reason in broken]
    return reasons


def _argument(argument):
    reasons = fortran_name(argument["name"], "argument")
    kind = parse_kind(argument["type"])
    if not kind:
        return reasons + [f"bad type `{argument['type']}`"]
    if kind.base != "procedure" and "intent" not in argument:
        reasons.append("missing key `intent`")
    if argument.get("intent", "in") not in INTENTS:
        reasons.append(f"bad intent `{argument['intent']}`")
    if "shape" in argument and not _SHAPE.match(argument["shape"]):
        reasons.append(f"bad shape `{argument['shape']}`")
    if "shape" in argument and kind.base == "procedure":
        reasons.append("a procedure has no shape")
    if "interface" in argument:
        reasons += _interface(argument, kind)
    if "result" in argument:
        reasons += _procedure_result(argument, kind)
    return reasons + (_value(argument, kind) if argument.get("value") else [])


def _interface(argument, kind):
    if kind.base != "procedure":
        return [f"`interface` of {kind}, which is no procedure"]
    heading = argument["interface"].strip().splitlines()[0]
    if not re.fullmatch(rf"([a-z]+\([\w*]+\) function|subroutine) {argument['name']}\([\w, ]*\)", heading):
        return [f"`{heading}` is not the heading of a procedure `{argument['name']}`"]
    return []


def _procedure_result(argument, kind):
    if kind.base != "procedure":
        return [f"`result` of {kind}, which is no procedure"]
    if "interface" in argument:
        return ["`result` beside an `interface`, which says it"]
    result = parse_kind(argument["result"])
    if not result or result.base not in ("integer", "real", "logical"):
        return [f"bad result type `{argument['result']}`"]
    return []


def _value(argument, kind):
    reasons = []
    if argument.get("optional"):
        reasons.append("`optional` and `value` exclude one another")
    if argument.get("intent", "in") != "in":
        reasons.append("an argument passed by value has intent in")
    if "shape" in argument:
        reasons.append("an array is not passed by value")
    if kind.base not in ("integer", "real", "logical"):
        reasons.append(f"{kind} is not passed by value")
    return reasons
