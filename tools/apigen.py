#!/usr/bin/env python3
"""Makes the headers, the Fortran modules, the version scripts and the reference from the catalogue.

    apigen.py --api DIR --out DIR --target 64 [--only header,module,...] --version-text V --date D
    apigen.py --api DIR --check
    apigen.py --api DIR --list-outputs [--out DIR] [--only ...]
    apigen.py --api DIR --list-symbols qxport|qxcore|qxport_i8 --target 64
    apigen.py --api DIR --examples DIR [--target 64]
"""

import argparse
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # the source tree stays as it is

from qxapi import (  # noqa: E402
    calls,
    catalogue_json,
    fortran_module,
    header,
    html,
    i8_thunks,
    manpages,
    private,
    symbols,
)
from qxapi.catalogue import CatalogueError, load  # noqa: E402
from qxapi.entries import page_name  # noqa: E402

WRITERS = {
    "header": header,
    "private": private,
    "calls": calls,
    "i8": i8_thunks,
    "module": fortran_module,
    "json": catalogue_json,
    "symbols": symbols,
    "man": manpages,
    "html": html,
}


def main(arguments=None):
    options = parse(arguments)
    try:
        catalogue = load(options.api)
    except CatalogueError as error:
        print(error, file=sys.stderr)
        return 1
    if options.check:
        return 0
    if options.list_symbols:
        print_lines(symbols.exported(catalogue, options.list_symbols, options.target))
        return 0
    if options.examples:
        write_all(options.examples, examples(catalogue, options.target))
        return 0
    made = outputs(catalogue, options)
    if options.list_outputs:
        print_lines(str(options.out / name) if options.out else name for name in made)
    else:
        write_all(options.out, made)
    return 0


def parse(arguments):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--api", type=Path, required=True, help="the catalogue's directory")
    parser.add_argument("--out", type=Path, help="where the outputs go")
    parser.add_argument("--target", choices=("64", "32"), default="64", help="width of an address")
    parser.add_argument("--only", type=kinds_of_output, default=list(WRITERS),
                        help=f"a list of the outputs to make, of {', '.join(WRITERS)}")
    parser.add_argument("--guides", type=Path, help="the directory of the guides, which become pages of the reference")
    parser.add_argument("--version-text", default="unversioned")
    parser.add_argument("--date", default="", help="of the reference pages")
    task = parser.add_mutually_exclusive_group()
    task.add_argument("--check", action="store_true", help="validate the catalogue only")
    task.add_argument("--list-outputs", action="store_true", help="print the files that would be made")
    task.add_argument("--list-symbols", choices=tuple(symbols.LIBRARIES), help="print a library's exported symbols")
    task.add_argument("--examples", type=Path, metavar="DIR", help="write each routine's example there")
    options = parser.parse_args(arguments)
    if not (options.out or options.check or options.list_outputs or options.list_symbols or options.examples):
        parser.error("--out is missing")
    return options


def kinds_of_output(text):
    kinds = text.split(",")
    for kind in kinds:
        if kind not in WRITERS:
            raise argparse.ArgumentTypeError(f"{kind!r} is none of {', '.join(WRITERS)}")
    return kinds


def outputs(catalogue, options):
    """Every output by its name below the output directory."""
    made = {}
    for kind, writer in WRITERS.items():
        if kind in options.only:
            made |= writer.outputs(catalogue, options)
    return made


def examples(catalogue, target):
    return {
        f"{page_name(routine.name)}.f90": routine.example.lstrip("\n")
        for routine in catalogue.routines
        if routine.example and routine.exists_on(target)
    }


def write_all(directory, files):
    for name, text in files.items():
        write_if_changed(directory / name, text)


def write_if_changed(path, text):
    """A file whose content stays keeps its time, so nothing that depends on it is built again."""
    content = text.encode("utf-8")
    if path.is_file() and path.read_bytes() == content:
        return
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content)


def print_lines(lines):
    for line in lines:
        print(line)


if __name__ == "__main__":
    sys.exit(main())
