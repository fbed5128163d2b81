"""Loads the catalogue: every public name once, from one TOML file an area."""

import tomllib
from dataclasses import dataclass, field
from pathlib import Path

from . import checks, default_kinds, front, schema
from .bindings import with_bindings
from .entries import PREFIX, alias_symbol, module_names
from .kinds import Kind, parse_kind
from .likeness import expanded
from .records import ConstantGroup, RecordKind, constant_group, record_kind


@dataclass(frozen=True)
class Argument:
    name: str
    kind: Kind
    text: str
    intent: str | None
    shape: str | None
    optional: bool
    value: bool
    unit: str | None
    interface: tuple[str, ...]  # of a procedure: its heading and the declarations of its arguments
    result: Kind | None  # of a procedure that is a function whose arguments are the caller's affair
    most: int | None = None  # how many elements of an array are looked at, at most


@dataclass(frozen=True)
class Failure:
    number: str
    when: str


@dataclass(frozen=True)
class Routine:
    name: str
    symbol: str
    generic: str | None  # the Fortran module's name for it; None keeps it out of the modules
    specific: str | None  # the external procedure that the module has an interface of
    alias: str | None  # the symbol of that procedure, where it is not the traditional one
    result: Kind | None  # of a function
    result_text: str | None
    summary: str
    text: str
    args: tuple[Argument, ...]
    errors: tuple[Failure, ...]
    origin: str
    example: str | None
    related: tuple[str, ...]
    module_why: str | None
    also: tuple[str, ...]  # further generic names of the module that lead to it
    families: tuple[str, ...]  # further families whose modules have it
    targets: tuple[str, ...]
    eight: str | None = None  # the routine that takes integers of 8 bytes in its place
    refused: int | str | None = None  # the answer where such an integer does not fit

    def exists_on(self, target):
        return f"{target}-bit" in self.targets


@dataclass(frozen=True)
class Field:
    name: str
    kind: Kind
    count: int | None
    offset: int
    unit: str | None
    text: str


@dataclass(frozen=True)
class Record:
    name: str
    bytes: int
    text: str
    fields: tuple[Field, ...]


@dataclass(frozen=True)
class Constant:
    name: str
    kind: Kind
    value: object
    text: str


@dataclass(frozen=True)
class Data:
    name: str
    c: str
    kind: Kind | None  # where the module offers the cell as a variable
    text: str


@dataclass(frozen=True)
class Service:
    symbol: str
    c: str
    text: str


@dataclass(frozen=True)
class Area:
    name: str
    family: str
    title: str
    library: str
    text: str
    constants: tuple[Constant, ...] = ()
    records: tuple[Record, ...] = ()
    record_kinds: tuple[RecordKind, ...] = ()
    constant_groups: tuple[ConstantGroup, ...] = ()
    data: tuple[Data, ...] = ()
    routines: tuple[Routine, ...] = ()
    services: tuple[Service, ...] = ()

    @property
    def module(self):
        return f"{PREFIX}{self.name}"

    @property
    def family_module(self):
        """The module of all areas of the family."""
        return f"{PREFIX}{self.family}"

    def offered(self, target):
        """The routines that the area's module has an interface of."""
        return [r for r in self.routines if r.generic and r.exists_on(target)]

    def has_module(self, target):
        variables = [cell for cell in self.data if cell.kind]
        return bool(self.constants or self.records or variables or self.offered(target))


@dataclass(frozen=True)
class Family:
    name: str
    title: str
    text: str
    areas: tuple[Area, ...]

    @property
    def module(self):
        return f"{PREFIX}{self.name}"


@dataclass
class Catalogue:
    areas: list[Area] = field(default_factory=list)  # in the order of the reference
    families: list[Family] = field(default_factory=list)
    tasks: list[front.Task] = field(default_factory=list)

    def _all(self, what):
        return [entry for area in self.areas for entry in getattr(area, what)]

    @property
    def routines(self):
        return self._all("routines")

    @property
    def records(self):
        return self._all("records")

    @property
    def record_kinds(self):
        """In the order of their codes."""
        return sorted(self._all("record_kinds"), key=lambda kind: kind.kind)

    @property
    def constant_groups(self):
        return self._all("constant_groups")

    @property
    def services(self):
        return self._all("services")

    def symbols(self, library, target):
        """Every symbol that `library` exports, sorted."""
        names = []
        for area in (a for a in self.areas if a.library == library):
            for routine in (r for r in area.routines if r.exists_on(target)):
                names += [routine.symbol] + ([routine.alias] if routine.alias else [])
            names += [cell.name for cell in area.data] + [service.symbol for service in area.services]
        return sorted(names)


class CatalogueError(Exception):
    """The catalogue is not valid; `problems` has a line for each reason."""

    def __init__(self, problems):
        super().__init__("\n".join(problems))
        self.problems = problems


def load(directory):
    """Reads and validates every file of the catalogue; raises CatalogueError with all problems found."""
    paths = sorted(path for path in Path(directory).glob("*.toml") if path.name != front.FILE)
    if not paths:
        raise CatalogueError([f"{directory}: catalogue: there is no *.toml file"])
    problems, tables = [], []
    for path in paths:
        try:
            tables.append((path, expanded(tomllib.loads(path.read_text(encoding="utf-8")))))
        except (tomllib.TOMLDecodeError, UnicodeDecodeError) as error:
            problems.append(f"{path}: catalogue: {error}")
    tables = with_bindings(tables)
    for path, table in tables:
        problems += schema.problems(path, table)
    problems += checks.problems(tables)
    problems = problems or default_kinds.problems(tables)
    if problems:
        raise CatalogueError(list(dict.fromkeys(problems)))
    try:
        families, tasks = front.load(directory, [table["area"] for _, table in tables])
    except front.FrontError as error:
        raise CatalogueError([str(error)]) from error
    areas = {table["area"]["name"]: _area(table) for _, table in tables}
    found = [Family(f["name"], f["title"], f["text"], tuple(areas[name] for name in f["areas"])) for f in families]
    return Catalogue([area for family in found for area in family.areas], found, tasks)


def _area(table):
    return Area(
        **table["area"],
        constants=tuple(_constant(c) for c in table.get("constant", [])),
        records=tuple(_record(t) for t in table.get("type", [])),
        record_kinds=tuple(record_kind(r) for r in table.get("record", [])),
        constant_groups=tuple(constant_group(g) for g in table.get("constant_group", [])),
        data=tuple(_data(d) for d in table.get("data", [])),
        routines=tuple(_routine(r) for r in table.get("routine", [])),
        services=tuple(Service(**s) for s in table.get("service", [])),
    )


def _constant(table):
    return Constant(table["name"], parse_kind(table["type"]), table["value"], table["text"])


def _data(table):
    kind = parse_kind(table["fortran"]) if "fortran" in table else None
    return Data(table["name"], table["c"], kind, table["text"])


def _record(table):
    fields, offset = [], 0
    for entry in table["fields"]:
        kind, count = parse_kind(entry["type"]), entry.get("count")
        fields.append(Field(entry["name"], kind, count, offset, entry.get("unit"), entry["text"]))
        offset += kind.bytes * (count or 1)
    return Record(table["name"], table["bytes"], table["text"], tuple(fields))


def _argument(table):
    kind = parse_kind(table["type"])
    value = table.get("value", False)
    return Argument(
        name=table["name"],
        kind=kind,
        text=table["text"],
        intent=None if kind.base == "procedure" else table["intent"],
        shape=table.get("shape"),
        optional=table.get("optional", False),
        value=value,
        unit=table.get("unit"),
        interface=tuple(line.strip() for line in table.get("interface", "").strip().splitlines()),
        result=parse_kind(table["result"]) if "result" in table else None,
        most=table.get("most"),
    )


def _routine(table):
    name = table["name"]
    generic, specific = module_names(table)
    result = table.get("result")
    return Routine(
        name=name,
        symbol=table.get("symbol", f"{name}_"),
        generic=generic,
        specific=specific,
        alias=alias_symbol(table),
        result=parse_kind(result) if result else None,
        result_text=table.get("result_text"),
        summary=table["summary"],
        text=table["text"],
        args=tuple(_argument(a) for a in table.get("args", [])),
        errors=tuple(Failure(str(e["number"]), e["when"]) for e in table.get("errors", [])),
        origin=table["origin"],
        example=table.get("example"),
        related=tuple(table.get("related", [])),
        module_why=table.get("module_why"),
        also=tuple(table.get("also", [])),
        families=tuple(table.get("families", [])),
        targets=tuple(table.get("targets", ["32-bit", "64-bit"])),
        eight=table.get("eight"),
        refused=table.get("refused"),
    )
