"""`qxport doctor` as a command: what it is given, what it tells and how, and what it leaves alone."""

import json
import os
import stat
import subprocess
import sys
import unittest

from json_schema import problems
from support import COMPILER, TARGET, Installed

OTHER = 4 if TARGET == "64" else 8  # the size of an integer that no address fits
SORTS = f"""
program sorts
  integer(4) :: a(2) = [2, 1]; integer({OTHER}) :: n = 2
  call sortqq(loc(a), n, 327680)
  print *, a
end program
"""
CLEAN = "program clean\n  call sleepqq(1)\nend program\n"


class Doctor(Installed):
    def doctor(self, *arguments, status=0, env=None):
        return self.qxport("doctor", *arguments, status=status, env=env)

    def looked(self, *arguments, status=1, options=()):
        """What is told of files, as it is, and as JSON that fits its schema."""
        words = [*COMPILER, *arguments]
        done = self.ran([sys.executable, self.prefix / "bin/qxport", "doctor", *options, *words])
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        done = self.ran([sys.executable, self.prefix / "bin/qxport", "doctor", "--json", *options, *words])
        report = json.loads(done.stdout)
        schema = json.loads((self.prefix / "share/qxport/doctor.schema.json").read_text())
        self.assertEqual(problems(report, schema), [])
        self.assertEqual(report["status"], status)
        return report

    def text(self, *arguments, status=1):
        done = self.ran([sys.executable, self.prefix / "bin/qxport", "doctor", *COMPILER, *arguments])
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout

    def kinds(self, report):
        return [(f["kind"], f["name"], f["line"]) for f in report["findings"] if f["weight"] == "to do"]


class Told(Doctor):
    def test_clean_bill(self):
        self.write("clean.f90", CLEAN)
        text = self.text("--", "clean.f90", status=0)
        self.assertIn("clean.f90: clean: the library serves sleepqq\n", text)
        self.assertIn("clean is built by\n", text)
        self.assertTrue(text.endswith("1 source: nothing in the way\n"))

    def test_text(self):
        self.write("sorts.f90", SORTS)
        text = self.text("--", "sorts.f90")
        self.assertIn(f"sorts.f90:3: sorts: sortqq: argument 2, count: INTEGER({OTHER}), and by EXTERNAL the library wants INTEGER(", text)
        self.assertIn("    do: `use qxport, only: sortqq` in the unit", text)
        self.assertIn("    behind line 1:   use qxport, only: sortqq\n", text)
        self.assertTrue(text.endswith("1 source: 1 thing to do\n"))

    def test_served_by_unit(self):
        self.write("units.f90", "module m\ncontains\nsubroutine one\ncall sleepqq(1)\nend subroutine\nend module\n"
                                "subroutine two\ncall sleepqq(1)\ncall beepqq(1, 1)\nend subroutine\n")
        report = self.looked("--", "units.f90", status=0)
        self.assertEqual({u["unit"]: u["names"] for u in report["served"]}, {"one": ["sleepqq"], "two": ["beepqq", "sleepqq"]})
        self.assertEqual(report["programs"], [])

    def test_every_place(self):
        self.write("places.f", "      program p\n      call nowhere\n      call sleepqq(1)\n      call nowhere\n      end\n")
        self.assertEqual(self.kinds(self.looked("--", "places.f")), [("nobody", "nowhere", 2), ("nobody", "nowhere", 4)])

    def test_several_programs_in_a_tree(self):
        """Each has modules and procedures of its own, of the same names."""
        for name, value in (("one", 1), ("two", 2)):
            self.write(f"tree/{name}/shared.f90", f"module shared\n integer, parameter :: value = {value}\nend module\n"
                                                  f"subroutine helper\n call only_{name}\nend subroutine\n")
            self.write(f"tree/{name}/{name}.f90", f"program {name}\n use shared\n integer :: a(value)\n call helper\nend program\n")
        report = self.looked("--", "tree")
        self.assertEqual([(k, n) for k, n, _ in self.kinds(report)], [("nobody", "only_one"), ("nobody", "only_two")])
        self.assertEqual([(p["name"], p["sources"]) for p in report["programs"]],
                         [(n, [f"tree/{n}/shared.f90", f"tree/{n}/{n}.f90"]) for n in ("one", "two")])

    def test_order_of_modules(self):
        self.write("a.f90", "program a\n use b\n call from_b\nend program\n")
        self.write("b.f90", "module b\n use c\ncontains\n subroutine from_b\n call from_c\n end subroutine\nend module\n")
        self.write("c.f90", "module c\ncontains\n subroutine from_c\n call sleepqq(1)\n end subroutine\nend module\n")
        report = self.looked("--", "a.f90", "b.f90", "c.f90", status=0)
        self.assertEqual(report["programs"][0]["sources"], ["c.f90", "b.f90", "a.f90"])

    def test_flags(self):
        self.write("wide.f", " " * 6 + "x = 1." + " " * 70 + "+ 1.\n      end\n")
        self.looked("-ffixed-line-length-132", "-Werror", "--", "wide.f", status=0)
        self.write("free.f", "x = 1; call sleepqq(1) ! free form\nend\n")
        report = self.looked("-ffree-form", "--", "free.f", status=0)
        self.assertIn("-ffree-form", report["programs"][0]["commands"][0])
        self.write("long.f90", CLEAN)
        self.looked("-O2", "-flto", "-J", "made", "-o", "away", "-save-temps", "-MD", "--", "long.f90", status=0)
        self.assertNotIn("away", self.tree())

    def test_modules_of_the_sources_stay_in_the_scratch_directory(self):
        (self.work / "made").mkdir()
        self.write("both.f90", "module both\nend module\nprogram p\n use both\nend program\n")
        self.looked("-J", "made", "--", "both.f90", status=0)
        self.looked("-Jmade", "--", "both.f90", status=0)
        self.assertEqual(list(self.tree()), ["both.f90"])

    def test_undeclared_variable_with_a_value(self):
        self.write("valued.f", "      milliseconds = 1\n      call sleepqq(milliseconds)\n      end\n")
        self.looked("--", "valued.f", status=0)
        self.write("valueless.f", "      call sleepqq(milliseconds)\n      end\n")
        self.assertEqual(self.kinds(self.looked("--", "valueless.f")), [("undeclared", "sleepqq", 1)])

    def test_includes_and_modules_that_are_there(self):
        self.write("inc/size.inc", "      integer a(3)\n")
        self.write("inc/mine.f90", "module mine\n integer :: here = 1\nend module\n")
        self.assertEqual(self.ran([*COMPILER, "-c", "-J", "inc", "-o", "inc/mine.o", "inc/mine.f90"]).returncode, 0)
        self.write("src/uses.f", "      use mine\n      include 'size.inc'\n      a(1) = here\n      end\n")
        report = self.looked("-Iinc", "--", "src/uses.f", "inc/mine.o", status=0)
        self.assertEqual(report["modules"], [])
        self.assertIn("inc/mine.o", report["programs"][0]["commands"][-1])

    def test_missing_modules(self):
        self.write("uses.f90", "program uses\n use theirs\n use others, only: sleepqq\n call sleepqq(1)\nend program\n")
        report = self.looked("--", "uses.f90")
        self.assertEqual([m["name"] for m in report["modules"]], ["others", "theirs"])
        self.assertEqual(report["modules"][1]["users"], [{"file": "uses.f90", "line": 2}])
        self.assertIn("module others theirs --output qxport_modules", " ".join(report["programs"][0]["commands"][0].split("'")))
        report = self.looked("--", "uses.f90", options=["--modules", "a place", "--of", "commands"])
        self.assertIn("--of commands", report["programs"][0]["commands"][0])
        self.assertIn("'-Ia place'", report["programs"][0]["commands"][1])

    def test_names_begun(self):
        self.write("uses.f90", "program uses\n use theirs, only: sort_kqq\n call frobnicate(sort_kqq)\nend program\n")
        done = self.doctor("--write-names", "begun", *COMPILER, "--", "uses.f90", status=1)
        text = (self.work / "begun").read_text()
        self.assertIn("\nsort_kqq =    # uses.f90:2; near: sortqq", text)
        self.assertIn("\nfrobnicate =    # uses.f90:3\n", text)
        said = self.doctor("--names", "begun", *COMPILER, "--", "uses.f90", status=1)
        self.assertIn("begun:2: nothing stands behind", said)
        self.assertIn("begun exists already", self.doctor("--write-names", "begun", *COMPILER, "--", "uses.f90", status=2))
        self.assertEqual(done, "")

    def test_library_of_the_user(self):
        self.write("mine.f90", "subroutine mine\nend subroutine\n")
        self.write("uses.f90", "call mine\nend\n")
        self.assertEqual(self.ran([*COMPILER, "-shared", "-fPIC", "-o", "libmine.so", "mine.f90"]).returncode, 0)
        self.looked("--", "uses.f90", status=1)
        self.looked("--", "uses.f90", "libmine.so", status=0)

    def test_names_in_both_kinds_of_form(self):
        self.write("name with blanks.f90", SORTS)
        report = self.looked("--", "name with blanks.f90")
        self.assertEqual(report["findings"][0]["edit"]["after_line"], 1)
        self.assertIn("'name with blanks.f90'", report["programs"][0]["commands"][0])

    def test_sources_that_do_not_compile(self):
        self.write("bad/broken.f90", "program p\n x = = 1\nend program\n")
        self.write("bad/good.f90", CLEAN)
        self.write("bad/empty.f90", "")
        report = self.looked("--", "bad")
        self.assertEqual(self.kinds(report), [("does-not-compile", "broken.f90", 2)])
        self.assertEqual([p["name"] for p in report["programs"]], ["good"])

    def test_many_lines(self):
        unit = "      subroutine s{0}(x)\n      integer x\n" + "c     a comment\n" * 990 + "      x = x + {0}\n      call sleepqq(x)\n" \
            "      if (x .gt. 3) x = 2\n      return\n      end\n"
        path = self.write("long.f", "".join(unit.format(n) for n in range(101)))
        self.assertGreater(path.read_text().count("\n"), 100000)
        report = self.looked("--", "long.f", status=0)
        self.assertEqual(len(report["served"]), 101)

    def test_many_sources(self):
        for number in range(40):
            self.write(f"many/s{number}.f", f"      subroutine s{number}\n      call sleepqq(1)\n      end\n")
        report = self.looked("--", "many", status=0, options=["--jobs", "3"])
        self.assertEqual((report["sources"], len(report["served"])), (40, 40))


class LeftAlone(Doctor):
    def test_nothing_is_written(self):
        self.write("src/uses.f90", "module here\nend module\nprogram p\n use theirs\n call sleepqq(1)\nend program\n")
        before, installed = self.tree(), self.tree(self.prefix)
        scratch = self.work.parent / f"{self.work.name} scratch"
        scratch.mkdir()
        self.doctor(*COMPILER, "-fdump-tree-all", "-J.", "--", "src", status=1, env={"TMPDIR": str(scratch)})
        self.assertEqual(self.tree(), before)
        self.assertEqual(self.tree(self.prefix), installed)
        self.assertEqual(list(scratch.iterdir()), [])

    def test_source_directory_without_leave(self):
        self.write("src/clean.f90", CLEAN)
        (self.work / "src").chmod(0o555)
        try:
            self.looked("--", "src", status=0)
        finally:
            (self.work / "src").chmod(0o755)


class Refused(Doctor):
    def test_usage(self):
        self.assertIn("no `--` before the files", self.doctor("gfortran", status=2))
        self.assertIn("no file is named", self.doctor("gfortran", "--", status=2))
        self.assertIn("no such option", self.doctor("--jsn", "--", "x.f", status=2))
        self.assertIn("its value is missing", self.doctor("--names", "--", "x.f", status=2))
        for number in ("0", "many", "-1"):
            self.assertIn("at least 1", self.doctor("--jobs", number, "--", "x.f", status=2))
        self.assertIn("usage: qxport doctor", self.doctor("--help"))

    def test_files(self):
        self.assertIn("nowhere.f: there is no such file", self.doctor(*COMPILER, "--", "nowhere.f", status=2))
        self.write("notes.txt", "text\n")
        self.assertIn("no Fortran source by its name", self.doctor(*COMPILER, "--", "notes.txt", status=2))
        (self.work / "empty").mkdir()
        self.assertIn("there are no Fortran sources", self.doctor(*COMPILER, "--", "empty", status=2))

    @unittest.skipIf(os.geteuid() == 0, "the superuser reads everything")
    def test_what_cannot_be_read(self):
        self.write("src/locked/x.f", "      end\n")
        (self.work / "src/locked").chmod(0)
        try:
            self.assertIn("src/locked: ", self.doctor(*COMPILER, "--", "src", status=2))
        finally:
            (self.work / "src/locked").chmod(0o755)
        path = self.write("src/y.f", "      end\n")
        path.chmod(0)
        self.assertIn("y.f: ", self.doctor(*COMPILER, "--", "src/y.f", status=2))

    def test_compiler(self):
        self.write("clean.f90", CLEAN)
        self.assertIn("there is no such command", self.doctor("/no/such", "--", "clean.f90", status=2))
        self.assertIn("there is no such command", self.doctor("--", "clean.f90", status=2, env={"FC": "/no/such"}))
        path = self.write("old", "#!/bin/sh\necho 'GNU Fortran (GCC) 4.4.7'\n")
        path.chmod(path.stat().st_mode | stat.S_IXUSR)
        self.assertIn("too old", self.doctor(str(path), "--", "clean.f90", status=2))

    def test_module_that_cannot_be_made(self):
        self.write("uses.f90", "program p\n use qxport_of_another\nend program\n")
        report = self.looked("--", "uses.f90")
        self.assertIn(("missing-module", "qxport_of_another", 2), self.kinds(report))
        self.assertIn("cannot be made", next(f for f in report["findings"] if f["kind"] == "missing-module")["advice"])


class Progress(Doctor):
    def test_line_on_long_trees(self):
        """A compiler that takes its time: the line is on standard error, and --quiet takes it away."""
        slow = self.write("slow", f"#!/bin/sh\ncase \"$*\" in *-c*) sleep 0.4;; esac\nexec {' '.join(COMPILER)} \"$@\"\n")
        slow.chmod(slow.stat().st_mode | stat.S_IXUSR)
        for number in range(24):
            self.write(f"many/s{number}.f", "      end\n")
        words = [sys.executable, self.prefix / "bin/qxport", "doctor", "--jobs", "1"]
        done = self.ran([*words, slow, "--", "many"])
        self.assertRegex(done.stderr, r"qxport: \d+ of 24 sources")
        self.assertEqual(self.ran([*words, "--quiet", slow, "--", "many"]).stderr, "")


if __name__ == "__main__":
    unittest.main()
