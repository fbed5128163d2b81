"""Reads a names file: what of the library has which name in a program.

    THEIRS = ours                       a constant, a routine, a type, a variable
    type THEIRS = ours {                a record whose components have other names
      their_component = our_component
    }

A `#` or a `!` begins a comment. Blank lines do not count. Several components stand on one line behind commas.
"""

import re
from dataclasses import dataclass, field

from .failure import CANNOT, Failure

MAX_NAME = 63
NAME = re.compile(r"[A-Za-z][A-Za-z0-9_$]*\Z")
_HEAD = re.compile(r"type\s+(\S+?)\s*=\s*(\S+?)\s*\{(.*)\Z", re.IGNORECASE | re.DOTALL)
_PAIR = re.compile(r"([^\s=]+)\s*=\s*([^\s=]*)\Z")


@dataclass
class Renaming:
    theirs: str
    ours: str
    place: str  # file and line
    components: dict | None = None  # our component -> theirs, of a record that has components of its own
    component_places: dict = field(default_factory=dict)


def why_no_name(name):
    """Why `name` cannot be a Fortran name, or nothing."""
    if name.startswith(("$", "_")):
        return f"`{name}`: no Fortran name starts with `{name[0]}`"
    if not NAME.match(name):
        return f"`{name}` is no Fortran name"
    return f"`{name}` has more than {MAX_NAME} characters" if len(name) > MAX_NAME else None


def read(path):
    """The renamings of a file. All its mistakes are reported at once."""
    try:
        text = path.read_text(encoding="utf-8-sig")
    except (OSError, UnicodeDecodeError) as error:
        raise Failure(f"{path}: the names cannot be read: {error}", CANNOT) from error
    reader = _Reader(str(path))
    for number, line in enumerate(text.splitlines(), 1):
        reader.line(number, re.split(r"[#!]", line, maxsplit=1)[0].strip())
    return reader.end()


class _Reader:
    def __init__(self, path):
        self.path = path
        self.renamings, self.problems = [], []
        self.seen = {}
        self.record = None  # while its braces are open
        self.number = 0

    def line(self, number, text):
        self.number = number
        if not text:
            return
        if self.record is not None:
            self._components(text)
        elif head := _HEAD.match(text):
            self._pair(head[1], head[2], {})
            self.record = self.renamings[-1] if self.renamings else Renaming("", "", self._place(), {})
            self._components(head[3])
        elif pair := _PAIR.match(re.sub(r"^type\s+", "", text, flags=re.IGNORECASE)):
            self._pair(pair[1], pair[2], None)
        else:
            self._problem("expected `THEIRS = ours` or `type THEIRS = ours { theirs = ours, ... }`")

    def end(self):
        if self.record is not None:
            self.problems.append(f"{self.record.place}: the `{{` has no `}}`")
        if self.problems:
            raise Failure(self.problems)
        return self.renamings

    def _pair(self, theirs, ours, components):
        for name in (theirs, ours):
            if not name:
                self._problem(f"nothing stands behind `{theirs} =`: write the library's name there, or remove the line")
            elif reason := why_no_name(name):
                self._problem(reason)
        if former := self.seen.get(theirs.lower()):
            self._problem(f"`{theirs}` is defined in line {former} already")
        self.seen.setdefault(theirs.lower(), self.number)
        self.renamings.append(Renaming(theirs, ours, self._place(), components))

    def _components(self, text):
        inside, brace, rest = text.partition("}")
        if rest.strip():
            self._problem(f"unexpected `{rest.strip()}` behind the `}}`")
        for piece in filter(None, (piece.strip() for piece in re.split(r"[,;]", inside))):
            for theirs, ours in self._pairs_of(piece):
                self._component(theirs, ours)
        if brace:
            self.record = None

    def _pairs_of(self, piece):
        """Pairs that blanks alone separate are understood as well."""
        pairs = re.findall(r"([^\s=]+)\s*=\s*([^\s=]+)", piece)
        if not pairs or re.sub(r"[^\s=]+\s*=\s*[^\s=]+", "", piece).strip():
            self._problem(f"expected `their_component = our_component`, not `{piece}`")
            return []
        return pairs

    def _component(self, theirs, ours):
        components = self.record.components
        if reason := why_no_name(theirs):
            self._problem(reason)
        if ours.lower() in components:
            self._problem(f"the component `{ours}` has two names")
        if theirs.lower() in (name.lower() for name in components.values()):
            self._problem(f"two components are named `{theirs}`")
        components[ours.lower()] = theirs
        self.record.component_places[ours.lower()] = self._place()

    def _place(self):
        return f"{self.path}:{self.number}"

    def _problem(self, reason):
        self.problems.append(f"{self._place()}: {reason}")
