"""The HTML reference: a front page with a search, one page an area, one of tasks. It works from a file, without any server."""

import json
from html import escape

from . import guides
from .entries import page_name
from .front import TASKS
from .html_assets import SEARCH, STYLE
from .prose import (
    COMPILE,
    CONSTANTS,
    INTENTS,
    NUMBERS_SUMMARY,
    NUMBERS_TEXT,
    NUMBERS_TITLE,
    USE_NUMBERS,
    blocks,
    c_synopsis,
    component_capacity,
    component_type,
    constant_value,
    creation,
    field_type,
    host_value,
    notes,
    plain,
    reachable,
    spans,
    synopsis,
)
from .records import CONSTANTS_PAGE, NUMBERS


_TO_INDEX = '<nav aria-label="Site"><a href="index.html">Reference</a></nav>\n'


def outputs(catalogue, options):
    writer = _Writer(catalogue, options)
    pages = {"html/index.html": writer.index(), "html/style.css": STYLE}
    pages |= {f"html/{area.name}.html": writer.area(area) for area in catalogue.areas}
    pages |= {f"html/{guide.page}": writer.guide(guide) for guide in writer.guides}
    if catalogue.tasks:
        pages[f"html/{TASKS}.html"] = writer.tasks()
    return pages | ({f"html/{NUMBERS}.html": writer.numbers()} if catalogue.constant_groups else {})


def _names(catalogue):
    """(name, place, what it is, a few words, further words to search in) of every entry."""
    for area in catalogue.areas:
        for name, anchor, what, text, *words in _names_of_area(area):
            yield name, f"{area.name}.html#{anchor}", what, text, " ".join(words)
    if catalogue.constant_groups:
        yield NUMBERS, f"{NUMBERS}.html", "module", NUMBERS_SUMMARY, ""
    for constant in (c for group in catalogue.constant_groups if not group.by_name for c in group.names):
        yield constant.parameter, f"{NUMBERS}.html#{constant.parameter}", "constant", constant.text, ""


def _names_of_area(area):
    """(name, anchor, what it is, a few words[, further words]) of what its page describes."""
    for routine in area.routines:
        yield routine.name, page_name(routine.name), "routine", routine.summary, routine.text, area.title
    for record in area.records:
        yield record.name, page_name(record.name), "type", f"record of {record.bytes} bytes", record.text
    for kind in area.record_kinds:
        yield kind.page, kind.page, "record", kind.summary, kind.text
    groups = [group for group in area.constant_groups if group.by_name]
    if groups:
        yield CONSTANTS_PAGE, CONSTANTS_PAGE, "constants", "all that a program knows by name"
    for constant in (c for group in groups for c in group.names):
        yield constant.name, constant.name, "named constant", constant.text
    for constant in area.constants:
        yield constant.name, page_name(constant.name), "constant", constant.text
    for cell in area.data:
        yield cell.name, page_name(cell.name), "data cell", cell.text
    for service in area.services:  # a routine may have the same name
        yield service.symbol, f"service-{service.symbol}", "service", service.text


class _Writer:
    """Writes the pages; knows where each name of the catalogue is described."""

    def __init__(self, catalogue, options):
        self.catalogue = catalogue
        self.options = options
        self.guides = guides.load(options)
        self.places = {}
        for name, place, *_ in _names(catalogue):
            self.places.setdefault(name, place)

    def index(self):
        families = "".join(self._family(family) for family in self.catalogue.families)
        if self.catalogue.constant_groups:
            families += (f'<section class="family">\n<h2>{NUMBERS_TITLE}</h2>\n<p>{escape(NUMBERS_SUMMARY.capitalize())}: '
                         f'<a href="{NUMBERS}.html"><code>{NUMBERS}</code></a>.</p>\n</section>\n')
        names = sorted(_names(self.catalogue), key=lambda entry: (entry[0].lower(), entry[1]))
        items = "".join(self._index_item(name, place, what, text) for name, place, what, text, _ in names)
        items += "".join(
            f'<li data-name=""><a href="{TASKS}.html#{task.name}">{self._inline(spans(task.title), links=False)}</a> '
            '<span class="muted">task</span></li>\n' for task in self.catalogue.tasks
        )
        words = [plain(words).lower() for *_, words in names]
        words += [plain(task.text).lower() for task in self.catalogue.tasks]
        data = json.dumps(words).replace("/", "\\/")  # no tag ends the script
        start = ""
        if self.catalogue.tasks:
            start = (f'<p>Where to start: <a href="{TASKS}.html">the page of tasks</a> has whole programs for what programs '
                     "often do, from deleting a file to catching Ctrl-C.</p>\n")
        body = f"""<h1>Fortran run-time support: reference</h1>
<form id="search-form" role="search">
<label for="name-search">Search names and texts</label>
<input type="search" id="name-search" autocomplete="off" spellcheck="false">
</form>
<p id="name-count" class="muted" role="status"></p>
<div id="front">
{start}<p>A program that uses the module <code>qxport</code> is built with</p>
{self.code([COMPILE], "How to build")}{self._guides()}{families}<h2>All names</h2>
</div>
<ul id="name-index" class="names">
{items}</ul>
<script>
var WORDS = {data};
{SEARCH}</script>
"""
        return self._page("Reference", body, nav="")

    def _guides(self):
        items = "".join(f'<li><a href="{g.page}">{self.text(g.title)}</a>: {self.text(g.summary)}</li>\n' for g in self.guides)
        return f"<h2>Guides</h2>\n<ul>\n{items}</ul>\n" if items else ""

    def guide(self, guide):
        return self._page(guide.title.replace("`", ""), guides.html_body(guide, self), _TO_INDEX)

    def table(self, caption, rows):
        head, *body = [[self.text(cell) for cell in row] for row in rows]
        return _table(caption.replace("`", ""), head, body)

    def _family(self, family):
        areas = "".join(f'<li><a href="{area.name}.html">{escape(area.title)}</a></li>\n' for area in family.areas)
        return (f'<section class="family">\n<h2>{escape(family.title)}</h2>\n<p>{self.text(family.text)}</p>\n'
                f'<ul class="areas">\n{areas}</ul>\n</section>\n')

    def tasks(self):
        listed = "".join(f'<li><a href="#{task.name}">{self._inline(spans(task.title), links=False)}</a></li>\n'
                         for task in self.catalogue.tasks)
        body = f"<h1>Tasks</h1>\n<p>Each is a whole program. It is built with</p>\n{self.code([COMPILE], 'How to build')}"
        body += f'<ul class="names">\n{listed}</ul>\n'
        for task in self.catalogue.tasks:
            body += f'<section class="entry" id="{task.name}">\n<h2>{self._inline(spans(task.title), links=False)}</h2>\n'
            body += self._prose(task.text) + self.code(task.program.split("\n"), f"Program {task.name}") + "</section>\n"
        return self._page("Tasks", body, _TO_INDEX)

    def _index_item(self, name, place, what, text):
        first = next((content for kind, content in blocks(text) if kind == "paragraph"), [])
        return (
            f'<li data-name="{escape(name.lower())}"><a href="{escape(place)}"><code>{escape(name)}</code></a> '
            f'<span class="muted">{what}</span> {self._inline(first, links=False)}</li>\n'
        )

    def area(self, area):
        body = f"<h1>{escape(area.title)}</h1>\n" + self._prose(area.text)
        if area.has_module("64") or area.has_module("32"):
            body += f"<p>Module <code>{area.module}</code>, also part of <code>{area.family_module}</code> and of "
            body += "<code>qxport</code>.</p>\n"
        if area.routines:
            listed = "".join(
                f'<li><a href="#{page_name(r.name)}"><code>{escape(r.name)}</code></a> {self.text(r.summary)}</li>\n'
                for r in area.routines
            )
            body += f'<h2>Routines</h2>\n<ul class="names">\n{listed}</ul>\n'
            body += "".join(self._routine(routine) for routine in area.routines)
        if area.records:
            body += "<h2>Types</h2>\n" + "".join(self._record(record) for record in area.records)
        if area.record_kinds:
            body += "<h2>Records</h2>\n" + "".join(self._record_kind(kind) for kind in area.record_kinds)
        if any(group.by_name for group in area.constant_groups):
            body += f'<h2 id="{CONSTANTS_PAGE}">Constants by name</h2>\n' + self._prose(CONSTANTS)
            body += self._constant_groups([group for group in area.constant_groups if group.by_name])
        if area.constants:
            body += "<h2>Constants</h2>\n" + self._constants(area.constants)
        if area.data:
            body += "<h2>Data cells</h2>\n<dl>\n" + "".join(
                self._declared(cell.name, page_name(cell.name), f"extern {cell.c};", cell.text) for cell in area.data
            ) + "</dl>\n"
        if area.services:
            body += "<h2>Services of the Fortran run-time</h2>\n<dl>\n" + "".join(
                self._declared(s.symbol, f"service-{s.symbol}", f"{' '.join(s.c.split())};", s.text)
                for s in area.services
            ) + "</dl>\n"
        return self._page(area.title, body, _TO_INDEX)

    def numbers(self):
        body = f"<h1>{NUMBERS_TITLE}</h1>\n{self.code([USE_NUMBERS], 'Use of the module')}"
        body += self._prose(NUMBERS_TEXT, NUMBERS)
        body += "<h2>Beside the constants by name</h2>\n"
        groups = [group for group in self.catalogue.constant_groups if not group.by_name]
        return self._page(NUMBERS_TITLE, body + self._constant_groups(groups), _TO_INDEX)

    def _routine(self, routine):
        parts = [f"<h3><code>{escape(routine.name)}</code></h3>\n<p>{self.text(routine.summary)}</p>\n"]
        lines = synopsis(routine)
        parts.append(self.code(lines, f"Synopsis of {routine.name}"))
        parts += [f"<p>{self.text(note)}</p>\n" for note in notes(routine)]
        if routine.args:
            parts.append(self._arguments(routine))
        parts.append("<h4>Description</h4>\n" + self._prose(routine.text, routine.name))
        if routine.result:
            kind = f"<p><code>{escape(routine.result.fortran)}</code></p>\n"
            parts.append("<h4>Return value</h4>\n" + kind + self._prose(routine.result_text))
        if routine.errors:
            errors = "".join(
                f"<dt><code>{escape(e.number)}</code></dt><dd>{self.text(e.when)}</dd>\n" for e in routine.errors
            )
            parts.append(f"<h4>Errors</h4>\n<dl>\n{errors}</dl>\n")
        if routine.example:
            parts.append("<h4>Example</h4>\n" + self.code(routine.example.strip("\n").split("\n"), "Example"))
        if lines[0].startswith("use ") or "external" in lines[0]:
            parts.append("<h4>C interface</h4>\n" + self.code(c_synopsis(routine), "Prototype"))
        parts.append("<h4>Origin</h4>\n" + self._prose(routine.origin))
        if routine.related:
            links = ", ".join(self._link(name) for name in routine.related)
            parts.append(f"<h4>See also</h4>\n<p>{links}</p>\n")
        return f'<section class="entry" id="{page_name(routine.name)}">\n{"".join(parts)}</section>\n'

    def _arguments(self, routine):
        rows = [
            (
                f"<code>{escape(a.name)}</code>",
                f"<code>{escape(a.kind.fortran)}</code>" + (f" array ({escape(a.shape)})" if a.shape else ""),
                ", ".join(
                    ([INTENTS[a.intent]] if a.intent else [])
                    + (["optional"] if a.optional else [])
                    + (["by value"] if a.value else [])
                ),
                self._meaning(a),
            )
            for a in routine.args
        ]
        return "<h4>Arguments</h4>\n" + _table(f"Arguments of {routine.name}", ("Name", "Type", "Use", "Meaning"), rows)

    def _record(self, record):
        rows = [
            (
                str(field.offset),
                f"<code>{escape(field_type(field))}</code>",
                f"<code>{escape(field.name)}</code>",
                self._meaning(field),
            )
            for field in record.fields
        ]
        table = _table(f"Layout of {record.name}, {record.bytes} bytes", ("Offset", "Type", "Field", "Meaning"), rows)
        title = f"<h3><code>{escape(record.name)}</code></h3>\n"
        body = title + self._prose(record.text) + table
        return f'<section class="entry" id="{page_name(record.name)}">\n{body}</section>\n'

    def _record_kind(self, kind):
        body = f"<h3><code>{escape(kind.page)}</code></h3>\n<p>{self.text(kind.summary)}</p>\n"
        body += self.code([creation(kind)], f"How to make a {kind.name}")
        body += self._prose(kind.text, kind.page)
        rows = [
            (
                f"<code>{escape(component.name)}</code>",
                f"<code>{escape(component_type(component))}</code>",
                component.access.replace(" ", ", "),
                self.text(component_capacity(component)),
                self._meaning(component),
            )
            for component in reachable(kind)
        ]
        headings = ("Name", "Type", "Use", "Capacity", "Meaning")
        body += _table(f"Components of {kind.name}", headings, rows) if rows else ""
        return f'<section class="entry" id="{kind.page}">\n{body}</section>\n'

    def _constant_groups(self, groups):
        body = ""
        for group in groups:
            names = [constant.name if group.by_name else constant.parameter for constant in group.names]
            rows = [
                (f'<code id="{name}">{name}</code>', escape(host_value(constant), quote=False), self.text(constant.text))
                for name, constant in zip(names, group.names)
            ]
            body += f"<h3>{self.text(group.title)}</h3>\n" + self._prose(group.text)
            body += _table(group.title, ("Name", "Value", "Meaning"), rows)
        return body

    def _constants(self, constants):
        rows = [
            (
                f'<code id="{page_name(c.name)}">{escape(c.name)}</code>',
                f"<code>{escape(c.kind.fortran)}</code>",
                f"<code>{escape(constant_value(c))}</code>",
                self.text(c.text),
            )
            for c in constants
        ]
        return _table("Named constants", ("Name", "Type", "Value", "Meaning"), rows)

    def _declared(self, name, anchor, declaration, text):
        title = f'<dt id="{escape(anchor)}"><code>{escape(name)}</code></dt>\n'
        return title + f"<dd>{self.code([declaration], f'Declaration of {name}')}{self._prose(text)}</dd>\n"

    def code(self, lines, label):
        """Scrolls where it is too wide, so a keyboard must be able to reach it."""
        source = escape("\n".join(lines))
        return f'<pre tabindex="0" role="region" aria-label="{escape(label)}"><code>{source}</code></pre>\n'

    def _prose(self, text, own_name=None):
        return "".join(self._block(what, content, own_name) for what, content in blocks(text))

    def _block(self, what, content, own_name):
        if what == "code":
            return self.code(content, "Code")
        if what == "list":
            return "<ul>\n" + "".join(f"<li>{self._inline(item, own_name)}</li>\n" for item in content) + "</ul>\n"
        return f"<p>{self._inline(content, own_name)}</p>\n"

    def text(self, text):
        return self._inline(spans(text))

    def _inline(self, pieces, own_name=None, links=True):
        return "".join(
            (self._link(text) if links and text != own_name else f"<code>{escape(text)}</code>") if code
            else escape(text, quote=False)
            for code, text in pieces
        )

    def _meaning(self, entry):
        return self.text(entry.text) + (f", in {escape(entry.unit)}" if entry.unit else "")

    def _link(self, name):
        """A name of the catalogue leads to its description."""
        code = f"<code>{escape(name)}</code>"
        place = self.places.get(name)
        return f'<a href="{escape(place)}">{code}</a>' if place else code

    def _page(self, title, body, nav):
        return f"""<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>{escape(title)} - qxport</title>
<link rel="stylesheet" href="style.css">
</head>
<body>
<a class="skip" href="#main-content">Skip to content</a>
<header>
{nav}</header>
<main id="main-content">
{body}</main>
<footer>Version {escape(self.options.version_text)}, {escape(self.options.date)}</footer>
</body>
</html>
"""


def _table(caption, headings, rows):
    head = "".join(f'<th scope="col">{heading}</th>' for heading in headings)
    lines = [f"<table>\n<caption>{escape(caption)}</caption>\n<thead><tr>{head}</tr></thead>\n<tbody>\n"]
    for first, *rest in rows:
        cells = f'<th scope="row">{first}</th>' + "".join(f"<td>{cell}</td>" for cell in rest)
        lines.append(f"<tr>{cells}</tr>\n")
    return f'<div class="scroll">{"".join(lines)}</tbody>\n</table></div>\n'
