"""The compiler's own procedures by names that the library has too."""

import re

_SUFFIX = re.compile(r"(_(i1|i2|i4|i8|i16|r4|r8|l4|l8|sub|func|default|unit))+\Z")

# What is different, and whether a program that was written for the library's can see it. A name that is not here answers
# the same either way.
DIFFERENCES = {
    "alarm": ("the compiler's is a subroutine `ALARM(SECONDS, HANDLER [, STATUS])`, the library's a function that answers the "
             "seconds that remained", True),
    "chmod": ("the compiler's does not record the error number that IERRNO and GERROR read", False),
    "ctime": ("the compiler's takes an INTEGER(8) and answers 24 characters; the library's, by EXTERNAL, takes an INTEGER(4) and "
             "answers a line feed as character 25", False),
    "gerror": ("the compiler's tells of C's `errno`, not of the error that the library recorded last", True),
    "hostnm": ("the compiler's cuts a long name without a word; the library's answers -1 then", True),
    "ierrno": ("the compiler's is C's `errno`, not the error number that the library recorded last", True),
    "kill": ("after a failure the compiler's answers the error number, the library's -1 (IERRNO has the number)", True),
    "perror": ("the compiler's tells of C's `errno`, not of the error that the library recorded last", True),
    "signal": ("the compiler's takes two arguments; the library's third, FLAG, says whether the second is a procedure", True),
    "time": ("the compiler's answers an INTEGER(4); the library's, by EXTERNAL, an INTEGER(8)", False),
    "ttynam": ("the compiler's has the arguments (UNIT, NAME), the library's (NAME, UNIT)", True),
}


def name_of(symbol):
    """The name of the procedure behind a symbol of GNU Fortran's run-time; None where it is no such symbol."""
    if not symbol.startswith("_gfortran_"):
        return None
    name = symbol.removeprefix("_gfortran_")
    return _SUFFIX.sub("", name)
