"""The catalogue as JSON: it is as its schema says, and says what the library is."""

import json
import tomllib
import unittest

from json_schema import problems
from support import SOURCE, TARGET, Installed


class Json(Installed):
    def setUp(self):
        super().setUp()
        share = self.prefix / "share/qxport"
        self.catalogue = json.loads((share / "catalogue.json").read_text(encoding="utf-8"))
        self.schema = json.loads((share / "catalogue.schema.json").read_text(encoding="utf-8"))
        self.routines = [r for area in self.catalogue["areas"] for r in area["routines"]]

    def test_schema(self):
        self.assertEqual(problems(self.catalogue, self.schema), [])

    def test_schema_finds_faults(self):
        self.catalogue["target"] = 16
        self.catalogue["areas"][0]["more"] = 1
        del self.catalogue["areas"][1]["title"]
        self.routines[0]["arguments"] = None
        self.routines[1]["symbol"] = "a b"
        self.assertEqual(len(problems(self.catalogue, self.schema)), 5)

    def test_all_that_the_catalogue_names(self):
        tables = [tomllib.loads(path.read_text(encoding="utf-8")) for path in (SOURCE / "api").glob("*.toml")]
        there = f"{TARGET}-bit"
        wanted = {r["name"] for table in tables for r in table.get("routine", []) if there in r.get("targets", [there])}
        self.assertEqual({r["name"] for r in self.routines}, wanted)
        for what in ("constant", "type"):
            wanted = {entry["name"] for table in tables for entry in table.get(what, [])}
            self.assertEqual({e["name"] for area in self.catalogue["areas"] for e in area[f"{what}s"]}, wanted)
        wanted = {c["name"] for table in tables for group in table.get("constant_group", []) for c in group["names"]}
        self.assertEqual({n["name"] for area in self.catalogue["areas"] for n in area["numbers"]}, wanted)
        self.assertEqual(self.catalogue["target"], int(TARGET))

    def test_interfaces_compile(self):
        offered = [r["module"] for r in self.routines if r["module"]]
        lines = ["module interfaces", "interface", *(line for offer in offered for line in offer["interface"]), "end interface",
                 "end module"]
        self.write("interfaces.f90", "\n".join([*lines, ""]))
        self.assertEqual(self.compiled(f"-I{self.prefix}/include/qxport", "interfaces.f90"), "")

    def test_types_tell_their_layout(self):
        for record in (t for area in self.catalogue["areas"] for t in area["types"]):
            last = record["fields"][-1]
            size = int(last["type"].partition("(")[2].rstrip(")")) * (last["count"] or 1)
            self.assertEqual(last["offset"] + size, record["bytes"], record["name"])


if __name__ == "__main__":
    unittest.main()
