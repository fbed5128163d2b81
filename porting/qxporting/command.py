"""The command line of `qxport`."""

import argparse
import sys

from . import module_command
from .doctor import command as doctor_command
from .failure import Failure

COMMANDS = {
    "module": (module_command, "make modules of any name, with the library's routines under any names"),
}


def main(arguments, installed):
    for stream in (sys.stdout, sys.stderr):
        stream.reconfigure(errors="surrogateescape")  # names of files are bytes, and told as they are
    try:
        if arguments[:1] == ["doctor"]:  # what it hands on to the compiler is no option of its own
            return doctor_command.run(arguments[1:], installed)
        options = parse(arguments)
        return options.command.run(options, installed)
    except Failure as failure:
        for line in failure.lines:
            print(f"qxport: {line}", file=sys.stderr)
        return failure.status
    except BrokenPipeError:  # the reader has seen enough
        sys.stderr.close()
        return 2
    except KeyboardInterrupt:
        return 130


def parse(arguments):
    parser = argparse.ArgumentParser(prog="qxport", description="Brings old Fortran programs to the library.",
                                     epilog="The page qxport(1) has examples.")
    commands = parser.add_subparsers(required=True, metavar="COMMAND")
    for name, (command, summary) in COMMANDS.items():
        subparser = commands.add_parser(name, help=summary, description=summary[0].upper() + summary[1:] + ".")
        command.add_arguments(subparser)
        subparser.set_defaults(command=command)
    commands.add_parser("doctor", help="tell what stands between a program and the library", add_help=False)
    return parser.parse_args(arguments)
