"""Prints what the modules for default integers of 8 bytes leave with 4 bytes alone: wide_module.py SOURCE."""

import re
import sys
from collections import defaultdict
from pathlib import Path

DEFAULT = re.compile(r"(integer|logical|real)\(4\)")


def main():
    generics, known = defaultdict(list), {}
    for name, lines in interfaces(Path(sys.argv[1]).read_text(encoding="utf-8")):
        for procedure in procedures(lines):
            generics[name or procedure["name"]].append(procedure)
            known[procedure["name"]] = procedure
        generics[name] += [known[line.split()[-1]] for line in lines if line.strip().startswith("procedure ::")]
    del generics[""]
    if len(generics) < 200:
        print("hardly any name is offered")
    for name, alternatives in generics.items():
        for procedure in alternatives:
            for problem in problems(procedure, alternatives):
                print(f"{name}: {procedure['name']}: {problem}")


def interfaces(text):
    """(generic name, lines) of each interface block, with continued lines joined. Those inside of procedures stay in them."""
    text = re.sub(r" *&\n *", " ", text)
    depth, name, lines = 0, "", []
    for line in text.splitlines():
        if re.match(r"  interface\b", line):
            depth, name, lines = 1, line.split()[1] if len(line.split()) > 1 else "", []
        elif re.match(r"  end interface\b", line):
            yield name, lines
            depth = 0
        elif depth:
            lines.append(line)


def procedures(lines):
    """Each procedure of a block: its name, its arguments in order with their types, its result."""
    found, nested = [], False
    for line in lines:
        if heading := re.match(r"    (function|subroutine) (\w+)\(([^)]*)\)(?: result\((\w+)\))?$", line):
            names = [word.strip() for word in heading[3].split(",") if word.strip()]
            found.append({"name": heading[2], "arguments": names, "result": heading[4], "types": {}})
        elif line.strip() == "interface":
            nested = True
        elif line.strip() == "end interface":
            nested = False
        elif not nested and (declaration := re.match(r"      (\S.*?) :: (\w+)(\(.*\))?$", line)):
            words = declaration[1].split(", ")
            found[-1]["types"][declaration[2]] = (words[0], declaration[3] or "", "optional" in words)
    return found


def problems(procedure, alternatives):
    types = procedure["types"]
    places = [name for name in procedure["arguments"] if DEFAULT.fullmatch(types.get(name, ("",))[0])]
    for changed in places:
        if not any(is_same_but(procedure, other, changed) for other in alternatives):
            yield f"argument {changed} is a {types[changed][0]}, and no variant takes 8 bytes with the others as they are"
    for name in places:
        if types[name][2]:
            yield f"argument {name}: where it is absent 4 bytes are taken for it"
    answer = types.get(procedure["result"], ("",))[0]
    defaults = [t for t, _, _ in types.values() if re.fullmatch(r"(integer|logical)\([48]\)", t)]
    if re.fullmatch(r"(integer|logical)\(4\)", answer) and len(defaults) == 1:
        yield f"answers a {answer} without an argument that asks for it"


def is_same_but(procedure, other, changed):
    """Whether another procedure takes 8 bytes for one argument and the same for the rest."""
    if len(procedure["arguments"]) != len(other["arguments"]):
        return False
    for mine, theirs in zip(procedure["arguments"], other["arguments"]):
        a, b = procedure["types"].get(mine), other["types"].get(theirs)
        if a is None or b is None:
            if a is not b:
                return False
        elif mine == changed:
            if b[0] != a[0].replace("(4)", "(8)") and not (b[0] == "integer(c_intptr_t)" and a[0] == "integer(4)"):
                return False
        elif a[0] != b[0] and "c_intptr_t" not in a[0] + b[0]:
            return False
    return True


if __name__ == "__main__":
    main()
