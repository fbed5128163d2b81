"""The compiler's own procedures by names that the library has too."""

import re

_SUFFIX = re.compile(r"(_(i1|i2|i4|i8|i16|r4|r8|l4|l8|sub|func|default|unit))+\Z")

# What is different, and whether a program that was written for the library's goes wrong by it. A name that is not here
# answers the same either way. `tools/porting_table.py` measures it.
DIFFERENCES = {
    "abort": ("the compiler's takes no message; by EXTERNAL the library's has to have one", False),
    "access": ("where the file does not exist the compiler's answers `ENOENT` and the library's `EINVAL`, and for other "
               "letters than r, w and x the compiler's answers -1", False),
    "alarm": ("the compiler's is a subroutine `ALARM(SECONDS, HANDLER [, STATUS])` that takes the place of a pending alarm; the "
              "library's is a function that answers the seconds that remain and leaves a pending alarm alone", True),
    "chmod": ("the compiler's answers 1 after every failure, the library's the error number", False),
    "ctime": ("the compiler's takes an integer of any kind and answers 24 characters; the library's, by EXTERNAL, takes an "
              "INTEGER(4) and answers a line feed as character 25", False),
    "exit": ("the compiler's argument may be left out; by EXTERNAL the library's may not", False),
    "fgetc": ("after a failure the compiler's answers -1, as at the end of the file, where it makes the character blank; the "
              "library's answers `EINVAL` and leaves the character alone", False),
    "flush": ("the compiler's flushes all units where the argument is left out; the library's may not be", False),
    "fputc": ("after a failure the compiler's answers -1, the library's `EINVAL`", False),
    "fstat": ("the compiler's ends the program where the array has less than 13 elements, and answers 0 for a unit that is "
              "not connected; the library's fills 12 and answers `EINVAL`", True),
    "ftell": ("the compiler's answers an INTEGER(8), and -1 after every failure; the library's an INTEGER(4), and minus the "
              "error number", False),
    "getarg": ("the compiler's has no third argument STATUS", False),
    "getlog": ("the compiler's answers who owns the process, the library's who logged in: nobody in a container or a batch "
               "job", False),
    "hostnm": ("for a variable that is too short the compiler's answers `ENAMETOOLONG`, the library's -1", True),
    "idate": ("the compiler's stores the year in full, the library's its last two digits", True),
    "ierrno": ("the compiler's is C's `errno`, not the error number that the library recorded last", True),
    "irand": ("the compiler's draws other numbers, from a generator of its own", False),
    "kill": ("after a failure the compiler's answers the error number, the library's -1 (GETLASTERROR has the number)", True),
    "long": ("the compiler knows the name and refuses the call", True),
    "lshift": ("by 32 bits and more the compiler's answers 0; the library's shifts by 32 less", False),
    "lstat": ("the compiler's ends the program where the array has less than 13 elements; the library's fills 12", True),
    "ltime": ("the compiler's counts the day of the year from 0, the library's from 1", True),
    "ran": ("the compiler's draws other numbers, from a generator of its own, and leaves the seed as it is: the library's "
            "makes it the next state", True),
    "rand": ("the compiler's draws other numbers, from a generator of its own", False),
    "rshift": ("by 32 bits and more the compiler's answers the sign; the library's shifts by 32 less", False),
    "short": ("the compiler knows the name and refuses the call", True),
    "signal": ("the compiler's has two arguments, and passes the number of the signal to the procedure by value; the "
               "library's third, FLAG, says whether the second is a procedure, and the number comes by reference", True),
    "srand": ("the compiler's seeds its own generator, which only its own RAND and IRAND draw from", False),
    "stat": ("the compiler's ends the program where the array has less than 13 elements; the library's fills 12", True),
    "system": ("the compiler's flushes all units before the command, and never returns where it stands in an output list; "
               "the library's leaves the units alone", False),
    "time": ("the compiler's answers an INTEGER(4); the library's an INTEGER(8)", False),
    "ttynam": ("the compiler's has the arguments (UNIT, NAME), the library's (NAME, UNIT)", True),
}

# The compiler's want so many elements in their array; a program that has them notices no difference.
STATUS_ELEMENTS = 13
STATUS_ARRAY = {"fstat", "lstat", "stat"}


def name_of(symbol):
    """The name of the procedure behind a symbol of GNU Fortran's run-time; None where it is no such symbol."""
    if not symbol.startswith("_gfortran_"):
        return None
    name = symbol.removeprefix("_gfortran_")
    return _SUFFIX.sub("", name)
