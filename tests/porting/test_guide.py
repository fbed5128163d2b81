"""docs/porting.md: every program on the page is compiled and run as the page says, and prints what the page says.

A program's first line is a comment with the name of its file. A block that begins with `$ ` is a session: commands,
and what each prints. The programs and sessions below one heading share a directory.
"""

import os
import shutil
import subprocess
import sys
import unittest
from dataclasses import dataclass, field
from pathlib import Path

from support import BUILD, COMPILER, SANITIZE, SOURCE, TARGET, Installed

PAGE = SOURCE / "docs/porting.md"
sys.path.insert(0, str(SOURCE / "porting"))

from qxporting.doctor.traps import SECTIONS  # noqa: E402


@dataclass
class Section:
    heading: str
    programs: dict = field(default_factory=dict)  # file -> text
    sessions: list = field(default_factory=list)  # of (command, what it prints)
    other: list = field(default_factory=list)  # blocks that are neither


def sections(text):
    found, lines = [Section("")], iter(text.splitlines())
    for line in lines:
        if line.startswith("#"):
            found.append(Section(line.lstrip("# ")))
        elif line.startswith("```"):
            block = []
            while (inside := next(lines)) != "```":
                block.append(inside)
            _sort_in(found[-1], line.removeprefix("```"), block)
    return found


def _sort_in(section, language, block):
    name = block[0].lstrip("!c# ").split()
    if language == "" and block[0].startswith("$ "):
        for line in block:
            if line.startswith("$ "):
                section.sessions.append((line[2:], []))
            else:
                section.sessions[-1][1].append(line)
    elif len(name) == 1 and Path(name[0]).suffix in (".f", ".f90", ".txt"):
        section.programs[name[0]] = "\n".join([*block, ""])
    else:
        section.other.append(block[0])


class Guide(Installed):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        (cls.prefix / "lib/pkgconfig").mkdir()
        for package in ("qxport.pc", "qxport-i8.pc"):
            shutil.copy(BUILD / package, cls.prefix / "lib/pkgconfig")
        cls.sections = sections(PAGE.read_text(encoding="utf-8"))

    def environment(self):
        """Where `gfortran` is the compiler of the build, for its target, and `qxport` the installed command."""
        commands = self.work / "bin"
        commands.mkdir()
        flags = " ".join([*COMPILER[1:], *([f"-fsanitize={SANITIZE}"] if SANITIZE else [])])
        for name, text in (("gfortran", f'exec "{COMPILER[0]}" {flags} "$@"'),
                           ("qxport", f'exec "{sys.executable}" "{self.prefix}/bin/qxport" "$@"')):
            (commands / name).write_text(f"#!/bin/sh\n{text}\n", encoding="utf-8")
            (commands / name).chmod(0o755)
        # The words of pkg-config have no blanks where the prefix has none.
        (self.work / "prefix").symlink_to(self.prefix)
        return {key: value for key, value in os.environ.items() if key not in ("FC", "CPATH", "LIBRARY_PATH")} | {
            "PATH": f"{commands}:{os.environ['PATH']}", "PKG_CONFIG_PATH": "prefix/lib/pkgconfig", "LC_ALL": "C",
            "LD_LIBRARY_PATH": f"{self.prefix}/lib", "TZ": "UTC0"}

    def said(self, command, environment):
        """What it prints on standard output; on the other the doctor tells a slow machine's user how far it is."""
        done = subprocess.run(["bash", "-c", command], cwd=self.work, env=environment, stdin=subprocess.DEVNULL,
                              timeout=600, capture_output=True, text=True, errors="replace", check=False)
        return done.stdout

    @unittest.skipUnless(TARGET == "64", "the page tells of 64-bit programs")
    def test_sessions(self):
        """Instrumentation and static linking do not go together."""
        for section in self.sections:
            self.work = self.work.parent / f"session {len(os.listdir(self.work.parent))}"
            self.work.mkdir()
            for name, text in section.programs.items():
                self.write(name, text)
            environment = self.environment()
            for command, expected in section.sessions:
                if SANITIZE and "-static" in command:
                    continue
                with self.subTest(section=section.heading, command=command):
                    self.assertEqual(self.said(command, environment), "".join(f"{line}\n" for line in expected))

    def test_every_block_is_tried(self):
        self.assertEqual([(s.heading, b) for s in self.sections for b in s.other], [])
        for section in self.sections:
            for name in section.programs:
                self.assertTrue(any(name in command for command, _ in section.sessions), f"{section.heading}: {name}")

    def test_each_finding_of_the_doctor_has_its_section(self):
        headings = [section.heading for section in self.sections]
        page = PAGE.read_text(encoding="utf-8")
        for kind, title in SECTIONS.items():
            self.assertIn(title, headings, kind)
            self.assertIn(f"`{kind}`", page.partition(f"### {title}\n")[2].partition("\n#")[0], title)


if __name__ == "__main__":
    if sys.argv[1:2] == ["--print"]:  # what the sessions say now
        Guide.setUpClass()
        for number, section in enumerate(Guide.sections):
            guide = Guide("test_sessions")
            guide.work = Path(Guide._place.name, f"print {number}")
            guide.work.mkdir()
            for name, text in section.programs.items():
                guide.write(name, text)
            environment = guide.environment()
            for command, _ in section.sessions:
                print(f"$ {command}\n{guide.said(command, environment)}", end="")
        Guide.tearDownClass()
    else:
        unittest.main()
