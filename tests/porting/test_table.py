"""The tables of docs/porting.md are what compiling, linking and running says today, and the doctor's texts agree.

What the library's routines answer is so by every compiler. What the compiler's own intrinsics do is asked of the
compiler that the page tells of; another version may do otherwise.
"""

import json
import os
import re
import sys
import unittest
from pathlib import Path

from support import BUILD, COMPILER, SANITIZE, SOURCE, TARGET

sys.path.insert(0, str(SOURCE / "tools"))

import porting_table as table  # noqa: E402
from qxapi.compiler_names import INTRINSICS  # noqa: E402
from qxporting.doctor.intrinsics import DIFFERENCES  # noqa: E402

PAGE = SOURCE / "docs/porting.md"


def rows(lines):
    """The rows of a table by their first cells."""
    cells = [[cell.strip() for cell in line.strip("|").split("|")] for line in lines if line.startswith("|")]
    return {first: others for first, *others in cells[2:]}


def section(page, heading):
    return page.partition(f"\n{heading}\n")[2].partition("\n## ")[0].splitlines()


class Table(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        libraries = [Path(os.environ["QXPORT_LIB"]), Path(os.environ["QXCORE_LIB"])]
        flags = [f"-fsanitize={SANITIZE}"] if SANITIZE else []
        tools = table.Toolchain(COMPILER, Path(os.environ["MODULES"]), libraries, flags)
        path = Path(os.environ["GENERATED"], "share/catalogue.json")
        cls.measured = table.measure(tools, json.loads(path.read_text(encoding="utf-8")))
        cls.page = PAGE.read_text(encoding="utf-8")
        told = re.search(r"Measured with (.*?) on x86-64", cls.page)
        cls.known = told is not None and told[1] == cls.measured.version and TARGET == "64"

    def test_page(self):
        """The whole of the tables by the compiler that they tell of, the library's columns by each."""
        made = table.sections(self.measured)
        if self.known:
            self.assertEqual(table.replaced(self.page, made).splitlines(), self.page.splitlines(),
                             f"tools/porting_table.py {BUILD} makes them anew")
        for heading, first in ((table.WHOSE, 2), (table.ANSWERS, 1), (table.DIFFERS, 0)):
            there, now = rows(section(self.page, heading)), rows(made[heading])
            self.assertGreater(len(there), 25, heading)
            for name in set(there) & set(now):
                if TARGET == "64" or heading != table.WHOSE:
                    self.assertEqual(there[name][first:], now[name][first:], name)

    def test_texts_are_measured(self):
        """The doctor has a text of each name whose intrinsic answers otherwise, and of no other."""
        differ = set()
        for number, probe in enumerate(table.probes()):
            if self.measured.answers[table.PLAIN][number] != self.measured.answers[table.EXTERNAL][number]:
                differ.add(probe["routine"])
        if self.known:
            self.assertEqual(differ, set(DIFFERENCES))

    def test_every_intrinsic_is_tried(self):
        tried = {probe["routine"] for probe in table.probes()}
        self.assertEqual(tried & set(self.measured.routines), tried)
        if self.known:
            self.assertEqual(self.measured.intrinsics - tried, set())
            self.assertEqual(self.measured.intrinsics, set(self.measured.routines) & INTRINSICS)

    def test_the_library_answers_alike(self):
        """By EXTERNAL and through the module, where both are defined and compile."""
        for number, probe in enumerate(table.probes()):
            external, module = (self.measured.answers[way][number] for way in (table.EXTERNAL, table.MODULE))
            if table.REFUSED not in (external, module) and external != table.UNDEFINED and "form" not in probe:
                with self.subTest(call=probe["call"]):
                    self.assertEqual(external, module)

    def test_external_reaches_the_library(self):
        for form in (table.FUNCTION, table.SUBROUTINE):
            for name, symbol in self.measured.whose[table.EXTERNAL, form].items():
                self.assertEqual(symbol, self.measured.routines[name]["symbol"])


if __name__ == "__main__":
    unittest.main()
