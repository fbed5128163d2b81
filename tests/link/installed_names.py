"""Prints the names that an installed reference does not describe: installed_names.py SHARE_DIRECTORY, names on stdin.

A name is a symbol that the installed libraries export. It has a man page or stands in the overview, and its description
in the HTML reference has an anchor.
"""

import re
import sys
from pathlib import Path

share = Path(sys.argv[1])
pages = {path.name.removesuffix(".3f") for path in (share / "man/man3").glob("*.3f")}
overview = (share / "man/man7/qxport.7").read_text(encoding="utf-8").replace("\\-", "-")
html = [path.read_text(encoding="utf-8") for path in (share / "doc/qxport/html").glob("*.html")]
anchors = {anchor for text in html for anchor in re.findall(r' id="([^"]*)"', text)}

for symbol in sys.stdin.read().split():
    # A routine's symbol has an underscore behind the name; a file's name has no `$` and does not start with what is one.
    names = {symbol, symbol.removesuffix("_")}
    names |= {name.replace("$", "_").lstrip("_") for name in names}
    if not names & pages and f"\\fB{symbol}\\fP" not in overview:
        print(f"{symbol}: no man page")
    if not (names | {f"service-{symbol}"}) & anchors:
        print(f"{symbol}: not in the HTML reference")
