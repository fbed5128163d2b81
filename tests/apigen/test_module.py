"""The Fortran modules compile without warnings and bind to the traditional symbols or to aliases."""

import os
import subprocess
import unittest

from support import CatalogueCase, widths

USER = """
use qxport
use qxport_run, only: core_flush => flushqq
implicit none
type(sample_record) :: record
integer(4) :: thirteen(13)
integer(1) :: few(2)
real(8) :: buffer(2, 2)
character(8) :: letters
external :: called
letters = everything(1, BAD_HANDLE_copy(), record, 'x', letters, buffer, [(1d0, 1d0)], 3_8, called, called, &
  int(thirteen, 2), few)
letters = everything(1, BAD_HANDLE_copy(), sample_record=record, default='x', buffer=record, z=[(1d0, 1d0)], &
  n=3_8, f=called, a=int(thirteen, 2), b=few)
call plain(QUOTES, LEAST)
call other()
call other(LEAST_LONG)
call pxfsend('x', receive(LEAST_LONG, 2) + receive(LEAST_LONG, LEAST + 1))
call pair(int(HALF, 8))
call pair8(int(HALF, 8))
if (core_flush(6) .neqv. YES) ErrCount = ErrCount + int(HALF)
contains
  function BAD_HANDLE_copy() result(copy)
    use, intrinsic :: iso_c_binding, only: c_intptr_t
    integer(c_intptr_t), pointer :: copy
    allocate (copy)
    copy = BAD_HANDLE
  end function
end
"""


OWN_RECORD = """
program own
  use qxport_record_types, only: theirs => sample_record
  implicit none
  type :: sample_record
    sequence
    integer(4) :: default
    integer(4) :: words(2)
    integer(4) :: pad
    real(8) :: when
    character(3) :: name
    character(2) :: names(4)
  end type
  type(sample_record) :: mine
  call take(mine)
contains
  subroutine take(record)
    type(theirs), intent(in) :: record
    if (record%default == 0) stop 1
  end subroutine
end program
"""

# A second area of the family.
MORE = """
[area]
name = "more"
family = "posix"
title = "More"
library = "qxport"
text = "A number."

[[constant]]
name = "MORE"
type = "integer(4)"
value = 1
text = "one"
"""

ROUTINE = """
[[routine]]
name = "{name}"
kind = "function"
result = "{kind}"
result_text = "a number"
summary = "do it"
text = "Does it."
origin = "this library"
{more}
example = "end"
"""


# A caller's procedure that the module demands, one that it demands where there is one, and one that may be any.
WATCH = """
args = [
  { name = "watcher", type = "procedure", text = "what is called", interface = \"\"\"
integer(4) function watcher(number)
  integer(4), value :: number
\"\"\" },
  { name = "last", type = "procedure", optional = true, text = "what is called last", interface = \"\"\"
subroutine last(word)
character(*), intent(in) :: word
\"\"\" },
  { name = "any", type = "procedure", optional = true, text = "what is called too" },
]
"""

WATCHERS = """
use qxport
implicit none
external :: whatever
print *, {}
contains
  integer(4) function by_value(number)
    integer(4), value :: number
    by_value = number
  end function
  integer(4) function by_reference(number)
    integer(4) :: number
    by_reference = number
  end function
  integer(8) function wide(number)
    integer(4), value :: number
    wide = number
  end function
  integer(4) function of_two(number, other)
    integer(4), value :: number, other
    of_two = number + other
  end function
  subroutine say(word)
    character(*), intent(in) :: word
    print *, word
  end subroutine
end
"""


class Module(CatalogueCase):
    def test_procedure_is_what_its_interface_says(self):
        self.write({"posix_more.toml": MORE + ROUTINE.format(name="pxfwatch", kind="integer(4)", more=WATCH)})
        self.generate("--only", "module")
        self.run_clean("gfortran", "-std=f2018", "-Wall", "-Werror", "-fsyntax-only", self.out / "fortran/qxport.f90",
                       cwd=self.root)
        for call, told in (
            ("pxfwatch(by_value)", ""),
            ("pxfwatch(by_value, say)", ""),
            ("pxfwatch(by_value, say, say)", ""),
            ("pxfwatch(by_value, any=by_reference)", ""),
            ("pxfwatch(watcher=by_value, last=say, any=whatever)", ""),
            ("pxfwatch(by_reference)", "Interface mismatch in dummy procedure 'watcher'"),
            ("pxfwatch(wide)", "Interface mismatch in dummy procedure 'watcher'"),
            ("pxfwatch(of_two)", "Interface mismatch in dummy procedure 'watcher'"),
            ("pxfwatch(say)", "Interface mismatch in dummy procedure 'watcher'"),
            ("pxfwatch(by_value, by_value)", "Interface mismatch in dummy procedure 'last'"),
            ("pxfwatch(last=say)", "Missing actual argument for argument 'watcher'"),
        ):
            with self.subTest(call):
                (self.root / "watchers.f90").write_text(WATCHERS.format(call))
                result = subprocess.run(["gfortran", "-fsyntax-only", "watchers.f90"], cwd=self.root, check=False,
                                        capture_output=True, text=True, env=os.environ | {"LC_ALL": "C"})
                self.assertEqual(result.returncode == 0, told == "", result.stderr)
                self.assertIn(told, result.stderr)

    def test_compiles_without_warnings(self):
        for width in widths():
            with self.subTest(width=width):
                self.generate("--only", "module", target=width)
                self.run_clean("gfortran", f"-m{width}", "-std=f2018", "-Wall", "-Werror", "-fsyntax-only",
                               self.out / "fortran/qxport.f90", cwd=self.root)

    def test_user_calls_what_the_binding_says(self):
        for width in widths():
            with self.subTest(width=width):
                self.generate("--only", "module", target=width)
                (self.root / "user.f90").write_text(USER)
                self.run_clean("gfortran", f"-m{width}", "-c", self.out / "fortran/qxport.f90", cwd=self.root)
                self.run_clean("gfortran", f"-m{width}", "-std=f2018", "-c", "user.f90", cwd=self.root)
                needed = {line.split()[-1] for line in self.run_clean("nm", "-u", "user.o", cwd=self.root).splitlines()}
                ours = {"qxport_pair8_", "qxport_everything_", "qxport_plain_", "qxport_other_", "qxport_other8_", "qxport_flushqq_"}
                self.assertLessEqual(ours | {"ErrCount"}, needed)
                self.assertFalse({"everything_", "plain_", "flushqq_", "qxport_pair_"} & needed)
                self.assertLessEqual({"pxfsend_", "receive_"}, needed)
                self.assertFalse({"qxport_pxfsend_", "qxport_receive_"} & needed)

    def test_wrong_call_does_not_compile_and_a_plain_binding_says_why(self):
        self.generate("--only", "module")
        self.run_clean("gfortran", "-fsyntax-only", self.out / "fortran/qxport.f90", cwd=self.root)
        for call, told in (
            ("call plain(1, 'x')", "no specific subroutine for the generic 'plain'"),
            ("call pxfsend('x', 2_8)", "Type mismatch in argument 'times'"),
            ("call pxfsend(2, 3)", "Type mismatch in argument 'word'"),
            ("call pxfsend('x')", "Missing actual argument for argument 'times'"),
            ("print *, receive(2, 3)", "Type mismatch in argument 'times'"),
        ):
            with self.subTest(call):
                (self.root / "wrong.f90").write_text(f"use qxport\n{call}\nend\n")
                result = subprocess.run(["gfortran", "-fsyntax-only", "wrong.f90"], cwd=self.root, check=False,
                                        capture_output=True, text=True, env=os.environ | {"LC_ALL": "C"})
                self.assertIn(told, result.stderr)

    def test_procedure_that_has_to_be_a_function_of_a_type(self):
        arguments = '[{ name = "f", type = "procedure", result = "integer(4)", text = "a function" }]'
        self.write({"posix_more.toml": MORE + ROUTINE.format(name="pxfa", kind="integer(4)", more=f"args = {arguments}")})
        self.generate("--only", "module")
        self.run_clean("gfortran", "-fsyntax-only", self.out / "fortran/qxport.f90", cwd=self.root)
        for declared, taken in (("integer(4)", True), ("integer(2)", False), ("real(8)", False)):
            with self.subTest(declared):
                (self.root / "user.f90").write_text(f"use qxport\n{declared}, external :: g\nprint *, pxfa(g)\nend\n")
                result = subprocess.run(["gfortran", "-fsyntax-only", "user.f90"], cwd=self.root, check=False,
                                        capture_output=True, text=True, env=os.environ | {"LC_ALL": "C"})
                self.assertEqual(result.returncode == 0, taken, result.stderr)

    def test_only_names_of_ours_alone_are_plain_unasked(self):
        names = ("pxfa", "ipxfa", "aqq", "aqqi8", "qq", "pxf", "aqqi4", "apxf", "truthqq", "sharedqq")
        self.write({"posix_more.toml": MORE + "".join(
            ROUTINE.format(name=name, kind="logical(4)" if name == "truthqq" else "integer(4)", more="")
            for name in names) + ROUTINE.format(name="shared8qq", kind="integer(4)", more='module_name = "sharedqq"')})
        plain = [name for name in names if f"qxport_{name}_" not in self.apigen("--list-symbols", "qxport").stdout]
        self.assertEqual(plain, ["pxfa", "ipxfa", "aqq", "aqqi8"])

    def test_areas_offer_only_their_own_names(self):
        self.generate("--only", "module")
        self.run_clean("gfortran", "-fsyntax-only", self.out / "fortran/qxport.f90", cwd=self.root)
        for module, absent in (("qxport_sample", "qxport_plain"), ("qxport_sample", "c_intptr_t"),
                               ("qxport_sample", "c_int32_t"), ("qxport_binding", "qxport_pair8"),
                               ("qxport", "qxport_everything")):
            with self.subTest(absent):
                (self.root / "wrong.f90").write_text(f"use {module}, only: {absent}\nend\n")
                result = subprocess.run(["gfortran", "-fsyntax-only", "wrong.f90"], cwd=self.root, check=False,
                                        capture_output=True, text=True, env=os.environ | {"LC_ALL": "C"})
                self.assertIn(f"'{absent}' referenced at (1) not found in module '{module}'", result.stderr)

    def test_records_are_sequence_types(self):
        """A program's own type of the same name and components is the same type; so only sequence types are."""
        self.generate("--only", "module")
        self.run_clean("gfortran", "-fsyntax-only", self.out / "fortran/qxport.f90", cwd=self.root)
        (self.root / "own.f90").write_text(OWN_RECORD)
        self.run_clean("gfortran", "-std=f2018", "-fsyntax-only", "own.f90", cwd=self.root)
        (self.root / "other.f90").write_text(OWN_RECORD.replace("words(2)", "words(3)"))
        result = subprocess.run(["gfortran", "-fsyntax-only", "other.f90"], cwd=self.root, check=False,
                                capture_output=True)
        self.assertNotEqual(result.returncode, 0)

    def test_each_family_has_a_module_of_its_areas(self):
        self.write({"posix_more.toml": MORE})
        self.generate("--only", "module")
        self.run_clean("gfortran", "-fsyntax-only", self.out / "fortran/qxport.f90", cwd=self.root)
        (self.root / "user.f90").write_text("use qxport_posix, only: pair, pair8, MORE\n"
                                            "use qxport_core, only: flushqq\nuse qxport_compat, only: plain, same => flushqq\n"
                                            "use qxport_posix, only: again => flushqq\n"
                                            "print *, flushqq(6), same(6), again(6)\nend\n")
        self.run_clean("gfortran", "-fsyntax-only", "user.f90", cwd=self.root)
        self.assertNotIn("everything", self.read("fortran/qxport.f90").partition("module qxport_posix\n")[2])
        (self.root / "wrong.f90").write_text("use qxport_posix, only: plain\nend\n")
        result = subprocess.run(["gfortran", "-fsyntax-only", "wrong.f90"], cwd=self.root, capture_output=True,
                                text=True, check=False)
        self.assertIn("not found in module", result.stderr)
        self.assertNotIn("qxport_frame", self.read("fortran/qxport.f90"))

    def test_what_stays_out(self):
        self.generate("--only", "module")
        text = self.read("fortran/qxport.f90")
        for absent in ("shiftl", "_narrow", "odd", "HiddenCells", "for_nargs", "qxport_bare"):
            self.assertNotIn(absent, text)
        self.assertNotIn("fortran_other", text)

    def test_examples_are_written_and_compile(self):
        self.generate("--only", "module")
        result = self.apigen("--examples", self.root / "examples")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        names = sorted(path.name for path in (self.root / "examples").iterdir())
        self.assertEqual(names, ["everything.f90", "flushqq.f90", "fortran_other.f90", "other8.f90", "pair.f90",
                                 "pair8.f90", "plain.f90", "pxfsend.f90", "receive.f90"])
        self.run_clean("gfortran", "-fsyntax-only", self.out / "fortran/qxport.f90", cwd=self.root)
        for name in names:
            self.run_clean("gfortran", "-fsyntax-only", self.root / "examples" / name, cwd=self.root)

    def test_lines_are_at_most_132_columns(self):
        self.generate("--only", "module")
        self.assertLessEqual(max(map(len, self.read("fortran/qxport.f90").splitlines())), 132)


if __name__ == "__main__":
    unittest.main()
