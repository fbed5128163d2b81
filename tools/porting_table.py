#!/usr/bin/env python3
"""Makes the tables of docs/porting.md by compiling, linking and running: for the routines whose names GNU Fortran has
intrinsics of, whose procedure a call reaches in each way, and what each answers.

    tools/porting_table.py BUILD_DIRECTORY     puts the tables into docs/porting.md
"""

import argparse
import json
import os
import re
import signal
import subprocess
import sys
import tempfile
import textwrap
import tomllib
from dataclasses import dataclass
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "porting"))

from qxporting.doctor import intrinsics, objects  # noqa: E402

PLAIN, STANDARD, EXTERNAL, MODULE = "plain", "standard", "external", "module"
FUNCTION, SUBROUTINE = "function", "subroutine"
REFUSED = "does not compile"
UNDEFINED = "undefined"
ENDLESS = "never returns"
_COMPILER_FLAGS = ["-w", "-O0", "-g1", "-fmax-errors=5000", "-fdiagnostics-plain-output"]
_ERROR = re.compile(r"^(\S+?)\.f90:(\d+):\d+:.*?Error: ", re.MULTILINE)
# A name of another language has no underscore at its end, or signs that a Fortran name has not.
_CALLABLE = re.compile(r"[a-z]\w*_")
# What a call needs beside the procedure itself: copies of strings.
_HELPERS = {"memmove", "memset", "memcpy", "free", "malloc"}


@dataclass
class Toolchain:
    """The compiler with its flags, and where the library is."""

    compiler: list
    modules: Path
    libraries: list
    link_flags: tuple = ()  # those that an instrumented library needs

    def compile(self, directory, names, flags=()):
        """Compiles the sources of these names; answers the errors as (name, line)."""
        for at in range(0, len(names), 50):
            words = [*self.compiler, *_COMPILER_FLAGS, f"-I{self.modules}", *flags, "-c"]
            ran = _run([*words, *(f"{name}.f90" for name in names[at:at + 50])], directory)
            errors = [(match[1], int(match[2])) for match in _ERROR.finditer(ran.stderr)]
            if ran.returncode and not errors:
                sys.exit(f"{' '.join(words)}: {ran.stderr}")
            yield from errors

    def link(self, directory, names):
        words = [*self.compiler, *self.link_flags, "-o", "program", *(f"{name}.o" for name in names)]
        ran = _run([*words, *(f"-L{path}" for path in self.libraries), "-lqxportmt", "-lqxcoremt_gnu"], directory)
        if ran.returncode:
            sys.exit(f"{' '.join(words)}: {ran.stderr}")

    @property
    def version(self):
        """The compiler's name and main version, such as `GNU Fortran 12`."""
        first = _run([*self.compiler, "--version"], None).stdout.partition("\n")[0]
        match = re.match(r"(GNU Fortran) .*?(\d+)\.\d+\.\d+\s*\Z", re.sub(r"\(.*?\)", "()", first))
        return f"{match[1]} {match[2]}" if match else first


def _run(words, directory, environment=None, seconds=300):
    return subprocess.run(list(map(str, words)), cwd=directory, env=environment or os.environ | {"LC_ALL": "C"},
                          stdin=subprocess.DEVNULL, capture_output=True, text=True, errors="replace", check=False,
                          timeout=seconds)


def routines_of(catalogue):
    """Those that a call of Fortran's can reach by name."""
    return {r["name"]: r for area in catalogue["areas"] for r in area["routines"] if _CALLABLE.fullmatch(r["symbol"])}


def form_of(routine):
    return FUNCTION if routine["result"] else SUBROUTINE


# Whose procedure a call reaches.

def known_intrinsics(tools, names):
    """The names that the compiler has an intrinsic procedure of."""
    names = sorted(names)
    sources = {f"i{number}": f"subroutine s\nintrinsic :: {name}\nend\n" for number, name in enumerate(names)}
    with tempfile.TemporaryDirectory() as directory:
        _write(directory, sources)
        unknown = {name for name, _ in tools.compile(directory, list(sources))}
    return {name for number, name in enumerate(names) if f"i{number}" not in unknown}


def _write(directory, sources):
    for name, text in sources.items():
        Path(directory, f"{name}.f90").write_text(text, encoding="utf-8")


def whose(tools, routines, way, form, target):
    """For each routine's name the symbol that a call reaches; REFUSED, or nothing where the compiler does it by itself.

    A call with all its arguments that is refused is tried without those that may be left out."""
    offered = {name: r for name, r in routines.items() if way != MODULE or r["module"]}
    found = _whose(tools, offered, way, form, target, False)
    refused = {name: r for name, r in offered.items() if found[name] == REFUSED}
    return found | _whose(tools, refused, way, form, target, True)


def _whose(tools, routines, way, form, target, shortest):
    numbered = {f"u{number}": routine for number, routine in enumerate(routines.values())}
    found = {}
    flags = ["-std=f2018"] if way == STANDARD else []
    with tempfile.TemporaryDirectory() as directory:
        while True:
            lines, units = [], []
            for unit, routine in numbered.items():
                text = _calling_unit(unit, routine, way, form, target, shortest)
                lines += text
                units += [unit] * len(text)
            _write(directory, {"units": "\n".join([*lines, ""])})
            refused = {units[line - 1] for _, line in tools.compile(directory, ["units"], flags)}
            if not refused:
                break
            for unit in refused:
                found[numbered.pop(unit)["name"]] = REFUSED
        for routine in numbered.values():
            found[routine["name"]] = None
        for place in objects.look(Path(directory, "units.o")).places:
            if place.unit in numbered and place.symbol not in _HELPERS:
                found[numbered[place.unit]["name"]] = place.symbol
    return found


def _calling_unit(unit, routine, way, form, target, shortest):
    """A subroutine that calls a routine once, with arguments as the catalogue says."""
    name = routine["module"]["name"] if way == MODULE else routine["name"]
    told = [argument for argument in routine["arguments"] if not (shortest and argument["optional"])]
    arguments = [f"a{number}" for number in range(len(told))]
    called = f"{name}({', '.join(arguments)})"
    answer = _declared(routine["result"] or "integer(4)", way, target)
    lines = [f"subroutine {unit}({', '.join([*arguments, 'answer'])})"]
    if way == MODULE:
        records = {a["type"][5:-1] for a in told if re.match(r"type\(\w", a["type"])}
        lines.append(f"use qxport, only: {', '.join([name, *sorted(records)])}")
    lines += ["implicit none", *_declaration(name, answer, way, form)]
    for argument, one in zip(arguments, told):
        array = "(99)" if one["shape"] or one["type"] == "type(*)" else ""
        if one["interface"]:
            heading, *inside = one["interface"]
            lines += ["interface", heading.replace(one["name"], argument), *inside, "end", "end interface"]
        elif one["type"] == "procedure":
            lines.append(f"procedure({one['result']}) :: {argument}" if one["result"] else f"external :: {argument}")
        else:
            lines.append(f"{_declared(one['type'], way, target)} :: {argument}{array}")
    statement = f"answer = {called}" if form == FUNCTION else f"call {called}"
    return [*lines, f"{answer} :: answer", statement, "end subroutine"]


def _declared(kind, way, target):
    if kind.startswith("type(") and kind != "type(*)" and way != MODULE:
        return "integer(4)"
    address = f"integer({target // 8})"
    return {"integer(ptr)": address, "type(*)": "integer(4)", "character(*)": "character(40)"}.get(kind, kind)


def _declaration(name, answer, way, form):
    if way == MODULE:
        return []
    if form == SUBROUTINE:
        return [f"external :: {name}"] if way == EXTERNAL else []
    return [f"{answer}{', external' if way == EXTERNAL else ''} :: {name}"]


# What each answers.

_NUMBER = "PROBE"  # the variable of the environment that says which probe is run


def probes():
    with open(ROOT / "tools/porting_probes.toml", "rb") as file:
        return tomllib.load(file)["probe"]


def answers(tools, routines, way, target):
    """What each probe answers, in the order of the probes."""
    told = probes()
    usable = {number: probe for number, probe in enumerate(told) if way != MODULE or _offered(probe, routines)}
    found = {number: REFUSED for number in range(len(told))}
    with tempfile.TemporaryDirectory() as directory:
        _write(directory, {f"p{number}": _probe_unit(number, probe, routines, way, target)
                           for number, probe in usable.items()})
        refused = {name for name, _ in tools.compile(directory, [f"p{number}" for number in usable])}
        good = [number for number in usable if f"p{number}" not in refused]
        _write(directory, {"main": _main(good)})
        if list(tools.compile(directory, ["main"])):
            sys.exit("the main program of the probes does not compile")
        tools.link(directory, ["main", *(f"p{number}" for number in good)])
        for number in good:
            if way in told[number].get("undefined", ()):
                found[number] = UNDEFINED
            else:  # a run that is to end has its time, on a busy machine too
                found[number] = _answer(directory, number, tools, 3 if way in told[number].get("endless", ()) else 60)
    return [found[number] for number in range(len(told))]


def _offered(probe, routines):
    return all(routines[name]["module"] for name in [probe["routine"], *probe.get("with", ())])


def _probe_unit(number, probe, routines, way, target):
    names = [probe["routine"], *probe.get("with", ())]
    lines = [f"subroutine p{number}"]
    lines += [f"use qxport, only: {', '.join(names)}"] if way == MODULE else []
    lines.append("implicit none")
    for name in names:
        routine = routines[name]
        form = probe.get("form", form_of(routine)) if name == probe["routine"] else form_of(routine)
        answer = probe.get("result", _declared(routine["result"] or "integer(4)", way, target))
        lines += _declaration(name, answer, way, form)
    lines += [probe.get("declare", ""), probe["code"].strip("\n")]
    lines += ["contains", probe["contains"].strip("\n")] if "contains" in probe else []
    return "\n".join([*lines, "end subroutine", probe.get("outside", ""), ""])


def _main(numbers):
    calls = [f"case ({number})\n  call p{number}" for number in numbers]
    return "\n".join(["program main", "implicit none", "character(8) :: text", "integer :: number",
                      f"call get_environment_variable('{_NUMBER}', text)", "read (text, *) number",
                      "select case (number)", *calls, "end select", "end program", ""])


def _answer(directory, number, tools, seconds):
    """What a probe prints, and how it ends where that is not the usual way."""
    with tempfile.TemporaryDirectory() as place:
        Path(place, "data").write_text("ab\ncd\n", encoding="utf-8")
        Path(place, "data").chmod(0o644)
        Path(place, "linked").symlink_to("data")
        environment = {key: value for key, value in os.environ.items() if key in ("PATH", "TSAN_OPTIONS")}
        # What the library keeps is no leak of the program's.
        environment |= {_NUMBER: str(number), "TZ": "UTC0", "LC_ALL": "C", "ASAN_OPTIONS": "detect_leaks=0",
                        "LD_LIBRARY_PATH": ":".join(map(str, tools.libraries))}
        try:
            ran = _run([Path(directory, "program"), "one", "two words"], place, environment, seconds)
        except subprocess.TimeoutExpired:
            return ENDLESS
    said = " ".join(ran.stdout.split())
    if ran.returncode < 0:
        said = f"{said} (ends by {signal.Signals(-ran.returncode).name})".lstrip()
    elif ran.returncode:
        said = f"{said} (ends with status {ran.returncode})".lstrip()
    return said or "(ends with status 0)"


# The pages' sections.

@dataclass
class Measured:
    version: str
    routines: dict
    intrinsics: set
    whose: dict  # (way, form) -> name -> symbol
    answers: dict  # way -> the answers in the order of the probes


def measure(tools, catalogue):
    routines, target = routines_of(catalogue), catalogue["target"]
    forms = {(way, form): whose(tools, routines, way, form, target)
             for way in (PLAIN, STANDARD, EXTERNAL, MODULE) for form in (FUNCTION, SUBROUTINE)}
    return Measured(tools.version, routines, known_intrinsics(tools, routines), forms,
                    {way: answers(tools, routines, way, target) for way in (PLAIN, EXTERNAL, MODULE)})


WHOSE, ANSWERS, DIFFERS = "## Names that GNU Fortran has intrinsics of", "## What each answers", "## What differs"


def sections(measured):
    """The sections that are made, by their headings."""
    return {WHOSE: _whose_section(measured), DIFFERS: _differs_section(), ANSWERS: _answers_section(measured)}


def _whose_section(measured):
    rows = []
    for name in sorted(measured.intrinsics):
        routine = measured.routines[name]
        own = form_of(routine)
        for form in (own, SUBROUTINE if own == FUNCTION else FUNCTION):
            plain = measured.whose[PLAIN, form][name]
            if form == own or plain not in (routine["symbol"], REFUSED):
                rows.append([f"`{_heading(name, form)}`", _type_of(routine, form), _symbol(plain),
                             _symbol(measured.whose[MODULE, form].get(name, ""))])
    text = [
        *_wrapped(
            f"Measured with {measured.version} on x86-64. A declaration such as `integer(4), external :: access`, with the "
            "type of the second column, makes a call reach the library, under the symbol of its name, `access_`; a "
            "subroutine needs `external` alone. Without it the call is what the third column names, with a type statement "
            "or without: a symbol of the compiler's run-time or of the C library, or code in line. The fourth column is "
            "what a call reaches through `use qxport` with IMPLICIT NONE. A function that is called by CALL has a row of "
            "its own where the compiler has an intrinsic of that form. With `-std=f2018` every call of the table reaches "
            f"the library, but that of {_listed(_standard(measured))}, which the standard itself has."),
    ]
    return [*text, "", *_table(["call", "type", "without EXTERNAL", "`use qxport`"], rows), "", *_others(measured)]


def _heading(name, form):
    return f"call {name}" if form == SUBROUTINE else f"{name}()"


def _type_of(routine, form):
    return "" if form == SUBROUTINE else f"`{routine['result'].replace('integer(ptr)', 'integer(8)')}`"


def _symbol(symbol):
    return {None: "in line", REFUSED: "refused", "": "not there"}.get(symbol) or f"`{symbol}`"


def _standard(measured):
    return sorted({name for name in measured.intrinsics for form in (FUNCTION, SUBROUTINE)
                   if measured.whose[STANDARD, form][name] != measured.routines[name]["symbol"]})


def _listed(names):
    *first, last = [f"`{name}`" for name in names]
    return f"{', '.join(first)} and {last}" if first else last


def _others(measured):
    """What of the rest is not reached in each way."""
    unusual = []
    for name, routine in sorted(measured.routines.items()):
        found = [measured.whose[way, form_of(routine)].get(name) for way in (PLAIN, STANDARD, EXTERNAL)]
        if name not in measured.intrinsics and set(found) != {routine["symbol"]}:
            unusual.append(name)
        offer = routine["module"]
        if offer and measured.whose[MODULE, form_of(routine)][name] not in (offer["symbol"], routine["symbol"]):
            unusual.append(name)
    if unusual:
        sys.exit(f"not as the page says: {' '.join(unusual)}")
    return _wrapped("The names of all other routines are the library's alone: a call in the form of the catalogue reaches it "
                    "with a type statement alone, with `-std=f2018`, as EXTERNAL and through `use qxport`.")


def _differs_section():
    rows = [[f"`{name}`", text] for name, (text, _) in sorted(intrinsics.DIFFERENCES.items())]
    return ["What `qxport doctor` tells of a call that takes the compiler's intrinsic.", "",
            *_table(["name", "what differs"], rows)]


def _answers_section(measured):
    rows, alike = [], {}
    for number, probe in enumerate(probes()):
        plain, external, module = (measured.answers[way][number] for way in (PLAIN, EXTERNAL, MODULE))
        offered = _offered(probe, measured.routines)
        same = plain == external and module in (external, REFUSED) if not offered else plain == external == module
        alike[probe["routine"]] = alike.get(probe["routine"], True) and same
        if not same:
            rows.append([_code(probe["call"]), plain, external, module])
    text = [
        *_wrapped(
            "What programs printed that make the call without a declaration but a type statement, with EXTERNAL, and with "
            "`use qxport`. They ran with the arguments `one` and `two words`, in a directory with a file `data` of 6 bytes "
            "and a link `linked` to it. Calls whose answers are the same are not in the table; of these routines all "
            f"were: {_listed(sorted(name for name, same in alike.items() if same))}."),
    ]
    return [*text, "", *_table(["call", "compiler's", "EXTERNAL", "`use qxport`"], rows)]


def _code(call):
    """A call as code, but what is said of it in words."""
    code, *words = re.split(r"(?=, (?:with|behind|and|not|again)\b|; )", call, maxsplit=1)
    return call if call.startswith("the ") else "".join([f"`{code}`", *words])


def _wrapped(text):
    return textwrap.wrap(text, 118, break_long_words=False, break_on_hyphens=False)


def _table(head, rows):
    return [f"| {' | '.join(row)} |" for row in [head, ["---"] * len(head), *rows]]


def replaced(page, made):
    """The page with these sections in the place of those of the same headings."""
    for heading, lines in made.items():
        before, found, behind = page.partition(f"\n{heading}\n")
        if not found:
            sys.exit(f"the page has no section `{heading}`")
        after = behind.find("\n## ")
        page = "\n".join([f"{before}\n{heading}", "", *lines, ""]) + (behind[after:] if after >= 0 else "")
    return page


def toolchain_of(build, compiler):
    return Toolchain(compiler, build / "modules", [build / "src", build / "src/core"])


def main():
    parser = argparse.ArgumentParser(
        description="Makes the tables of docs/porting.md by compiling, linking and running.")
    parser.add_argument("build", type=Path, help="a build of this tree for 64 bits")
    parser.add_argument("--compiler", default="gfortran")
    options = parser.parse_args()
    build = options.build.resolve()
    catalogue = json.loads((build / "generated/share/catalogue.json").read_text(encoding="utf-8"))
    page = ROOT / "docs/porting.md"
    made = sections(measure(toolchain_of(build, options.compiler.split()), catalogue))
    page.write_text(replaced(page.read_text(encoding="utf-8"), made), encoding="utf-8")


if __name__ == "__main__":
    main()
