"""The library's own catalogue: it is valid, and its tables are complete."""

import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from support import APIGEN

API = APIGEN.parents[1] / "api"
KINDS = ["sigset", "sigaction", "utsname", "tms", "dirent", "stat", "utimbuf", "flock", "termios", "group", "passwd"]


class OwnCatalogue(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(temporary.cleanup)
        cls.root = Path(temporary.name)
        cls.made = cls.apigen("--out", cls.root / "out")

    @staticmethod
    def apigen(*arguments):
        command = [sys.executable, str(APIGEN), "--api", str(API), *map(str, arguments)]
        return subprocess.run(command, capture_output=True, text=True, check=False)

    def test_it_is_valid(self):
        self.assertEqual((self.made.returncode, self.made.stderr), (0, ""))

    def test_record_kinds(self):
        text = (self.root / "out/private/qxport_records.h").read_text()
        enumeration = re.search(r"enum class Kind : uint32_t \{(.*?)\};", text, re.DOTALL)[1]
        self.assertEqual(re.findall(r"(\w+) = (\d+),", enumeration),
                         [(name.capitalize(), str(kind)) for kind, name in enumerate(KINDS, 1)])

    def test_constants(self):
        text = (self.root / "out/private/qxport_constants.inc").read_text()
        names = list(dict.fromkeys(re.findall(r'CONSTANT\("(\w+)"', text)))
        self.assertEqual(len(names), 268)
        self.assertEqual((names[0], names[-1]), ("SIGHUP", "EILSEQ"))
        fixed = dict(re.findall(r'^CONSTANT\("(\w+)", (-?\d+)\)$', text, re.MULTILINE))
        self.assertEqual(fixed, {
            "SIGEMT": "-1", "SIGINFO": "-1", "NSIG": "32", "NCCS": "20", "SYS_NMLN": "256", "_SYS_NAMELEN": "256",
            "STDIN_UNIT": "5", "STDOUT_UNIT": "6", "STDERR_UNIT": "0", "ENONAME": "126", "ENOHANDLE": "127",
            "ETRUNC": "129", "EARRAYLEN": "125", "EEND": "-1", "SIG_DFL": "0", "SIG_IGN": "1", "SIG_ERR": "-1",
        })


if __name__ == "__main__":
    unittest.main()
