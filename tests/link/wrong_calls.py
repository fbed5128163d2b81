"""Calls every routine that has a plain binding once with each argument wrong, and reads what the compiler says.

wrong_calls.py API_DIRECTORY ALIASES COMPILER OPTIONS...: prints the calls whose message does not name the argument.
ALIASES is a file of the symbols that stand behind generic names.
"""

import os
import re
import subprocess
import sys
import tomllib
from pathlib import Path

# For each type an actual argument that fits, and one that does not.
ACTUAL = {
    "integer(1)": ("i1", "i4"), "integer(2)": ("i2", "i4"), "integer(4)": ("i4", "i8"), "integer(8)": ("i8", "i4"),
    "integer(ptr)": ("ip", "r4"), "real(4)": ("r4", "r8"), "real(8)": ("r8", "i8"), "complex(4)": ("c4", "c8"),
    "complex(8)": ("c8", "c4"), "logical(4)": ("l4", "i4"), "character": ("text", "i4"), "procedure": ("called", "i4"),
    "type": ("record", "i4"), "type(*)": ("i4", None),
}
DECLARATIONS = """\
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  use qxport, only: {used}
  implicit none
  integer(1) :: i1, i1s(99)
  integer(2) :: i2, i2s(99)
  integer(4) :: i4, i4s(99)
  integer(8) :: i8, i8s(99)
  integer(c_intptr_t) :: ip, ips(99)
  real(4) :: r4, r4s(99)
  real(8) :: r8, r8s(99)
  complex(4) :: c4, c4s(99)
  complex(8) :: c8, c8s(99)
  logical(4) :: l4, l4s(99)
  character(300) :: text, texts(99)
  external :: called
"""


def main():
    directory, aliases, *command = sys.argv[1:]
    behind_generics = set(Path(aliases).read_text(encoding="utf-8").split())
    source, wrong = [], {}
    for entry in plain_routines(Path(directory), behind_generics):
        for place, argument in enumerate(entry.get("args", [])):
            if argument["type"] != "type(*)":
                source += subroutine(entry, place)
                wrong[len(source) - 1] = (entry["name"], argument["name"])
    told = messages(command, source)
    for line, (routine, name) in wrong.items():
        if f"'{name}'" not in told.pop(line, ""):
            print(f"{routine}: argument {name} is not named")
    for line, text in told.items():
        print(f"{source[line - 1].strip()}: {text}")
    if not wrong:
        print("no routine has a plain binding")


def plain_routines(directory, behind_generics):
    for path in sorted(directory.glob("*.toml")):
        for entry in tomllib.loads(path.read_text(encoding="utf-8")).get("routine", []):
            regular = entry.get("symbol", f"{entry['name']}_") == f"{entry['name']}_" and "module_name" not in entry
            if regular and entry.get("module", True) and f"qxport_{entry['name']}_" not in behind_generics:
                yield entry


def subroutine(entry, wrong):
    """A subroutine that calls with one argument wrong; the call stands before the last line."""
    arguments = entry["args"]
    records = {match[1] for argument in arguments if (match := re.match(r"type\((\w+)\)", argument["type"]))}
    actual = ", ".join(actual_argument(argument, place == wrong) for place, argument in enumerate(arguments))
    lines = [f"subroutine {entry['name']}_{wrong}"]
    lines += DECLARATIONS.format(used=", ".join([entry["name"], *sorted(records)])).splitlines()
    lines += [f"  type({record}) :: record" for record in records]
    call = f"{entry['name']}({actual})"
    return lines + [f"  call {call}" if entry["kind"] == "subroutine" else f"  print *, {call}", "end"]


def actual_argument(argument, wrong):
    kind = argument["type"]
    fits, does_not = ACTUAL.get(kind) or ACTUAL[kind.partition("(")[0]]
    if wrong:
        return does_not
    return f"{fits}s" if "shape" in argument else fits


def messages(command, source):
    """What the compiler says of each line, by its number."""
    Path("wrong.f90").write_text("\n".join(source) + "\n", encoding="utf-8")
    command = [*command, "-fsyntax-only", "-fmax-errors=0", "-fdiagnostics-plain-output", "wrong.f90"]
    said = subprocess.run(command, capture_output=True, text=True, check=False, env=os.environ | {"LC_ALL": "C"}).stderr
    told = {}
    for line, text in re.findall(r"^wrong\.f90:(\d+):\d+: (.*)$", said, re.MULTILINE):
        told[int(line)] = f"{told.get(int(line), '')}{text} "
    return told


if __name__ == "__main__":
    main()
