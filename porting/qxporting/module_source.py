"""Writes the source of a module of the user's: the library's names, some of them under the user's own."""

import re
from dataclasses import dataclass

from .catalogue import NUMBERS
from .failure import Failure
from .names_file import why_no_name

WIDTH = 132  # of a source line
MARK = "! Made by `qxport module`"  # what this command wrote may be written anew by it
EVERYTHING, NOTHING = "all", "none"
# Modules that compilers have themselves.
_TAKEN = re.compile(r"iso_(c_binding|fortran_env)\Z|ieee_(arithmetic|exceptions|features)\Z|omp_lib|openacc|qxport")
_RECORDS = re.compile(r"(\s*)use qxport_record_types, only: (?:(\w+) => )?(\w+)\Z")


@dataclass
class Contents:
    """What a module has: entities under their own names, entities under others, and records made anew."""

    own: list  # entities
    renamed: list  # (name, entity)
    records: list  # (name, entity, {our component: theirs})

    @property
    def names(self):
        return [e.name for e in self.own] + [n for n, _ in self.renamed] + [n for n, _, _ in self.records]

    @property
    def has_dollar(self):
        parts = [name for _, _, components in self.records for name in components.values()]
        return any("$" in name for name in self.names + parts)


def module_name_problems(names):
    """Why these cannot be the names of modules made together."""
    problems, seen = [], set()
    for name in names:
        if reason := why_no_name(name):
            problems.append(reason)
        elif _TAKEN.match(name.lower()):
            problems.append(f"`{name}`: the compiler or the library has a module of this name")
        elif len(name) + len("qxport_types_of_") > 63:
            problems.append(f"`{name}`: a name of at most 47 characters, please")
        elif name.lower() in seen:
            problems.append(f"`{name}` is asked for twice")
        seen.add(name.lower())
    return problems


def choose(catalogue, modules, areas, renamings, without=()):
    """What the modules have; raises Failure with all that speaks against it."""
    problems = module_name_problems(modules)
    own = _own(catalogue, areas, problems)
    for name in sorted(name for name in without if not own.pop(name.lower(), None)):
        problems.append(f"--without {name}: the module has no such name")
    contents = Contents(list(own.values()), [], [])
    records = {}
    for renaming in renamings:
        entity = _entity(catalogue, renaming, problems)
        if not entity:
            continue
        taken = own.get(renaming.theirs.lower())
        if taken and taken is not entity:
            problems.append(f"{renaming.place}: `{renaming.theirs}` exists already: it is a {taken.what} of the library that "
                            "the module has (--of says which it has)")
        if renaming.components is None:
            contents.renamed += [] if taken is entity else [(renaming.theirs, entity)]
        elif former := records.get(entity.name):
            problems.append(f"{renaming.place}: `{entity.name}` has other components in {former} already")
        else:
            records[entity.name] = renaming.place
            contents.records.append((renaming.theirs, entity, renaming.components))
            problems += _component_problems(renaming, entity)
    for name in contents.names:
        problems += [f"`{m}`: a module cannot be named like what it has: `{name}`"
                     for m in modules if m.lower() == name.lower()]
    if not contents.names and not problems:
        problems.append("the module would have nothing: --of none needs --names")
    if problems:
        raise Failure(list(dict.fromkeys(problems)))
    return contents


def _own(catalogue, areas, problems):
    """The entities that the module has under their own names, by these in lower case."""
    known = catalogue.area_names
    for area in areas:
        if area not in known and area not in (EVERYTHING, NOTHING):
            problems.append(f"--of {area}: there is no such area; there are {', '.join(known)}, all and none")
    if EVERYTHING in areas:
        return {key: e for key, e in catalogue.entities.items() if e.what != "number" or NUMBERS in areas}
    return {key: e for key, e in catalogue.entities.items() if e.areas & set(areas)}


def _entity(catalogue, renaming, problems):
    if entity := catalogue.entities.get(renaming.ours.lower()):
        if renaming.components is not None and entity.what != "type":
            problems.append(f"{renaming.place}: `{entity.name}` is a {entity.what}, and has no components")
            return None
        return entity
    if routine := catalogue.not_offered.get(renaming.ours.lower()):
        why = f": {routine['module_why'].strip().rstrip('.')}" if routine["module_why"] else ""
        problems.append(f"{renaming.place}: `{renaming.ours}` is in no module{why}")
        return None
    nearest = catalogue.nearest(renaming.ours)
    near = f"; near: {', '.join(nearest)}" if nearest else ""
    problems.append(f"{renaming.place}: the library has no `{renaming.ours}`{near}")
    return None


def _component_problems(renaming, entity):
    fields = [component["name"] for component in entity.fields]
    problems = [f"{renaming.component_places[ours]}: `{entity.name}` has no component `{ours}`; it has {', '.join(fields)}"
                for ours in renaming.components if ours not in fields]
    kept = [name for name in fields if name not in renaming.components]
    problems += [f"{renaming.component_places[ours]}: `{theirs}` is the name of a component of `{entity.name}` already"
                 for ours, theirs in renaming.components.items() if theirs.lower() in kept]
    return problems


def source(modules, contents, version):
    """The text of the modules' file."""
    first, *others = modules
    lines = [f"{MARK}, version {version}; it may be made anew at any time.",
             "! It has interfaces and parameters only: compiled, it leaves no object code behind."]
    if contents.records:
        lines += _types_module(first, contents.records)
    lines += _module(first, contents)
    for other in others:
        lines += ["", f"module {other}", f"  use {first}", "  implicit none", f"end module {other}"]
    return "\n".join([*lines, ""])


def _types(module):
    return f"qxport_types_of_{module}"


def _types_module(module, records):
    lines = ["", f"module {_types(module)}", "  implicit none", "  public"]
    for name, entity, components in records:
        lines += [f"  type :: {name}", "    sequence"]
        for component in entity.fields:
            count = f"({component['count']})" if component["count"] else ""
            lines.append(f"    {component['type']} :: {components.get(component['name'], component['name'])}{count}")
        lines.append(f"  end type {name}")
    return lines + [f"end module {_types(module)}"]


def _module(name, contents):
    retyped = {entity.name: theirs for theirs, entity, _ in contents.records}
    taking = {}  # of the routines that take a record made anew, the names that the module has
    used = {"qxport": [], "qxport_numbers": []}
    for theirs, entity in [(e.name, e) for e in contents.own] + contents.renamed:
        if any(entity.takes(record) for record in retyped):
            taking.setdefault(entity.name, (entity, []))[1].append(theirs)
        elif retyped.get(entity.name, "").lower() != theirs.lower():
            used[entity.module].append(theirs if theirs == entity.name else f"{theirs} => {entity.name}")
    lines = ["", f"module {name}"]
    if retyped:
        lines.append(f"  use {_types(name)}")
    for module, names in used.items():
        for names_of_line in _chunks(names):
            lines += _wrapped(f"  use {module}, only: {', '.join(names_of_line)}")
    lines.append("  implicit none")
    procedures = {}
    for entity, theirs in taking.values():
        for routine in entity.routines:
            procedure = routine["module"]["procedure"]
            procedures.setdefault(procedure, (routine, set()))[1].update(t for t in theirs)
    for procedure, (routine, names) in procedures.items():
        lines += _procedure(routine["module"], procedure, names, retyped, name)
    return lines + [f"end module {name}"]


def _procedure(offer, procedure, names, retyped, module):
    """The interface of a procedure that takes a record made anew, and the names that lead to it."""
    lines = [""]
    if procedure not in {name.lower() for name in names}:
        lines.append(f"  private :: {procedure}")
    lines.append("  interface")
    for line in offer["interface"]:
        if (match := _RECORDS.match(line)) and match[3] in retyped:
            local, theirs = match[2] or match[3], retyped[match[3]]
            line = f"{match[1]}use {_types(module)}, only: {theirs if local == theirs else f'{local} => {theirs}'}"
        lines.append(f"    {line}")
    lines.append("  end interface")
    for name in sorted(names):
        if name.lower() != procedure:
            lines += [f"  interface {name}", f"    procedure :: {procedure}", f"  end interface {name}"]
    return lines


def _chunks(names, size=40):
    """A statement has a limited number of lines."""
    return [names[at:at + size] for at in range(0, len(names), size)]


def _wrapped(line):
    lines, indent = [], "    "
    while len(line) > WIDTH:
        at = line.rindex(", ", 0, WIDTH - 2) + 1
        lines.append(f"{line[:at]} &")
        line = indent + line[at:].lstrip()
    return [*lines, line]
