"""wide_source.py SOURCE OUTPUT: a test program as one that leaves the kinds of its integers and truths to the compiler.

What an interface of C says stays as it is, and so does what is declared with a kind that has a name.
"""

import re
import sys
from pathlib import Path


def wide(text):
    lines, is_interface = [], False
    for line in text.splitlines():
        if re.match(r"\s*(abstract )?interface\b", line):
            is_interface = True
        elif re.match(r"\s*end interface\b", line):
            is_interface = False
        if not is_interface and "bind(C" not in line:
            line = re.sub(r"\b(integer|logical)\(4\)", r"\1", line)
            line = re.sub(r"\b(\d+)_4\b", r"\1", line)
            line = re.sub(r"\b((?:int|logical)\((?:[^()]|\([^()]*\))*), 4\)", r"\1)", line)
        lines.append(line)
    return "\n".join([*lines, ""])


if __name__ == "__main__":
    Path(sys.argv[2]).write_text(wide(Path(sys.argv[1]).read_text(encoding="utf-8")), encoding="utf-8")
