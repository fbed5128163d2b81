"""The catalogue's data types and what each is in C and in Fortran."""

import re
from dataclasses import dataclass

INTEGER_SIZES = {"1": 1, "2": 2, "4": 4, "8": 8}
_SIZED = re.compile(r"(integer|real|complex|logical)\((\w+)\)\Z")
_CHARACTER = re.compile(r"character\((\*|[1-9]\d*)\)\Z")
_RECORD = re.compile(r"type\(([a-z]\w*)\)\Z")
_SIZES = {"integer": ("1", "2", "4", "8", "ptr"), "real": ("4", "8"), "complex": ("4", "8"), "logical": ("4", "8")}


@dataclass(frozen=True)
class Kind:
    """A data type. `size` is as written between the parentheses; `record` names a record type."""

    base: str  # integer, real, complex, logical, character, any, record or procedure
    size: str = ""
    record: str = ""

    def __str__(self):
        if self.base == "procedure":
            return "procedure"
        if self.base in ("any", "record"):
            return f"type({self.record or '*'})"
        return f"{self.base}({self.size})"

    @property
    def bytes(self):
        """The size in memory, or None where it is not the same for every caller and target."""
        if self.base in ("any", "record", "procedure") or self.size in ("*", "ptr"):
            return None
        return int(self.size) * (2 if self.base == "complex" else 1)

    @property
    def alignment(self):
        if self.base == "character":
            return 1
        return int(self.size)

    @property
    def c_value(self):
        """The C type of a datum passed or returned by value."""
        if self.base == "integer":
            return "intptr_t" if self.size == "ptr" else f"int{int(self.size) * 8}_t"
        if self.base == "logical":
            return f"int{int(self.size) * 8}_t"
        if self.base == "real":
            return "float" if self.size == "4" else "double"
        raise ValueError(f"{self} is never passed by value")

    @property
    def c_target(self):
        """The C type that an argument of this kind points to."""
        if self.base in ("any", "complex"):
            return "void"
        if self.base == "character":
            return "char"
        if self.base == "record":
            return f"struct qxport_{self.record}"
        return self.c_value

    @property
    def fortran(self):
        """The type as a declaration in a Fortran interface spells it."""
        return "integer(c_intptr_t)" if self.size == "ptr" else str(self)


def parse_kind(text):
    """The kind that `text` names, or None."""
    if text == "procedure":
        return Kind("procedure")
    if text == "type(*)":
        return Kind("any")
    if match := _CHARACTER.match(text):
        return Kind("character", match[1])
    if match := _RECORD.match(text):
        return Kind("record", record=match[1])
    match = _SIZED.match(text)
    if match and match[2] in _SIZES[match[1]]:
        return Kind(match[1], match[2])
    return None
