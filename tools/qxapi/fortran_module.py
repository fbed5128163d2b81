"""The Fortran modules: an interface of every routine under its own name, and no object code."""

from .default_kinds import catalogue_of_wide
from .declarations import WIDTH, declaration_lines, wrapped
from .entries import PREFIX

RECORDS = "qxport_record_types"


def outputs(catalogue, options):
    return {
        "fortran/qxport.f90": modules(catalogue, options),
        "fortran/i8/qxport.f90": modules(catalogue_of_wide(catalogue, options.target), options),
    }


def modules(catalogue, options):
    """The source of all modules, each after those that it uses: areas, their families, and `qxport` with everything."""
    target = options.target
    areas = [area for area in catalogue.areas if area.has_module(target)]
    lines = [f"! Made from the catalogue of routines, do not edit. Version {options.version_text}, {target}-bit."]
    if catalogue.records:
        lines += _records_module(catalogue.records)
    for area in areas:
        lines += _area_module(area, target)
    families = {}
    for area in areas:
        families.setdefault(area.family_module, []).append(area.module)
    for area in areas:
        for family, names in _guests(area, target).items():
            families.setdefault(family, []).append(f"{area.module}, only: {', '.join(names)}")
    for family, used in families.items():
        lines += _module_of_modules(family, used)
    return "\n".join(lines + _module_of_modules("qxport", families) + [""])


def _guests(area, target):
    """The names of an area that modules of other families have too, by these modules."""
    guests = {}
    for routine in area.offered(target):
        for family in routine.families:
            names = guests.setdefault(f"{PREFIX}{family}", [])
            names += [routine.generic] if routine.generic not in names else []
    return guests


def _module_of_modules(name, used):
    lines = ["", f"module {name}"]
    for module in used:
        lines += wrapped(f"  use {module}")
    return lines + ["  implicit none", f"end module {name}"]


def _comment(text, indent):
    lead = " " * indent + "! "
    words, lines = text.split(), [lead.rstrip()]
    for word in words:
        if len(lines[-1]) + 1 + len(word) > WIDTH:
            lines.append(lead.rstrip())
        lines[-1] += f" {word}"
    return lines


def _records_module(records):
    lines = ["", f"module {RECORDS}", "  implicit none", "  public"]
    for record in records:
        lines += [f"  type :: {record.name}", "    sequence"]
        for field in record.fields:
            count = f"({field.count})" if field.count else ""
            lines.append(f"    {field.kind.fortran} :: {field.name}{count}")
        lines += [f"  end type {record.name}"]
    return lines + [f"end module {RECORDS}"]


def _area_module(area, target):
    lines = [""] + _comment(area.title, 0) + [f"module {area.module}"]
    lines += _uses(area) + ["  implicit none", "  private"]
    generics = {}
    for routine in area.offered(target):
        generics.setdefault(routine.generic, []).append(routine)
    for constant in area.constants:
        lines += wrapped(f"  {_constant(constant)}")
    for cell in (c for c in area.data if c.kind):
        lines += wrapped(f'  {_c_kind(cell.kind)}, bind(C, name="{cell.name}"), public :: {cell.name}')
    lines += [f"  public :: {record.name}" for record in area.records]
    lines += [f"  public :: {generic}" for generic in generics]
    for generic, routines in generics.items():
        name = f" {generic}" if len(routines) > 1 or routines[0].specific != generic else ""
        lines += [""] + _comment(routines[0].summary, 2) + [f"  interface{name}"]
        for routine in routines:
            lines += interface_body(routine)
        lines += [f"  end interface{name}"]
    for routine in area.offered(target):
        for name in routine.also:
            lines += ["", f"  interface {name}", f"    procedure :: {routine.specific}", f"  end interface {name}"]
    return lines + [f"end module {area.module}"]


def _uses(area):
    kinds = {_c_kind_name(c.kind) for c in area.data if c.kind}
    kinds |= {"c_intptr_t" for c in area.constants if c.kind.size == "ptr"}
    lines = [f"  use, intrinsic :: iso_c_binding, only: {', '.join(sorted(kinds))}"] if kinds else []
    return lines + [f"  use {RECORDS}, only: {record.name}" for record in area.records]


def _c_kind_name(kind):
    """A variable shared with C takes C's name of the kind: a plain number draws a warning."""
    if kind.base == "real":
        return "c_float" if kind.size == "4" else "c_double"
    return "c_intptr_t" if kind.size == "ptr" else f"c_int{int(kind.size) * 8}_t"


def _c_kind(kind):
    return f"{kind.base}({_c_kind_name(kind)})"


def _constant(constant):
    return f"{constant.kind.fortran}, parameter, public :: {constant.name} = {fortran_literal(constant)}"


def fortran_literal(constant):
    """The constant's value as a Fortran expression of its kind."""
    kind, value = constant.kind, constant.value
    if kind.base == "logical":
        return f".{str(value).lower()}._{kind.size}"
    if kind.base == "character":
        return "'" + value.replace("'", "''") + "'"
    if kind.base == "real":
        return f"{float(value)!r}_{kind.size}"
    suffix = "_c_intptr_t" if kind.size == "ptr" else f"_{kind.size}"
    bits = 32 if kind.size == "ptr" else int(kind.size) * 8
    if value == -(1 << (bits - 1)):  # has no literal of its own: its positive counterpart does not fit
        return f"-{-(value + 1)}{suffix} - 1{suffix}"
    return f"{value}{suffix}"


def interface_body(routine):
    """The external procedure that stands for the routine."""
    names = [argument.name for argument in routine.args]
    heading = f"    {'function' if routine.result else 'subroutine'} {routine.specific}({', '.join(names)})"
    result = None
    if routine.result:
        result = _unless_taken("answer", names)
        heading += f" result({result})"
    lines = wrapped(heading) + _imports(routine, names)
    for argument in routine.args:
        lines += _dummy(argument, _record_name(argument.kind, names))
    if result:
        lines.append(f"      {routine.result.fortran} :: {result}")
    return lines + [f"    end {'function' if routine.result else 'subroutine'} {routine.specific}"]


def _unless_taken(name, taken):
    while name in taken:
        name += "_"
    return name


def _record_name(kind, names):
    """The record's name inside an interface body, where an argument may have the same one."""
    return _unless_taken(kind.record, names) if kind.record else None


def _imports(routine, names):
    kinds = [argument.kind for argument in routine.args] + ([routine.result] if routine.result else [])
    lines = []
    if any(kind.size == "ptr" for kind in kinds):
        lines.append("      use, intrinsic :: iso_c_binding, only: c_intptr_t")
    for record in sorted({kind.record for kind in kinds if kind.record}):
        local = _unless_taken(record, names)
        lines.append(f"      use {RECORDS}, only: {record if local == record else f'{local} => {record}'}")
    return lines


def _dummy(argument, record):
    lines = []
    if argument.kind.base == "any":
        lines += [f"      !GCC$ ATTRIBUTES NO_ARG_CHECK :: {argument.name}", f"      !DIR$ IGNORE_TKR {argument.name}"]
    for line in declaration_lines(argument, record):
        lines += wrapped(f"      {line}")
    return lines
