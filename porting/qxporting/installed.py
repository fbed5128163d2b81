"""Where the installed tree is that the command belongs to."""

import os
from dataclasses import dataclass

WIDE_INTEGERS = "-fdefault-integer-8"


@dataclass(frozen=True)
class Installed:
    command: str
    share: str  # the catalogue and what describes it
    include: str  # the modules and their sources
    libraries: str

    def modules_for(self, flags):
        """The directory of the modules for what is compiled with these flags."""
        return os.path.join(self.include, "i8") if has_wide_integers(flags) else self.include

    def link_words(self, flags):
        """What a program that is compiled with these flags is linked with."""
        wide = ["-lqxportmt_i8"] if has_wide_integers(flags) else []
        return [f"-L{self.libraries}", f"-Wl,-rpath,{self.libraries}", *wide, "-lqxportmt", "-lqxcoremt_gnu"]


def has_wide_integers(flags):
    """Whether default integers take 8 bytes."""
    return WIDE_INTEGERS in flags
