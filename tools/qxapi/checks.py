"""Checks across the files of the catalogue: names and symbols are unique, references lead somewhere."""

from .bindings import shared_names
from .entries import ENTRIES, PREFIX, alias_symbol, entry_name, keys, module_names, page_name
from .kinds import parse_kind
from .records import CONSTANTS_PAGE, NUMBERS, parameter_name, record_page_name

# Known by text at run time, or by their C names.
_OUTSIDE_OF_FORTRAN = ("record", "constant_group", "service")


def problems(tables):
    """Every conflict between entries of `tables`, a list of (path, parsed file)."""
    entries = list(_entries(tables))
    areas = [(path, t["area"]) for path, t in tables if isinstance(t.get("area"), dict) and not keys(t["area"], "area")]
    return (
        _area_names(areas)
        + _unique(entries, _fortran_names, "name")
        + _unique(entries, _page_names, "page")
        + _unique(entries, _symbols, "symbol")
        + _module_clashes(entries, areas)
        + _generic_clashes(entries)
        + _shared_plain_names(entries)
        + _further_names(entries)
        + _reserved_pages(entries)
        + _unique(entries, _parameters, "constant")
        + _parameter_clashes(entries)
        + _record_codes(entries)
        + _references(entries, tables)
    )


def _entries(tables):
    """(path, table, name, entry) of each entry whose keys are sound."""
    for path, table in tables:
        for what in ENTRIES:
            listed = table.get(what, [])
            for number, entry in enumerate(listed if isinstance(listed, list) else [], 1):
                if isinstance(entry, dict) and not keys(entry, what):
                    yield path, what, entry_name(entry, what, number), entry


def _area_names(areas):
    found, seen = [], {}
    for path, area in areas:
        if area["name"] in seen:
            found.append(f"{path}: area: duplicate area `{area['name']}`, also in {seen[area['name']].name}")
        seen.setdefault(area["name"], path)
    return found


def _fortran_names(what, entry):
    """Names that share one scope; Fortran does not tell cases apart."""
    return [] if what in _OUTSIDE_OF_FORTRAN else [entry["name"].lower()]


def _page_names(what, entry):
    """File and anchor names, where they differ from the name itself."""
    if what == "record":
        return [record_page_name(entry["name"])]
    return [] if what in _OUTSIDE_OF_FORTRAN else [page_name(entry["name"]).lower()]


def _symbols(what, entry):
    """The linker's names of an entry, the alias included."""
    if what == "service":
        return [entry["symbol"]]
    if what == "data":
        return [entry["name"]]
    if what != "routine":
        return []
    alias = alias_symbol(entry)
    return [entry.get("symbol", f"{entry['name']}_")] + ([alias] if alias else [])


def _unique(entries, names_of, noun):
    found, seen = [], {}
    for path, what, name, entry in entries:
        for key in names_of(what, entry):
            if key in seen:
                other_path, other = seen[key]
                found.append(f"{path}: {name}: duplicate {noun} `{key}`, also of {other} in {other_path.name}")
            seen.setdefault(key, (path, name))
    return found


def _module_clashes(entries, areas):
    """A module and an external procedure are both global names of a Fortran program."""
    modules = {f"{PREFIX}{area[key]}" for _, area in areas for key in ("name", "family")}
    modules |= {"qxport", "qxport_record_types", NUMBERS}
    return [
        f"{path}: {name}: its procedure `{specific}` clashes with the module of that name"
        for path, what, name, entry in entries
        if what == "routine" and (specific := module_names(entry)[1]) in modules
    ]


def _generic_clashes(entries):
    """Routines may share a generic name; nothing else may bear it."""
    others = {entry["name"].lower(): name for _, what, name, entry in entries if what in ("constant", "type", "data")}
    return [
        f"{path}: {name}: module name `{generic}` is also the name of {others[generic]}"
        for path, what, name, entry in entries
        if what == "routine" and (generic := module_names(entry)[0]) in others and generic != entry["name"]
    ]


def _further_names(entries):
    """A further name of a routine is the generic name of another one of its area, and of its sort."""
    known = {
        (path, module_names(entry)[0], entry["kind"])
        for path, what, _, entry in entries
        if what == "routine" and not entry.get("also")
    }
    return [
        f"{path}: {name}: `also`: the area has no {entry['kind']} `{also}`"
        for path, what, name, entry in entries
        if what == "routine"
        for also in entry.get("also", [])
        if (path, also, entry["kind"]) not in known or not module_names(entry)[0]
    ]


def _shared_plain_names(entries):
    """Several routines of one name make a generic, and what stands behind a generic is an alias."""
    routines = [(path, name, entry) for path, what, name, entry in entries if what == "routine"]
    shared = shared_names(entry for _, _, entry in routines if module_names(entry)[0])
    return [
        f"{path}: {name}: no plain binding: the module offers several routines as `{module_names(entry)[0]}`"
        for path, name, entry in routines
        if entry.get("binding") == "plain" and not shared.isdisjoint([module_names(entry)[0], *entry.get("also", [])])
    ]


def _reserved_pages(entries):
    return [
        f"{path}: {name}: the page `{CONSTANTS_PAGE}` is that of the named constants"
        for path, what, name, entry in entries
        if CONSTANTS_PAGE in _page_names(what, entry)
    ]


def _parameters(what, entry):
    if what != "constant_group":
        return []
    return [parameter_name(str(constant.get("name"))) for constant in entry["names"] if isinstance(constant, dict)]


def _parameter_clashes(entries):
    """A program may use the module of numbers beside all others, so no name of theirs is a parameter's."""
    parameters = {
        parameter.lower(): path
        for path, what, _, entry in entries
        for parameter in _parameters(what, entry)
    }
    return [
        f"{path}: {name}: a constant in {parameters[offered].name} has the parameter `{offered}`"
        for path, what, name, entry in entries
        for offered in sorted({*_fortran_names(what, entry), *_module_names(what, entry)})
        if offered in parameters
    ]


def _module_names(what, entry):
    generic = module_names(entry)[0] if what == "routine" else None
    return [generic] if generic else []


def _record_codes(entries):
    """A record's code less 1 is its place in the table of kinds."""
    records = [(entry["kind"], path, name) for path, what, name, entry in entries if what == "record"]
    return [
        f"{path}: {name}: kind {code}, where the next one is {wanted}: the kinds are numbered from 1 without a gap"
        for wanted, (code, path, name) in enumerate(sorted(records, key=lambda record: record[0]), 1)
        if code != wanted
    ][:1]


def _references(entries, tables):
    records, routines = _all_names(tables, "type"), _all_names(tables, "routine")
    pages = records | routines | {record_page_name(name) for name in _all_names(tables, "record")}
    pages |= {CONSTANTS_PAGE, NUMBERS} if _all_names(tables, "constant_group") else set()
    found = []
    for path, what, name, entry in (e for e in entries if e[1] == "routine"):
        for related in map(str, entry.get("related", [])):
            if related not in pages:
                found.append(f"{path}: {name}: related name `{related}` does not exist")
            elif related == name:
                found.append(f"{path}: {name}: related to itself")
        for argument in (a for a in entry.get("args", []) if isinstance(a, dict)):
            kind = parse_kind(str(argument.get("type")))
            if kind and kind.record and kind.record not in records:
                found.append(f"{path}: {name}: argument {argument.get('name')}: type `{kind.record}` does not exist")
    return found


def _all_names(tables, what):
    """Names of broken entries too: those are reported once, not again by each entry that refers to them."""
    listed = [table.get(what) for _, table in tables]
    entries = [entry for entries in listed if isinstance(entries, list) for entry in entries]
    return {str(entry.get("name")) for entry in entries if isinstance(entry, dict)}
