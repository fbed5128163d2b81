"""The POSIX binding's tables: record kinds with their components, and named constants in groups."""

from dataclasses import dataclass

from .kinds import parse_kind

CONSTANTS_PAGE = "constants"  # of the groups of constants that a program asks for by name
NUMBERS = "qxport_numbers"  # the module that has all groups as parameters, and its page
ACCESSES = ("get set", "get", "")


def is_text(kind):
    """Whether a component's type is text held in the record, character(n)."""
    parsed = parse_kind(kind)
    return bool(parsed and parsed.base == "character" and parsed.bytes)


@dataclass(frozen=True)
class Component:
    name: str
    type: str  # integer(4), integer(8), character(n), string or strings
    access: str  # one of ACCESSES
    text: str
    capacity: int | None = None  # characters that a set stores in a character(n)
    count: int | None = None  # elements of an array
    count_of: str | None = None  # the component that counts the strings
    unit: str | None = None
    unchecked: bool = False  # an INTEGER(4) get takes the low 32 bits without a range check
    unsigned: bool = False


@dataclass(frozen=True)
class RecordKind:
    name: str  # as a program gives it
    kind: int
    summary: str
    text: str
    components: tuple[Component, ...]

    @property
    def page(self):
        """The name in the reference, where a routine may have the plain one."""
        return record_page_name(self.name)


@dataclass(frozen=True)
class HostConstant:
    name: str
    text: str
    value: int | None = None  # where it is the binding's own; else it is the host's
    may_lack: bool = False  # a host without it gets -1

    @property
    def parameter(self):
        return parameter_name(self.name)


@dataclass(frozen=True)
class ConstantGroup:
    title: str
    text: str
    names: tuple[HostConstant, ...]
    by_name: bool = True  # a program can ask for the value by the name, at run time


def parameter_name(name):
    """The name of a constant's parameter: a Fortran name starts with a letter."""
    return name.lstrip("_")


def record_page_name(name):
    return f"{name}_record"


def record_kind(table):
    return RecordKind(**table | {"components": tuple(Component(**c) for c in table["components"])})


def constant_group(table):
    return ConstantGroup(**table | {"names": tuple(HostConstant(**c) for c in table["names"])})
