"""The linker version scripts: exactly the catalogue's symbols are visible."""

import re

# Programs that are linked now say what they need; a change that they would notice gets a version of its own.
VERSION = "QXPORT_1.0"
LIBRARIES = {"qxport": "libqxportmt", "qxcore": "libqxcoremt"}
_PLAIN = re.compile(r"[A-Za-z_][A-Za-z0-9_]*\Z")


def outputs(catalogue, options):
    """The version script of each library, by file name."""
    return {
        f"symbols/{file}.map": version_script(catalogue.symbols(library, options.target))
        for library, file in LIBRARIES.items()
    }


def version_script(symbols):
    lines = [f"{VERSION} {{"]
    if symbols:
        lines += ["  global:"] + [f"    {_quoted(symbol)};" for symbol in symbols]
    return "\n".join(lines + ["  local:", "    *;", "};", ""])


def _quoted(symbol):
    """The linker reads an unquoted name as a pattern."""
    return symbol if _PLAIN.match(symbol) else f'"{symbol}"'
