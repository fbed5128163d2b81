"""The linker version scripts: exactly the catalogue's symbols are visible."""

import re

from . import default_kinds

# Programs that are linked now say what they need; a change that they would notice gets a version of its own.
VERSION = "QXPORT_1.0"
LIBRARIES = {"qxport": "libqxportmt", "qxcore": "libqxcoremt", "qxport_i8": "libqxportmt_i8"}
_PLAIN = re.compile(r"[A-Za-z_][A-Za-z0-9_]*\Z")


def outputs(catalogue, options):
    """The version script of each library, by file name."""
    return {
        f"symbols/{file}.map": version_script(exported(catalogue, library, options.target))
        for library, file in LIBRARIES.items()
    }


def exported(catalogue, library, target):
    """Every symbol of a library, sorted."""
    if library == "qxport_i8":
        return default_kinds.symbols(catalogue, target)
    return catalogue.symbols(library, target)


def version_script(symbols):
    lines = [f"{VERSION} {{"]
    if symbols:
        lines += ["  global:"] + [f"    {_quoted(symbol)};" for symbol in symbols]
    return "\n".join(lines + ["  local:", "    *;", "};", ""])


def _quoted(symbol):
    """The linker reads an unquoted name as a pattern."""
    return symbol if _PLAIN.match(symbol) else f'"{symbol}"'
