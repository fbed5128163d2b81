"""Prints the sources of the libraries that are compiled without what a system library needs: options.py BUILD TARGET."""

import json
import shlex
import sys
from pathlib import Path

build, target = Path(sys.argv[1]), sys.argv[2]

# C++ as a language, without its run-time library; code that every process can map; the same bytes wherever it is built.
SHARED = {"-fno-exceptions", "-fno-rtti", "-fno-threadsafe-statics", "-fPIC", "-std=c++20", "-Wall", "-Wextra", "-Wconversion"}
NARROW = {"-m32", "-msse2", "-mfpmath=sse", "-D_FILE_OFFSET_BITS=64", "-D_TIME_BITS=64"}

commands = json.loads((build / "compile_commands.json").read_text())
seen = set()
for command in commands:
    words = shlex.split(command["command"])
    output = words[words.index("-o") + 1]
    if not output.startswith("src/") or not command["file"].endswith(".cpp"):
        continue
    wanted = SHARED | (NARROW if target == "32" else set())
    library = output.split("CMakeFiles/")[1].split(".dir/")[0]
    # Tests are linked with an image of their own, which hides nothing.
    if library != "qxport_open_objects":
        wanted = wanted | {"-fvisibility=hidden"}
        seen.add(library)
    mapped = [word.split("=", 2)[2] for word in words if word.startswith("-ffile-prefix-map=")]
    missing = sorted(wanted - set(words)) + ["-ffile-prefix-map"] * (mapped != [".", "./build"])
    if missing:
        print(output, *missing)
for library in {"qxport_objects", "qxport_i8_objects", "qxcore_gnu_objects", "qxcore_posix_objects"} - seen:
    print("nothing is compiled of", library)
