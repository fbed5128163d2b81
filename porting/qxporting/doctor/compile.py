"""Compiles each source once by the user's compiler, in a scratch directory."""

import concurrent.futures
import os
import re
import subprocess
import sys
import time
from dataclasses import dataclass, field
from pathlib import Path

from ..failure import CANNOT, Failure
from . import scan

# Lines of places, names of units that are never called, and no optimisation that would hide a call.
OURS_GNU = ("-g1", "-O0", "-fno-lto", "-fkeep-static-functions", "-fdump-fortran-original", "-fdiagnostics-plain-output",
            "-fmax-errors=200", "-w")
# Flags that let a source through, and the words of the error that goes away.
ADMITTING = {"-fdollar-ok": "-fdollar-ok",
             "-fallow-argument-mismatch": "Type mismatch between actual argument at (1) and actual argument at (2)"}
_DIAGNOSTIC = re.compile(r"(?P<file>.*?):(?P<line>\d+):(?P<column>\d+): (?P<severity>Fatal Error|Error): (?P<text>.*)\Z")


@dataclass
class Message:
    file: str
    line: int
    column: int
    text: str


@dataclass
class Compiled:
    source: object
    object: Path
    status: int = 0
    dump: Path | None = None
    messages: list = field(default_factory=list)
    added: tuple = ()  # flags that it needed beside the user's

    @property
    def ok(self):
        return self.status == 0


def user_flags(flags, cwd):
    """The user's flags as they count in another directory, without those that write elsewhere."""
    kept, words = [], iter(flags)
    for word in words:
        if word in ("-o", "-J", "-MF", "-MT", "-MQ", "-dumpdir", "-dumpbase"):
            path = next(words, "")
            kept += [f"-I{_absolute(path, cwd)}"] if word == "-J" else []
        elif word in ("-I", "-include", "-L"):
            kept += [word, _absolute(next(words, ""), cwd)]
        elif word.startswith(("-I", "-L")):
            kept.append(word[:2] + _absolute(word[2:], cwd))
        elif word.startswith("-J"):
            kept.append("-I" + _absolute(word[2:], cwd))
        elif word in ("-c", "-S", "-E", "-fsyntax-only") or re.match(r"-(M|save-temps|o|fdump|Werror|Wfatal)", word):
            continue
        else:
            kept.append(word)
    return kept


def _absolute(path, cwd):
    return os.path.normpath(os.path.join(cwd, path))


class Workshop:
    """Where the sources are compiled."""

    def __init__(self, compiler, flags, scratch, includes, jobs, progress):
        self.compiler, self.scratch, self.jobs, self.progress = compiler, scratch, jobs, progress
        self.flags = user_flags(flags, os.getcwd())
        self.includes = [str(path) for path in includes]

    def place_of_missing(self, _):
        """Where the modules are that were generated for a source; the command says it."""
        return None

    def check(self):
        """Whether there is any use in compiling: the compiler makes an object of a program, with these flags."""
        probe = self.scratch / "probe.f"
        probe.write_text("      end\n", encoding="ascii")
        compiled = self._compile(scan.Source(probe, "probe", True))
        if not compiled.ok:
            raise Failure(f"compiler `{self.compiler}`: it does not compile an empty program: {compiled.messages[0].text}", CANNOT)

    def place(self, source):
        return self.scratch / f"s{source.number}"

    def run(self, sources):
        """Compiles them, those first that others need; answers what became of each by its number."""
        done = {}
        with concurrent.futures.ThreadPoolExecutor(self.jobs) as pool:
            for wave in scan.waves(sources):
                for compiled in pool.map(self.compile, wave):
                    done[compiled.source.number] = compiled
                    self.progress.step()
        return done

    def compile(self, source):
        compiled = self._compile(source)
        while not compiled.ok and self.compiler.is_gnu:
            needed = [flag for flag, sign in ADMITTING.items()
                      if flag not in compiled.added and any(sign in message.text for message in compiled.messages)]
            if not needed:
                break
            compiled = self._compile(source, (*compiled.added, *needed))
        return compiled

    def _compile(self, source, added=()):
        place = self.place(source)
        place.mkdir(exist_ok=True)
        compiled = Compiled(source, place / "object.o", added=added)
        compiled.object.unlink(missing_ok=True)
        dump = place / "dump"
        includes = [f"-I{self.place(maker)}" for maker in self._makers(source)]
        generated = self.place_of_missing(source)
        includes += [f"-I{path}" for path in ([generated] if generated else []) + self.includes]
        command = [*self.compiler.words, *self.flags, *(OURS_GNU if self.compiler.is_gnu else ["-g"]),
                   *added, *includes, "-c", "-o", str(compiled.object),
                   os.path.abspath(source.path)]
        environment = os.environ | {"LC_ALL": "C"}
        with open(dump, "wb") as out:
            ran = subprocess.run(command, cwd=place, env=environment, stdin=subprocess.DEVNULL, stdout=out,
                                 stderr=subprocess.PIPE, check=False)
        said = ran.stderr.decode("utf-8", "replace")
        compiled.status = ran.returncode or (0 if compiled.object.exists() else 1)
        compiled.dump = dump if self.compiler.is_gnu else None
        if not compiled.ok:
            compiled.messages = messages(said, source)
        return compiled

    def _makers(self, source):
        if self.compiler.is_gnu:  # a module holds all that it uses
            return source.depends
        found, left = {}, list(source.depends)
        while left:
            maker = left.pop()
            if maker.number not in found:
                found[maker.number] = maker
                left += maker.depends
        return found.values()


def messages(said, source):
    found = []
    for line in said.splitlines():
        if (match := _DIAGNOSTIC.match(line)) and match["text"] != "(1)":  # the second place of the next one
            file = str(source.path) if match["file"] == os.path.abspath(source.path) else match["file"]
            found.append(Message(file, int(match["line"]), int(match["column"]), match["text"]))
    if not found and said.strip():
        found.append(Message(str(source.path), 0, 0, said.strip().splitlines()[0]))
    return found or [Message(str(source.path), 0, 0, "the compiler said nothing")]


class Progress:
    """A line on standard error, once the work takes longer than a moment."""

    def __init__(self, total, quiet):
        self.total, self.quiet, self.done = total, quiet, 0
        self.begun = self.shown = time.monotonic()
        self.terminal = sys.stderr.isatty()

    def step(self):
        self.done += 1
        now = time.monotonic()
        if self.quiet or now - self.begun < 2 or now - self.shown < (0.2 if self.terminal else 5):
            return
        self.shown = now
        end = "\r" if self.terminal else "\n"
        print(f"qxport: {min(self.done, self.total)} of {self.total} sources", end=end, file=sys.stderr, flush=True)
