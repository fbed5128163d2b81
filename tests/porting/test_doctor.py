"""`qxport doctor` as a command: what it is given, what it tells and how, and what it leaves alone."""

import json
import os
import shutil
import stat
import subprocess
import sys
import unittest
from pathlib import Path

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
# The superuser reads what nobody may, but for one without that capability.
WITHOUT_LEAVE = [] if os.geteuid() else ["setpriv", *(f"--{what}=-dac_override,-dac_read_search"
                                                      for what in ("bounding-set", "inh-caps"))]
CLEAN = "program clean\n  call sleepqq(1)\nend program\n"


class Doctor(Installed):
    def doctor(self, *arguments, status=0, env=None):
        return self.qxport("doctor", *arguments, status=status, env=env)

    def looked(self, *arguments, status=1, options=()):
        """What is told of files, as it is, and as JSON that fits its schema."""
        words = [*COMPILER, *arguments]
        done = self.ran([sys.executable, self.prefix / "bin/qxport", "doctor", *options, *words])
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return self.told_as_json(*arguments, status=status, options=options)

    def told_as_json(self, *arguments, status=1, options=()):
        words = [*COMPILER, *arguments]
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

    def test_section_of_the_page(self):
        self.write("sorts.f90", SORTS)
        self.assertIn("\nsee qxport-porting(7): Counts and addresses of 8 bytes\nsorts is built by\n", self.text("--", "sorts.f90"))
        report = self.looked("--", "sorts.f90")
        self.assertEqual(report["findings"][0]["section"], "Counts and addresses of 8 bytes")
        self.write("clean.f90", CLEAN)
        self.assertNotIn("see ", self.text("--", "clean.f90", status=0))

    def test_arguments_of_several_types(self):
        """The compiler refuses them without a flag, which the command has then; what else it refuses is told in its words."""
        self.write("several.f", "      call sleepqq(1_4)\n      call sleepqq(1_2)\n      end\n")
        report = self.looked("--", "several.f")
        self.assertEqual(self.kinds(report), [("literal-kind", "sleepqq", 2)])
        self.assertEqual([f["kind"] for f in report["findings"] if f["weight"] == "note"], ["argument-mismatch"])
        self.assertIn("-fallow-argument-mismatch", report["programs"][0]["commands"][0])
        self.write("form.f", "      i = nowhere(1)\n      call nowhere(1)\n      end\n")
        self.assertIn("which is not consistent with the CALL", self.looked("--", "form.f")["findings"][0]["what"])

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

    def test_names_that_a_shell_or_a_compiler_would_take_otherwise(self):
        text = "      program p\n      call sleepqq(1)\n      end\n"
        for name in ("it's.f", "-o.f", "$HOME;.f", "\u00e4.f", os.fsdecode(b"\xff.f")):
            self.write(name, text)
            report = self.looked("--", name, status=0)
            done = self.ran(["bash", "-c", report["programs"][0]["commands"][0]])
            self.assertEqual(done.returncode, 0, f"{name}: {done.stderr}")
        done = subprocess.run([sys.executable, self.prefix / "bin/qxport", "doctor", "--quiet", *COMPILER, "--", "."], cwd=self.work,
                              env=os.environ | {"PYTHONIOENCODING": "utf-8:strict"}, capture_output=True, check=False)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        self.assertIn(b"\n\xff.f: p: the library serves", done.stdout)

    def test_forms_of_lines(self):
        """Line ends of another system, no line end at the end, bytes that are no UTF-8, tabs."""
        self.write("ends.f90", "program p\r\n  call sleepqq(1_2)\r\nend program")
        Path(self.work, "bytes.f").write_bytes(b"c     \xe9t\xe9\n      program p\n\tcall sleepqq(1_2)\n      end")
        report = self.looked("--", "ends.f90", "bytes.f")
        self.assertEqual(self.kinds(report), [("literal-kind", "sleepqq", 3), ("literal-kind", "sleepqq", 2)])

    def test_what_is_no_source_in_a_directory(self):
        """Pipes, links to nowhere such as editors leave, links to the directory itself."""
        self.write("src/clean.f90", CLEAN)
        os.mkfifo(self.work / "src/pipe.f")
        (self.work / "src/.#lock.f").symlink_to("nowhere")
        (self.work / "src/again").symlink_to(".")
        (self.work / "src/directory.f90").mkdir()
        self.assertEqual(self.looked("--", "src", status=0)["sources"], 1)
        self.assertIn("src/pipe.f: this is no file", self.doctor(*COMPILER, "--", "src/pipe.f", status=2))

    def test_included_files_that_are_not_there(self):
        self.write("line.f", "      include 'nowhere.inc'\n      end\n")
        self.write("preprocessed.F", '#include "nowhere.h"\n      end\n')
        found = {(f["kind"], f["name"]) for f in self.looked("--", "line.f", "preprocessed.F")["findings"]}
        self.assertEqual(found, {("missing-include", "nowhere.inc"), ("missing-include", "nowhere.h")})

    def test_modules_in_a_circle(self):
        self.write("circle/a.f90", "module a\n use b\nend module\n")
        self.write("circle/b.f90", "module b\n use a\nend module\n")
        self.write("circle/self.f90", "module self\n use self\nend module\n")
        self.write("circle/clean.f90", CLEAN)
        report = self.looked("--", "circle")
        self.assertEqual({(f["kind"], f["name"]) for f in report["findings"]},
                         {("does-not-compile", name) for name in ("a.f90", "b.f90", "self.f90")})
        self.assertEqual([p["name"] for p in report["programs"]], ["clean"])

    def test_a_compiler_of_another_kind(self):
        """It writes no dump: what the objects want is known, not what the calls hand over."""
        self.write("other", f"#!/bin/sh\n[ \"$1\" = --version ] && exec echo 'other compiler 1.0'\nexec {' '.join(COMPILER)} \"$@\"\n")
        (self.work / "other").chmod(0o755)
        self.write("calls.f", "      program calls\n      call sleepqq(1_2)\n      call nowhere\n      end\n")
        done = self.ran([sys.executable, self.prefix / "bin/qxport", "doctor", "--json", "./other", "--", "calls.f"])
        report = json.loads(done.stdout)
        self.assertEqual((report["compiler"], self.kinds(report)), ("other compiler 1.0", [("nobody", "nowhere", 3)]))
        self.assertEqual(report["served"][0]["names"], ["sleepqq"])

    def test_sources_that_do_not_compile(self):
        self.write("bad/broken.f90", "program p\n x = = 1\nend program\n")
        self.write("bad/good.f90", CLEAN)
        self.write("bad/empty.f90", "")
        report = self.looked("--", "bad")
        self.assertEqual(self.kinds(report), [("does-not-compile", "broken.f90", 2)])
        self.assertEqual([p["name"] for p in report["programs"]], ["good"])

    def test_many_lines(self):
        body = "      x = x + {0}\n      if (x .gt. 3) x = mod(x, 5)\n      call sleepqq(x)\n" + "c     a comment\n" * 47
        unit = "      subroutine s{0}(x)\n      integer x\n" + body * 20 + "      return\n      end\n"
        path = self.write("long.f", "".join(unit.format(n) for n in range(101)) + "      call sleepqq(1_2)\n      end\n")
        self.assertGreater(path.read_text().count("\n"), 100000)
        report = self.told_as_json("--", "long.f")
        self.assertEqual(len(report["served"]), 102)
        self.assertEqual(self.kinds(report), [("literal-kind", "sleepqq", path.read_text().count("\n") - 1)])

    def test_many_sources(self):
        """A tree of a few hundred sources that need one another."""
        count = 300
        for number in range(count):
            text = f"      subroutine s{number}\n      use shared\n" + "c     a comment\n" * 300 + \
                f"      call sleepqq(value)\n      call s{number + 1}\n      end\n"
            self.write(f"many/s{number}.f", text)
        self.write("many/shared.f90", "module shared\n integer, parameter :: value = 1\nend module\n")
        self.write("many/main.f90", f"call s0\nend\nsubroutine s{count}\nend\n")
        report = self.told_as_json("--", "many", status=0, options=["--jobs", "3"])
        self.assertEqual((report["sources"], len(report["served"])), (count + 2, count))
        self.assertEqual(len(report["programs"][0]["sources"]), count + 2)


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

    def test_what_cannot_be_read(self):
        if subprocess.run([*WITHOUT_LEAVE, "true"], stderr=subprocess.DEVNULL, check=False).returncode:
            self.skipTest("the superuser reads everything here")
        self.write("src/locked/x.f", "      end\n")
        self.write("locked.f", "      end\n")
        self.write("locked.names", "theirs = sleepqq\n")
        self.write("clean.f90", CLEAN)
        for name in ("src/locked", "locked.f", "locked.names"):
            (self.work / name).chmod(0)
        try:
            for name, words in (("src/locked", ["--", "src"]), ("locked.f", ["--", "locked.f"]),
                                ("locked.names", ["--names", "locked.names", *COMPILER, "--", "clean.f90"])):
                done = self.ran([*WITHOUT_LEAVE, sys.executable, self.prefix / "bin/qxport", "doctor", *words])
                self.assertEqual(done.returncode, 2)
                self.assertRegex(done.stderr, rf"\Aqxport: {name}: .*Permission denied")
        finally:
            (self.work / "src/locked").chmod(0o755)

    def test_compiler(self):
        self.write("clean.f90", CLEAN)
        self.assertIn("there is no such command", self.doctor("/no/such", "--", "clean.f90", status=2))
        self.assertIn("there is no such command", self.doctor("--", "clean.f90", status=2, env={"FC": "/no/such"}))
        path = self.write("old", "#!/bin/sh\necho 'GNU Fortran (GCC) 4.4.7'\n")
        path.chmod(path.stat().st_mode | stat.S_IXUSR)
        self.assertIn("too old", self.doctor(str(path), "--", "clean.f90", status=2))
        for command in ("true", "false", "cat"):
            self.assertIn(f"`{command}`: it does not compile", self.doctor(command, "--", "clean.f90", status=2))
        self.assertIn("-fno-such-flag", self.doctor(*COMPILER, "-fno-such-flag", "--", "clean.f90", status=2))

    def test_tools_that_are_not_there(self):
        """The compiler finds its assembler, and nothing else is there."""
        self.write("clean.f90", CLEAN)
        (self.work / "bin").mkdir()
        (self.work / "bin/as").symlink_to(shutil.which("as"))
        done = self.doctor(shutil.which(COMPILER[0]), *COMPILER[1:], "--", "clean.f90", status=2, env={"PATH": str(self.work / "bin")})
        self.assertIn("nm: No such file or directory: the doctor looks at objects by it", done)

    def test_names_files(self):
        self.write("clean.f90", CLEAN)
        self.write("names", "theirs = sleepqq\nTheirs = beepqq\nother = nothing_like_it\n")
        said = self.doctor("--names", "names", *COMPILER, "--", "clean.f90", status=1)
        self.assertIn("names:2: `Theirs` is defined in line 1 already", said)
        self.write("one", "theirs = sleepqq\n")
        self.write("two", "theirs = beepqq\n")
        said = self.doctor("--names", "one", "--names", "two", *COMPILER, "--", "clean.f90", status=1)
        self.assertIn("two:1: `theirs` is defined in one:1 already", said)
        self.assertIn("nowhere: the names cannot be read", self.doctor("--names=nowhere", *COMPILER, "--", "clean.f90", status=2))
        said = self.doctor("--write-names", "no/such/directory", *COMPILER, "--", "clean.f90", status=2)
        self.assertIn("no/such/directory: No such file or directory", said)

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
