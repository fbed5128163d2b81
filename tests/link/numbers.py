"""Writes programs about the parameters that the catalogue promises: numbers.py API_DIRECTORY.

host.c prints each with the value that the host's headers or the catalogue give it, parameters.f90 with that of the
module, and own.f90 has constants of its own by these names.
"""

import sys
import tomllib
from pathlib import Path

HEADERS = ("errno.h", "fcntl.h", "limits.h", "signal.h", "stdio.h", "sys/stat.h", "sys/wait.h", "termios.h", "unistd.h")

groups = [
    group
    for path in sorted(Path(sys.argv[1]).glob("*.toml"))
    for group in tomllib.loads(path.read_text(encoding="utf-8")).get("constant_group", [])
]
constants = [(constant, group.get("by_name", True)) for group in groups for constant in group["names"]]

host = [f"#include <{header}>" for header in HEADERS] + ["int main(void) {"]
parameters = ["program parameters", "use qxport", "use qxport_numbers", "implicit none"]
own = ["program own", "use qxport", "implicit none"]
for constant, by_name in constants:
    name = constant["name"]
    parameter = name.lstrip("_")
    if constant.get("may_lack"):
        host += [f"#ifndef {name}", f"#define {name} -1", "#endif"]
    host.append(f'printf("{parameter} %d\\n", (int)({constant.get("value", name)}));')
    parameters.append(f"print '(a, 1x, i0)', '{parameter}', {parameter}")
    if by_name:
        parameters.append(f"if ({parameter} /= ipxfconst('{name}')) error stop '{parameter} is not {name}'")
    own.append(f"character(*), parameter :: {parameter} = 'a constant of the program'")

Path("host.c").write_text("\n".join(host + ["}", ""]), encoding="utf-8")
Path("parameters.f90").write_text("\n".join(parameters + ["end", ""]), encoding="utf-8")
Path("own.f90").write_text("\n".join(own + ["end", ""]), encoding="utf-8")
