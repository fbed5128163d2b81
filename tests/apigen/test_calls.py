"""What the driver of random calls includes: every routine as it is, callable through one function type."""

import subprocess
import unittest

from support import APIGEN, CatalogueCase

TESTS = APIGEN.parents[1] / "tests"
CXX = ("g++", "-std=c++20", "-Wall", "-Wextra", "-Werror", "-O1")

# A routine of the program's own stands behind the name: it sees what the thunk hands on.
PROGRAM = r"""
#include "fuzz/routine.h"
#include <qxport_calls.inc>
#include <cstdio>

extern "C" void plain_(const char *name, const int32_t *count, qxport_charlen name_len) {
  printf("plain %.*s %d\n", static_cast<int>(name_len), name, *count);
}

int main() {
  for (const fuzz::Routine &routine : fuzz::ROUTINES) {
    printf("%s: %s", routine.symbol.data(), routine.call.data());
    for (const fuzz::Argument &a : routine.arguments)
      printf(" %s/%d/%zu/%d/%d/%d/%d%d", a.name.data(), static_cast<int>(a.base), a.size, static_cast<int>(a.intent),
             a.count, a.counted_by, a.optional, a.by_value);
    puts("");
    if (routine.symbol == "plain_") {
      char name[] = "abc";
      int32_t count = 7;
      void *const arguments[] = {name, &count};
      const qxport_charlen lengths[] = {2};
      routine.thunk(arguments, lengths, nullptr);
    }
  }
  for (const char *word : fuzz::WORDS)
    printf("word %s\n", word);
  for (const int64_t number : fuzz::NUMBERS)
    printf("number %lld\n", static_cast<long long>(number));
}
"""


class Calls(CatalogueCase):
    def lines(self, target):
        self.generate("--only", "header,calls", target=target)
        program = self.root / "program"
        # Only one of the routines is there: the others are never called.
        command = [*CXX, f"-I{TESTS}", f"-I{self.out}/include", f"-I{self.out}/private", "-x", "c++", "-",
                   "-Wl,--unresolved-symbols=ignore-all", "-no-pie", "-o", str(program)]
        result = subprocess.run(command, input=PROGRAM, capture_output=True, text=True, check=False)
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        return self.run_clean(program).splitlines()

    def test_every_routine_is_there_as_it_is(self):
        lines = self.lines("64")
        self.assertIn("plain_: CALL PLAIN(NAME, COUNT) name/3/0/0/1/-1/00 count/0/4/0/1/-1/00", lines)
        self.assertIn("plain ab 7", lines)
        everything = next(line for line in lines if line.startswith("everything_: "))
        for piece in ("/3/8/1/1/-1/00 ",  # the result comes first
                      " answer_len/0/8/2/1/-1/00 ", " errno/3/8/1/1/-1/10 ", " buffer/4/65536/2/1/-1/10 ",
                      " z/2/16/0/-1/8/00 ", " n/0/8/0/1/-1/01 ", " f/5/0/0/1/-1/00 ", " a/0/2/0/13/-1/00 ",
                      " b/0/1/0/-1/-1/00"):
            self.assertIn(piece, everything)
        self.assertTrue(any(line.startswith("$$odd$one_: ") for line in lines))
        self.assertTrue(any(line.startswith("qxport_everything_: ") for line in lines))
        for word in ("pair", "owner", "SIGINT"):
            self.assertIn(f"word {word}", lines)
        self.assertIn("number -2147483648", lines)

    def test_what_a_target_lacks_is_not_there(self):
        both = {target: {line.split(":")[0] for line in self.generated(target)} for target in ("64", "32")}
        self.assertEqual(both["32"] - both["64"], {"_narrow"})

    def generated(self, target):
        self.generate("--only", "calls", target=target)
        text = (self.out / "private/qxport_calls.inc").read_text()
        return [line.split('"')[1] + ":" for line in text.splitlines() if line.startswith('    {"') and "call_" in line]


if __name__ == "__main__":
    unittest.main()
