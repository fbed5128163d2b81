"""What an object defines and wants, and where in the sources it wants it."""

import bisect
import re
import subprocess
from dataclasses import dataclass, field

from ..failure import CANNOT, Failure

_SYMBOL = re.compile(r"([0-9a-f]+) (.{7}) (\S+)\t([0-9a-f]+)\s+(.+)\Z")
_RELOCATION = re.compile(r"([0-9a-f]+) R_\S+\s+(\S+?)([+-]0x[0-9a-f]+)?\Z")
_LINE = re.compile(r"(\S.*?)\s+(\d+)\s+(0x[0-9a-f]+|0)\b")
_MODULE_SYMBOL = re.compile(r"__(.+)_MOD_(.+)\Z")


@dataclass
class Place:
    symbol: str
    unit: str  # the unit that wants it, in lower case
    line: int


@dataclass
class Object:
    defines: set = field(default_factory=set)
    wants: set = field(default_factory=set)
    places: list = field(default_factory=list)

    @property
    def has_main(self):
        return "main" in self.defines or "MAIN__" in self.defines


def tool(words):
    try:
        done = subprocess.run(words, capture_output=True, text=True, errors="replace", check=False)
    except OSError as error:
        raise Failure(f"{words[0]}: {error.strerror}: the doctor looks at objects by it", CANNOT) from error
    return done.stdout


def names(path):
    """The names that an object or a library defines and wants."""
    found = Object()
    words = ["nm", "-D"] if path.name.endswith(".so") else ["nm"]
    for line in tool([*words, str(path)]).splitlines():
        parts = line.split()
        if len(parts) >= 2 and len(parts[-2]) == 1:
            (found.wants if parts[-2] in "Uwv" else found.defines).add(parts[-1].partition("@")[0])
    return found


def look(path):
    """The names of an object of one source, with the places where it wants others."""
    found = names(path)
    functions, lines, relocations, section = [], [], [], None
    for line in tool(["objdump", "-t", "-r", "-WL", str(path)]).splitlines():
        if line.startswith("RELOCATION RECORDS FOR"):
            section = line[line.index("[") + 1:line.index("]")]
        elif match := _SYMBOL.match(line):
            if "F" in match[2]:
                functions.append((match[3], int(match[1], 16), match[5].split()[-1]))
        elif section and (match := _RELOCATION.match(line)):
            if section.startswith(".text"):
                relocations.append((section, int(match[1], 16), match[2]))
        elif not section and (match := _LINE.match(line)):
            lines.append((int(match[3], 16), int(match[2])))
    functions.sort()
    lines.sort()
    addresses = [address for address, _ in lines]
    wanted = found.wants | found.defines
    for section, at, symbol in relocations:
        if symbol in wanted:
            found.places.append(Place(symbol, _unit(functions, section, at), _line(lines, addresses, section, at)))
    return found


def _unit(functions, section, at):
    place = bisect.bisect_right(functions, (section, at, "\uffff")) - 1
    return unit_name(functions[place][2]) if place >= 0 else ""


def unit_name(symbol):
    """A program unit by its symbol: foo_, __mod_MOD_foo, or foo.0 of one that is contained."""
    if symbol in ("MAIN__", "main"):
        return "MAIN__"
    if match := _MODULE_SYMBOL.match(symbol):
        return match[2]
    return re.sub(r"\.\d+\Z", "", symbol).removesuffix("_")


def _line(lines, addresses, section, at):
    if section != ".text" or not lines:
        return 0
    place = bisect.bisect_right(addresses, at) - 1
    return lines[place][1] if place >= 0 else 0
