"""What of all that the compiler said and the objects want is in the way, and what to do about it."""

import re
from collections import defaultdict
from dataclasses import asdict, dataclass

from . import intrinsics
from .traps import SECTIONS
from .tree import mentioned

TO_DO, NOTE = "to do", "note"
_VARIANT = re.compile(r"qxport_i8_(\w+?)(?:_[48]+)?_")


@dataclass
class Finding:
    kind: str
    weight: str  # TO_DO or NOTE
    file: str
    line: int
    unit: str
    name: str
    what: str
    advice: str
    edit: dict | None = None  # a line to insert: file, after_line, text

    def as_json(self):
        return asdict(self) | {"section": SECTIONS[self.kind]}


class Judge:
    def __init__(self, catalogue, is_wide):
        self.catalogue = catalogue
        self.is_wide = is_wide  # default integers take 8 bytes, and the modules take integers of 4 and 8
        self.routines = {}  # by the name that a call has
        self.by_module = {}  # by the name of the procedure that the module leads to
        self.ours = {}  # symbol -> routine
        self.variants = {}  # the name of its variants for default integers of 8 bytes -> routine
        for symbol, routine in catalogue.symbols.items():
            self.ours[symbol] = routine
            if symbol.endswith("_"):
                self.routines[symbol[:-1]] = routine
            if routine["module"]:
                self.ours.setdefault(routine["module"]["symbol"], routine)
                self.by_module[routine["module"]["procedure"]] = routine
                self.variants[routine["module"]["procedure"].removeprefix("qxport_")] = routine
        self.findings, self._told = [], set()
        self.served = defaultdict(lambda: defaultdict(set))  # file -> unit -> names

    # What the objects want.

    def wants(self, compiled, looked, tree, defined):
        """The places of one object; `defined` is what its programs define themselves."""
        source, told = compiled.source, set()
        for place in looked.places:
            symbol, unit = place.symbol, self._unit(source, place.unit, tree)
            key = symbol, unit, place.line
            if key in told or symbol in defined:
                continue
            told.add(key)
            if routine := self._routine(symbol):
                self.served[str(source.path)][unit].add(routine["name"])
            elif (name := intrinsics.name_of(symbol)) and f"{name}_" in self.ours:
                self._intrinsic(source, place, unit, name, tree)
            elif symbol.endswith("_") and not symbol.startswith("_"):
                self._nobody(source, place.line, unit, symbol.removesuffix("_"), tree)

    def _routine(self, symbol):
        if variant := _VARIANT.fullmatch(symbol):
            return self.variants.get(variant[1])
        return self.ours.get(symbol)

    def _unit(self, source, unit, tree):
        if unit == "MAIN__" and tree:
            return next((u.name for u in tree.units.values() if u.is_main), "main program")
        return unit

    def _intrinsic(self, source, place, unit, name, tree):
        if name == "rand" and not (tree and tree.find(unit, name)) and tree and tree.find(unit, "ran"):
            name = "ran"  # the compiler has one procedure for both
        differs, matters = intrinsics.DIFFERENCES.get(name, (None, False))
        matters = matters and (name not in intrinsics.STATUS_ARRAY or _has_short_array(tree, unit, name))
        if ("intrinsic", str(source.path), unit, name) in self._told:
            return  # once in each unit
        self._told.add(("intrinsic", str(source.path), unit, name))
        symbol = tree.find(unit, name) if tree else None
        if not differs:
            self.tell("intrinsic", NOTE, source, place.line, unit, name, "the compiler took its own intrinsic, which answers the "
                       "same", "nothing")
            return
        self.tell("intrinsic", TO_DO if matters else NOTE, source, place.line, unit, name, f"the compiler took its own intrinsic; {differs}",
                   f"where the program means the library's: `use qxport, only: {name}` in the unit, or EXTERNAL {name} with "
                   "its type, or -std=f2018 where the source is standard otherwise", self._use(source, unit, name, symbol, place.line))

    def misfit(self, source, message, name, tree):
        """A call that the compiler refuses because it takes it for its own intrinsic."""
        unit = max((u for u in source.units.values() if u.line <= message.line), key=lambda u: u.line, default=None)
        unit = unit.name if unit else ""
        self.tell("intrinsic", TO_DO, source, message.line, unit, name, "the compiler took its own intrinsic, which the call does not "
                  f"fit: {intrinsics.DIFFERENCES.get(name, (message.text, True))[0]}",
                  f"`use qxport, only: {name}` in the unit, or EXTERNAL {name} with its type",
                  self._use(source, unit, name, tree.find(unit, name) if tree else None, message.line))

    def _nobody(self, source, line, unit, name, tree):
        near = self.catalogue.nearest(name)
        symbol = tree.find(unit, name) if tree else None
        what = "nobody defines it"
        if symbol and symbol.is_undeclared:
            what += f"; nothing declares it, so it was taken for a function of type {symbol.base.upper()}: is it an array?"
        advice = f"near in the library: {', '.join(near)}" if near else "write it, link what has it, or name what of the library " \
            "it is in a names file"
        self.tell("nobody", TO_DO, source, line, unit, name, what, advice)

    # What the calls hand over.

    def calls(self, compiled, looked, tree, trees, defined):
        """The calls of the library's routines by name in one source; `trees` are the dumps of its programs, its own first."""
        lines = defaultdict(list)
        for place in looked.places if looked else []:
            lines[place.unit, place.symbol].append(place.line)
        given = tree.given | self._given_by_calls(tree)
        for unit in tree.units.values():
            for call in unit.calls:
                routine = self.routines.get(call.name)
                if not routine or routine["symbol"] in defined or not self._is_external(unit, call):
                    self._through_module(compiled.source, unit, call, lines, trees)
                    continue
                line = _next_line(lines, unit, routine["symbol"])
                self._arguments(compiled.source, unit, call, routine, line, trees, given)
                self._result(compiled.source, unit, call, routine, line)

    def _through_module(self, source, unit, call, lines, trees):
        """Of a procedure that is called back without an interface of its own even the module knows nothing."""
        routine = self.by_module.get(call.name)
        if not routine or not any(argument["type"] == "procedure" for argument in routine["arguments"]):
            return
        line = _next_line(lines, unit, routine["module"]["symbol"])
        for argument, (_, _, text) in zip(routine["arguments"], call.arguments):
            if argument["type"] == "procedure":
                self._procedure((source, line, unit.name, routine["module"]["name"]), argument, text, trees)

    def _is_external(self, unit, call):
        """A procedure that a module or an interface declares has been checked by the compiler."""
        symbol = call.procedure
        return symbol is not None and not symbol.formal and not symbol.attributes & _CHECKED

    def _given_by_calls(self, tree):
        """The variables that a call may give a value: all that it hands over but what the library only reads."""
        given = set()
        for call in (call for unit in tree.units.values() for call in unit.calls):
            wanted = self.routines[call.name]["arguments"] if call.name in self.routines else []
            for number, (_, _, text) in enumerate(call.arguments):
                if number >= len(wanted) or wanted[number]["intent"] != "in":
                    given |= mentioned(text)
        return given

    def _arguments(self, source, unit, call, routine, line, trees, given):
        wanted = routine["arguments"]  # one that may be left out, by who has an interface, stands last
        needed = [argument for argument in wanted if not argument["optional"]]
        if not len(needed) <= len(call.arguments) <= len(wanted):
            self.tell("argument-count", TO_DO, source, line, unit.name, call.name,
                       f"{len(call.arguments)} arguments, and the library's takes {_range(len(needed), len(wanted))}",
                       f"call it as {heading(routine)}")
            return
        if len(call.arguments) < len(wanted) and call.name not in _COUNTING:
            left_out = ", ".join(argument["name"] for argument in wanted[len(call.arguments):])
            self.tell("argument-count", TO_DO, source, line, unit.name, call.name,
                      f"{left_out} is left out, and by EXTERNAL the library reads it all the same",
                      f"call it as {heading(routine)}, or `use qxport, only: {call.name}`"
                      f"{_INSTEAD if _is_declared(call.procedure) else ''}", self._use(source, unit.name, call.name, call.procedure, line))
        for number, (argument, (base, size, text)) in enumerate(zip(wanted, call.arguments), 1):
            self._argument(source, unit, call, line, number, argument, base, size, text, trees, given)

    def _argument(self, source, unit, call, line, number, argument, base, size, text, trees, given):
        where = source, line, unit.name, call.name
        variable = re.fullmatch(r"([\w$]+):([\w$]+)", text)
        symbol = unit.symbols.get(variable[2]) if variable else None
        if symbol and symbol.base != "unknown" and symbol.is_undeclared and "VARIABLE" in symbol.attributes \
                and argument["intent"] == "in" and not symbol.attributes & _GIVEN \
                and not given & {variable.groups(), (variable[1], None)}:
            near = self.catalogue.nearest(symbol.name)
            self._add("undeclared", *where, f"argument {number}, {argument['name']}: `{symbol.name}` is declared nowhere, so it was "
                      f"taken for {_a(symbol.base.upper())} variable, which has no value",
                      "declare it, or take it from a module" + (f"; near in the library: {', '.join(near)}" if near else ""))
            return
        if argument["type"] == "procedure":
            self._procedure(where, argument, text, trees)
            return
        want, want_size = _type(argument["type"], self.catalogue.target)
        if base == "unknown" or want is None or base == "procedure":
            return
        said = f"argument {number}, {argument['name']}: {base.upper()}" + (f"({size})" if size else "")
        if base != want and {base, want} != {"integer", "logical"}:
            self._add("argument-kind", *where, f"{said}, and the library wants {argument['type'].upper()}", "hand over that type")
        elif size and want_size and size != want_size and base == want:
            self._size(where, said, argument, text, want_size, call.procedure)

    def _size(self, where, said, argument, text, want_size, symbol):
        source, line, unit, name = where
        routine = self.routines[name]
        if _takes_both(self.catalogue, routine, argument["name"]) or self.is_wide and _has_variants(routine, argument):
            self.tell("integer-width", TO_DO, source, line, unit, name,
                       f"{said}, and by EXTERNAL the library wants INTEGER({want_size})",
                       f"`use qxport, only: {name}` in the unit{_INSTEAD if _is_declared(symbol) else ''}: through the module "
                       "either kind fits", self._use(source, unit, name, symbol, line))
        elif re.match(r"[-+]?\d", text):
            self._add("literal-kind", *where, f"{said} literal {text}, and the library wants {_words(argument, want_size)}",
                      f"write the literal with the kind {want_size}")
        else:
            self._add("integer-width" if argument["type"].startswith("integer") else "argument-kind", *where,
                      f"{said}, and the library wants {_words(argument, want_size)}", f"declare it {_words(argument, want_size)}")

    def _procedure(self, where, argument, text, trees):
        """A procedure that the library calls back: what it answers, and how it takes its arguments."""
        name = text.rpartition(":")[2]
        tree = next((t for t in trees if name in t.units), None)
        itself = tree and tree.itself(name)
        if not itself:
            return
        found = tree.units[name]
        heading = argument["interface"][0] if argument["interface"] else ""
        answers_four = argument["result"] == "integer(4)" or heading.startswith("integer(4) function")
        if answers_four and itself.base != "unknown" and (itself.base, itself.size) != ("integer", 4):
            self._add("comparison-kind", *where,
                      f"`{name}` answers {itself.base.upper()}({itself.size}), and the library reads INTEGER(4)",
                      f"declare `{name}` INTEGER(4), in itself and where it is EXTERNAL")
        values = "value ::" in "\n".join(argument["interface"])
        formals = [found.symbols[formal] for formal in itself.formal if formal in found.symbols]
        wrong = [formal.name for formal in formals if ("VALUE" in formal.attributes) != values]
        if wrong and values:
            self._add("handler-value", *where, f"`{name}` takes {', '.join(wrong)} by reference, and the library passes a value",
                      f"declare in `{name}`: {', '.join(f'INTEGER(4), VALUE :: {formal}' for formal in wrong)}")
        elif wrong:
            self._add("handler-value", *where, f"`{name}` takes {', '.join(wrong)} by value, and the library passes a reference",
                      f"declare in `{name}` without VALUE: {', '.join(wrong)}")

    def _result(self, source, unit, call, routine, line):
        symbol, result = call.procedure, routine["result"]
        if not call.is_function:
            if result and not result.startswith("character"):
                self.tell("result-kind", NOTE, source, line, unit.name, call.name, "called as a subroutine, and it is a function",
                           "nothing; its answer is lost")
            return
        if not result:
            self.tell("result-kind", TO_DO, source, line, unit.name, call.name, "referred to as a function, and it is a subroutine",
                       f"call it as {heading(routine)}")
            return
        want, size = _type(result, self.catalogue.target)
        fits = symbol.base == want or {symbol.base, want} == {"integer", "logical"}
        if fits and (not size or symbol.size == size or want == "character"):
            return
        if fits and size > symbol.size >= 4 and want == "integer":
            what = f"declared {symbol.base.upper()}({symbol.size}), and it answers {result.upper()}: the low half is what counts"
            self.tell("result-kind", NOTE, source, line, unit.name, call.name, what, f"declare it {result.upper()}")
            return
        how = "declared nowhere, so implicit typing made it" if symbol.is_undeclared else "declared"
        self.tell("implicit-result" if symbol.is_undeclared else "result-kind", TO_DO, source, line, unit.name, call.name,
                   f"{how} {symbol.base.upper()}({symbol.size}), and it answers {result.upper()}",
                   f"declare it {result.upper()}" + (f", or `use qxport, only: {call.name}`{_INSTEAD if _is_declared(symbol) else ''}"
                                                     if routine["module"] else ""),
                   self._use(source, unit.name, call.name, symbol, line))

    # How it is told.

    def _use(self, source, unit, name, symbol, line):
        """The edit that makes a unit take a name from the module: a line behind the unit's heading. There is none where the
        unit declares the name itself."""
        routine = self.routines.get(name)
        if not routine or not routine["module"] or _is_declared(symbol):
            return None
        there = source.unit_named(unit)
        if not there and any(other.line < line for other in source.units.values()):
            return None  # a program without a heading, behind other units: where it begins is not known
        text = f"use qxport, only: {name}"
        return {"file": str(source.path), "after_line": there.body - 1 if there else 0,
                "text": ("      " if source.fixed else "  ") + text}

    def _add(self, kind, source, line, unit, name, what, advice):
        self.tell(kind, TO_DO, source, line, unit, name, what, advice)

    def tell(self, kind, weight, source, line, unit, name, what, advice, edit=None):
        if not line and (there := source.unit_named(unit)):
            line = there.line
        key = kind, str(source.path), line, unit, name, what
        if key not in self._told:
            self._told.add(key)
            self.findings.append(Finding(kind, weight, str(source.path), line, unit, name, what, advice, edit))


def _next_line(lines, unit, symbol):
    """Where the next call of a symbol stands; the calls come in the order of the source."""
    there = lines["MAIN__" if unit.is_main else unit.name, symbol]
    return there.pop(0) if there else 0


def _has_short_array(tree, unit, name):
    """Whether a call of an intrinsic that fills a status array hands over one that is too short for it."""
    there = tree.units.get(unit) if tree else None
    for call in there.calls if there else ():
        if name == intrinsics.name_of(call.name) or name == call.name:
            named = (re.match(r"[\w$]+:([\w$]+)", text) for _, _, text in call.arguments)
            symbols = [there.symbols.get(match[1]) for match in named if match]
            if any(symbol and symbol.elements and symbol.elements < intrinsics.STATUS_ELEMENTS for symbol in symbols):
                return True
    return False


_COUNTING = {"getarg", "getargi2"}  # they see whether their last argument is there
_GIVEN = {"DUMMY", "IN-COMMON", "DATA", "IN-NAMELIST", "RESULT"}  # variables that get their values elsewhere
_CHECKED = {"EXPLICIT", "INTRINSIC-PROC", "USE-ASSOC", "INTERNAL-PROC", "MODULE-PROC", "CONTAINED", "GENERIC"}
_INSTEAD = " instead of its EXTERNAL and type statements"


def _is_declared(symbol):
    """Whether the unit itself says something of a name, which a `use` of the name would contradict."""
    return symbol is not None and bool("EXTERNAL" in symbol.attributes
                                       or symbol.base != "unknown" and not symbol.is_undeclared)


def heading(routine):
    arguments = ", ".join(argument["name"] for argument in routine["arguments"])
    return f"`{'call ' if not routine['result'] else ''}{routine['name']}({arguments})`"


def _a(noun):
    return f"{'an' if noun[0] in 'AEIOU' else 'a'} {noun}"


def _range(least, most):
    return str(least) if least == most else f"{least} to {most}"


def _type(text, target):
    match = re.match(r"(\w+)\((\w+|\*)\)", text)
    if not match or match[1] == "type":
        return None, 0
    size = target // 8 if match[2] == "ptr" else int(match[2]) if match[2].isdigit() else 0
    return match[1], 0 if match[1] == "character" else size


def _words(argument, size):
    return f"{argument['type'].partition('(')[0].upper()}({size})"


def _has_variants(routine, argument):
    """Whether the modules for default integers of 8 bytes take an argument of either size."""
    return routine["module"] is not None and argument["type"] == "integer(4)"


def _takes_both(catalogue, routine, argument):
    """Whether the module takes an argument of several kinds."""
    offer = routine["module"]
    entity = catalogue.entities.get(offer["name"].lower()) if offer else None
    kinds = {a["type"] for r in (entity.routines if entity else []) for a in r["arguments"] if a["name"] == argument}
    return len(kinds) > 1
