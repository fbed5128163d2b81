"""The user's Fortran compiler."""

import os
import re
import shlex
import shutil
import subprocess
from pathlib import Path

from .failure import CANNOT, Failure

OLDEST_GNU = 8  # type(*) with NO_ARG_CHECK, and the standard of 2018


class Compiler:
    def __init__(self, command):
        try:
            self.words = shlex.split(command)
        except ValueError as error:
            raise Failure(f"compiler `{command}`: {error}", CANNOT) from error
        if not self.words or not shutil.which(self.words[0]):
            raise Failure(f"compiler `{command}`: there is no such command (--compiler, or FC in the environment, names it)",
                          CANNOT)
        if os.sep in self.words[0]:  # it is run in other directories
            self.words[0] = os.path.abspath(self.words[0])
        self.version = self._run(["--version"]).stdout.partition("\n")[0].strip()
        self.is_gnu = "GNU Fortran" in self.version
        if self.is_gnu:
            self._check_age()

    def _check_age(self):
        number = re.search(r"(\d+)\.\d+(\.\d+)?", re.sub(r"\([^)]*\)", "", self.version))
        if number and int(number[1]) < OLDEST_GNU:
            raise Failure(f"compiler `{self}`: {self.version} is too old: the modules need GNU Fortran {OLDEST_GNU} or newer",
                          CANNOT)

    def __str__(self):
        return shlex.join(self.words)

    def _run(self, arguments, cwd=None):
        environment = os.environ | {"LC_ALL": "C.UTF-8"}
        try:
            return subprocess.run([*self.words, *map(str, arguments)], cwd=cwd, env=environment, stdin=subprocess.DEVNULL,
                                  capture_output=True, text=True, errors="replace", check=False)
        except OSError as error:
            raise Failure(f"compiler `{self}`: {error.strerror}", CANNOT) from error

    def modules(self, sources, directory, includes=(), dollar=False):
        """Compiles modules that have no code; what is made is left in `directory`. Answers what the compiler said wrong."""
        flags = ["-fdollar-ok"] if dollar and self.is_gnu else []
        done = self._run([*flags, *(f"-I{path}" for path in includes), "-fsyntax-only", *sources], cwd=directory)
        return None if done.returncode == 0 else (done.stderr or done.stdout).strip() or f"status {done.returncode}"

    def reads_modules_of(self, include, scratch):
        """Whether it understands the modules that the library was installed with."""
        probe = Path(scratch, "qxport_probe.f90")
        probe.write_text("use qxport\nuse qxport_numbers\nend\n", encoding="utf-8")
        said = self.modules([probe], scratch, [include])
        probe.unlink()
        return said is None
