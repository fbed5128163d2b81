"""The command line: symbols, lists of outputs, version scripts, and outputs that stay as they are."""

import os
import unittest

from support import CatalogueCase

QXPORT = ["$$odd$one_", "ErrCount", "HiddenCells", "bare_cell", "everything_", "fortran_other", "other8_", "pair8_",
          "pair_", "plain_", "pxfsend_", "qxport_everything_", "qxport_other8_", "qxport_other_", "qxport_pair8_", "qxport_pair_",
          "qxport_plain_", "receive_", "shiftl_"]
QXCORE = ["flushqq_", "for_nargs", "qxport_flushqq_"]


class Command(CatalogueCase):
    def lines(self, *arguments):
        result = self.apigen(*arguments)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return result.stdout.splitlines()

    def made(self):
        return {str(path.relative_to(self.out)): path for path in self.out.rglob("*") if path.is_file()}

    def test_list_symbols(self):
        self.assertEqual(self.lines("--list-symbols", "qxport", "--target", "64"), QXPORT)
        self.assertEqual(self.lines("--list-symbols", "qxcore", "--target", "64"), QXCORE)
        self.assertEqual(self.lines("--list-symbols", "qxport", "--target", "32"), sorted(QXPORT + ["_narrow"]))

    def test_version_script_exports_just_these(self):
        self.generate("--only", "symbols")
        definitions = "".join(f"int {name}(void) {{ return 0; }}\n" for name in QXPORT + QXCORE + ["hidden_one"])
        (self.root / "all.c").write_text(definitions)
        for library, expected in (("libqxportmt", QXPORT), ("libqxcoremt", QXCORE)):
            script = self.out / f"symbols/{library}.map"
            self.run_clean("gcc", "-shared", "-fPIC", f"-Wl,--version-script={script}", self.root / "all.c", "-o",
                           self.root / f"{library}.so")
            table = self.run_clean("nm", "-D", "--defined-only", self.root / f"{library}.so")
            names = [line.split()[-1] for line in table.splitlines()]
            self.assertEqual(sorted(names), sorted([f"{name}@@QXPORT_1.0" for name in expected] + ["QXPORT_1.0"]))

    def test_list_outputs_is_what_is_made(self):
        self.generate()
        listed = self.lines("--list-outputs")
        self.assertEqual(sorted(listed), sorted(self.made()))
        self.assertIn("man/man3/odd_one.3f", listed)
        self.assertIn("man/man3/sample_record.3f", listed)
        self.assertIn("man/man3/pair_record.3f", listed)
        self.assertIn("man/man3/constants.3f", listed)
        self.assertEqual(self.lines("--list-outputs", "--only", "header", "--out", "/x"),
                         ["/x/include/qxport/qxport.h"])
        self.assertEqual(self.lines("--list-outputs", "--only", "private"),
                         ["private/qxport_records.h", "private/qxport_constants.inc", "private/qxport_numbers.inc"])

    def test_only_the_kinds_asked_for(self):
        self.generate("--only", "header,symbols")
        self.assertEqual(sorted(self.made()), ["include/qxport/qxport.h", "symbols/libqxcoremt.map",
                                               "symbols/libqxportmt.map", "symbols/libqxportmt_i8.map"])
        self.assertEqual(self.apigen("--out", self.out, "--only", "surprise").returncode, 2)
        self.assertEqual(self.apigen().returncode, 2)

    def test_twice_the_same_bytes(self):
        self.generate()
        self.generate(out=self.root / "again")
        for name, path in self.made().items():
            self.assertEqual(path.read_bytes(), (self.root / "again" / name).read_bytes(), name)

    def test_unchanged_outputs_keep_their_times(self):
        self.generate()
        for path in self.made().values():
            os.utime(path, ns=(1, 1))
        sample = self.api / "compat_sample.toml"
        sample.write_text(sample.read_text().replace("Does `it`, or `everything`.", "Does `it`."))
        self.generate()
        touched = sorted(name for name, path in self.made().items() if path.stat().st_mtime_ns != 1)
        self.assertEqual(touched, ["html/index.html", "html/sample.html", "man/man3/plain.3f", "share/catalogue.json"])


if __name__ == "__main__":
    unittest.main()
