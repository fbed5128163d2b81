"""What the reference begins with: the families of areas in their order, and the tasks, from reference.toml and tasks/."""

import tomllib
from dataclasses import dataclass
from pathlib import Path

FILE = "reference.toml"
TASKS = "tasks"  # the directory of the programs, and the page of them
FAMILIES = ("portability", "compat", "frame", "posix", "core")
_FAMILY_KEYS = {"name": str, "title": str, "text": str, "areas": list}


class FrontError(Exception):
    """A line that says what is wrong."""


@dataclass(frozen=True)
class Task:
    name: str  # of the file
    title: str
    text: str
    program: str


def load(directory, areas):
    """The tables of the families that have areas, and the tasks. Without reference.toml the families stand in the order
    of their names above, their areas in that of the alphabet, and there are no tasks."""
    path = Path(directory) / FILE
    if not path.is_file():
        return _unlisted(areas), []
    try:
        tables = tomllib.loads(path.read_text(encoding="utf-8"))
    except (tomllib.TOMLDecodeError, UnicodeDecodeError) as error:
        raise FrontError(f"{path}: reference: {error}") from error
    if set(tables) != {"tasks", "family"}:
        raise FrontError(f"{path}: reference: the keys must be tasks and family")
    return _families(path, tables["family"], areas), _tasks(path, tables["tasks"])


def _unlisted(areas):
    own = {name: sorted(area["name"] for area in areas if area["family"] == name) for name in FAMILIES}
    return [{"name": name, "title": name.capitalize(), "text": f"Routines of {name}.", "areas": own[name]}
            for name in FAMILIES if own[name]]


def _families(path, families, areas):
    for family in families:
        if set(family) != set(_FAMILY_KEYS) or any(type(family[k]) is not kind for k, kind in _FAMILY_KEYS.items()):
            raise FrontError(f"{path}: {family.get('name', 'family')}: the keys must be {', '.join(_FAMILY_KEYS)}")
    if sorted(family["name"] for family in families) != sorted(FAMILIES):
        raise FrontError(f"{path}: family: the names must be {', '.join(FAMILIES)}")
    for family in families:
        own = sorted(area["name"] for area in areas if area["family"] == family["name"])
        if sorted(family["areas"]) != own:
            raise FrontError(f"{path}: {family['name']}: the areas must be {', '.join(own)}")
    return [family for family in families if family["areas"]]


def _tasks(path, names):
    there = sorted(file.stem for file in (path.parent / TASKS).glob("*.f90"))
    if sorted(names) != there:
        raise FrontError(f"{path}: tasks: the names must be those of {TASKS}/*.f90: {', '.join(there)}")
    return [_task(path.parent / TASKS / f"{name}.f90") for name in names]


def _task(path):
    """The first line of the comment that a program begins with is the title, the rest the text."""
    lines = path.read_text(encoding="utf-8").splitlines()
    comment = 0
    while comment < len(lines) and lines[comment].startswith("! "):
        comment += 1
    if not comment:
        raise FrontError(f"{path}: {path.stem}: it must begin with a comment, its title")
    title, *text = (line[2:] for line in lines[:comment])
    return Task(path.stem, title, "\n".join(text), "\n".join(lines[comment:]))
