"""Finds the sources, and reads no more of them than which modules they make and use and where their units begin."""

import os
import re
from dataclasses import dataclass, field
from pathlib import Path

from ..failure import CANNOT, Failure

FIXED = {".f", ".for", ".ftn", ".fpp", ".f77"}
FREE = {".f90", ".f95", ".f03", ".f08", ".f15", ".f18"}
OBJECTS = {".o", ".a", ".so"}
# Modules that compilers have themselves.
INTRINSIC_MODULES = re.compile(r"iso_(c_binding|fortran_env)\Z|ieee_\w+\Z|omp_lib(_kinds)?\Z|openacc(_kinds)?\Z")

_BEGIN = r"^[ \t]*(?:\d+[ \t]+)?"
_STATEMENT = re.compile(
    _BEGIN + r"(?:"
    r"module[ \t]+(?!procedure\b)(?P<module>[a-z][\w$]*)[ \t]*(?:!.*)?$"
    r"|use(?:[ \t]*,[ \t]*(?P<nature>intrinsic|non_intrinsic)[ \t]*::[ \t]*|[ \t]*::[ \t]*|[ \t]+)(?P<use>[a-z][\w$]*)[ \t]*(?=[,!\r\n;]|$)"
    r"|(?P<kind>program|(?:[a-z][\w \t*()=,]*[ \t)])?(?:subroutine|function)|block[ \t]*data)[ \t]+(?P<unit>[a-z][\w$]*)"
    r")", re.IGNORECASE | re.MULTILINE)


@dataclass
class Unit:
    name: str
    line: int  # of its heading
    body: int  # the first line behind the heading


@dataclass
class Source:
    path: Path
    number: int
    fixed: bool
    modules: set = field(default_factory=set)
    uses: dict = field(default_factory=dict)  # module -> the first line that uses it
    units: dict = field(default_factory=dict)  # name -> Unit
    depends: list = field(default_factory=list)  # sources that make the modules

    def unit_named(self, name):
        return self.units.get(name)


def collect(names, flags):
    """The sources and the objects among files and directories; directories are searched to their ends."""
    sources, objects, seen = [], [], set()
    for name in names:
        path = Path(name)
        if not path.exists():
            raise Failure(f"{name}: there is no such file or directory", CANNOT)
        if not path.is_dir() and not path.is_file():
            raise Failure(f"{name}: this is no file", CANNOT)
        for found in _files(path) if path.is_dir() else [path]:
            key = os.path.abspath(found)
            if key in seen:
                continue
            seen.add(key)
            suffix = found.suffix.lower()
            if suffix in OBJECTS:
                if not path.is_dir():
                    objects.append(found)
            elif suffix in FIXED | FREE:
                fixed = suffix in FIXED if not _form(flags) else _form(flags) == "fixed"
                sources.append(Source(found, len(sources), fixed))
            elif not path.is_dir():
                raise Failure(f"{name}: this is no Fortran source by its name", CANNOT)
    if not sources:
        raise Failure(f"{', '.join(map(str, names))}: there are no Fortran sources", CANNOT)
    return sources, objects


def _form(flags):
    forms = [flag[2:].removesuffix("-form") for flag in flags if flag in ("-ffixed-form", "-ffree-form")]
    return forms[-1] if forms else None


def _files(directory):
    def fail(error):
        raise Failure(f"{error.filename}: {error.strerror}", CANNOT)

    for where, directories, files in os.walk(directory, onerror=fail):
        directories.sort()
        for name in sorted(files):
            path = Path(where, name)
            if path.suffix.lower() in FIXED | FREE and path.is_file():  # no pipe, no link to nowhere
                yield path


def read(source):
    """Fills in what the source makes and uses."""
    text = lines_of(source)
    starts = None
    for match in _STATEMENT.finditer(text):
        if starts is None:
            starts = [0, *(at.end() for at in re.finditer("\n", text))]
        line = _line_of(starts, match.start())
        if match["module"]:
            source.modules.add(match["module"].lower())
            _unit(source, text, starts, match["module"], line)
        elif match["use"]:
            name = match["use"].lower()
            if (match["nature"] or "").lower() != "intrinsic" and not INTRINSIC_MODULES.match(name):
                source.uses.setdefault(name, line)
        elif "end" not in match["kind"].lower().split():
            _unit(source, text, starts, match["unit"], line)


def lines_of(source):
    try:
        return source.path.read_text(encoding="latin-1")
    except OSError as error:
        raise Failure(f"{source.path}: {error.strerror}", CANNOT) from error


def _line_of(starts, at):
    low, high = 0, len(starts)
    while high - low > 1:
        middle = (low + high) // 2
        low, high = (middle, high) if starts[middle] <= at else (low, middle)
    return low + 1


def _unit(source, text, starts, name, line):
    source.units.setdefault(name.lower(), Unit(name.lower(), line, line + continued(source, text, starts, line)))


def continued(source, text, starts, line):
    """How many lines the statement that begins in `line` takes."""
    taken = 1
    while line + taken <= len(starts):
        begin = starts[line + taken - 1]
        following = text[begin:text.find("\n", begin) if "\n" in text[begin:begin + 400] else begin + 400]
        if source.fixed:
            if not re.match(r" {5}[^ 0]", following):
                break
        else:
            begin = starts[line + taken - 2]
            this = text[begin:starts[line + taken - 1]].split("!")[0].rstrip()
            if not this.endswith("&"):
                break
        taken += 1
    return taken


def order(sources, known_elsewhere):
    """Finds out which source needs which, and the modules that nobody makes. Answers the latter with those who use them."""
    makers = {}
    for source in sources:
        for name in source.modules:
            makers.setdefault(name, []).append(source)
    missing = {}
    for source in sources:
        for name in source.uses:
            if name in source.modules:
                continue
            if name in makers:
                source.depends.append(nearest(source, makers[name]))
            elif not known_elsewhere(name, source):
                missing.setdefault(name, []).append(source)
    return missing


def nearest(source, makers):
    """Of several programs in one tree each has modules of its own: those beside it count."""
    return max(makers, key=lambda maker: len(os.path.commonpath([os.path.abspath(maker.path), os.path.abspath(source.path)])))


def waves(sources):
    """The sources in groups, each of which needs only those before it; what needs itself comes last."""
    left, done = list(sources), set()
    while left:
        ready = [s for s in left if all(d.number in done for d in s.depends)] or left
        yield ready
        done |= {source.number for source in ready}
        left = [source for source in left if source.number not in done]
