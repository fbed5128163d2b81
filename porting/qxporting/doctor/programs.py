"""Which sources make which program, and the commands that build it."""

import shlex
from dataclasses import dataclass, field

from .scan import nearest


@dataclass
class Program:
    name: str
    sources: list
    commands: list = field(default_factory=list)


def find(sources, looked):
    """Each source with a main program, and behind it all that it needs."""
    makers = {}
    for source in sources:
        for symbol in looked[source.number].defines if source.number in looked else []:
            makers.setdefault(symbol, []).append(source)
    programs = []
    for source in sources:
        there = looked.get(source.number)
        if there and there.has_main:
            programs.append(Program(source.path.stem, _needed(source, looked, makers)))
    return programs


def surroundings(sources, programs, looked):
    """For each source's number the sources of its programs, itself first; where it is in none, all that are no program."""
    others = [s for s in sources if s.number not in looked or not looked[s.number].has_main]
    around = {source.number: {source.number: source} for source in sources}
    for program in programs:
        for source in program.sources:
            around[source.number] |= {s.number: s for s in program.sources}
    in_programs = {source.number for program in programs for source in program.sources}
    for source in sources:
        if source.number not in in_programs:
            around[source.number] |= {s.number: s for s in others}
    return around


def _needed(main, looked, makers):
    """In the order in which they have to be compiled: what makes a module before those who use it."""
    found, left = {}, [main]
    while left:
        source = left.pop()
        if source.number in found:
            continue
        found[source.number] = source
        left += source.depends
        wants = looked[source.number].wants if source.number in looked else ()
        for symbol in sorted(wants):
            able = [maker for maker in makers.get(symbol, ()) if not _is_main(maker, main, looked)]
            left += [nearest(source, able)] if able else []
    ordered, placed = [], set()

    def place(source):
        if source.number in placed:
            return
        placed.add(source.number)
        for needed in source.depends:
            place(needed)
        ordered.append(source)

    for number in sorted(found):
        place(found[number])
    return ordered


def _is_main(source, main, looked):
    return source is not main and looked[source.number].has_main


def module_command(program, installed, replacements, options, compiler):
    """The command that makes the missing modules of a program; None where it has none."""
    used = {name for source in program.sources for name in source.uses}
    modules = [name for name in replacements.modules if name in used]
    if not modules:
        return None
    words = [installed.command, "module", *modules, "--output", options.modules]
    words += [word for area in options.of for word in ("--of", area)]
    words += [word for path in options.names for word in ("--names", str(path))]
    if without := replacements.without_for(program.sources):
        words += ["--without", ",".join(sorted(without))]
    return shlex.join([*words, "--compiler", str(compiler)])


def _as_word(path):
    """A file's name as no option."""
    return f"./{path}" if str(path).startswith("-") else str(path)


def build_command(program, installed, options, compiler, has_modules, added, objects):
    words = [*compiler.words, *options.flags, *added]
    words += [f"-I{options.modules}"] if has_modules else []
    words += [f"-I{installed.modules_for(options.flags)}", "-o", program.name, *(_as_word(source.path) for source in program.sources)]
    words += [*(_as_word(path) for path in objects), *installed.link_words(options.flags)]
    return shlex.join(words)
