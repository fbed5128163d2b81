"""Guides: pages of prose in docs/, written in a small part of Markdown, as pages of both references.

The first line of a guide names its man page, `<!-- qxport(1) -->`; the second block is its title, `# name - summary`.
Then come headings (`##`, `###`), paragraphs, lists (`- `), fenced code and tables.
"""

import re
from dataclasses import dataclass

from .prose import spans


@dataclass(frozen=True)
class Guide:
    name: str  # of the man page
    section: str
    page: str  # of the HTML reference
    title: str
    summary: str
    blocks: tuple  # (kind, content): heading2, heading3, text, list, code, table


def load(options):
    """The guides of the directory that the options name."""
    directory = getattr(options, "guides", None)
    return [_guide(path) for path in sorted(directory.glob("*.md"))] if directory else []


def _guide(path):
    lines = path.read_text(encoding="utf-8").splitlines()
    named = re.fullmatch(r"<!-- ([\w-]+)\((\d)\) -->", lines[0])
    blocks = list(_blocks(lines[1:]))
    if not named or not blocks or blocks[0][0] != "heading1" or " - " not in blocks[0][1]:
        raise ValueError(f"{path}: a guide begins with `<!-- name(section) -->` and `# name - summary`")
    title, _, summary = blocks[0][1].partition(" - ")
    return Guide(named[1], named[2], f"guide_{path.stem}.html", title, summary, tuple(blocks[1:]))


def _blocks(lines):
    at = 0
    while at < len(lines):
        line = lines[at]
        if line.startswith("```"):
            end = lines.index("```", at + 1)
            yield "code", lines[at + 1:end]
            at = end + 1
        elif heading := re.match(r"(#{1,3}) (.*)", line):
            yield f"heading{len(heading[1])}", heading[2]
            at += 1
        elif not line.strip():
            at += 1
        else:
            end = at
            while end < len(lines) and lines[end].strip() and not lines[end].startswith(("```", "#")):
                end += 1
            yield _paragraph(lines[at:end])
            at = end


def _paragraph(lines):
    if lines[0].startswith("|"):
        rows = [[cell.strip() for cell in line.strip().strip("|").split("|")] for line in lines]
        return "table", [row for row in rows if not all(re.fullmatch(r":?-+:?", cell) for cell in row)]
    if lines[0].startswith("- "):
        return "list", [" ".join(item.split()) for item in re.split(r"\n- ", "\n".join(lines)[2:])]
    return "text", " ".join(lines)


def man_page(guide, options, writer):
    """`writer` is the module that writes man pages."""
    lines = ["'\\\" t", writer.title(guide.name, guide.section, options)] + writer.heading(guide.name, guide.summary)
    lines.append(".SH DESCRIPTION")
    for kind, content in guide.blocks:
        lines += _MAN[kind](content, writer)
    return "\n".join([*lines, ".SH SEE ALSO", ".BR qxport (7)", ""])


def _man_table(rows, writer):
    head, *body = rows
    # A long one goes on over pages.
    lines = [".TS", f"allbox {'nokeep ' if len(body) > 20 else ''}tab(\t);", " ".join(["lb"] * len(head)), f"{' '.join(['lx'] * len(head))}."]
    for row in [head, *body]:
        lines.append("\t".join(f"T{{\n{writer.inline(spans(cell))}\nT}}" for cell in row))
    return [*lines, ".TE"]


_MAN = {
    "heading2": lambda text, writer: [f'.SH "{writer.escape(text.replace("`", "").upper())}"'],
    "heading3": lambda text, writer: [f".SS {writer.inline(spans(text))}"],
    "text": lambda text, writer: [".PP", writer.inline(spans(text))],
    "list": lambda items, writer: [line for item in items for line in (".IP \\(bu 2", writer.inline(spans(item)))],
    "code": lambda lines, writer: [".PP", *writer.verbatim(lines)],
    "table": _man_table,
}


def html_body(guide, writer):
    """`writer` has the ways of the HTML reference."""
    body = f"<h1>{writer.text(guide.title)}</h1>\n<p>{writer.text(guide.summary[0].upper() + guide.summary[1:])}.</p>\n"
    for kind, content in guide.blocks:
        if kind == "code":
            body += writer.code(content, "Example")
        elif kind == "list":
            body += "<ul>\n" + "".join(f"<li>{writer.text(item)}</li>\n" for item in content) + "</ul>\n"
        elif kind == "table":
            body += writer.table(guide.title, content)
        else:
            tag = {"text": "p", "heading2": "h2", "heading3": "h3"}[kind]
            body += f"<{tag}>{writer.text(content)}</{tag}>\n"
    return body
