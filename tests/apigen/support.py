"""A small catalogue of the tests' own, and ways to run the generator on it."""

import functools
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

APIGEN = Path(__file__).resolve().parents[2] / "tools" / "apigen.py"

sys.dont_write_bytecode = True  # the source tree stays as it is
sys.path.insert(0, str(APIGEN.parent))

SAMPLE = r'''
[area]
name = "sample"
family = "compat"
title = "Entries of <every> & any shape"
library = "qxport"
text = """
Of a name such as `everything`.

.a leading dot, a \\ backslash, 'quotes', 1 < 2 & 3, and -1.
"""

[[constant]]
name = "LEAST"
type = "integer(4)"
value = -2147483648
text = "the least INTEGER(4)"

[[constant]]
name = "LEAST_LONG"
type = "integer(8)"
value = -9223372036854775808
text = "the least INTEGER(8)"

[[constant]]
name = "BAD_HANDLE"
type = "integer(ptr)"
value = -1
text = "no handle"

[[constant]]
name = "HALF"
type = "real(8)"
value = 0.5
text = "one half"

[[constant]]
name = "YES"
type = "logical(4)"
value = true
text = "a truth"

[[constant]]
name = "QUOTES"
type = "character(6)"
value = "a'b\"\\"
text = "a word"

[[type]]
name = "sample_record"
bytes = 35
text = "A record of `everything`."
fields = [
  { name = "default", type = "integer(4)", unit = "s", text = "a C keyword" },
  { name = "words", type = "integer(4)", count = 2, text = "two" },
  { name = "pad", type = "integer(4)", text = "one" },
  { name = "when", type = "real(8)", text = "an instant" },
  { name = "name", type = "character(3)", text = "letters" },
  { name = "names", type = "character(2)", count = 4, text = "letters" },
]

[[data]]
name = "ErrCount"
c = "int32_t ErrCount"
fortran = "integer(4)"
text = "how many errors there were"

[[data]]
name = "HiddenCells"
c = "int32_t HiddenCells[16]"
text = "not for Fortran"

[[routine]]
name = "everything"
kind = "function"
result = "character(8)"
result_text = "eight letters"
summary = "take all that there is"
refused = "blank"
text = """
See `plain`, \\n and `-1`.

.starts with a dot
"""
origin = "everything(2)"
args = [
  { name = "answer", type = "integer(4)", intent = "in", text = "named as a result is" },
  { name = "answer_len", type = "integer(ptr)", intent = "inout", text = "named as a length is" },
  { name = "sample_record", type = "type(sample_record)", intent = "out", text = "named as its type" },
  { name = "default", type = "character(*)", intent = "in", text = "a C keyword" },
  { name = "errno", type = "character(8)", intent = "out", optional = true, text = "a C macro" },
  { name = "buffer", type = "type(*)", intent = "inout", optional = true, text = "bytes" },
  { name = "z", type = "complex(8)", intent = "in", shape = "n", text = "an array of `n`" },
  { name = "n", type = "integer(8)", intent = "in", value = true, text = "a count", unit = "bytes" },
  { name = "f", type = "procedure", text = "called back" },
  { name = "g", type = "procedure", optional = true, text = "called back, maybe" },
  { name = "a", type = "integer(2)", intent = "in", shape = "13", text = "thirteen" },
  { name = "b", type = "integer(1)", intent = "in", shape = "*", text = "any number" },
]
errors = [{ number = "EINVAL", when = "`n` is -1" }]
example = """
use qxport, only: plain
implicit none
call plain('.', 1)
end
"""
related = ["plain", "sample_record", "$$odd$one"]

[[routine]]
name = "plain"
kind = "subroutine"
summary = "do it"
text = "Does `it`, or `everything`."
origin = "plain(3)"
args = [
  { name = "name", type = "character(*)", intent = "in", text = "a name" },
  { name = "count", type = "integer(4)", intent = "in", text = "a count" },
]
example = """
use qxport, only: plain
implicit none
call plain('it', 2)
end
"""

[[routine]]
name = "$$odd$one"
symbol = "$$odd$one_"
kind = "function"
result = "real(4)"
result_text = "a number"
summary = "draw"
text = "Draws."
origin = "this library"

[[routine]]
name = "_narrow"
symbol = "_narrow"
kind = "subroutine"
summary = "exist on 32-bit targets"
text = "Exists there."
origin = "this library"
targets = ["32-bit"]

[[routine]]
name = "shiftl"
kind = "function"
result = "integer(4)"
result_text = "the shifted value"
summary = "shift left"
text = "Shifts."
origin = "this library"
module = false
module_why = "a standard intrinsic has the name."

[[routine]]
name = "fortran_other"
symbol = "fortran_other"
module_name = "other"
kind = "subroutine"
summary = "do something else"
text = "Does."
origin = "this library"
example = """
use qxport, only: other
call other()
end
"""

[[routine]]
name = "other8"
module_name = "other"
kind = "subroutine"
summary = "do something else with a number"
text = "Does."
origin = "this library"
args = [{ name = "x", type = "integer(8)", intent = "in", text = "a number" }]
example = """
use qxport, only: other
call other(1_8)
end
"""
'''

CORE = '''
[area]
name = "run"
family = "core"
title = "Services"
library = "qxcore"
text = "What a run-time must offer."

[[routine]]
name = "flushqq"
families = ["compat", "posix"]
kind = "function"
result = "logical(4)"
result_text = "whether it worked"
summary = "flush a unit"
text = "Flushes."
origin = "this library"
args = [{ name = "unit", type = "integer(4)", intent = "in", text = "a unit" }]
example = """
use qxport, only: flushqq
if (.not. flushqq(6)) stop 1
end
"""

[[service]]
symbol = "for_nargs"
c = "int32_t for_nargs(void)"
text = "How many arguments there are."
'''

# An area that offers Fortran nothing.
BARE = '''
[area]
name = "bare"
family = "frame"
title = "Nothing for Fortran"
library = "qxport"
text = "Cells only."

[[data]]
name = "bare_cell"
c = "const char *const bare_cell[2]"
text = "two texts"
'''

# Records and constants of the binding, the kinds not in the order of their codes.
BINDING = '''
[area]
name = "binding"
family = "posix"
title = "Records and constants"
library = "qxport"
text = "Of `everything`, a `pair_record` and the `constants`."

[[record]]
name = "pair"
kind = 2
summary = "two & more things"
text = "What `everything` is not."
components = [
  { name = "st_mtime", type = "integer(8)", access = "get set", unchecked = true, unit = "s", text = "a macro in C" },
  { name = "label", type = "character(8)", access = "get set", capacity = 7, text = "letters" },
  { name = "codes", type = "integer(4)", access = "get set", count = 3, text = "numbers" },
  { name = "owner", type = "string", access = "get set", text = "a name" },
  { name = "total", type = "integer(4)", access = "get", text = "how many" },
  { name = "members", type = "strings", count_of = "total", access = "get", text = "names" },
  { name = "second", type = "string", access = "get set", text = "another name" },
  { name = "fixed", type = "integer(4)", access = "get", text = "what nobody sets and nothing counts" },
]

[[record]]
name = "opaque"
kind = 1
summary = "nothing to see"
text = "Nobody looks into it."
components = [
  { name = "mask", type = "integer(4)", unsigned = true, access = "", text = "bits" },
]

[[constant_group]]
title = "Some of the host's"
text = "As `SIGINT` is."
names = [
  { name = "SIGINT", text = "the interrupt key" },
  { name = "SIGTERM", text = "here and maybe not elsewhere", may_lack = true },
  { name = "SIGNOTHING", text = "on no host", may_lack = true },
]

[[constant_group]]
title = "Own"
text = "The same everywhere."
names = [
  { name = "_LEAST_OF_ALL", text = "the least", value = -2147483648 },
  { name = "NSIG", text = "a macro with another value", value = 7 },
]

[[constant_group]]
title = "Parameters only"
text = "Beside `SIGINT`."
by_name = false
names = [
  { name = "SA_SIGINFO", text = "more is told" },
  { name = "_SC_NPROCESSORS_ONLN", text = "processors" },
  { name = "A_NAME_OF_MORE_THAN_24_CHARACTERS", text = "on no host", may_lack = true },
]

[[routine]]
name = "pair"
kind = "subroutine"
summary = "make a pair"
text = "Makes a `pair_record`."
errors = [{ number = "ENOMEM", when = "there is none" }]
origin = "this library"
args = [{ name = "x", type = "integer(4)", intent = "in", text = "a number" }]
example = """
use qxport_posix, only: pair
call pair(1)
end
"""
related = ["pair8", "opaque_record", "constants"]

[[routine]]
name = "pxfsend"
kind = "subroutine"
summary = "send a word"
text = "Sends."
origin = "this library"
args = [
  { name = "word", type = "character(*)", intent = "in", text = "a word" },
  { name = "times", type = "integer(4)", intent = "in", text = "a number" },
]
example = """
use qxport_posix, only: pxfsend
call pxfsend('it', 2)
end
"""

[[routine]]
name = "receive"
kind = "function"
result = "integer(4)"
result_text = "0"
summary = "receive a number"
refused = -7
text = "Receives."
origin = "this library"
binding = "plain"
args = [
  { name = "times", type = "integer(8)", intent = "in", text = "a number" },
  { name = "place", type = "integer(4)", intent = "none", text = "a number or a place" },
]
example = """
use qxport_posix, only: receive
if (receive(2_8, 3) /= 0) stop 1
end
"""

[[routine]]
name = "pair8"
also = ["pair"]
like = "pair"
kind = "subroutine"
summary = "make a wide pair"
origin = "another one"
args = [{ name = "x", type = "integer(8)", intent = "in", text = "a number" }]
example = """
use qxport, only: pair8
call pair8(1_8)
end
"""
'''

FILES = {
    "compat_sample.toml": SAMPLE, "core_run.toml": CORE, "frame_bare.toml": BARE, "posix_binding.toml": BINDING,
}


@functools.cache
def widths():
    """The targets that programs can be compiled for here: the narrow one where its headers and run-time are installed."""
    probe = subprocess.run(["g++", "-m32", "-x", "c++", "-", "-o", os.devnull], capture_output=True, text=True, check=False,
                           input="#include <type_traits>\n#include <signal.h>\nint main() { return raise(0); }\n")
    return ("64", "32") if probe.returncode == 0 else ("64",)


class CatalogueCase(unittest.TestCase):
    """Gives each test a directory of its own with the sample catalogue in it."""

    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.root = Path(temporary.name)
        self.api, self.out = self.root / "api", self.root / "out"
        self.write(FILES)

    def write(self, files):
        self.api.mkdir(exist_ok=True)
        for name, text in files.items():
            (self.api / name).write_text(text, encoding="utf-8")

    def apigen(self, *arguments):
        command = [sys.executable, str(APIGEN), "--api", str(self.api), *map(str, arguments)]
        return subprocess.run(command, capture_output=True, text=True, check=False)

    def generate(self, *arguments, target="64", out=None):
        result = self.apigen("--out", out or self.out, "--target", target, "--version-text", "V9.9-009",
                             "--date", "Nov 21 2026", *arguments)
        self.assertEqual((result.returncode, result.stderr, result.stdout), (0, "", ""))

    def read(self, name):
        return (self.out / name).read_text(encoding="utf-8")

    def run_clean(self, *command, **options):
        """Runs a command that must succeed and say nothing on standard error."""
        result = subprocess.run(list(map(str, command)), capture_output=True, text=True, check=False, **options)
        self.assertEqual((result.returncode, result.stderr), (0, ""), " ".join(map(str, command)))
        return result.stdout
