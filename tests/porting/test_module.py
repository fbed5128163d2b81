"""`qxport module`: modules of any name, and what cannot be one."""

import os
import stat
import unittest

from support import COMPILER, Installed

SORTS = """
program sorts
  use {use}
  use, intrinsic :: iso_c_binding, only: c_loc, c_intptr_t
  implicit none
  real(8), target :: values(3) = [3.0d0, 1.0d0, 2.0d0]
  integer(c_intptr_t) :: count
  count = 3
  call {sort}(transfer(c_loc(values), 0_c_intptr_t), count, {code})
  print '(3f4.1)', values
end program
"""
SORTED = " 1.0 2.0 3.0\n"


class Modules(Installed):
    def program(self, text, *options):
        self.write("prog.f90", text)
        self.build("-Imods", *options, "prog.f90")
        return self.run_program()

    def test_whole_library(self):
        said = self.module("oldlib", "-o", "mods")
        self.assertIn("oldlib: ", said)
        self.assertEqual(self.program(SORTS.format(use="oldlib", sort="sortqq", code="SORT_REAL8")), SORTED)
        self.write("all.f90", "use oldlib, only: pxfgetpid, access, packtimeqq, errsns\nend\n")
        self.assertEqual(self.compiled("-Imods", "all.f90"), "")

    def test_files_made(self):
        self.module("OldLib", "-o", "a/new place", "--quiet")
        self.assertEqual(sorted(self.tree()), ["a/new place/OldLib.f90", "a/new place/oldlib.mod"])

    def test_quiet(self):
        self.assertEqual(self.module("oldlib", "-o", "mods", "-q"), "")

    def test_working_directory_is_the_default(self):
        self.module("oldlib")
        self.assertEqual(sorted(self.tree()), ["oldlib.f90", "oldlib.mod"])

    def test_installed_tree_stays_as_it_is(self):
        before = self.tree(self.prefix)
        self.module("oldlib")
        self.assertEqual(self.tree(self.prefix), before)

    def test_areas(self):
        self.module("few", "--of", "sorting", "-o", "mods")
        self.assertEqual(self.program(SORTS.format(use="few, only: sortqq, SORT_REAL8", sort="sortqq", code="SORT_REAL8")),
                         SORTED)
        self.write("other.f90", "use few, only: runqq\nend\n")
        self.assertIn("not found in module", self.compiled("-Imods", "other.f90"))

    def test_families_and_lists(self):
        self.module("some", "--of", "posix,sorting", "--of", "numbers", "-o", "mods")
        self.write("some.f90", "use some, only: pxfgetpid, sortqq, SIGINT\nend\n")
        self.assertEqual(self.compiled("-Imods", "some.f90"), "")
        self.write("other.f90", "use some, only: access\nend\n")
        self.assertIn("not found in module", self.compiled("-Imods", "other.f90"))

    def test_without(self):
        self.module("most", "--without", "access,SORTQQ", "--without", "stat", "-o", "mods")
        self.write("own.f90", "use most\ninteger :: access(3), stat, sortqq\naccess(1) = stat + sortqq\nend\n")
        self.assertEqual(self.compiled("-Imods", "own.f90"), "")
        self.assertIn("--without nothing: the module has no such name", self.module("other", "--without", "nothing", status=1))

    def test_family_has_the_routines_of_others(self):
        self.module("desktop", "--of", "compat", "-o", "mods")
        self.write("guest.f90", "use desktop, only: flushqq, commitqq\nend\n")
        self.assertEqual(self.compiled("-Imods", "guest.f90"), "")

    def test_host_numbers_are_left_out(self):
        self.module("oldlib", "-o", "mods")
        self.write("own.f90", "use oldlib\ninteger, parameter :: SIGINT = 4711\nend\n")
        self.assertEqual(self.compiled("-Imods", "own.f90"), "")

    def test_several_at_once(self):
        self.write("names", "type entry = file_info { born = creation_time }\n")
        self.module("one", "two", "--names", "names", "-o", "mods")
        text = """
program both
  use one
  use two
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  implicit none
  type(entry) :: info
  integer(c_intptr_t) :: handle
  handle = FILE_SEARCH_BEGIN
  if (getfileinfoqq('prog.f90', info, handle) /= 8) error stop 'another length'
  if (info%born <= 0 .and. info%length <= 0) error stop 'no record'
  print '(a)', trim(info%name)
end program
"""
        self.assertEqual(self.program(text), "prog.f90\n")

    def test_made_anew(self):
        self.module("oldlib", "--of", "times")
        self.module("oldlib", "--of", "sorting")
        self.write("new.f90", "use oldlib, only: sortqq\nend\n")
        self.assertEqual(self.compiled("new.f90"), "")


class Names(Installed):
    def make(self, names, *arguments, **keywords):
        self.write("names.txt", names)
        return self.module("oldlib", "--names", "names.txt", "-o", "mods", *arguments, **keywords)

    def refused(self, names, *wanted, arguments=()):
        """The mistakes of a names file are told with their lines, and nothing is written."""
        said = self.make(names, *arguments, status=1)
        self.assertEqual([line for line in said.splitlines() if "qxport: " not in line], [])
        for text in wanted:
            self.assertIn(text, said)
        self.assertEqual(list(self.tree()), ["names.txt"])
        return said

    def uses(self, text, *options):
        self.write("prog.f90", text)
        return self.compiled("-Imods", *options, "prog.f90")

    def test_routines_constants_types_numbers(self):
        self.make("""
# what the program calls them
DOSORT = sortqq   ! a routine
Doubles = sort_real8
entry = file_info
interrupted=SIGINT
""")
        self.write("prog.f90", SORTS.format(use="oldlib, only: dosort, DOUBLES, entry, interrupted", sort="dosort",
                                            code="doubles"))
        self.build("-Imods", "prog.f90")
        self.assertEqual(self.run_program(), SORTED)
        self.assertEqual(self.uses("use oldlib\nprint *, sort_real8\nend\n"), "")

    def test_names_alone(self):
        self.make("dosort = sortqq\n", "--of", "none")
        self.assertEqual(self.uses("use oldlib, only: dosort\nend\n"), "")
        self.assertIn("not found in module", self.uses("use oldlib, only: sortqq\nend\n"))

    def test_dollar_names(self):
        said = self.make("SORT$DOUBLES = SORT_REAL8\ntype DIR$ENTRY = file_info { DIR$LEN = length }\n")
        self.assertIn("-fdollar-ok", said)
        text = "use oldlib\ntype(DIR$ENTRY) :: x\nx%DIR$LEN = SORT$DOUBLES\nend\n"
        self.assertEqual(self.uses(text, "-fdollar-ok"), "")

    def test_no_word_of_dollars_without_them(self):
        self.assertNotIn("-fdollar-ok", self.make("dosort = sortqq\n"))

    def test_components(self):
        self.make("""
type entry = file_info {
  born = creation_time, changed=last_write_time   # two on a line
  bytes = length;
}
type big = file_info_i8 { words = length_words changed = last_write_time }
lookup = getfileinfoqq
""")
        self.write("prog.f90", """
program reads
  use oldlib
  use, intrinsic :: iso_c_binding, only: c_intptr_t
  implicit none
  type(entry) :: info
  type(big) :: large
  integer(c_intptr_t) :: handle
  open (10, file='five', access='stream')
  write (10) 'five!'
  close (10)
  handle = FILE_SEARCH_BEGIN
  if (lookup('five', info, handle) /= 4) error stop 'another length of the name'
  if (info%bytes /= 5 .or. info%changed == 0 .or. info%name(1:4) /= 'five') error stop 'another record'
  handle = FILE_SEARCH_BEGIN
  if (getfileinfoqq('five', info, handle) /= 4) error stop 'the library''s name is not there'
  handle = FILE_SEARCH_BEGIN
  if (getfileinfoqqi8('five', large, handle) /= 4) error stop 'another length of the name'
  if (file_length(large) /= 5 .or. large%words(1) /= 5) error stop 'another length'
  if (large%changed /= info%changed) error stop 'another instant'
end program
""")
        self.build("-Imods", "prog.f90")
        self.run_program()

    def test_component_takes_a_former_name(self):
        self.make("type entry = file_info { length = creation_time, born = length }\n")
        self.assertEqual(self.uses("use oldlib\ntype(entry) :: x\nx%born = x%length\nend\n"), "")

    def test_record_alone(self):
        """Of a library that the module has nothing else of, the routines that take the record are named."""
        self.make("type entry = file_info { born = creation_time }\nfind = getfileinfoqq\n", "--of", "none")
        self.assertEqual(self.uses("use oldlib, only: find, entry\nend\n"), "")
        self.assertIn("not found", self.uses("use oldlib, only: getfileinfoqq\nend\n"))

    def test_own_record_of_the_library_is_kept(self):
        self.make("type entry = file_info { born = creation_time }\n")
        self.assertEqual(self.uses("use oldlib, only: file_info\ntype(file_info) :: x\nx%creation_time = 1\nend\n"), "")

    def test_same_name(self):
        self.make("SORTQQ = sortqq\n")
        self.assertEqual(self.uses("use oldlib, only: sortqq\nend\n"), "")

    def test_several_files(self):
        self.write("first", "dosort = sortqq\n")
        self.write("second", "find = bsearchqq\nDoSort = bsearchqq\n")
        said = self.module("oldlib", "--names", "first", "--names", "second", status=1)
        self.assertIn("second:2: `DoSort` is defined in first:1 already", said)

    def test_no_fortran_names(self):
        self.refused("2nd = sortqq\n$sort = sortqq\n_sort = sortqq\nso-rt = sortqq\n" + "a" * 64 + " = sortqq\n",
                     "names.txt:1: `2nd` is no Fortran name", "names.txt:2: `$sort`: no Fortran name starts with `$`",
                     "names.txt:3: `_sort`", "names.txt:4: `so-rt`", "names.txt:5: `aaa")

    def test_longest_name(self):
        self.make("a" * 63 + " = sortqq\n")

    def test_two_lines_define(self):
        self.refused("dosort = sortqq\n\nDOSORT = bsearchqq\n", "names.txt:3: `DOSORT` is defined in line 1 already")

    def test_name_that_exists(self):
        self.refused("stat = lstat\n", "names.txt:1: `stat` exists already: it is a routine")
        self.make("stat = lstat\n", "--of", "sorting")

    def test_unknown_name(self):
        said = self.refused("dosort = sortqqq\nother = nothing_like_it\n", "names.txt:1: the library has no `sortqqq`; near: sortqq",
                            "names.txt:2: the library has no `nothing_like_it`")
        self.assertNotIn("nothing_like_it`; near", said)

    def test_routine_in_no_module(self):
        self.refused("clear = ieee_clear_mxcsr\n", "names.txt:1: `ieee_clear_mxcsr` is in no module: takes its argument")

    def test_mistakes(self):
        self.refused("dosort sortqq\ndosort = \n= sortqq\na = b = c\n", "names.txt:1: expected", "names.txt:2: nothing stands behind",
                     "names.txt:3: expected", "names.txt:4: expected")

    def test_mistakes_of_records(self):
        self.refused("type entry = file_info { born = creation_time\n", "names.txt:1: the `{` has no `}`")
        self.refused("type entry = file_info { born }\n", "names.txt:1: expected `their_component = our_component`")
        self.refused("type entry = file_info {\n born = birth\n}\n",
                     "names.txt:2: `file_info` has no component `birth`; it has creation_time, ")
        self.refused("type entry = file_info {\n a = length\n b = length\n}\n", "names.txt:3: the component `length` has two names")
        self.refused("type entry = file_info {\n a = length\n A = creation_time }\n", "names.txt:3: two components are named `A`")
        self.refused("type entry = file_info {\n name = length }\n", "names.txt:2: `name` is the name of a component")
        self.refused("type entry = file_info {\n 1st = length }\n", "names.txt:2: `1st` is no Fortran name")
        self.refused("type entry = sortqq { born = length }\n", "names.txt:1: `sortqq` is a routine, and has no components")
        self.refused("type entry = file_info { } more\n", "names.txt:1: unexpected `more`")
        self.refused("type a = file_info { b = length }\ntype c = file_info { d = length }\n",
                     "names.txt:2: `file_info` has other components in names.txt:1 already")

    def test_all_mistakes_at_once(self):
        said = self.refused("2nd = sortqq\nx = nothing_like_it\n")
        self.assertEqual(len(said.splitlines()), 1)  # of the file first, of its names then
        said = self.refused("x = nothing_like_it\ny = nothing_like_that\nstat = lstat\n")
        self.assertEqual(len(said.splitlines()), 3)

    def test_file_that_cannot_be_read(self):
        self.assertIn("nowhere.txt: the names cannot be read", self.module("oldlib", "--names", "nowhere.txt", status=2))
        (self.work / "bytes").write_bytes(b"\xff\xfe = sortqq\n")
        self.assertIn("bytes: the names cannot be read", self.module("oldlib", "--names", "bytes", status=2))

    def test_empty_file(self):
        self.make("# nothing yet\n")
        self.assertIn("would have nothing", self.module("empty", "--names", "names.txt", "--of", "none", status=1))


class Refused(Installed):
    def test_module_names(self):
        for name, reason in (("2nd", "is no Fortran name"), ("a b", "is no Fortran name"), ("qxport", "has a module of this name"),
                             ("qxport_own", "has a module of this name"), ("ISO_C_BINDING", "has a module of this name"),
                             ("sortqq", "cannot be named like what it has"), ("a" * 48, "47 characters")):
            self.assertIn(reason, self.module(name, status=1))
        self.assertIn("`B` is asked for twice", self.module("b", "B", status=1))
        self.assertEqual(self.tree(), {})

    def test_area(self):
        said = self.module("oldlib", "--of", "sortng", status=1)
        self.assertIn("--of sortng: there is no such area; there are ", said)
        self.assertIn("sorting", said)

    def test_usage(self):
        for arguments in ([], ["modules"], ["module"], ["module", "x", "--nothing"]):
            self.assertIn("usage: qxport", self.qxport(*arguments, status=2))

    def test_help(self):
        self.assertIn("module", self.qxport("--help"))
        self.assertIn("--names", self.qxport("module", "--help"))

    def test_compiler_that_is_not_there(self):
        said = self.qxport("module", "oldlib", "--compiler", "/no/such compiler", status=2)
        self.assertIn("there is no such command", said)
        self.assertIn("there is no such command", self.qxport("module", "oldlib", "--compiler", "", status=2))
        self.assertIn("closing quotation", self.qxport("module", "oldlib", "--compiler", "a 'b", status=2))

    def test_compiler_of_the_environment(self):
        self.assertIn("`/no/such`", self.qxport("module", "oldlib", status=2, env={"FC": "/no/such"}))

    def script(self, name, text):
        path = self.write(name, f"#!/bin/sh\n{text}\n")
        path.chmod(path.stat().st_mode | stat.S_IXUSR)
        return f"'{path}'"

    def test_compiler_that_is_too_old(self):
        old = self.script("old compiler", "echo 'GNU Fortran (Some 4.8.5-1) 4.8.5'")
        self.assertIn("too old", self.qxport("module", "oldlib", "--compiler", old, status=2))

    def test_compiler_that_is_none(self):
        other = self.script("other", "echo 'something else'; test \"$1\" = --version && exit 0; echo what >&2; exit 1")
        said = self.qxport("module", "oldlib", "--compiler", other, status=2)
        self.assertIn("does not compile the library's modules", said)
        self.assertIn("what", said)

    def test_compiler_that_did_not_make_the_modules(self):
        """One that cannot read the installed modules gets its own, of the sources beside them."""
        foreign = self.script("foreign", f"""for word; do case $word in *include/qxport) exit 1;; esac; done
exec {' '.join(COMPILER)} "$@\"""")
        said = self.qxport("module", "oldlib", "--compiler", foreign, "-o", "mods")
        self.assertIn("made by another compiler", said)
        self.assertIn("mods/qxport.mod", self.tree())
        self.write("prog.f90", "use oldlib, only: sortqq\nuse qxport, only: bsearchqq\nend\n")
        self.assertEqual(self.compiled("-Imods", "prog.f90"), "")

    def test_files_of_others(self):
        self.write("oldlib.f90", "module oldlib\nend module\n")
        said = self.module("oldlib", status=1)
        self.assertIn("oldlib.f90 exists already, and was not made by this command", said)
        (self.work / "oldlib.f90").unlink()
        self.write("oldlib.mod", "of another")
        self.assertIn("oldlib.mod exists already", self.module("oldlib", status=1))
        self.assertEqual(self.tree(), {"oldlib.mod": b"of another"})

    def test_directory_that_cannot_be_written(self):
        self.write("file", "text")
        self.assertIn("file", self.module("oldlib", "-o", "file/mods", status=2))
        if os.geteuid() != 0:
            (self.work / "locked").mkdir(mode=0o500)
            self.assertIn("locked", self.module("oldlib", "-o", "locked", status=2))

    def test_catalogue_that_is_broken(self):
        path = self.prefix / "share/qxport/catalogue.json"
        whole = path.read_bytes()
        try:
            for text, reason in (("{", "cannot be read"), ('{"format": 2}', "format 1"), ("[]", "format 1")):
                path.write_text(text)
                self.assertIn(reason, self.module("oldlib", status=2))
        finally:
            path.write_bytes(whole)


if __name__ == "__main__":
    unittest.main()
