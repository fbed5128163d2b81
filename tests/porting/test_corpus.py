"""Programs in the manners of published code: the doctor finds what is in the way of each, and each builds and answers right
by what the doctor says to do, and by nothing else.

A program's first lines say, as comments, what is found (`!finds: KIND NAME`), what a person mends by the advice where there
is no edit to take over (`!mend: OLD => NEW`), and what it prints (`!prints: ...`). A clean program finds nothing.
"""

import concurrent.futures
import json
import os
import shutil
import subprocess
import sys
import unittest

from json_schema import problems
from support import COMPILER, SANITIZE, SOURCE, TARGET, Installed

CORPUS = SOURCE / "tests/porting/corpus"
# What the commands that are told do away with.
BY_COMMAND = {"missing-module"}


def header(path):
    told = {"finds": set(), "mend": [], "prints": None, "target": None}
    for line in path.read_text().splitlines():
        key, colon, value = line[1:].partition(": ")
        if not line.startswith("!") or not colon:
            break
        if key == "finds":
            told["finds"].add(tuple(value.split(maxsplit=1)))
        elif key == "mend":
            told["mend"].append(tuple(value.split(" =>", 1)))
        else:
            told[key] = value
    return told


class Corpus(Installed):
    def setUp(self):
        super().setUp()
        self.schema = json.loads((self.prefix / "share/qxport/doctor.schema.json").read_text())

    def group(self, name):
        """A copy of a group, with the programs for this target and what they say of themselves."""
        shutil.copytree(CORPUS / name, self.work / name)
        self.programs = {}
        for path in sorted((self.work / name).glob("*.f*")):
            if path.suffix in (".f", ".f90"):
                told = header(path)
                if told["target"] in (None, TARGET):
                    self.programs[path] = told
                else:
                    path.unlink()
        flags = self.work / name / "flags"
        self.flags = (flags.read_text().split() if flags.exists() else []) + ([f"-fsanitize={SANITIZE}"] if SANITIZE else [])
        names = self.work / name / "names.txt"
        self.names = ["--names", names] if names.exists() else []

    def diagnose(self, paths, status):
        words = ["doctor", "--json", "--quiet", *self.names, *COMPILER, *self.flags, "--", *paths]
        done = self.ran([sys.executable, self.prefix / "bin/qxport", *words])
        self.assertEqual((done.returncode, done.stderr), (status, ""), done.stderr + done.stdout[-2000:])
        report = json.loads(done.stdout)
        self.assertEqual(problems(report, self.schema), [])
        return report

    def found(self, report, path):
        return {(f["kind"], f["name"]) for f in report["findings"] if f["weight"] == "to do" and f["file"] == str(path)}

    def mend(self, report, path, told):
        """Does what the doctor says: the edits from the end on, then what a person writes."""
        lines = path.read_text().splitlines()
        edits = {(f["edit"]["after_line"], f["edit"]["text"]) for f in report["findings"]
                 if f["edit"] and f["file"] == str(path) and f["weight"] == "to do"}
        for after, text in sorted(edits, reverse=True):
            lines.insert(after, text)
        body = "\n".join([*(line for line in lines if not line.startswith("!")), ""])
        for old, new in told["mend"]:
            self.assertIn(old, body, path.name)
            body = body.replace(old, new.removeprefix(" "))
        path.write_text(body)

    def build_and_run(self, program, told):
        """The commands as they stand, in a directory of their own."""
        place = self.work / "built" / program["name"]
        place.mkdir(parents=True)
        for command in program["commands"]:
            done = subprocess.run(["bash", "-c", command], cwd=place, capture_output=True, text=True, errors="replace",
                                  stdin=subprocess.DEVNULL, check=False)
            if done.returncode:
                return f"{program['name']}: {command}: {done.stdout}{done.stderr}"
        done = subprocess.run([place / program["name"]], cwd=place, capture_output=True, text=True, stdin=subprocess.DEVNULL,
                              errors="replace", check=False, timeout=60)
        if (done.returncode, done.stdout.rstrip("\n")) != (0, told["prints"]):
            return f"{program['name']}: status {done.returncode}, printed {done.stdout!r} {done.stderr}"
        return None

    def check(self, name):
        self.group(name)
        report = self.diagnose(self.programs, 1)
        for path, told in self.programs.items():
            with self.subTest(program=path.name):
                self.assertEqual(self.found(report, path), told["finds"])
        for path, told in self.programs.items():
            self.mend(report, path, told)
        report = self.diagnose(self.programs, 1 if any(k in BY_COMMAND for t in self.programs.values() for k, _ in t["finds"])
                               else 0)
        for path in self.programs:
            with self.subTest(mended=path.name):
                left = {kind for kind, _ in self.found(report, path)}
                self.assertLessEqual(left, BY_COMMAND)
        by_path = {program["sources"][-1]: program for program in report["programs"]}
        self.assertEqual(set(by_path), {str(path) for path in self.programs})
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            failed = pool.map(lambda entry: self.build_and_run(by_path[str(entry[0])], entry[1]), self.programs.items())
            self.assertEqual([one for one in failed if one], [])

    def test_plain(self):
        self.check("plain")

    def test_names_of_their_own(self):
        self.check("named")

    def test_by_the_standard(self):
        self.check("f2018")

    def test_wide_integers(self):
        self.check("wide")

    def test_clean_bill(self):
        self.group("plain")
        clean = [path for path, told in self.programs.items() if not told["finds"]]
        self.assertGreaterEqual(len(clean), 10)
        report = self.diagnose(clean, 0)
        self.assertEqual([f for f in report["findings"] if f["weight"] != "note"], [])

    def test_there_are_enough(self):
        self.assertGreaterEqual(sum(path.suffix in (".f", ".f90") for path in CORPUS.rglob("*")), 60)


if __name__ == "__main__":
    unittest.main()
