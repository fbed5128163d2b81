"""The man pages: one a routine, one a record, one of the named constants, and an overview."""

import re
import sys

from . import guides
from .entries import page_name
from .prose import (
    COMPILE,
    CONSTANTS,
    blocks,
    NUMBERS_SUMMARY,
    NUMBERS_TEXT,
    NUMBERS_TITLE,
    USE_NUMBERS,
    argument_facts,
    component_capacity,
    component_type,
    constant_value,
    creation,
    field_type,
    host_value,
    mentions,
    notes,
    reachable,
    spans,
    synopsis,
)
from .records import CONSTANTS_PAGE, NUMBERS

_ESCAPES = {"\\": "\\e", "'": "\\(aq", "`": "\\(ga", "^": "\\(ha", "~": "\\(ti", '"': "\\(dq"}


def outputs(catalogue, options):
    pages = {"man/man7/qxport.7": overview(catalogue, options)}
    if catalogue.tasks:
        pages["man/man7/qxport_tasks.7"] = tasks_page(catalogue, options)
    for area in catalogue.areas:
        for routine in area.routines:
            pages[f"man/man3/{page_name(routine.name)}.3f"] = routine_page(routine, options)
        for record in area.records:
            pages[f"man/man3/{page_name(record.name)}.3f"] = record_page(record, catalogue, options)
    for kind in catalogue.record_kinds:
        pages[f"man/man3/{kind.page}.3f"] = record_kind_page(kind, catalogue, options)
    if catalogue.constant_groups:
        pages[f"man/man3/{CONSTANTS_PAGE}.3f"] = constants_page(catalogue, options)
        pages[f"man/man3/{NUMBERS}.3f"] = numbers_page(catalogue, options)
    for guide in guides.load(options):
        pages[f"man/man{guide.section}/{guide.name}.{guide.section}"] = guides.man_page(guide, options, sys.modules[__name__])
    return pages


def escape(text, code=False):
    """Text that groff prints as it stands. In code every hyphen is a minus, as a reader may copy it."""
    text = "".join(_ESCAPES.get(c, c) for c in text)
    text = re.sub(r"[^\x00-\x7f]", lambda c: f"\\[u{ord(c[0]):04X}]", text)
    return text.replace("-", "\\-") if code else re.sub(r"(?<!\w)-(?=\d)", r"\\-", text)


def _line(text):
    """A leading dot would be read as a request."""
    return f"\\&{text}" if text.startswith((".", "'")) else text


def inline(pieces):
    """Spans as one line of input."""
    return _line("".join(f"\\fB{escape(t, True)}\\fP" if code else escape(t) for code, t in pieces))


def _paragraphs(text, between=".PP"):
    lines = []
    for number, (what, content) in enumerate(blocks(text)):
        if what == "code":
            lines += [between, ".RS 4"] + verbatim(content) + [".RE"]
        elif what == "list":
            for item in content:
                lines += [".IP \\(bu 2", inline(item)]
        else:
            lines += [between] if number else []
            lines.append(inline(content))
    return lines


def verbatim(source):
    return [".EX"] + [_line(escape(line, True)) for line in source] + [".EE"]


def title(name, section, options):
    date, version = escape(options.date), escape(options.version_text)
    return f'.TH "{escape(name.upper(), True)}" "{section}" "{date}" "{version}" "Fortran run\\-time support"'


def heading(name, summary):
    # Left-adjusted and without hyphenation: names and code in narrow columns would be torn apart.
    return [".ad l", ".nh", ".SH NAME", f"{_line(escape(name, True))} \\- {inline(spans(summary))}"]


def _item(tag, text):
    """A tagged paragraph; further paragraphs of the text keep the indent."""
    return [".TP", tag] + _paragraphs(text, ".IP")


def _page(lines):
    return "\n".join(lines) + "\n"


def routine_page(routine, options):
    lines = [title(routine.name, "3f", options)] + heading(routine.name, routine.summary)
    lines += [".SH SYNOPSIS", ".nf"] + [_line(f"\\fB{escape(s, True)}\\fP" if s else "") for s in synopsis(routine)]
    lines += [".fi"]
    if routine.args:
        lines += [".SH ARGUMENTS"]
        for argument in routine.args:
            facts = escape(", ".join(argument_facts(argument)))
            lines += _item(f"\\fI{escape(argument.name, True)}\\fP \\(en {facts}", argument.text)
    lines += [".SH DESCRIPTION"] + _paragraphs(routine.text)
    for note in notes(routine):
        lines += [".PP", inline(spans(note))]
    if routine.result:
        lines += [".SH RETURN VALUE"] + _item(escape(routine.result.fortran), routine.result_text)
    if routine.errors:
        lines += [".SH ERRORS"]
        for error in routine.errors:
            lines += _item(f"\\fB{escape(error.number, True)}\\fP", error.when)
    if routine.example:
        lines += [".SH EXAMPLE"] + verbatim(routine.example.strip("\n").split("\n"))
    lines += [".SH ORIGIN"] + _paragraphs(routine.origin)
    return _page(lines + _see_also(routine.related))


def _see_also(related):
    pages = [f".BR {escape(page_name(name), True)} (3f)," for name in related]
    return [".SH SEE ALSO"] + pages + [".BR qxport (7)"]


def record_page(record, catalogue, options):
    users = [r.name for r in catalogue.routines if any(a.kind.record == record.name for a in r.args)]
    lines = ["'\\\" t", title(record.name, "3f", options)] + heading(record.name, "record type")
    lines += [".SH SYNOPSIS", ".nf", f"\\fBuse qxport, only: {record.name}\\fP", ""]
    lines += [f"\\fBtype({record.name}) :: record\\fP", ".fi"]
    lines += [".SH DESCRIPTION"] + _paragraphs(record.text)
    lines += [".PP", f"The record takes {record.bytes} bytes. Offsets count bytes from its beginning."]
    lines += [".PP", ".TS", "tab(\t);", "lb lb lb lb", "r l l lx.", "Offset\tType\tField\tMeaning"]
    for field in record.fields:
        meaning = inline(spans(field.text)) + (f", in {escape(field.unit)}" if field.unit else "")
        cells = [str(field.offset), escape(field_type(field)), escape(field.name, True), f"T{{\n{meaning}\nT}}"]
        lines.append("\t".join(cells))
    return _page(lines + [".TE"] + _see_also(users))


def record_kind_page(kind, catalogue, options):
    lines = ["'\\\" t", title(kind.page, "3f", options)] + heading(kind.page, kind.summary)
    lines += [".SH SYNOPSIS", ".nf", "\\fBuse qxport, only: pxfstructcreate\\fP", ""]
    lines += [f"\\fB{escape(creation(kind), True)}\\fP", ".fi"]
    lines += [".SH DESCRIPTION"] + _paragraphs(kind.text)
    if reachable(kind):
        lines += [".SH COMPONENTS", ".TS", "tab(\t);", "lb lb lb lb", "l l l lx.", "Name\tType\tUse\tMeaning"]
        lines += [_component(component) for component in reachable(kind)] + [".TE"]
    return _page(lines + _see_also([r.name for r in catalogue.routines if mentions(r, kind.page)]))


def _component(component):
    capacity = component_capacity(component)
    meaning = component.text + (f"; {capacity}" if capacity else "")
    meaning = inline(spans(meaning)) + (f", in {escape(component.unit)}" if component.unit else "")
    cells = [f"\\fB{component.name}\\fP", escape(component_type(component)), component.access]
    return "\t".join(cells + [f"T{{\n{meaning}\nT}}"])


def constants_page(catalogue, options):
    areas = [area for area in catalogue.areas if any(group.by_name for group in area.constant_groups)]
    lines = [title(CONSTANTS_PAGE, "3f", options)] + heading(CONSTANTS_PAGE, "constants that a program knows by name")
    lines += [".SH SYNOPSIS", ".nf", "\\fBuse qxport, only: ipxfconst\\fP", ""]
    lines += ["\\fBivalue = ipxfconst(\\(aqNAME\\(aq)\\fP", ".fi", ".SH DESCRIPTION"] + _paragraphs(CONSTANTS)
    for group in (group for area in areas for group in area.constant_groups if group.by_name):
        lines += _constant_group(group)
    return _page(lines + _see_also([routine.name for area in areas for routine in area.routines] + [NUMBERS]))


def numbers_page(catalogue, options):
    lines = [title(NUMBERS, "3f", options)] + heading(NUMBERS, NUMBERS_SUMMARY)
    lines += [".SH SYNOPSIS", ".nf", f"\\fB{escape(USE_NUMBERS, True)}\\fP", ".fi", ".SH DESCRIPTION"]
    lines += _paragraphs(NUMBERS_TEXT)
    for group in (group for group in catalogue.constant_groups if not group.by_name):
        lines += _constant_group(group)
    return _page(lines + _see_also([CONSTANTS_PAGE]))


def _constant_group(group):
    lines = [f".SS {inline(spans(group.title))}"] + _paragraphs(group.text)
    for constant in group.names:
        name = constant.name if group.by_name else constant.parameter
        lines += [".TP 24", f"\\fB{name}\\fP", _host_constant(constant), ".PD 0"]
    return lines + [".PD"]


def _host_constant(constant):
    own = constant.value is not None or constant.may_lack
    return inline(spans(f"{constant.text} ({host_value(constant)})" if own else constant.text))


def overview(catalogue, options):
    lines = [title("qxport", "7", options)] + heading("qxport", "run-time support routines for Fortran programs")
    lines += [
        ".SH SYNOPSIS",
        ".nf",
        "\\fBuse qxport, only:\\fP \\fIname\\fP, ...",
        "",
        f"\\fB{escape(COMPILE, True)}\\fP",
        ".fi",
        ".SH DESCRIPTION",
        "The module \\fBqxport\\fP has an interface of every routine that is listed below; each area and each family",
        "has one of its own. Since they bring many names, a program lists those that it uses with \\fBonly:\\fP.",
        "A routine can also be called without the module, as an external procedure of the same name.",
        "From C and C++ the routines are declared in \\fB<qxport/qxport.h>\\fP.",
    ]
    if catalogue.tasks:
        lines += [".PP", "Where to start: \\fBqxport_tasks\\fP(7) has whole programs for what programs often do."]
    for family in catalogue.families:
        lines += _item(f"\\fB{escape(family.title)}\\fP (\\fB{family.module}\\fP)", family.text)
    written = guides.load(options)
    if written:
        lines.append(".SS Guides")
    for guide in written:
        lines += _item(f".BR {escape(guide.name, True)} ({guide.section})", guide.summary)
    for area in catalogue.areas:
        lines += _area(area)
    if catalogue.constant_groups:
        lines += [f'.SH "{NUMBERS_TITLE.upper()}"'] + _paragraphs(NUMBERS_TEXT)
        lines += _item(f".BR {NUMBERS} (3f)", NUMBERS_SUMMARY)
    return _page(lines)


def tasks_page(catalogue, options):
    lines = [title("qxport_tasks", "7", options)] + heading("qxport_tasks", "programs for what programs often do")
    lines += [".SH DESCRIPTION", "Each is a whole program, built with", ".PP", f"\\fB{escape(COMPILE, True)}\\fP"]
    for task in catalogue.tasks:
        lines += [f'.SH "{escape(task.title.upper())}"'] + (_paragraphs(task.text) + [".PP"] if task.text else [])
        lines += verbatim(task.program.split("\n"))
    return _page(lines + [".SH SEE ALSO", ".BR qxport (7)"])


def _area(area):
    lines = [f'.SH "{escape(area.title.upper())}"'] + _paragraphs(area.text)
    if area.has_module("64") or area.has_module("32"):
        lines += [".PP", f"Module \\fB{area.module}\\fP, also part of \\fB{area.family_module}\\fP."]
    for routine in area.routines:
        lines += _item(f".BR {escape(page_name(routine.name), True)} (3f)", routine.summary)
    for record in area.records:
        lines += _item(f".BR {escape(record.name, True)} (3f)", "record type")
    for kind in area.record_kinds:
        lines += _item(f".BR {escape(kind.page, True)} (3f)", kind.summary)
    if any(group.by_name for group in area.constant_groups):
        lines += _item(f".BR {CONSTANTS_PAGE} (3f)", "constants that a program knows by name")
    for constant in area.constants:
        value = escape(f"{constant.kind.fortran}, {constant_value(constant)}")
        lines += _item(f"\\fB{escape(constant.name, True)}\\fP \\(en constant, {value}", constant.text)
    for cell in area.data:
        lines += _item(f"\\fB{escape(cell.name, True)}\\fP \\(en data cell, {escape(cell.c, True)}", cell.text)
    for service in area.services:
        lines += _item(f"\\fB{escape(service.symbol, True)}\\fP \\(en service, {escape(service.c, True)}", service.text)
    return lines
