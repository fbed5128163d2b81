"""The modules and the variants for default integers of 8 bytes, of the tests' own catalogue."""

import unittest

from support import CatalogueCase, widths

EXTRA = '''
[area]
name = "extra"
family = "portability"
title = "Entries for both sizes"
library = "qxport"
text = "Extra."
'''
ROUTINE = '''
[[routine]]
name = "{name}"
kind = "{kind}"
summary = "do it"
text = "Does."
origin = "this library"
{more}
example = """
end
"""
related = []
'''
USER = """
use qxport
implicit none
integer :: n = 0, numbers(3) = 0, answer
integer(4) :: short = 0, shorts(3) = 0
real(4) :: x = 0
real(8) :: double = 0
logical :: truth
external :: called
if (kind(LEAST) /= 8) error stop 1
if (LEAST /= -2147483648_8) error stop 2
if (kind(YES) /= 8) error stop 3
call mixed(n, short, numbers)
call mixed(short, n, shorts)
call mixed(1, n, shorts)
call mixed(1, short, shorts)
answer = one(n)
if (kind(one(n)) /= 8 .or. kind(one(short)) /= 4) error stop 4
if (kind(none()) /= 8) error stop 5
if (kind(scaled(n, x)) /= 4 .or. kind(scaled(n, double)) /= 8 .or. kind(scaled(short, double)) /= 8) error stop 6
truth = told(truth)
call maybe()
call maybe(n)
call maybe(short)
call back(numbers, by_default)
contains
integer function by_default(a)
  integer :: a
  by_default = a
end function
end
"""


def routine(name, kind, more):
    return ROUTINE.format(name=name, kind=kind, more=more)


def function(name, result, arguments, more=""):
    return routine(name, "function", f'result = "{result}"\nresult_text = "it"\n{more}\nargs = [{arguments}]')


def argument(name, kind, intent="in", more=""):
    return f'{{ name = "{name}", type = "{kind}", intent = "{intent}"{more}, text = "it" }}'


def subroutine(name, *arguments):
    return routine(name, "subroutine", f"args = [{', '.join(arguments)}]")


THREE = ', shape = "3"'
COMPARISON = '{ name = "f", type = "procedure", result = "integer(4)", text = "it" }'
CATALOGUE = EXTRA + "".join((
    subroutine("mixed", argument("a", "integer(4)"), argument("b", "integer(4)", "out"), argument("c", "integer(4)", "inout", THREE)),
    function("one", "integer(4)", argument("a", "integer(4)"), 'refused = "-EOVERFLOW"'),
    function("none", "integer(4)", ""),
    function("scaled", "real(4)", f"{argument('n', 'integer(4)')}, {argument('x', 'real(4)')}", 'refused = "NaN"'),
    function("told", "logical(4)", argument("l", "logical(4)")),
    subroutine("maybe", argument("a", "integer(4)", "in", ", optional = true")),
    subroutine("back", argument("a", "integer(4)", "in", THREE), COMPARISON),
))


class DefaultIntegers(CatalogueCase):
    def setUp(self):
        super().setUp()
        self.write({"portability_extra.toml": CATALOGUE})

    def test_every_mixture_compiles_and_links(self):
        (self.root / "user.f90").write_text(USER)
        for width in widths():
            with self.subTest(width=width):
                self.generate("--only", "module", target=width)
                self.run_clean("gfortran", f"-m{width}", "-std=f2018", "-Wall", "-Werror", "-fsyntax-only",
                               self.out / "fortran/i8/qxport.f90", cwd=self.root)
                self.run_clean("gfortran", f"-m{width}", "-fdefault-integer-8", "-c", "user.f90", cwd=self.root)
                wanted = set(self.run_clean("nm", "-u", "user.o", cwd=self.root).split())
                self.assertIn("qxport_i8_mixed_848_", wanted)
                self.assertIn("qxport_i8_told_8_", wanted)

    def test_variants_are_those_of_the_module(self):
        self.generate("--only", "i8,module,symbols")
        module = self.read("fortran/i8/qxport.f90")
        exported = self.read("symbols/libqxportmt_i8.map")
        made = "".join(path.read_text() for path in sorted(self.out.glob("private/qxport_i8_*.inc")))
        symbols = [word.rstrip(";") for word in exported.split() if word.startswith("qxport_i8_")]
        self.assertGreater(len(symbols), 20)
        for symbol in symbols:
            self.assertIn(f" {symbol.removesuffix('_')}(", module)
            self.assertIn(f" {symbol}(", made)

    def test_call_is_refused_as_the_entry_says(self):
        self.generate("--only", "i8")
        made = self.read("private/qxport_i8_traditional.inc")
        body = made[made.index("int64_t qxport_i8_one_8_(const int64_t *a) {"):].partition("\n}\n")[0]
        self.assertIn("set_and_record_local(problem);\n    return -problem;", body)


if __name__ == "__main__":
    unittest.main()
