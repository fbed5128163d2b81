"""How Fortran source declares an argument."""

import re

WIDTH = 132  # of a source line


def declaration_lines(argument, record=None, documented=False):
    """The same, of a procedure with all that the caller's one must agree with."""
    if not argument.interface:
        return [declaration(argument, record, documented)]
    heading, *arguments = argument.interface
    kind = re.search(r"function|subroutine", heading)[0]
    body = [f"  {heading}"] + [f"    {line}" for line in arguments] + [f"  end {kind}"]
    return ["interface"] + body + ["end interface"] + ([f"optional :: {argument.name}"] if argument.optional else [])


def declaration(argument, record=None, documented=False):
    """The declaration of a dummy argument; for the reader the shape is kept as the catalogue has it."""
    optional = ["optional"] if argument.optional else []
    if argument.kind.base == "procedure":
        result = argument.result.fortran if argument.result else ""
        return ", ".join([f"procedure({result})"] + optional) + f" :: {argument.name}"
    kind = f"type({record})" if record else argument.kind.fortran
    words = [kind]
    if argument.kind.base == "any":
        words.append("dimension(*)")
    words += ["value"] if argument.value else []
    if argument.intent != "none":
        words.append(f"intent({argument.intent if documented else _compiled_intent(argument)})")
    words += optional
    return f"{', '.join(words)} :: {argument.name}{_shape(argument, documented)}"


def _compiled_intent(argument):
    """An output is declared INOUT: what a failure leaves alone the compiler must not take for overwritten."""
    return "inout" if argument.intent == "out" else argument.intent


def _shape(argument, documented):
    """A shape that names another argument is assumed here: the caller's array has the size it has."""
    if not argument.shape or argument.kind.base == "any":
        return ""
    if documented or re.fullmatch(r"[\d,\s]+(\*)?|\*", argument.shape):
        return f"({argument.shape})"
    return "(*)"


def wrapped(line, width=WIDTH):
    """A source line as lines of at most `width` columns, broken after commas and blanks outside of literals."""
    indent = " " * (len(line) - len(line.lstrip()) + 4)
    lines = []
    while len(line) > width:
        at = _break_before(line, width - 2, len(indent))
        lines.append(line[:at].rstrip() + " &")
        line = indent + line[at:].lstrip()
    return lines + [line]


def _break_before(line, limit, least):
    quoted, best = False, None
    for at, character in enumerate(line[: limit + 1]):
        if character == "'":
            quoted = not quoted
        if not quoted and at > least and line[at - 1] in ", (" and at <= limit:
            best = at
    if best is None:
        raise ValueError(f"no place to break the line: {line}")
    return best
