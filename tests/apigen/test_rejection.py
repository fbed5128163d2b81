"""A bad catalogue is refused, with the reason for each fault."""

import unittest

from support import BINDING, CORE, FILES, SAMPLE, CatalogueCase

from qxapi.catalogue import CatalogueError, load

F_ARGUMENT = 'name = "f", type = "procedure"'

# what is wrong: (old text, new text, the entry named, the reason or a part of it)
FAULTS = {
    "unknown key": ('origin = "plain(3)"', 'origin = "plain(3)"\ncolour = 1', "plain", "unknown key `colour`"),
    "unknown argument key": ('text = "a count" },\n]', 'text = "a count", x = 1 },\n]', "plain",
                             "argument count: unknown key `x`"),
    "unknown table": ("[[constant]]\nname = \"LEAST\"", "[[surprise]]\nname = \"LEAST\"", "area",
                      "unknown table `surprise`"),
    "no summary": ('summary = "do it"\n', "", "plain", "missing key `summary`"),
    "no text": ('text = "Does `it`, or `everything`."\n', "", "plain", "missing key `text`"),
    "empty text": ('text = "Does `it`, or `everything`."\n', 'text = " "\n', "plain", "`text` is empty"),
    "no origin": ('origin = "plain(3)"\n', "", "plain", "missing key `origin`"),
    "no argument text": (', text = "a count" },\n]', " },\n]", "plain", "argument count: missing key `text`"),
    "no intent": ('intent = "in", text = "a count" },\n]', 'text = "a count" },\n]', "plain",
                  "argument count: missing key `intent`"),
    "no example": ('example = """\nuse qxport, only: other\ncall other()\nend\n"""\n', "", "fortran_other",
                   "missing key `example` of a routine in a module"),
    "no module_why": ('module_why = "a standard intrinsic has the name."\n', "", "shiftl",
                      "missing key `module_why` with `module = false`"),
    "mistyped key": ('summary = "do it"', "summary = 3", "plain", "`summary` must be str"),
    "bad type": ('name = "count", type = "integer(4)"', 'name = "count", type = "integer(3)"', "plain",
                 "argument count: bad type `integer(3)`"),
    "bad result": ('result = "real(4)"', 'result = "complex(8)"', "$$odd$one", "bad result type `complex(8)`"),
    "unknown record": ("type(sample_record)", "type(absent)", "everything",
                       "argument sample_record: type `absent` does not exist"),
    "bad intent": ('type = "integer(4)", intent = "in", text = "a count"',
                   'type = "integer(4)", intent = "both", text = "a count"', "plain",
                   "argument count: bad intent `both`"),
    "result of no procedure": ('intent = "in", text = "a count"', 'intent = "in", result = "integer(4)", text = "a count"',
                               "plain", "argument count: `result` of integer(4), which is no procedure"),
    "bad result of a procedure": ('name = "f", type = "procedure"', 'name = "f", type = "procedure", result = "type(*)"',
                                  "everything", "argument f: bad result type `type(*)`"),
    "result beside an interface": ('name = "f", type = "procedure"',
                                   'name = "f", type = "procedure", interface = "subroutine f()", result = "real(8)"',
                                   "everything", "argument f: `result` beside an `interface`"),
    "a default integer by value": ('name = "n", type = "integer(8)"', 'name = "n", type = "integer(4)"', "everything",
                                   "argument n: by value an integer of 8 bytes has no rule"),
    "bad shape": ('shape = "13"', 'shape = "1:3"', "everything", "argument a: bad shape `1:3`"),
    "bad kind": ('kind = "subroutine"\nsummary = "do it"', 'kind = "macro"\nsummary = "do it"', "plain",
                 "kind `macro` is neither function nor subroutine"),
    "function without result": ('result = "real(4)"\n', "", "$$odd$one", "a function without `result`"),
    "subroutine with result": ('kind = "subroutine"\nsummary = "do it"',
                               'kind = "subroutine"\nresult = "integer(4)"\nsummary = "do it"', "plain",
                               "`result` of a subroutine"),
    "unsized character function": ('result = "character(8)"', 'result = "character(*)"', "everything",
                                   "a function of type character(*) cannot be in a module"),
    "full stop": ('summary = "do it"', 'summary = "do it."', "plain", "the summary ends with a full stop"),
    "two lines": ('summary = "do it"', 'summary = "do\\nit"', "plain", "the summary has more than one line"),
    "capital": ('summary = "do it"', 'summary = "Do it"', "plain", "the summary starts with a capital"),
    "lone backtick": ("Does `it`, or", "Does it`, or", "plain", "`text` has an unpaired backtick"),
    "duplicate argument": ('name = "count", type', 'name = "name", type', "plain",
                           "argument name: duplicate argument name"),
    "optional value": ('intent = "in", value = true', 'intent = "in", optional = true, value = true', "everything",
                       "argument n: `optional` and `value` exclude one another"),
    "value of an array": ('intent = "in", value = true', 'intent = "in", shape = "2", value = true', "everything",
                          "argument n: an array is not passed by value"),
    "value written to": ('intent = "in", value = true', 'intent = "out", value = true', "everything",
                         "argument n: an argument passed by value has intent in"),
    "value of characters": ('type = "character(*)", intent = "in", text = "a name"',
                            'type = "character(*)", intent = "in", value = true, text = "a name"', "plain",
                            "argument name: character(*) is not passed by value"),
    "interface of a number": ('name = "count", type = "integer(4)", intent = "in"',
                              'name = "count", type = "integer(4)", intent = "in", interface = "subroutine count()"',
                              "plain", "argument count: `interface` of integer(4), which is no procedure"),
    "interface of another name": (F_ARGUMENT, F_ARGUMENT + ', interface = "subroutine g()"', "everything",
                                  "argument f: `subroutine g()` is not the heading of a procedure `f`"),
    "interface without arguments": (F_ARGUMENT, F_ARGUMENT + ', interface = "subroutine f"', "everything",
                                    "argument f: `subroutine f` is not the heading"),
    "interface without a type": (F_ARGUMENT, F_ARGUMENT + ', interface = "function f(x)"', "everything",
                                 "argument f: `function f(x)` is not the heading"),
    "interface with more behind": (F_ARGUMENT, F_ARGUMENT + ', interface = "subroutine f() bind(C)"', "everything",
                                   "argument f: `subroutine f() bind(C)` is not the heading"),
    "interface that is no text": (F_ARGUMENT, F_ARGUMENT + ', interface = 1', "everything",
                                  "argument f: `interface` must be str"),
    "error without when": ('number = "EINVAL", when = "`n` is -1"', 'number = "EINVAL"', "everything",
                           "error 1: missing key `when`"),
    "bad target": ('["32-bit"]', '["16-bit"]', "_narrow", "`targets` must be a list of 32-bit and 64-bit"),
    "related to nothing": ('related = ["plain"', 'related = ["absent"', "everything",
                           "related name `absent` does not exist"),
    "related to itself": ('related = ["plain"', 'related = ["everything"', "everything", "related to itself"),
    "record size": ("bytes = 35", "bytes = 36", "sample_record", "the fields take 35 bytes, not 36"),
    "unaligned field": ('{ name = "pad", type = "integer(4)", text = "one" },\n', "", "sample_record",
                        "field `when` at offset 12 is not aligned"),
    "field type": ('name = "when", type = "real(8)"', 'name = "when", type = "integer(ptr)"', "sample_record",
                   "field `when`: bad type `integer(ptr)`"),
    "constant out of range": ("-2147483648", "-2147483649", "LEAST", "value -2147483649 is out of the range"),
    "constant of other type": ("value = true", "value = 1", "YES", "value 1 is not of type logical(4)"),
    "constant type": ('type = "real(8)"\nvalue', 'type = "real"\nvalue', "HALF", "bad type `real` of a constant"),
    "cell not declared": ('c = "int32_t ErrCount"', 'c = "int32_t ErrorCount"', "ErrCount",
                          "does not declare `ErrCount`"),
    "cell with extern": ('c = "int32_t ErrCount"', 'c = "extern int32_t ErrCount"', "ErrCount",
                         "`c` is written without `extern` and semicolon"),
    "cell type": ('fortran = "integer(4)"', 'fortran = "integer(3)"', "ErrCount", "bad type `integer(3)`"),
    "invalid name": ('name = "plain"', 'name = "pl ain"', "pl ain", "`pl ain` is not a valid routine name"),
    "invalid argument name": ('name = "count", type', 'name = "_count", type', "plain",
                              "argument _count: `_count` is not a valid argument name"),
    "invalid symbol": ('symbol = "_narrow"', 'symbol = "-narrow"', "_narrow", "`-narrow` is not a valid symbol"),
    "keyword as symbol": ('symbol = "_narrow"', 'symbol = "int"', "_narrow", "`int` is not a valid symbol"),
    "reserved name": ('name = "plain"', 'name = "qxport_plain"', "qxport_plain", "are reserved"),
    "long name": ('name = "plain"', f'name = "{"p" * 64}"', "p" * 64, "has more than 63 characters"),
    "long alias": ('name = "plain"', f'name = "{"p" * 57}"', "p" * 57, "the alias name `qxport_ppp"),
    "unknown binding": ('origin = "plain(3)"', 'origin = "plain(3)"\nbinding = "strong"', "plain",
                        "binding `strong` is neither of plain, alias"),
    "binding of nothing": ("module = false\n", 'module = false\nbinding = "alias"\n', "shiftl",
                           "`binding` of a routine that is in no module"),
    "plain truth": ('result = "character(8)"', 'result = "logical(4)"\nbinding = "plain"', "everything",
                    "no plain binding: a LOGICAL answer is 0 or 1 behind an alias only"),
    "plain name of another": ('module_name = "other"\nkind = "subroutine"\nsummary = "do something else"\n',
                              'module_name = "another"\nbinding = "plain"\nkind = "subroutine"\nsummary = "do it"\n',
                              "fortran_other", "no plain binding: the module offers it under another name"),
    "plain intrinsic": ('name = "plain"\n', 'name = "rename"\nbinding = "plain"\n', "rename",
                        "no plain binding: compilers know a procedure `rename`"),
    "plain name of compilers": ('name = "plain"\n', 'name = "qsort"\nbinding = "plain"\n', "qsort",
                                "no plain binding: compilers know a procedure `qsort`"),
    "plain among several": ('name = "plain"\n', 'name = "other"\nbinding = "plain"\n', "other",
                            "no plain binding: the module offers several routines as `other`"),
    "module name of nothing": ("module = false\n", 'module = false\nmodule_name = "x"\n', "shiftl",
                               "`module_name` contradicts `module = false`"),
    "family and file": ('family = "compat"', 'family = "posix"', "area", "must be named posix_sample.toml"),
    "unknown family": ('family = "compat"', 'family = "other"', "area", "family `other` is none of"),
    "unknown library": ('library = "qxport"', 'library = "m"', "area", "library `m` is neither of"),
    "module of the same name": ('name = "plain"', 'name = "sample"', "sample",
                                "its procedure `qxport_sample` clashes with the module of that name"),
    "module name of a constant": ('module_name = "other"\nkind = "subroutine"\nsummary = "do something else"\n',
                                  'module_name = "half"\nkind = "subroutine"\nsummary = "do something else"\n',
                                  "fortran_other", "module name `half` is also the name of HALF"),
    "syntax": ("[area]", "[area", "catalogue", "Expected ']' at the end of a table declaration (at line 2"),
}

PAIR, CODES = "pair", 'name = "codes", type = "integer(4)", access = "get set", count = 3'
BINDING_FAULTS = {
    "no refusal": ("refused = -7\n", "", "receive", "missing key `refused`: what it answers where an integer of 8 bytes does not fit"),
    "bad refusal": ("refused = -7", 'refused = "ENOENT"', "receive", "`refused` must be a number or one of EOVERFLOW, "),
    "refusal beside an error number": ('origin = "this library"\nargs = [\n  { name = "word",',
                                       'origin = "this library"\nrefused = -1\nargs = [\n  { name = "ierror",', "pxfsend",
                                       "`refused` of a routine that has an IERROR or answers a truth"),
    "nobody for 8 bytes": ("refused = -7", 'refused = -7\neight = "absent"', "receive", "`eight`: the file has no routine `absent`"),
    "most of a scalar": ('name = "place", type = "integer(4)"', 'name = "place", most = 3, type = "integer(4)"', "receive",
                         "argument place: `most` of what is no array with a length of its own"),
    "unknown component key": ('text = "letters"', 'text = "letters", x = 1', PAIR,
                              "component label: unknown key `x`"),
    "no component text": (', text = "letters"', "", PAIR, "component label: missing key `text`"),
    "component type": ('"character(8)"', '"character(*)"', PAIR, "component label: bad type `character(*)`"),
    "component of 16 bits": ('"integer(8)", access', '"integer(2)", access', PAIR,
                             "component st_mtime: bad type `integer(2)`"),
    "bad access": ('access = "get", text = "how many"', 'access = "set get", text = "how many"', PAIR,
                   "component total: bad access `set get`"),
    "no capacity": ("capacity = 7, ", "", PAIR, "component label: `capacity` belongs to"),
    "capacity of a number": (CODES, CODES + ", capacity = 3", PAIR, "component codes: `capacity` belongs to"),
    "capacity too large": ("capacity = 7", "capacity = 9", PAIR, "component label: capacity 9 is not that of"),
    "capacity too small": ("capacity = 7", "capacity = 0", PAIR, "component label: capacity 0 is not that of"),
    "count of none": ("count = 3", "count = 0", PAIR, "component codes: `count` is a positive number"),
    "count of long ones": (CODES, CODES.replace("(4)", "(8)"), PAIR, "component codes: `count` is a positive number"),
    "unchecked short one": ('"integer(8)", access', '"integer(4)", access', PAIR,
                            "component st_mtime: only an integer(8) can be `unchecked`"),
    "unsigned for all to see": ('unsigned = true, access = ""', 'unsigned = true, access = "get"', "opaque",
                                "component mask: only an integer(4) that no routine reads can be `unsigned`"),
    "uncounted strings": (' count_of = "total",', "", PAIR, "component members: `count_of` belongs to"),
    "counted string": ('type = "string", access = "get set", text = "another',
                       'type = "string", count_of = "total", access = "get set", text = "another', PAIR,
                       "component second: `count_of` belongs to"),
    "counter to set": ('name = "total", type = "integer(4)", access = "get"',
                       'name = "total", type = "integer(4)", access = "get set"', PAIR, "`total` counts strings, so"),
    "counter behind": ('count_of = "total"', 'count_of = "second"', PAIR, "`second` is no integer(4) component before"),
    "array as counter": ('count_of = "total"', 'count_of = "codes"', PAIR, "`codes` is no integer(4) component before"),
    "duplicate component": ('name = "second"', 'name = "owner"', PAIR, "component owner: duplicate component name"),
    "long component": ('name = "second"', f'name = "{"s" * 25}"', PAIR, "has more than 24 characters"),
    "upper-case record": ('name = "opaque"', 'name = "Opaque"', "Opaque", "`Opaque` is not a valid record name"),
    "no kind": ("kind = 2\n", "", PAIR, "missing key `kind`"),
    "kind 0": ("kind = 1", "kind = 0", "opaque", "`kind` must be positive"),
    "gap between kinds": ("kind = 2", "kind = 3", PAIR, "kind 3, where the next one is 2"),
    "kind twice": ("kind = 1", "kind = 2", PAIR, "kind 2, where the next one is 1"),
    "record summary": ('summary = "nothing to see"', "", "opaque", "missing key `summary`"),
    "summary of a record": ('"nothing to see"', '"nothing to see."', "opaque", "the summary ends with a full stop"),
    "lower-case constant": ('"SIGINT", text', '"sigint", text', "Some of the host's",
                            "constant sigint: `sigint` is not an upper-case name"),
    "long constant": ('"SIGINT", text', f'"{"S" * 25}", text', "Some of the host's", "name of at most 24 characters"),
    "constant without text": ('"SIGINT", text = "the interrupt key"', '"SIGINT"', "Some of the host's",
                              "constant SIGINT: missing key `text`"),
    "wide constant": ("value = 7", "value = 2147483648", "Own", "constant NSIG: value 2147483648 is out of the range"),
    "own and lacking": ("value = 7", "value = 7, may_lack = true", "Own",
                        "constant NSIG: `value` and `may_lack` exclude one another"),
    "constant twice": ('"NSIG"', '"SIGINT"', "Own", "duplicate constant `SIGINT`, also of Some of the host's"),
    "parameter twice": ('"NSIG"', '"SC_NPROCESSORS_ONLN"', "Parameters only",
                        "duplicate constant `SC_NPROCESSORS_ONLN`, also of Own"),
    "parameter of another's name": ('"A_NAME_OF_MORE_THAN_24_CHARACTERS"', '"PAIR8"', "pair8",
                                    "a constant in posix_binding.toml has the parameter `pair8`"),
    "long parameter": ('"A_NAME_OF_MORE_THAN_24_CHARACTERS"', f'"{"S" * 64}"', "Parameters only",
                       "name of at most 63 characters"),
    "no letter first": ('"NSIG"', '"_1"', "Own", "constant _1: `_1` is not an upper-case name"),
    "area of the numbers": ('name = "binding"', 'name = "numbers"', "area", "area name `numbers` is reserved"),
    "further name of nothing": ('also = ["pair"]', 'also = ["absent"]', "pair8",
                                "`also`: the area has no subroutine `absent`"),
    "further name of a function": ('also = ["pair"]', 'also = ["receive"]', "pair8",
                                   "`also`: the area has no subroutine `receive`"),
    "further name of a plain one": ('also = ["pair"]', 'also = ["plainly"]\nbinding = "plain"', "pair8",
                                    "`also`: the area has no subroutine `plainly`"),
    "plain and shared": ('binding = "plain"', 'binding = "plain"\nalso = ["receive"]', "receive",
                         "no plain binding: the module offers several routines as `receive`"),
    "no list of names": ('also = ["pair"]', 'also = [1]', "pair8", "`also` must be a list of names"),
    "like nothing": ('like = "pair"', 'like = "absent"', "pair8", "`like`: `absent` is no routine of this file"),
    "like itself": ('like = "pair"', 'like = "pair8"', "pair8", "`like`: `pair8` is no routine of this file"),
    "related record": ('"opaque_record"', '"opaque"', PAIR, "related name `opaque` does not exist"),
    "page of the constants": ('name = "pair8"', 'name = "constants"', "constants", "the page `constants` is that of"),
    "page of a record": ('name = "pair8"', 'name = "opaque_record"', "opaque_record", "duplicate page `opaque_record`"),
    "module of the family": ('name = "pair8"', 'name = "posix"', "posix",
                             "its procedure `qxport_posix` clashes with the module of that name"),
    "area of a family's name": ('name = "binding"', 'name = "posix"', "area", "area name `posix` is reserved"),
}


class Rejection(CatalogueCase):
    def rejected(self, *arguments):
        result = self.apigen(*(arguments or ("--check",)))
        self.assertEqual((result.returncode, result.stdout), (1, ""))
        return result.stderr.splitlines()

    def test_sample_is_valid(self):
        result = self.apigen("--check")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))

    def refuses_each(self, faults, file, sound):
        for title, (old, new, name, reason) in faults.items():
            with self.subTest(title):
                self.assertIn(old, sound)
                self.write(FILES | {file: sound.replace(old, new, 1)})
                start = f"{self.api / file}: {name}: "
                problems = self.problems()
                lines = [line for line in problems if line.startswith(start) and reason in line]
                self.assertEqual(len(lines), 1, problems)

    def problems(self):
        """As `rejected`, without a process for each of many faults."""
        with self.assertRaises(CatalogueError) as raised:
            load(self.api)
        return raised.exception.problems

    def test_each_fault(self):
        self.refuses_each(FAULTS, "compat_sample.toml", SAMPLE)

    def test_each_fault_of_records_and_constants(self):
        self.refuses_each(BINDING_FAULTS, "posix_binding.toml", BINDING)

    def test_constants_page_only_with_constants(self):
        before, _, after = BINDING.partition("[[constant_group]]")
        self.write({"posix_binding.toml": before + after[after.index("[[routine]]"):]})
        self.assertEqual(self.rejected(), [f"{self.api / 'posix_binding.toml'}: {name}: related name `constants` does "
                                           "not exist" for name in ("pair", "pair8")])

    def test_duplicates_across_files(self):
        faults = {
            "area": ('name = "run"', 'name = "sample"', "area: duplicate area `sample`"),
            "name": ('name = "flushqq"', 'name = "plain"', "plain: duplicate name `plain`"),
            "case": ('name = "flushqq"', 'name = "half"', "half: duplicate name `half`"),
            "symbol": ("for_nargs", "plain_", "plain_: duplicate symbol `plain_`"),
            "alias": ("for_nargs", "qxport_other_", "qxport_other_: duplicate symbol `qxport_other_`"),
            "cell": ("for_nargs", "ErrCount", "ErrCount: duplicate symbol `ErrCount`"),
            "page": ('name = "flushqq"', 'name = "narrow"', "narrow: duplicate page `narrow`"),
        }
        for title, (old, new, expected) in faults.items():
            with self.subTest(title):
                self.write({"core_run.toml": CORE.replace(old, new)})
                text = "\n".join(self.rejected())
                # Files are read in the order of their names, so the second one is at fault.
                self.assertIn(f"core_run.toml: {expected}", text)
                self.assertIn("compat_sample.toml", text)

    def test_families_that_a_routine_cannot_be_in(self):
        for old, new, reason in (
            ('families = ["compat"', 'families = ["core"', "`families`: `core` is none of portability, compat, frame, posix"),
            ('families = ["compat"', 'families = ["other"', "`families`: `other` is none of portability, compat, frame"),
            ('families = ["compat"', 'families = [3', "`families` must be a list of names"),
            ('families = ["compat"', 'module = false\nmodule_why = "none"\nfamilies = ["compat"',
             "`families` of a routine that is in no module"),
        ):
            with self.subTest(new):
                self.write({"core_run.toml": CORE.replace(old, new)})
                self.assertIn(reason, "\n".join(self.problems()))

    def test_service_of_the_wrong_library(self):
        self.write({"core_run.toml": CORE.replace('"qxcore"', '"qxport"')})
        self.assertEqual(self.rejected(), [f"{self.api / 'core_run.toml'}: area: only an area of the library qxcore "
                                           "has services"])

    def test_service_without_its_prototype(self):
        self.write({"core_run.toml": CORE.replace("int32_t for_nargs(void)", "int32_t nargs(void)")})
        self.assertEqual(self.rejected(), [f"{self.api / 'core_run.toml'}: for_nargs: the prototype "
                                           "`int32_t nargs(void)` does not declare `for_nargs`"])

    def test_all_problems_are_listed_once(self):
        bad = SAMPLE.replace('summary = "do it"', 'summary = "do it."').replace('summary = "draw"', "")
        self.write({"compat_sample.toml": bad, "core_run.toml": CORE.replace('name = "unit"', 'name = "8"'),
                    "frame_bare.toml": "x = ="})
        lines = self.rejected()
        self.assertEqual(len(lines), 4, lines)
        self.assertEqual(len(set(lines)), 4)

    def test_nothing_is_written(self):
        self.write({"compat_sample.toml": SAMPLE.replace("bytes = 35", "bytes = 1")})
        self.rejected("--out", self.out)
        self.assertFalse(self.out.exists())

    def test_empty_directory(self):
        for path in self.api.iterdir():
            path.unlink()
        self.assertEqual(self.rejected(), [f"{self.api}: catalogue: there is no *.toml file"])


if __name__ == "__main__":
    unittest.main()
