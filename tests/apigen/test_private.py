"""What the library's own sources include: structures and tables that agree, and the host's values."""

import subprocess
import unittest

from support import APIGEN, CatalogueCase, widths

SOURCES = APIGEN.parents[1] / "src"  # component.h, over whose types the tables are made
NUMBERS = APIGEN.parents[1] / "fortran/numbers.c"
CXX = ("g++", "-std=c++20", "-D_GNU_SOURCE", "-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Wconversion", "-Werror")

# The headers come first: their macros must not change the structures.
TABLES = """
#include <signal.h>
#include <sys/stat.h>
#include <qxport_records.h>
#include <qxport_records.h>
#include <type_traits>
using namespace qxport;

static_assert(std::size(RECORD_KINDS) == 2);
static_assert(RECORD_KINDS[0].name == FoldedName("OPAQUE") && RECORD_KINDS[0].kind == Kind::Opaque);
static_assert(RECORD_KINDS[0].size == sizeof(OpaqueRecord) && RECORD_KINDS[0].components.empty());
static_assert(RECORD_KINDS[1].name == FoldedName("pair") && RECORD_KINDS[1].kind == Kind::Pair);
static_assert(RECORD_KINDS[1].size == sizeof(PairRecord) && RECORD_KINDS[1].components.size() == 8);
static_assert(static_cast<uint32_t>(Kind::Opaque) == 1 && static_cast<uint32_t>(Kind::Pair) == 2);
static_assert(offsetof(OpaqueRecord, kind) == 0 && offsetof(PairRecord, kind) == 0);

template <typename Wanted, typename Member>
constexpr bool is(Member) { return std::is_same_v<Wanted, Member>; }
static_assert(is<uint32_t>(OpaqueRecord{}.mask) && is<uint32_t>(PairRecord{}.kind));
static_assert(is<int64_t>(PairRecord{}.st_mtime_) && is<int32_t>(PairRecord{}.total));
static_assert(is<char *>(PairRecord{}.owner) && is<char **>(PairRecord{}.members));
static_assert(std::is_same_v<decltype(PairRecord::label), char[8]>);
static_assert(std::is_same_v<decltype(PairRecord::codes), int32_t[3]>);
static_assert(is<size_t>(PairRecord{}.owner_length) && is<size_t>(PairRecord{}.second_length));
static_assert(offsetof(PairRecord, st_mtime_) < offsetof(PairRecord, label) &&
              offsetof(PairRecord, label) < offsetof(PairRecord, codes) &&
              offsetof(PairRecord, codes) < offsetof(PairRecord, owner) &&
              offsetof(PairRecord, owner) < offsetof(PairRecord, total) &&
              offsetof(PairRecord, total) < offsetof(PairRecord, members) &&
              offsetof(PairRecord, members) < offsetof(PairRecord, second) &&
              offsetof(PairRecord, second) < offsetof(PairRecord, owner_length) &&
              offsetof(PairRecord, owner_length) < offsetof(PairRecord, second_length));

constexpr bool row(size_t at, FoldedName name, ComponentType type, size_t offset, uint32_t capacity,
                   size_t length_offset, bool settable, bool checked) {
  const Component &c = PAIR_COMPONENTS[at];
  return c.name == name && c.type == type && c.offset == offset && c.capacity == capacity &&
         c.length_offset == length_offset && c.settable == settable && c.checked == checked;
}
#define AT(member) offsetof(PairRecord, member)
static_assert(row(0, FoldedName("st_mtime"), ComponentType::Int64, AT(st_mtime_), 0, 0, true, false));
static_assert(row(1, FoldedName("label"), ComponentType::Text, AT(label), 7, 0, true, true));
static_assert(row(2, FoldedName("codes"), ComponentType::Int32Array, AT(codes), 3, 0, true, true));
static_assert(row(3, FoldedName("owner"), ComponentType::String, AT(owner), 0, AT(owner_length), true, true));
static_assert(row(4, FoldedName("total"), ComponentType::Count, AT(total), 0, 0, false, true));
static_assert(row(5, FoldedName("members"), ComponentType::Strings, AT(members), 0, AT(total), false, true));
static_assert(row(6, FoldedName("second"), ComponentType::String, AT(second), 0, AT(second_length), true, true));
static_assert(row(7, FoldedName("fixed"), ComponentType::Int32, AT(fixed), 0, 0, false, true));
"""

CONSTANTS = """
#include <signal.h>
#include <unistd.h>
#include <cstdint>
#include <cstdio>
struct Constant { const char *name; int64_t value; };
const Constant TABLE[] = {
#define CONSTANT(name, value) {name, value},
#include <qxport_constants.inc>
};
int main() {
  for (const Constant &constant : TABLE)
    printf("%s %lld\\n", constant.name, static_cast<long long>(constant.value));
}
"""


class Private(CatalogueCase):
    def setUp(self):
        super().setUp()
        self.generate("--only", "private")

    def compile(self, source, width, *flags):
        command = [*CXX, f"-m{width}", f"-I{SOURCES}", f"-I{self.out}/private", "-x", "c++", "-", *flags]
        return subprocess.run(command, input=source, capture_output=True, text=True, check=False)

    def test_records_in_both_widths(self):
        for width in widths():
            with self.subTest(width=width):
                result = self.compile(TABLES, width, "-fsyntax-only")
                self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_constants_are_the_hosts(self):
        result = self.compile(CONSTANTS, "64", "-o", str(self.root / "constants"))
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual(self.run_clean(self.root / "constants").splitlines(),
                         ["SIGINT 2", "SIGTERM 15", "SIGNOTHING -1", "_LEAST_OF_ALL -2147483648", "NSIG 7"])

    def test_numbers_are_all_of_these_without_leading_underscores(self):
        result = self.compile(CONSTANTS.replace("CONSTANT(", "NUMBER(").replace("qxport_constants", "qxport_numbers"),
                              "64", "-o", str(self.root / "numbers"))
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        self.assertEqual(self.run_clean(self.root / "numbers").splitlines(),
                         ["SIGINT 2", "SIGTERM 15", "SIGNOTHING -1", "LEAST_OF_ALL -2147483648", "NSIG 7", "SA_SIGINFO 4",
                          "SC_NPROCESSORS_ONLN 84", "A_NAME_OF_MORE_THAN_24_CHARACTERS -1"])

    def test_module_of_numbers(self):
        for width in widths():
            with self.subTest(width=width):
                self.run_clean("gcc", f"-m{width}", "-Wall", "-Wextra", "-Werror", "-D_GNU_SOURCE",
                               f"-I{self.out}/private", NUMBERS, "-o", self.root / "numbers")
                for kind in ("4", "8"):
                    self.run_clean(self.root / "numbers", self.root / "numbers.f90", kind)
                    (self.root / "user.f90").write_text(
                        "use qxport_numbers\nif (LEAST_OF_ALL /= -huge(0_4) - 1) stop 1\n"
                        f"if (SA_SIGINFO /= 4 .or. NSIG /= 7 .or. kind(NSIG) /= {kind} .or. kind(LEAST_OF_ALL) /= {kind}) stop 2\nend\n")
                    self.run_clean("gfortran", f"-m{width}", "-std=f2018", "-Wall", "-Werror", "numbers.f90", "user.f90", "-o",
                                   "user", cwd=self.root)
                    self.run_clean("./user", cwd=self.root)
        for arguments in ((), (self.root / "numbers.f90",)):
            self.assertNotEqual(subprocess.run([self.root / "numbers", *arguments], check=False).returncode, 0)

    def test_name_that_the_host_lacks_fails_the_build(self):
        text = (self.api / "posix_binding.toml").read_text()
        self.write({"posix_binding.toml": text.replace(', text = "on no host", may_lack = true', ', text = "absent"')})
        self.generate("--only", "private")
        result = self.compile(CONSTANTS, "64", "-fsyntax-only")
        self.assertIn("SIGNOTHING", result.stderr)
        self.assertEqual(result.returncode, 1)


if __name__ == "__main__":
    unittest.main()
