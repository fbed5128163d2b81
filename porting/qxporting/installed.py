"""Where the installed tree is that the command belongs to."""

from dataclasses import dataclass


@dataclass(frozen=True)
class Installed:
    command: str
    share: str  # the catalogue and what describes it
    include: str  # the modules and their sources
    libraries: str
