"""Prints the links between a directory's HTML pages that lead nowhere: broken_links.py DIRECTORY."""

import sys
from html.parser import HTMLParser
from pathlib import Path


class Page(HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.links, self.anchors = [], set()
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        for key, value in attributes:
            if key == "id":
                self.anchors.add(value)
            elif key in ("href", "src"):
                self.links.append(value)


directory = Path(sys.argv[1])
pages = {path.name: Page(path) for path in directory.glob("*.html")}
for name, page in sorted(pages.items()):
    for link in page.links:
        if link.startswith(("http:", "https:", "mailto:", "data:")):
            continue
        target, _, anchor = link.partition("#")
        target = target or name
        if not (directory / target).is_file() or (anchor and anchor not in pages[target].anchors):
            print(f"{name}: {link}")
