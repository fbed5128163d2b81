"""The catalogue as JSON, for the command `qxport`, editors and other tools. porting/README.md describes it."""

import json

from .fortran_module import interface_body

FORMAT = 1  # grows when a reader of the former format would misread this one


def outputs(catalogue, options):
    content = {
        "format": FORMAT,
        "version": options.version_text,
        "target": int(options.target),
        "areas": [_area(area, options.target) for area in catalogue.areas],
    }
    return {"share/catalogue.json": json.dumps(content, indent=1, ensure_ascii=False) + "\n"}


def _area(area, target):
    return {
        "name": area.name,
        "family": area.family,
        "title": area.title,
        "library": area.library,
        "text": area.text.strip(),
        "module": area.module if area.has_module(target) else None,
        "family_module": area.family_module if area.has_module(target) else None,
        "constants": [
            {"name": c.name, "type": str(c.kind), "value": c.value, "text": c.text} for c in area.constants
        ],
        "types": [_type(record) for record in area.records],
        "variables": [{"name": c.name, "type": str(c.kind), "text": c.text} for c in area.data if c.kind],
        "routines": [_routine(r) for r in area.routines if r.exists_on(target)],
        "records": [_record_kind(kind) for kind in area.record_kinds],
        "numbers": [
            {"name": c.name, "parameter": c.parameter, "text": c.text, "by_name": group.by_name}
            for group in area.constant_groups
            for c in group.names
        ],
    }


def _type(record):
    fields = [
        {"name": f.name, "type": str(f.kind), "count": f.count, "offset": f.offset, "unit": f.unit, "text": f.text}
        for f in record.fields
    ]
    return {"name": record.name, "bytes": record.bytes, "text": record.text.strip(), "fields": fields}


def _record_kind(kind):
    components = [
        {"name": c.name, "type": c.type, "access": c.access, "count": c.count, "unit": c.unit, "text": c.text}
        for c in kind.components
        if c.access
    ]
    return {"name": kind.name, "summary": kind.summary, "text": kind.text.strip(), "components": components}


def _routine(routine):
    return {
        "name": routine.name,
        "symbol": routine.symbol,
        "kind": "function" if routine.result else "subroutine",
        "result": str(routine.result) if routine.result else None,
        "result_text": routine.result_text,
        "summary": routine.summary,
        "text": routine.text.strip(),
        "origin": routine.origin,
        "arguments": [_argument(argument) for argument in routine.args],
        "errors": [{"number": error.number, "when": error.when} for error in routine.errors],
        "example": routine.example.lstrip("\n") if routine.example else None,
        "related": list(routine.related),
        "module": _offer(routine),
        "module_why": routine.module_why,
    }


def _offer(routine):
    """Under which name the Fortran modules offer a routine, and by which interface of which procedure."""
    if not routine.generic:
        return None
    return {
        "name": routine.generic,
        "also": list(routine.also),
        "families": list(routine.families),
        "procedure": routine.specific,
        "symbol": routine.alias or routine.symbol,
        "interface": [line.removeprefix("    ") for line in interface_body(routine)],
    }


def _argument(argument):
    return {
        "name": argument.name,
        "type": str(argument.kind),
        "intent": argument.intent,
        "shape": argument.shape,
        "optional": argument.optional,
        "value": argument.value,
        "unit": argument.unit,
        "interface": list(argument.interface),
        "result": str(argument.result) if argument.result else None,
        "text": argument.text,
    }
