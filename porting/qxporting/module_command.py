"""`qxport module`: makes modules of names that the user gives."""

import os
import shutil
import sys
import tempfile
from pathlib import Path

from . import catalogue as catalogues
from .compiler import Compiler
from .failure import CANNOT, REFUSED, Failure
from .module_source import EVERYTHING, MARK, choose, source
from .names_file import read

LIBRARY_SOURCES = ("qxport.f90", "qxport_numbers.f90")


def add_arguments(parser):
    parser.add_argument("modules", nargs="+", metavar="NAME", help="a module; several have the same contents")
    parser.add_argument("--of", action="append", default=[], metavar="AREA",
                        help="what of the library: families and areas, a list or several options; all (but the host's numbers), "
                             "or none (default: all)")
    parser.add_argument("--without", action="append", default=[], metavar="NAME",
                        help="names of the library that the program has for something else; a list or several options")
    parser.add_argument("--names", action="append", default=[], type=Path, metavar="FILE",
                        help="the program's own names, a line `THEIRS = ours` each")
    parser.add_argument("--output", "-o", type=Path, default=Path("."), metavar="DIRECTORY",
                        help="where the modules go (default: the working directory)")
    parser.add_argument("--compiler", default=os.environ.get("FC") or "gfortran", metavar="COMMAND",
                        help="the Fortran compiler, with the options that it always gets (default: $FC, or gfortran)")
    parser.add_argument("--quiet", "-q", action="store_true", help="print nothing but errors")


def run(options, installed):
    catalogue = catalogues.load(installed.share)
    areas = [area for text in options.of for area in text.split(",") if area] or [EVERYTHING]
    without = [name for text in options.without for name in text.split(",") if name]
    contents = choose(catalogue, options.modules, areas, renamings(options.names), without)
    compiler = Compiler(options.compiler)
    made = make(options.modules, contents, catalogue.version, compiler,
                Path(installed.modules_for(compiler.words)), options.output)
    if not options.quiet:
        tell(options, contents, compiler, made)
    return 0


def renamings(files):
    """Those of all files; a name that two of them define is a mistake."""
    found, problems, places = [], [], {}
    for path in files:
        try:
            found += read(path)
        except Failure as failure:
            if failure.status == CANNOT:
                raise
            problems += failure.lines
    for renaming in found:
        former = places.setdefault(renaming.theirs.lower(), renaming.place)
        if former != renaming.place:
            problems.append(f"{renaming.place}: `{renaming.theirs}` is defined in {former} already")
    if problems:
        raise Failure(problems)
    return found


def make(modules, contents, version, compiler, include, output):
    """Writes the source and compiles it. Answers whether the library's own modules had to be made as well."""
    name = f"{modules[0]}.f90"
    _check_output(output, modules)
    with tempfile.TemporaryDirectory(prefix="qxport-") as directory:
        scratch = Path(directory)
        foreign = not compiler.reads_modules_of(include, scratch)
        if foreign:
            sources = [include / source_name for source_name in LIBRARY_SOURCES]
            said = compiler.modules(sources, scratch)
            if said:
                raise Failure([f"compiler `{compiler}`: it does not compile the library's modules; is it too old, or no Fortran "
                               "compiler?", *said.splitlines()[:10]], CANNOT)
        (scratch / name).write_text(source(modules, contents, version), encoding="utf-8")
        said = compiler.modules([name], scratch, [scratch] if foreign else [include], contents.has_dollar)
        if said:
            raise Failure([f"the module does not compile by `{compiler}`:", *said.splitlines()[:20]], REFUSED)
        _deliver(scratch, output)
    return foreign


def _check_output(output, modules):
    """What another made is not written over."""
    problems = []
    for module in modules:
        text = _text(output / f"{module}.f90")
        if text is not None and not text.startswith(MARK):
            problems.append(f"{output / f'{module}.f90'} exists already, and was not made by this command")
    first = _text(output / f"{modules[0]}.f90")
    for module in modules:
        if (output / f"{module.lower()}.mod").exists() and not (first or "").startswith(MARK):
            problems.append(f"{output / f'{module.lower()}.mod'} exists already, and was not made by this command")
    if problems:
        raise Failure(problems)


def _text(path):
    try:
        return path.read_text(encoding="utf-8", errors="replace")
    except FileNotFoundError:
        return None
    except OSError as error:
        raise Failure(f"{path}: {error.strerror}", CANNOT) from error


def _deliver(scratch, output):
    try:
        output.mkdir(parents=True, exist_ok=True)
        for path in sorted(scratch.iterdir()):
            shutil.copyfile(path, output / path.name)
    except OSError as error:
        raise Failure(f"{error.filename or output}: {error.strerror}", CANNOT) from error


def tell(options, contents, compiler, foreign):
    names = len(contents.names)
    print(f"{', '.join(options.modules)}: {names} name{'s' if names != 1 else ''}, in {options.output}")
    if foreign:
        print(f"The library's own modules were made by another compiler: those of `{compiler}` are in {options.output} too.")
    if contents.has_dollar:
        print("Names have a `$`: the program needs -fdollar-ok.")
    sys.stdout.flush()
