"""Modules that nobody has: generated in their place, with less or more in them until the sources compile as far as they can."""

import re
import tempfile
from dataclasses import dataclass, field
from pathlib import Path

from .. import module_command
from ..failure import Failure
from ..module_source import choose, module_name_problems

_QUOTED = r"[‘'`]([\w$]+)[’']"
_ABSENT = re.compile(rf"Symbol {_QUOTED} referenced at \(1\) not found in module {_QUOTED}")
_UNTYPED = re.compile(rf"(?:Symbol|Function|Derived type) {_QUOTED} at \(1\) (?:has no IMPLICIT type|is being used before)")
_IN_THE_WAY = (
    re.compile(rf"Symbol {_QUOTED} at \(1\) conflicts with symbol from module"),
    re.compile(rf"{_QUOTED} of module .* is also the name of the current program unit"),
    re.compile(rf"Name {_QUOTED} at \(1\) is (?:an ambiguous reference|already defined as a generic interface)"),
    re.compile(rf"{_QUOTED} at \(1\) (?:is not a VALUE|is not a variable|requires an argument list|already has basic type)"),
    re.compile(rf"(?:Symbol|Procedure|Function) {_QUOTED} at \(1\) (?:is already defined|already has|requires an argument)"),
)
_ROUNDS = 6


@dataclass
class Replacements:
    """The generated modules, and what they cannot have."""

    modules: list
    areas: list
    renamings: list
    without: dict = field(default_factory=dict)  # source's number -> names of the library that it has for something else
    absent: dict = field(default_factory=dict)  # (module, name) -> Message, of names that the library does not know

    def without_for(self, sources):
        return frozenset(name for source in sources for name in self.without.get(source.number, ()))


def names_in_the_way(message, source):
    """The name of the library that an error says the program means otherwise, or None."""
    for pattern in _IN_THE_WAY:
        if match := pattern.search(message.text):
            return match[1].lower()
    if "Cannot change attributes of USE-associated symbol" in message.text:
        try:
            line = source.path.read_text(encoding="latin-1").splitlines()[message.line - 1]
        except (OSError, IndexError):
            return None
        before = re.findall(r"[A-Za-z][\w$]*", line[:message.column])
        return before[-1].lower() if before else None
    return None


def absent_name(message):
    """(name, module) of an error that says that a module has it not; the module may be unknown."""
    if match := _ABSENT.search(message.text):
        return match[1].lower(), match[2].lower()
    if match := _UNTYPED.search(message.text):
        return match[1].lower(), None
    return None


def usable(names):
    """Those of the missing modules that can be made."""
    return sorted(name for name in names if not module_name_problems([name]))


class Maker:
    """Makes the modules in a directory for each choice of names that sources have for something else."""

    def __init__(self, catalogue, compiler, include, scratch, replacements):
        self.catalogue, self.compiler, self.include, self.scratch = catalogue, compiler, include, scratch
        self.replacements = replacements
        self.made = {}

    def forget(self):
        """What is there is made anew, with what has been learnt since."""
        self.made = {}

    def directory_for(self, source):
        without = self.replacements.without_for([source])
        if without not in self.made:
            self.made[without] = self._make(without)
        return self.made[without]

    def _make(self, without):
        self.directory = Path(tempfile.mkdtemp(prefix="modules-", dir=self.scratch))
        replacements = self.replacements
        if replacements.modules:
            try:
                contents = choose(self.catalogue, replacements.modules, replacements.areas, replacements.renamings, without)
            except Failure:
                if not without:
                    raise
                return self.made[frozenset()]  # the name comes from elsewhere
            module_command.make(replacements.modules, contents, self.catalogue.version, self.compiler, self.include,
                                self.directory)
            self._add_placeholders(replacements)
        return self.directory

    def _add_placeholders(self, replacements):
        """What nobody knows is there under its name, so that the compiler goes on to what stands behind it."""
        absent = {}
        for (module, name), message in replacements.absent.items():
            absent.setdefault(module, []).append((name, message))
        for module, names in absent.items():
            if module not in replacements.modules:
                continue
            lines = [f"module {module}", f"  use {self._renamed(module)}"]
            for name, message in names:
                lines += _placeholder(name, _text(message))
            path = self.directory / f"placeholders_of_{module}.f90"
            path.write_text("\n".join([*lines, f"end module {module}", ""]), encoding="utf-8")
            self.compiler.modules([path], self.directory, [self.directory, self.include], dollar=True)

    def _renamed(self, module):
        """The generated module under another name, beside which the placeholders stand."""
        name = f"generated_for_{module}"[:60]
        text = "".join((self.directory / f"{self._first(module)}.f90").read_text(encoding="utf-8"))
        first = self._first(module)
        text = re.sub(rf"^((?:end )?module ){re.escape(first)}$", rf"\g<1>{name}", text, flags=re.MULTILINE)
        text = text.replace(f"qxport_types_of_{first}", f"qxport_types_of_{first}_"[:63])
        path = self.directory / f"{name}.f90"
        path.write_text(text, encoding="utf-8")
        self.compiler.modules([path], self.directory, [self.directory, self.include], dollar=True)
        return name

    def _first(self, module):
        return next((p.stem for p in self.directory.glob("*.f90") if p.stem == module), None) or \
            min((p.stem for p in self.directory.glob("*.f90") if not p.stem.startswith(("generated_", "placeholders_"))))


def _text(message):
    try:
        return Path(message.file).read_text(encoding="latin-1")
    except OSError:
        return ""


def _placeholder(name, text):
    """What a name seems to be by its use: a type, a subroutine, else a constant."""
    if re.search(rf"\b(?:type|record)\s*[(/]\s*{re.escape(name)}\s*[)/]", text, re.IGNORECASE):
        return [f"  type :: {name}", "    integer :: nothing", f"  end type {name}"]
    if re.search(rf"\bcall\s+{re.escape(name)}\b", text, re.IGNORECASE):
        return [f"  external :: {name}"]
    return [f"  integer, parameter :: {name} = 0"]


def settle(workshop, sources, maker):
    """Compiles all sources, and those again whose generated modules had too much or too little."""
    maker.directory_for(sources[0])
    done = workshop.run(sources)
    for _ in range(_ROUNDS):
        changed = _learn(done, maker.replacements, maker.catalogue)
        if not changed:
            break
        maker.forget()
        for source in sources:
            maker.directory_for(source)
        again = [s for s in sources if s.number in changed or not done[s.number].ok]
        done |= workshop.run(again)
    return done


def _learn(done, replacements, catalogue):
    """The numbers of the sources whose errors say something new about what the generated modules should have."""
    changed = set()
    for number, compiled in done.items():
        if not replacements.modules:
            break
        for message in compiled.messages:
            found = absent_name(message)
            if found and found[1] in replacements.modules:
                new = (found[1], found[0]) not in replacements.absent
                replacements.absent.setdefault((found[1], found[0]), message)
            elif (name := names_in_the_way(message, compiled.source)) and name in catalogue.entities:
                without = replacements.without.setdefault(number, set())
                new = name not in without
                without.add(name)
            else:
                continue
            changed |= {number} if new else set()
    return changed
