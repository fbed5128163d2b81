"""`qxport doctor`: the command."""

import concurrent.futures
import os
import re
import shlex
import sys
import tempfile
from dataclasses import dataclass, field
from pathlib import Path

from .. import catalogue as catalogues
from ..compiler import Compiler
from ..failure import CANNOT, Failure
from ..installed import WIDE_INTEGERS, has_wide_integers
from ..module_command import renamings
from ..module_source import EVERYTHING
from . import missing, objects, programs, report, scan, tree
from .compile import ADMITTING, Progress, Workshop
from .judge import NOTE, TO_DO, Finding, Judge

USAGE = """usage: qxport doctor [OPTION...] [COMPILER [FLAG...]] -- FILE|DIRECTORY...

Compiles each source with the compiler and the flags that it always gets, and tells what stands between it and the library.
Nothing is written but what is named here.

  --json               tell it as JSON
  --names FILE         the program's own names, as `qxport module` takes them
  --of AREA            what of the library the modules have that are missing
  --modules DIRECTORY  where the commands that are told put these modules (default: qxport_modules)
  --write-names FILE   begin a names file with the names that nobody defines
  --jobs N             compile so many sources at a time
  --quiet              no line about how far it is
"""

# The compiler refuses a call of what it takes for an intrinsic.
_INTRINSIC_MISFIT = re.compile(r"(?:(?:of|in call to) ['‘`](\w+)['’](?: intrinsic)? at|['‘`](\w+)['’] intrinsic subprogram at)")

# An INCLUDE line, or one of the preprocessor.
_ABSENT_FILE = re.compile(r"Cannot open included file ['‘`](.*)['’]|(?!Cannot )(.*): No such file or directory\Z")


@dataclass
class Options:
    json: bool = False
    quiet: bool = False
    names: list = field(default_factory=list)
    of: list = field(default_factory=list)
    modules: str = "qxport_modules"
    write_names: Path | None = None
    jobs: int = 0
    compiler: str = ""
    flags: list = field(default_factory=list)
    files: list = field(default_factory=list)


@dataclass
class Diagnosis:
    options: Options
    compiler: Compiler
    sources: list
    missing: dict = field(default_factory=dict)
    findings: list = field(default_factory=list)
    served: dict = field(default_factory=dict)
    names: list = field(default_factory=list)
    programs: list = field(default_factory=list)

    @property
    def status(self):
        return 1 if any(finding.weight == TO_DO for finding in self.findings) else 0


def parse(arguments):
    """The options stand before the compiler: what follows it is the compiler's."""
    if "--help" in arguments or "-h" in arguments:
        print(USAGE, end="")
        sys.exit(0)
    if "--" not in arguments:
        raise Failure(["no `--` before the files", *USAGE.splitlines()[:1]], CANNOT)
    at = arguments.index("--")
    words, options = iter(arguments[:at]), Options(files=arguments[at + 1:])
    if not options.files:
        raise Failure(["no file is named", *USAGE.splitlines()[:1]], CANNOT)
    command = []
    for word in words:
        if command or not word.startswith("--"):
            command.append(word)
        else:
            _option(options, word, words)
    if command and not command[0].startswith("-"):
        options.compiler, *options.flags = command
        options.compiler = shlex.quote(options.compiler)
    else:
        options.compiler, options.flags = os.environ.get("FC") or "gfortran", command
    return options


def _option(options, word, words):
    name, given, value = word.partition("=")
    if name in ("--json", "--quiet"):
        setattr(options, name[2:], True)
        return
    if name not in ("--names", "--of", "--modules", "--write-names", "--jobs"):
        raise Failure([f"{name}: the doctor has no such option", *USAGE.splitlines()[:1]], CANNOT)
    value = value if given else next(words, None)
    if value is None:
        raise Failure(f"{name}: its value is missing", CANNOT)
    if name == "--names":
        options.names.append(Path(value))
    elif name == "--of":
        options.of += value.split(",")
    elif name == "--modules":
        options.modules = value
    elif name == "--write-names":
        options.write_names = Path(value)
    elif not value.isdigit() or int(value) < 1:
        raise Failure(f"--jobs {value}: a number of at least 1, please", CANNOT)
    else:
        options.jobs = int(value)


def run(arguments, installed):
    options = parse(arguments)
    catalogue = catalogues.load(installed.share)
    compiler = Compiler(options.compiler)
    sources, others = scan.collect(options.files, options.flags)
    names = renamings(options.names)
    for source in sources:
        scan.read(source)
    with tempfile.TemporaryDirectory(prefix="qxport-doctor-") as scratch:
        diagnosis = _diagnose(Diagnosis(options, compiler, sources), others, names, catalogue, installed, Path(scratch))
    if options.write_names:
        _write(options.write_names, report.names_file(diagnosis))
    sys.stdout.write(report.as_json(diagnosis) if options.json else report.as_text(diagnosis))
    sys.stdout.flush()
    return diagnosis.status


def _write(path, text):
    try:
        if path.exists():
            raise Failure(f"{path} exists already", CANNOT)
        path.write_text(text, encoding="utf-8")
    except OSError as error:
        raise Failure(f"{path}: {error.strerror}", CANNOT) from error


def _diagnose(diagnosis, others, names, catalogue, installed, scratch):
    options, compiler, sources = diagnosis.options, diagnosis.compiler, diagnosis.sources
    include = Path(installed.modules_for(options.flags))
    jobs = options.jobs or os.cpu_count() or 1
    workshop = Workshop(compiler, options.flags, scratch, [include, os.getcwd()], jobs,
                        Progress(len(sources), options.quiet))
    workshop.check()
    searched = [flag[2:] for flag in workshop.flags if flag.startswith("-I")] + [str(include), os.getcwd()]
    diagnosis.missing = scan.order(sources, lambda name, source: any(
        Path(d, f"{name}.mod").exists() for d in [source.path.parent, *searched]))
    replacements = missing.Replacements(missing.usable(diagnosis.missing), options.of or [EVERYTHING], names)
    # The sizes of an address and of a default integer are a matter of the modules too.
    target = [flag for flag in options.flags if flag in ("-m32", "-m64", "-mx32", WIDE_INTEGERS)]
    module_compiler = Compiler(shlex.join([*compiler.words, *target]))
    maker = missing.Maker(catalogue, module_compiler, include, scratch, replacements)
    workshop.place_of_missing = maker.directory_for
    done = missing.settle(workshop, sources, maker)

    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        good = [compiled for compiled in done.values() if compiled.ok]
        looked = dict(zip((c.source.number for c in good), pool.map(lambda c: objects.look(c.object), good)))
    wide = 8 if has_wide_integers(options.flags) or "-i8" in options.flags else 4
    wide_real = 8 if "-fdefault-real-8" in options.flags else 4
    trees = {n: tree.read(c.dump, wide, wide_real) for n, c in done.items() if c.dump}
    given = set().union(*(objects.names(path).defines for path in others))
    diagnosis.programs = programs.find(sources, looked)
    around = programs.surroundings(sources, diagnosis.programs, looked)

    judge = Judge(catalogue, wide == 8)
    given |= {f"{name}_" for _, name in replacements.absent}  # told already
    _tell_modules(diagnosis, judge, replacements)
    for source in sources:
        compiled, there = done[source.number], trees.get(source.number)
        beside = around[source.number]
        defined = given.union(*(looked[number].defines for number in beside if number in looked))
        if compiled.ok:
            judge.wants(compiled, looked[source.number], there, defined)
        else:
            _tell_errors(judge, diagnosis, compiled, replacements, there)
        if there:
            judge.calls(compiled, looked.get(source.number), there, [trees[n] for n in beside if n in trees], defined)
        if "-fdollar-ok" in compiled.added:
            judge.tell("dollar", NOTE, source, 1, "", source.path.name, "names have a `$`", "-fdollar-ok")
        if "-fallow-argument-mismatch" in compiled.added:
            judge.tell("argument-mismatch", NOTE, source, 1, "", source.path.name,
                       "a procedure is called with arguments of several types", "-fallow-argument-mismatch")
    diagnosis.findings = sorted(judge.findings, key=lambda f: (f.file, f.line, f.kind, f.name))
    diagnosis.served = judge.served
    diagnosis.names = _names(diagnosis, replacements, catalogue)
    for program in diagnosis.programs:
        modules = programs.module_command(program, installed, replacements, options, module_compiler)
        added = [flag for flag in ADMITTING if any(flag in done[source.number].added for source in program.sources)]
        program.commands += [modules] if modules else []
        program.commands.append(programs.build_command(program, installed, options, compiler, modules, added, others))
    return diagnosis


def _tell_modules(diagnosis, judge, replacements):
    for name, users in diagnosis.missing.items():
        if name in replacements.modules:
            advice = f"make it by `qxport module {name}`, as in the command below"
        else:
            advice = "it cannot be made: " + "; ".join(missing.module_name_problems([name]))
        for source in users:
            judge.tell("missing-module", TO_DO, source, source.uses[name], "", name, "no source makes this module", advice)
    absent = {name: (module, message) for (module, name), message in replacements.absent.items()}
    for name, (module, message) in absent.items():
        near = judge.catalogue.nearest(name)
        advice = "say in a names file what of the library it is" + (f"; near: {', '.join(near)}" if near else "")
        judge.findings.append(Finding("missing-name", TO_DO, message.file, message.line, "", name,
                                      f"the program takes it from {module}, and the library has nothing of the name", advice))
    if has_wide_integers(diagnosis.options.flags):
        judge.findings.append(Finding("default-integer-8", NOTE, str(diagnosis.sources[0].path), 1, "", WIDE_INTEGERS,
                                      "default integers have 8 bytes: the modules of `pkg-config --cflags --libs qxport-i8` take "
                                      "them, and most routines called without a module take 4",
                                      "compile with these flags, as the command below does, and `use qxport` where calls without a "
                                      "module hand over 8 bytes"))


def _tell_errors(judge, diagnosis, compiled, replacements, tree):
    """Why a source does not compile, the first reasons."""
    source, told, catalogue = compiled.source, 0, judge.catalogue
    uses_missing = sorted(set(source.uses) & set(diagnosis.missing))
    for message in compiled.messages:
        found = missing.absent_name(message)
        if absent := _ABSENT_FILE.match(message.text):
            name = absent[1] or absent[2]
            judge.tell("missing-include", TO_DO, source, message.line, "", name, "the file that it includes is not there",
                       "-I of its directory; what it declared of the library a `use qxport` in its place has too")
        elif found and uses_missing and found[1] is None:
            near = catalogue.nearest(found[0])
            judge.tell("missing-name", TO_DO, source, message.line, "", found[0],
                       f"declared nowhere; {' or '.join(uses_missing)} may have had it",
                       "say in a names file what of the library it is" + (f"; near: {', '.join(near)}" if near else ""))
        elif found and found[1] in replacements.modules:
            continue
        elif (own := _INTRINSIC_MISFIT.search(message.text)) and (own[1] or own[2]) in judge.routines:
            judge.misfit(source, message, own[1] or own[2], tree)
        elif told < 3:
            told += 1
            judge.tell("does-not-compile", TO_DO, source, message.line, "", source.path.name, message.text,
                       "mend this first: what stands behind it in the source is not known yet")


def _names(diagnosis, replacements, catalogue):
    """The names that nobody defines, each once."""
    found = {}
    for finding in diagnosis.findings:
        if finding.kind in ("missing-name", "nobody"):
            found.setdefault(finding.name, {"name": finding.name, "file": finding.file, "line": finding.line,
                                            "near": catalogue.nearest(finding.name)})
    return list(found.values())
