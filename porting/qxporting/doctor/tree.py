"""Reads what GNU Fortran dumps of a source that it has understood (-fdump-fortran-original): which name is what in which
unit, and each call with its arguments. Nothing here parses Fortran."""

import re
from dataclasses import dataclass, field

_UNIT = re.compile(r"\s*procedure name = (\S+)")
_SYMBOL = re.compile(r"\s*symtree: '([^']*)'\s*\|\| symbol: '([^']*)'\s*(from namespace '([^']*)')?")
_TYPE = re.compile(r"\s*type spec : \((\w+) ?([^)]*)\)")
_ATTRIBUTES = re.compile(r"\s*attributes: \((.*)\)")
_ARRAY = re.compile(r"\s*Array spec:\(1 \[0\] AS_EXPLICIT (-?\d+) (-?\d+) \)")
_FORMAL = re.compile(r"\s*Formal arglist: (.*)")
_CALL = re.compile(r"(?:CALL ([\w$]+) (?=\()|([A-Za-z_][\w$]*)\[\[)")
_LABEL = r"\s*(?:\d+\s+)?"
_ASSIGNED = re.compile(_LABEL + r"(?:POINTER )?ASSIGN ([\w$]+):([\w$]+)")
# Statements that may give a value to any variable that they mention.
_GIVING = re.compile(_LABEL + r"(?:DO|LABEL ASSIGN|ALLOCATE|OPEN|CLOSE|INQUIRE|READ|WRITE|REWIND|BACKSPACE|ENDFILE|FLUSH|WAIT"
                     r"|Equivalence:)\s")
_MENTIONED = re.compile(r"([\w$]+):([\w$]+)")
_CONVERTED = re.compile(r"__(?:convert_\w+_|\w+_)([ilrc])(\d+)\Z")
_LETTERS = {"i": "integer", "l": "logical", "r": "real", "c": "complex"}
_REFERENCE = re.compile(r"([\w$]+):([\w$]+)((?:\(.*\))?)\Z", re.DOTALL)
_NUMBER = re.compile(r"[-+]?\d+(_\d+)?\Z")
_REAL = re.compile(r"[-+]?\d*\.\d*(?:e[-+]?\d+)?(_\d+)?\Z")


@dataclass
class Symbol:
    name: str
    base: str = "unknown"  # integer, real, logical, character, ..., procedure
    size: int = 0
    attributes: frozenset = frozenset()
    formal: tuple = ()
    elements: int | None = None  # of an array of one dimension, where they are told

    @property
    def is_procedure(self):
        return bool(self.attributes & {"PROCEDURE", "EXTERNAL", "EXTERNAL-PROC"})

    @property
    def is_undeclared(self):
        return "IMPLICIT-TYPE" in self.attributes and "PARAMETER" not in self.attributes


@dataclass
class Call:
    name: str
    unit: str
    arguments: list  # of (base, size, expression)
    is_function: bool
    procedure: Symbol | None  # as the unit knows it


@dataclass
class Unit:
    name: str
    symbols: dict = field(default_factory=dict)
    calls: list = field(default_factory=list)
    hosts: dict = field(default_factory=dict)  # name -> the unit around this one that declares it
    is_main: bool = False


class Tree:
    def __init__(self, default_integer=4, default_real=4):
        self.units = {}
        # (unit, variable) of those that statements other than calls may give a value; (unit, None) where any may be meant
        self.given = set()
        self.default_integer, self.default_real = default_integer, default_real

    def find(self, unit, name):
        there = self.units.get(unit)
        return there.symbols.get(name) if there else None

    def itself(self, unit):
        """What is known of a procedure as such: its type and its arguments."""
        host = self.units[unit].hosts.get(unit)
        return self.find(host or unit, unit)

    def type_of(self, text):
        """(base, size) of an expression as it is dumped; unknown where it cannot be told."""
        text = text.strip()
        if text.startswith(("'", '"')):
            return "character", 0
        if text in (".true.", ".false."):
            return "logical", 0
        if re.fullmatch(r"-?0(_\d+)?", text):  # that of a REAL is dumped so too
            return "unknown", 0
        if match := _NUMBER.match(text):
            return "integer", int(match[1][1:]) if match[1] else self.default_integer
        if match := _REAL.match(text):
            return "real", int(match[1][1:]) if match[1] else self.default_real
        if text.startswith("(") and text.endswith(")"):
            return self._operation(text[1:-1])
        if match := re.match(r"([A-Za-z_][\w$]*)\[\[", text):
            return self._function(match[1])
        if match := _REFERENCE.match(text):
            symbol = self.find(match[1], match[2])
            if symbol and "%" not in match[3]:
                if symbol.is_procedure and not match[3] and "RESULT" not in symbol.attributes and match[1] != match[2]:
                    return "procedure", symbol.size
                return symbol.base, symbol.size
        return "unknown", 0

    def _function(self, name):
        if name.startswith("__loc"):
            return "integer", 0  # of the size of an address
        match = _CONVERTED.match(name)
        return (_LETTERS[match[1]], int(match[2])) if match and name.startswith("__convert") else ("unknown", 0)

    def _operation(self, text):
        operator, _, rest = text.partition(" ")
        if operator not in ("+", "-", "*", "/", "**", "U-", "U+", "parens"):
            return "unknown", 0
        kinds = [self.type_of(part) for part in split(rest)]
        if not kinds or any(base not in ("integer", "real") for base, _ in kinds):
            return "unknown", 0
        base = "real" if any(base == "real" for base, _ in kinds) else "integer"
        return base, max(size for b, size in kinds if b == base)


def read(path, default_integer=4, default_real=4):
    """Reads a dump. The calls come in the order of the source."""
    tree, unit, symbol = Tree(default_integer, default_real), None, None
    waiting, reading = [], False
    with open(path, encoding="utf-8", errors="replace") as lines:
        for line in lines:
            if match := _UNIT.match(line):
                unit = tree.units.setdefault(match[1], Unit(match[1]))
                symbol = None
            elif unit is None:
                continue
            elif match := _SYMBOL.match(line):
                symbol = None if match[3] else unit.symbols.setdefault(match[1], Symbol(match[1]))
                if match[3]:
                    unit.hosts[match[1]] = match[4]
            elif symbol is not None and (match := _TYPE.match(line)):
                symbol.base, symbol.size = match[1].lower(), _size(match[2])
            elif symbol is not None and (match := _ATTRIBUTES.match(line)):
                symbol.attributes = frozenset(match[1].split())
                unit.is_main = unit.is_main or "IS-MAIN-PROGRAM" in symbol.attributes
            elif symbol is not None and (match := _ARRAY.match(line)):
                symbol.elements = int(match[2]) - int(match[1]) + 1
            elif symbol is not None and (match := _FORMAL.match(line)):
                symbol.formal = tuple(match[1].split())
            else:
                words = line.split(None, 1)
                reading = (reading or words[:1] == ["READ"]) and words[:1] != ["DT_END"]
                if match := _ASSIGNED.match(line):
                    tree.given.add(match.groups())
                elif _GIVING.match(line) or reading:
                    tree.given |= mentioned(line)
                if words[:1] == ["OPEN"] and " UNIT=" not in line:
                    tree.given.add((unit.name, None))  # of NEWUNIT= the dump does not tell
                if "CALL " in line or "[[" in line:
                    waiting.append((unit, line.rstrip("\n")))
    for unit, line in waiting:
        _calls(tree, unit, line)
    return tree


def mentioned(text):
    """The variables in a part of a dump, as (unit, variable)."""
    return set(_MENTIONED.findall(text))


def _size(text):
    match = re.match(r"\d+", text)
    return int(match[0]) if match else 0


def _calls(tree, unit, line):
    for match in _CALL.finditer(line):
        name = match[1] or match[2]
        if name.startswith("__"):  # the compiler's, and no procedure that anybody could have written
            continue
        if match[1]:
            inside = balanced(line, match.end())
        else:
            inside = balanced(line, match.end()) if line[match.end():match.end() + 1] == "(" else ""
        arguments = []
        for part in split(inside):
            text = part[1:-1] if part.startswith("(") and part.endswith(")") else part
            arguments.append((*tree.type_of(text), text))
        unit.calls.append(Call(name, unit.name, arguments, match[2] is not None, unit.symbols.get(name)))


def balanced(text, at):
    """What stands between the bracket at `at` and its counterpart."""
    depth, quote = 0, None
    for place in range(at, len(text)):
        character = text[place]
        if quote:
            quote = None if character == quote else quote
        elif character in "'\"":
            quote = character
        elif character == "(":
            depth += 1
        elif character == ")":
            depth -= 1
            if depth == 0:
                return text[at + 1:place]
    return ""


def split(text):
    """The parts of a list that blanks separate, brackets and quotes kept together."""
    parts, depth, quote, begin = [], 0, None, None
    for place, character in enumerate(text):
        if quote:
            quote = None if character == quote else quote
            continue
        if character == " " and depth == 0:
            if begin is not None:
                parts.append(text[begin:place])
                begin = None
            continue
        begin = place if begin is None else begin
        if character in "'\"":
            quote = character
        elif character in "([":
            depth += 1
        elif character in ")]":
            depth -= 1
    return parts + ([text[begin:]] if begin is not None else [])
