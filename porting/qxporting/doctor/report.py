"""What the doctor found, as text and as JSON."""

import json

from .judge import TO_DO
from .traps import PAGE, SECTIONS

FORMAT = 1


def as_json(diagnosis):
    return json.dumps({
        "format": FORMAT,
        "compiler": diagnosis.compiler.version,
        "flags": diagnosis.options.flags,
        "sources": len(diagnosis.sources),
        "status": diagnosis.status,
        "served": [
            {"file": file, "unit": unit, "names": sorted(names)}
            for file, units in sorted(diagnosis.served.items()) for unit, names in sorted(units.items())
        ],
        "findings": [finding.as_json() for finding in diagnosis.findings],
        "modules": [
            {"name": name, "users": [{"file": str(s.path), "line": s.uses[name]} for s in users]}
            for name, users in sorted(diagnosis.missing.items())
        ],
        "names": diagnosis.names,
        "programs": [
            {"name": p.name, "sources": [str(s.path) for s in p.sources], "commands": p.commands} for p in diagnosis.programs
        ],
    }, indent=1) + "\n"


def as_text(diagnosis):
    lines = []
    for file, units in sorted(diagnosis.served.items()):
        for unit, names in sorted(units.items()):
            lines += _folded(f"{file}: {unit}: the library serves ", sorted(names))
    for finding in diagnosis.findings:
        unit = f" {finding.unit}:" if finding.unit else ""
        lines.append(f"{finding.file}:{finding.line}:{unit} {finding.name}: {finding.what}")
        if finding.weight == TO_DO:
            lines.append(f"    do: {finding.advice}")
            if finding.edit:
                lines.append(f"    behind line {finding.edit['after_line']}: {finding.edit['text']}")
    sections = dict.fromkeys(SECTIONS[finding.kind] for finding in diagnosis.findings if finding.weight == TO_DO)
    if sections:
        lines.append(f"see {PAGE}: {'; '.join(sections)}")
    for program in diagnosis.programs:
        lines.append(f"{program.name} is built by")
        lines += [f"    {command}" for command in program.commands]
    todo = sum(finding.weight == TO_DO for finding in diagnosis.findings)
    many = f"{len(diagnosis.sources)} source{'s' if len(diagnosis.sources) != 1 else ''}"
    lines.append(f"{many}: {todo} thing{'s' if todo != 1 else ''} to do" if todo else f"{many}: nothing in the way")
    return "\n".join([*lines, ""])


def _folded(head, names, width=118):
    lines = [head.rstrip()]
    for name in names:
        if len(lines[-1]) + len(name) + 2 > width:
            lines.append("   ")
        lines[-1] += f" {name},"
    lines[-1] = lines[-1].rstrip(",")
    return lines


def names_file(diagnosis):
    """A names file begun: what nobody defines, to be filled in."""
    lines = ["# Names that nobody defines. Write the library's name behind each `=`, or remove the line."]
    for entry in diagnosis.names:
        near = f"; near: {', '.join(entry['near'])}" if entry["near"] else ""
        lines.append(f"{entry['name']} =    # {entry['file']}:{entry['line']}{near}")
    return "\n".join([*lines, ""])
