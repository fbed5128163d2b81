"""An installed tree in a place with blanks in its name, and ways to run the command, the compiler and programs there."""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True  # the source tree stays as it is

SOURCE = Path(os.environ["SOURCE_DIR"])
BUILD = Path(os.environ["BUILD_DIR"])
TARGET = os.environ["TARGET"]
SANITIZE = os.environ.get("SANITIZE", "")
COMPILER = [os.environ["FC"]] + (["-m32"] if TARGET == "32" else [])


def lay_out(prefix):
    """What `cmake --install` lays down of that which the command needs; the libraries are led to."""
    for directory in ("bin", "share/qxport/python", "include/qxport/i8", "lib"):
        (prefix / directory).mkdir(parents=True)
    shutil.copy(SOURCE / "porting/qxport", prefix / "bin")
    shutil.copytree(SOURCE / "porting/qxporting", prefix / "share/qxport/python/qxporting")
    for path in [*(SOURCE / "porting").glob("*.json"), *Path(os.environ["GENERATED"], "share").glob("*.json")]:
        shutil.copy(path, prefix / "share/qxport")
    for path in [*Path(os.environ["MODULES"]).glob("*.mod"), *Path(os.environ["GENERATED"], "fortran").glob("*.f90")]:
        shutil.copy(path, prefix / "include/qxport")
    for path in [*Path(os.environ["I8_MODULES"]).glob("*.mod"), *Path(os.environ["GENERATED"], "fortran/i8").glob("*.f90")]:
        shutil.copy(path, prefix / "include/qxport/i8")
    for directory in (os.environ["QXPORT_LIB"], os.environ["QXCORE_LIB"]):
        for path in Path(directory).glob("lib*"):
            (prefix / "lib" / path.name).symlink_to(path)


class Installed(unittest.TestCase):
    """A tree for all tests of the class, and an empty working directory for each."""

    @classmethod
    def setUpClass(cls):
        cls._place = tempfile.TemporaryDirectory(prefix="qxport tests ")
        cls.prefix = Path(cls._place.name, "a prefix")
        lay_out(cls.prefix)

    @classmethod
    def tearDownClass(cls):
        cls._place.cleanup()

    def setUp(self):
        self.work = Path(tempfile.mkdtemp(prefix="work ", dir=self._place.name))

    def write(self, name, text):
        path = self.work / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text.lstrip("\n"), encoding="utf-8")
        return path

    def qxport(self, *arguments, status=0, env=None):
        """Runs the command; answers what it printed, on standard error where it failed."""
        words = [sys.executable, str(self.prefix / "bin/qxport"), *map(str, arguments)]
        done = self.ran(words, env)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        self.assertNotIn("Traceback", done.stderr)
        return done.stdout if status == 0 else done.stderr

    def module(self, *arguments, **keywords):
        return self.qxport("module", "--compiler", " ".join(COMPILER), *arguments, **keywords)

    def ran(self, words, env=None):
        environment = os.environ | {"LC_ALL": "C.UTF-8"} | (env or {})
        return subprocess.run([str(word) for word in words], cwd=self.work, env=environment, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, errors="replace", timeout=600, check=False)

    def compiled(self, *arguments):
        """What the compiler says of a source; empty where it is content."""
        done = self.ran([*COMPILER, "-fsyntax-only", *arguments])
        return "" if done.returncode == 0 else done.stderr

    def build(self, *arguments, output="prog"):
        instrumented = [f"-fsanitize={SANITIZE}"] if SANITIZE else []
        done = self.ran([*COMPILER, *instrumented, "-o", output, *arguments, f"-L{self.prefix}/lib", "-lqxportmt",
                         "-lqxcoremt_gnu"])
        self.assertEqual(done.returncode, 0, done.stderr)

    def run_program(self, program="./prog"):
        done = self.ran([program], {"LD_LIBRARY_PATH": f"{self.prefix}/lib"})
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        return done.stdout

    def tree(self, directory=None):
        """The files below a directory, with their contents."""
        root = directory or self.work
        return {str(path.relative_to(root)): path.read_bytes() for path in root.rglob("*") if path.is_file()}
