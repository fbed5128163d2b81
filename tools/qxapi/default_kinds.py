"""The view that a program has whose default INTEGER, LOGICAL or REAL takes 8 bytes: what the modules of `i8` offer.

Where a routine takes a default kind of 4 bytes these modules take it of either size, in each mixture that programs
write: a literal is of the default kind beside a variable that is declared INTEGER*4. Each mixture is a procedure of its
own behind the routine's name, a variant; one whose arguments all have 4 bytes is the routine itself.
"""

from dataclasses import dataclass, replace
from itertools import product

from .entries import PREFIX
from .kinds import Kind, parse_kind

WIDE_PREFIX = f"{PREFIX}i8_"
OWN = "own"  # `eight` of a routine for which the library of wide variants has a procedure written by hand
# What `refused` may name beside a number: the error's number or its negative, a NaN, blanks, and the low four bytes of
# what does not fit, where the host looks at less than these.
ANSWERS = ("EOVERFLOW", "-EOVERFLOW", "NaN", "blank", "low")
_DEFAULT = ("integer(4)", "logical(4)", "real(4)")


@dataclass(frozen=True)
class Variant:
    routine: object  # the procedure that the module has, a Routine
    original: object  # what the catalogue has
    callee: object  # the Routine that is called with what fits it; None where a procedure of ours takes 8 bytes

    @property
    def is_original(self):
        return self.routine.specific == self.original.specific

    @property
    def taken(self):
        """The arguments of what is called."""
        return self.callee.args if self.callee else wide_arguments(self.original)

    def converted(self):
        """The places of the arguments that what is called takes in another kind."""
        return [i for i, (taken, given) in enumerate(zip(self.taken, self.routine.args)) if taken.kind != given.kind]


def is_default(kind):
    return kind is not None and str(kind) in _DEFAULT


def wide(kind):
    """The kind that a default kind of 4 bytes becomes; any other stays."""
    return Kind(kind.base, "8") if is_default(kind) else kind


def wide_arguments(routine):
    return [replace(argument, kind=wide(argument.kind)) for argument in routine.args]


def catalogue_of_wide(catalogue, target):
    """The catalogue as the modules of `i8` have it."""
    return replace(catalogue, areas=[replace(area, routines=tuple(v.routine for v in variants(area, target)),
                                             constants=tuple(replace(c, kind=wide(c.kind)) if c.kind.base != "real" else c
                                                             for c in area.constants))
                                     for area in catalogue.areas])


def variants(area, target):
    """What the area's module offers. Of several that a call cannot tell apart the one that converts least stays."""
    by_name = {routine.name: routine for routine in area.routines}
    found = [variant for routine in area.offered(target) for variant in _variants(routine, by_name, target)]
    best = {}
    for variant in found:
        for name in (variant.routine.generic, *variant.routine.also):
            key = name, _signature(variant.routine, target)
            if key not in best or _cost(variant) < _cost(best[key]):
                best[key] = variant
    kept = []
    for variant in found:
        signature = _signature(variant.routine, target)
        leading = [name for name in (variant.routine.generic, *variant.routine.also) if best[name, signature] is variant]
        if variant.routine.generic in leading:
            kept.append(variant if leading == [variant.routine.generic, *variant.routine.also] else
                        replace(variant, routine=replace(variant.routine, also=tuple(leading[1:]))))
    return kept


def thunks(catalogue, target):
    """The variants that have a procedure in the library of wide variants, by area."""
    return [(area, [v for v in variants(area, target) if not v.is_original]) for area in catalogue.areas]


def symbols(catalogue, target):
    return sorted(symbol(variant.routine) for _, listed in thunks(catalogue, target) for variant in listed)


def symbol(routine):
    return f"{routine.specific}_"


def own_procedure(routine):
    """The C++ name of the procedure that is written by hand."""
    return f"own_{routine.generic}"


def _cost(variant):
    return len(variant.converted())


def _signature(routine, target):
    """What tells the call of one procedure from that of another."""
    return tuple(_told(argument, target) for argument in routine.args)


def _told(argument, target):
    kind = argument.kind
    size = str(int(target) // 8) if kind.size == "ptr" else kind.size
    return kind.base, "" if kind.base == "character" else size, kind.record, bool(argument.shape)


def _variants(routine, by_name, target):
    places = [i for i, argument in enumerate(routine.args) if is_default(argument.kind)]
    procedures = _wide_procedures(routine, target)
    if not places and routine.args == procedures and not _is_wide_result(routine):
        return [Variant(routine, routine, routine)]
    listed = []
    for mixture in product((True, False), repeat=len(places)):
        if not any(mixture) and places and routine.args == procedures:
            arguments = tuple(_given(argument, False if i in places else None) for i, argument in enumerate(routine.args))
            listed.append(Variant(replace(routine, args=arguments), routine, routine))
        else:
            listed.append(_variant(routine, by_name, procedures, places, mixture))
    return listed


def _is_wide_result(routine):
    return routine.result is not None and routine.result.base != "real" and is_default(routine.result)


def _wide_procedures(routine, target):
    """The arguments, with the caller's procedures as such a program declares them. By value an INTEGER(8) takes the place
    of two INTEGER(4) on a 32-bit target, so an interface stays as it is there."""
    def of(argument):
        if argument.kind.base != "procedure":
            return argument
        interface = tuple(line.replace("integer(4)", "integer(8)") for line in argument.interface)
        return replace(argument, result=wide(argument.result), interface=interface if target == "64" else argument.interface)
    return tuple(of(argument) for argument in routine.args)


def _variant(routine, by_name, procedures, places, mixture):
    given = dict(zip(places, mixture))
    arguments = tuple(_given(argument, given.get(i)) for i, argument in enumerate(procedures))
    sizes = "".join("8" if is_wide else "4" for is_wide in mixture)
    base = routine.specific.removeprefix(PREFIX)
    specific = f"{WIDE_PREFIX}{base}" + (f"_{sizes}" if sizes else "")
    changed = replace(routine, args=arguments, result=_result(routine, places, mixture), specific=specific, alias=f"{specific}_")
    return Variant(changed, routine, _callee(routine, by_name, procedures, arguments))


def _given(argument, is_wide):
    if is_wide is None:
        return argument
    if is_wide:
        return replace(argument, kind=wide(argument.kind))
    # One call without the argument must not fit two procedures.
    return replace(argument, optional=False)


def _result(routine, places, mixture):
    if not is_default(routine.result):
        return routine.result
    if routine.result.base != "real":
        return wide(routine.result)
    reals = [is_wide for i, is_wide in zip(places, mixture) if routine.args[i].kind.base == "real"]
    return wide(routine.result) if any(reals) else routine.result


def _is_for_own(arguments, routine):
    """Whether a call is one for the procedure written by hand: its first argument decides, as that of a shift does, and an
    output of 4 bytes could not hold what that procedure stores."""
    default = [given for given, plain in zip(arguments, routine.args) if is_default(plain.kind)]
    return not default or not is_default(default[0].kind) and not any(is_default(a.kind) for a in default if a.intent != "in")


def _callee(routine, by_name, procedures, arguments):
    """What takes the arguments given with 8 bytes as they are, where there is such a routine and they are given so."""
    if routine.eight == OWN:
        return None if procedures != routine.args or _is_for_own(arguments, routine) else routine
    if routine.eight:
        other = by_name[routine.eight]
        if all(given.kind == taken.kind for given, taken, plain in zip(arguments, other.args, routine.args)
               if taken.kind != plain.kind):
            return other
    return routine


def problems(tables):
    """Routines whose entries do not say what happens where an integer of 8 bytes does not fit."""
    found = []
    for path, table in tables:
        routines = [entry for entry in table.get("routine", []) if isinstance(entry, dict)]
        names = {entry.get("name"): entry for entry in routines}
        for entry in routines:
            found += [f"{path}: {entry['name']}: {reason}" for reason in _reasons(entry, names)]
    return found


def refuses(entry):
    """Whether a call can be refused: an integer of 4 bytes goes in."""
    return any(argument["type"] == "integer(4)" and argument.get("intent") != "out" and argument["name"] != "ierror"
               for argument in entry.get("args", []))


def _reasons(entry, names):
    if entry.get("module", True) is False:
        return []
    arguments = entry.get("args", [])
    default = [a for a in arguments if str(parse_kind(a["type"])) in _DEFAULT]
    reasons = [f"argument {a['name']}: by value an integer of 8 bytes has no rule" for a in default if a.get("value")]
    reasons += [f"argument {a['name']}: `most` of what is no array with a length of its own" for a in arguments
                if "most" in a and a.get("shape") not in [b["name"] for b in arguments]]
    eight = entry.get("eight")
    if eight not in (None, OWN) and eight not in names:
        reasons.append(f"`eight`: the file has no routine `{eight}`")
    reports = any(a["name"] == "ierror" for a in arguments)
    answers = reports or str(entry.get("result", "")).startswith("logical")
    if isinstance(entry.get("refused", 0), str) and entry["refused"] not in ANSWERS:
        reasons.append(f"`refused` must be a number or one of {', '.join(ANSWERS)}")
    if "refused" in entry and answers:
        reasons.append("`refused` of a routine that has an IERROR or answers a truth")
    if eight != OWN and refuses(entry) and not answers and entry["kind"] == "function" and "refused" not in entry:
        reasons.append("missing key `refused`: what it answers where an integer of 8 bytes does not fit")
    return reasons
