"""Writes a Fortran program that calls every routine of the modules for default integers of 8 bytes with values that fit no
INTEGER(4), one a call: wide_calls.py API_DIRECTORY TARGET. It prints the calls that were not refused, or changed something.
"""

import re
import sys
import tomllib
from pathlib import Path

# What is answered where there is no IERROR and no truth to tell it by.
ANSWERS = {
    "EOVERFLOW": "stat lstat fstat fstati8 fgetc fputc random_save random_restore signal",
    "-EOVERFLOW": "fseek fseeki8 ftell ftelli8 getpos getposi8",
    "-1": "kill alarm signalqq raiseqq drand drandm rand random irand irandm ran ipxfwexitstatus ipxfwtermsig ipxfwstopsig",
    "0": "bsearchqq bsearchqqi4 getfileinfoqqh4 getfileinfoqqi8h4 bsearchqqi8 getfileinfoqqh8 getfileinfoqqi8h8",
    "NaN": "besjn besyn dbesjn dbesyn",
    "blank": "error_text",
}
ANSWER_OF = {name: answer for answer, names in ANSWERS.items() for name in names.split()}
# Texts that become blank, and the number beside one.
BLANKED = {"ttynam": {"name": "' '"}, "get_error_text": {"text": "' '"}, "getarg": {"buffer": "' '", "status": "-1"}}
# Arguments of which all 8 bytes are taken.
WHOLE = {
    "ctime": "stime", "ltime": "stime", "gmtime": "stime", "fseek": "ioffset", "bic": "target", "bis": "target", "bit": "source",
    "stat": "statb", "lstat": "statb", "fstat": "statb", "pxfaintget": "value", "getdrivesizeqq": "total avail",
    "pxfcallsubhandle": "ival", "lshift": "ival ishift", "rshift": "ival ishift", "complint": "i", "csmg": "x y z", "jdim": "i j",
    "jabs": "i", "ifloatj": "i", "dfloatj": "i", "idfloat": "i", "short": "i", "intc": "i", "qsort_ii": "len isize", "qsort_il": "len",
}
# On a target whose addresses have 8 bytes a count or handle of 8 bytes is of the size of an address.
WHOLE_64 = {"sortqqi4": "count", "bsearchqqi4": "count", "getfileinfoqqh4": "handle", "getfileinfoqqi8h4": "handle"}
# An exit status of which the host looks at one byte; what the routine never looks at.
CUT = {"exit", "pxfexit", "pxffastexit"}
UNSEEN = {("pxfastrget", "ilen"), ("pxfastrset", "ilen"), ("pxfalgclget", "value"), ("pxfalgclset", "value")}
PROCEDURES = {"alarm": "nothing", "signalqq": "on_desktop_signal"}

OPENING = """\
module called
  implicit none
  integer, parameter :: untouched = 81985529216486895_8, beyond(2) = [2_8**32, -2_8**31 - 1]
  integer :: bad, calls = 0
contains
  subroutine nothing()
  end subroutine
  integer({kind}) function on_desktop_signal(number)
    integer({kind}), value :: number
    on_desktop_signal = number
  end function
  subroutine expect(is_so, what)
    logical, intent(in) :: is_so
    character(*), intent(in) :: what
    if (.not. is_so) print '(2a, i0)', what, ' of ', bad
  end subroutine
end module
"""


def main():
    directory, target = Path(sys.argv[1]), sys.argv[2]
    source, names = OPENING.format(kind="8" if target == "64" else "4"), []
    for entry in routines(directory, target):
        whole = (WHOLE.get(entry["name"], "") + " " + (WHOLE_64.get(entry["name"], "") if target == "64" else "")).split()
        for place, argument in enumerate(entry.get("args", [])):
            if is_checked(argument) and argument["name"] not in whole and (entry["name"], argument["name"]) not in UNSEEN:
                names.append(f"{entry['name'].replace('$', '')}_{place}")
                source += subroutine(entry, place, names[-1])
    source += "program wide_calls\nuse called\nimplicit none\ninteger :: i\ndo i = 1, 2\nbad = beyond(i)\n"
    source += "".join(f"call {name}_called()\n" for name in names)
    source += f"end do\nprint '(i0, a)', calls, ' calls'\nif (calls /= {2 * len(names)}) error stop 1\nend program\n"
    print(source, end="")


def routines(directory, target):
    for path in sorted(directory.glob("*.toml")):
        for entry in tomllib.loads(path.read_text(encoding="utf-8")).get("routine", []):
            regular = entry.get("symbol", f"{entry['name']}_") == f"{entry['name']}_"
            if entry.get("module", True) and f"{target}-bit" in entry.get("targets", [f"{target}-bit"]) \
                    and (regular or "module_name" in entry) and entry["name"] not in CUT:
                yield entry


def plain(entry):
    return entry.get("module_name", entry["name"])


def is_checked(argument):
    return argument["type"] == "integer(4)" and argument["intent"] != "out" and argument["name"] != "ierror"


def subroutine(entry, bad, name):
    used, lines, checks, actual = [plain(entry)], [], [], []
    for place, argument in enumerate(entry.get("args", [])):
        variable, kind = f"a{place}", argument["type"]
        actual.append(variable)
        shape = "(99)" if "shape" in argument else ""
        stored = argument.get("intent") in ("out", "inout") and place != bad
        what = f"'{entry['name']}: {entry['args'][bad]['name']}"
        if kind == "procedure":
            actual[-1] = PROCEDURES.get(entry["name"], "nothing")
        elif kind in ("integer(4)", "logical(4)"):
            base = kind.partition("(")[0]
            lines.append(f"{base} :: {variable}{shape}")
            value = "untouched" if argument["intent"] == "out" or argument["name"] == "ierror" else "1"
            lines.append(f"!{variable} = {value if base == 'integer' else '.true.'}")
            if place == bad:
                lines.append(f"!{variable}{'(1)' if shape else ''} = bad")
                checks.append(f"call expect({variable}{'(1)' if shape else ''} == bad, {what} is changed')")
            elif argument["name"] == "ierror":
                checks.append(f"call expect({variable} == EOVERFLOW, {what}')")
            elif stored:
                wanted = BLANKED.get(entry["name"], {}).get(argument["name"], value)
                told = f"{variable} .eqv. .true." if base == "logical" else f"{variable} == {wanted}"
                checks.append(f"call expect({'all(' + told + ')' if shape else told}, {what} stores {argument['name']}')")
        elif kind.startswith("character"):
            size = re.search(r"\((\d+)\)", kind)
            lines += [f"character({size[1] if size else 8}) :: {variable}{shape}", f"!{variable} = '#'"]
            if stored:
                wanted = BLANKED.get(entry["name"], {}).get(argument["name"], "'#'")
                told = f"{variable} == {wanted}"
                checks.append(f"call expect({'all(' + told + ')' if shape else told}, {what} stores {argument['name']}')")
        elif kind.startswith("type("):
            record = kind[5:-1]
            if record == "*":
                lines += [f"integer(1) :: {variable}(99)", f"!{variable} = 7"]
                checks.append(f"call expect(all({variable} == 7), {what} stores {argument['name']}')")
            else:
                used.append(record)
                lines.append(f"type({record}) :: {variable}")
        else:
            lines += [f"{kind.replace('ptr', 'c_intptr_t')} :: {variable}{shape}", f"!{variable} = 1"]
    call = f"{plain(entry)}({', '.join(actual)})"
    if entry["kind"] == "subroutine":
        call = f"call {call}"
    else:
        call = result_check(entry, call, f"'{entry['name']}: {entry['args'][bad]['name']}")
    if not any(argument["name"] == "ierror" for argument in entry["args"]):
        call = f"a = chdir('no such directory')\n{call}"
        checks.append(f"call expect(ierrno() == EOVERFLOW, '{entry['name']}: {entry['args'][bad]['name']} is not recorded')")
    ordered = [f"use qxport, only: {', '.join(dict.fromkeys([*used, 'chdir', 'ierrno']))}", "use qxport_numbers, only: EOVERFLOW",
               "use, intrinsic :: iso_c_binding, only: c_intptr_t", "use called", "implicit none", "integer :: a",
               *(line for line in lines if not line.startswith("!")), *(line[1:] for line in lines if line.startswith("!")),
               "calls = calls + 1", call, *checks]
    return "\n".join([f"subroutine {name}_called()", *ordered, "end subroutine", ""])


def result_check(entry, call, what):
    """The call as a check of what it answers."""
    answer = ANSWER_OF.get(plain(entry), ANSWER_OF.get(entry["name"]))
    if entry["result"].startswith("logical"):
        told = f".not. {call}"
    elif answer == "NaN":
        told = f"isnan({call})"
    elif answer == "blank":
        told = f"{call} == ' '"
    elif entry["result"].startswith("real"):
        told = f"nint({call}) == {answer}"
    elif any(argument["name"] == "ierror" for argument in entry["args"]):
        told = f"{call} == 0"
    else:
        told = f"{call} == {answer}"
    return f"call expect({told}, {what} is answered')"


if __name__ == "__main__":
    main()
