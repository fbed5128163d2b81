"""The reference: man pages render without warnings, HTML is well formed and its links lead somewhere."""

import json
import os
import re
import subprocess
import unittest
from html.parser import HTMLParser

from support import BINDING, SAMPLE, CatalogueCase

VOID = {"meta", "link", "input", "br", "hr", "img"}


class Page(HTMLParser):
    """Checks the nesting of a page and gathers what the tests ask about."""

    def __init__(self, text):
        super().__init__()
        self.open, self.faults, self.ids, self.links, self.labels, self.headings = [], [], [], [], [], []
        self.inputs, self.attributes, self.text = [], {}, ""
        self.feed(text)
        self.close()
        self.faults += [f"<{tag}> stays open" for tag in self.open]

    def handle_starttag(self, tag, attrs):
        attributes = dict(attrs)
        self.attributes.setdefault(tag, attributes)
        if tag not in VOID:
            self.open.append(tag)
        if "id" in attributes:
            self.ids.append(attributes["id"])
        if tag in ("a", "link"):
            self.links.append(attributes["href"])
        if tag == "label":
            self.labels.append(attributes["for"])
        if tag == "input":
            self.inputs.append(attributes["id"])
        if tag[0] == "h" and tag[1:].isdigit():
            self.headings.append(int(tag[1:]))

    def handle_endtag(self, tag):
        if not self.open or self.open.pop() != tag:
            self.faults.append(f"</{tag}> at {self.getpos()}")

    def handle_data(self, data):
        self.text += data


class Html(CatalogueCase):
    def setUp(self):
        super().setUp()
        self.generate("--only", "html")
        self.pages = {path.name: Page(path.read_text(encoding="utf-8")) for path in (self.out / "html").glob("*.html")}

    def test_pages(self):
        self.assertEqual(sorted(self.pages), ["bare.html", "binding.html", "index.html",
                                              "qxport_numbers.html", "run.html", "sample.html"])
        self.assertTrue((self.out / "html/style.css").is_file())

    def test_well_formed_and_accessible(self):
        for name, page in self.pages.items():
            with self.subTest(name):
                self.assertEqual(page.faults, [])
                self.assertEqual(len(page.ids), len(set(page.ids)))
                self.assertEqual(page.attributes["html"], {"lang": "en"})
                self.assertIn("title", page.attributes)
                self.assertEqual(page.labels, page.inputs)
                self.assertEqual(page.headings[0], 1)
                self.assertEqual(page.headings.count(1), 1)
                steps = [b - a for a, b in zip(page.headings, page.headings[1:])]
                self.assertLessEqual(max(steps, default=0), 1)

    def test_links_resolve(self):
        for name, page in self.pages.items():
            for link in page.links:
                with self.subTest(page=name, link=link):
                    file, _, anchor = link.partition("#")
                    self.assertTrue((self.out / "html" / (file or name)).is_file())
                    if anchor:
                        self.assertIn(anchor, self.pages[file or name].ids)

    def test_every_name_is_in_the_index(self):
        for place in ("sample.html#everything", "sample.html#odd_one", "sample.html#sample_record",
                      "sample.html#LEAST", "sample.html#ErrCount", "run.html#flushqq", "run.html#service-for_nargs",
                      "binding.html#pair", "binding.html#pair_record", "binding.html#opaque_record",
                      "binding.html#constants", "binding.html#SIGINT", "binding.html#_LEAST_OF_ALL",
                      "qxport_numbers.html", "qxport_numbers.html#SA_SIGINFO",
                      "qxport_numbers.html#SC_NPROCESSORS_ONLN"):
            self.assertIn(place, self.pages["index.html"].links)

    def test_names_in_text_and_related_names_are_links(self):
        links = self.pages["sample.html"].links
        # In the area's text, in the record's text and in the text of `plain`; the record and `$$odd$one` as related.
        self.assertEqual(links.count("sample.html#everything"), 3)
        self.assertEqual(links.count("sample.html#sample_record"), 1)
        self.assertEqual(links.count("sample.html#odd_one"), 1)

    def test_constants_of_the_modules(self):
        text = self.pages["sample.html"].text
        for row in ("LEASTinteger(4)-2147483648the least INTEGER(4)",
                    "LEAST_LONGinteger(8)-9223372036854775808the least INTEGER(8)",
                    "BAD_HANDLEinteger(c_intptr_t)-1no handle", "HALFreal(8)0.5one half", "YESlogical(4).true.a truth",
                    "QUOTEScharacter(6)'a'b\"\\'a word"):
            self.assertIn(row, text)

    def test_logical_constant_may_be_false(self):
        self.write({"compat_sample.toml": SAMPLE.replace("value = true", "value = false")})
        self.generate("--only", "html")
        self.assertIn("YESlogical(4).false.a truth", Page(self.read("html/sample.html")).text)

    def test_uses_of_arguments_are_told_apart(self):
        text = self.pages["sample.html"].text
        for row in ("answerinteger(4)inputnamed as", "answer_leninteger(c_intptr_t)input and outputnamed as",
                    "sample_recordtype(sample_record)outputnamed as", "errnocharacter(8)output, optionala C",
                    "buffertype(*)input and output, optionalbytes", "ninteger(8)input, by valuea count"):
            self.assertIn(row, text)
        self.assertIn("placeinteger(4)input, may be writtena number or a place", self.pages["binding.html"].text)

    def test_index_is_in_the_order_of_the_names(self):
        items = self.read("html/index.html").partition('id="name-index"')[2]
        names = re.findall(r'<a href="[^"]*"><code>([^<]*)</code>', items)
        self.assertEqual(names, [
            "$$odd$one", "_LEAST_OF_ALL", "_narrow", "A_NAME_OF_MORE_THAN_24_CHARACTERS", "BAD_HANDLE", "bare_cell",
            "constants", "ErrCount", "everything", "flushqq", "for_nargs", "fortran_other", "HALF", "HiddenCells", "LEAST",
            "LEAST_LONG", "NSIG", "opaque_record", "other8", "pair", "pair8", "pair_record", "plain", "pxfsend", "QUOTES",
            "qxport_numbers", "receive", "SA_SIGINFO", "sample_record", "SC_NPROCESSORS_ONLN", "shiftl", "SIGINT",
            "SIGNOTHING", "SIGTERM", "YES"])

    def test_searched_words_are_those_of_the_names(self):
        page = self.read("html/index.html")
        names = re.findall('<li data-name="([^"]*)"', page)
        words = json.loads(re.search("var WORDS = (.*);\n", page)[1])
        self.assertEqual(len(words), len(names))
        words_of = dict(zip(names, words))
        self.assertEqual(words_of["opaque_record"], "nobody looks into it.")
        self.assertEqual(words_of["constants"], "")
        self.assertIn("what everything is not.", words_of["pair_record"])

    def test_note_names_the_target(self):
        self.assertIn("This routine exists on 32-bit targets only.", self.pages["sample.html"].text)
        self.write({"compat_sample.toml": SAMPLE.replace('targets = ["32-bit"]', 'targets = ["64-bit"]')})
        self.generate("--only", "html")
        self.assertIn("This routine exists on 64-bit targets only.", Page(self.read("html/sample.html")).text)
        self.write({"compat_sample.toml": SAMPLE.replace('targets = ["32-bit"]', 'targets = ["64-bit", "32-bit"]')})
        self.generate("--only", "html")
        self.assertNotIn("targets only", self.read("html/sample.html"))

    def test_record_kind(self):
        text = self.pages["binding.html"].text
        self.assertIn("call pxfstructcreate('pair', jhandle, ierror)", text)
        table = text[text.index("Components of pair"):text.index("Constants by name")]
        for cells in (("st_mtime", "integer(8)", "get, set", "", "a macro in C, in s"),
                      ("label", "character(8)", "get, set", "7 characters", "letters"),
                      ("codes", "integer(4) array", "get, set", "3 elements", "numbers"),
                      ("owner", "character", "get, set", "any length", "a name"),
                      ("total", "integer(4)", "get", "", "how many"),
                      ("members", "character array", "get", "total elements", "names")):
            self.assertIn("".join(cells), table)
        self.assertIn("Nobody looks into it.", text)
        self.assertNotIn("Components of opaque", text)
        self.assertNotIn("bits", text)

    def test_constants_show_no_value_of_the_host(self):
        text = self.pages["binding.html"].text
        for row in ("SIGINTthe host'sthe interrupt key", "SIGNOTHINGthe host's, or -1 where it has noneon no host",
                    "_LEAST_OF_ALLalways -2147483648the least"):
            self.assertIn(row, text)
        self.assertNotIn("SA_SIGINFO", text)

    def test_numbers_have_a_page(self):
        text = self.pages["qxport_numbers.html"].text
        for row in ("use qxport_numbers, only:", "SA_SIGINFOthe host'smore is told", "SC_NPROCESSORS_ONLNthe host'sprocessors",
                    "A_NAME_OF_MORE_THAN_24_CHARACTERSthe host's, or -1 where it has noneon no host"):
            self.assertIn(row, text)
        self.assertNotIn("_SC_", text)
        self.assertNotIn("the interrupt key", text)
        self.assertIn("binding.html#SIGINT", self.pages["qxport_numbers.html"].links)

    def test_names_of_records_and_constants_are_links(self):
        links = self.pages["binding.html"].links
        # In the area's text and in the text of `pair`, whose text `pair8` has too; the other one as related.
        self.assertEqual(links.count("binding.html#pair_record"), 3)
        self.assertEqual(links.count("binding.html#opaque_record"), 2)
        # In the area's text; as related.
        self.assertEqual(links.count("binding.html#constants"), 3)
        self.assertIn("binding.html#SIGINT", links)

    def test_text_is_escaped(self):
        self.assertIn("Entries of <every> & any shape", self.pages["sample.html"].text)
        source = self.read("html/sample.html")
        self.assertIn("'quotes', 1 &lt; 2 &amp; 3, and -1.", source)
        self.assertNotIn("every", self.pages["sample.html"].attributes)

    def test_nothing_comes_from_elsewhere(self):
        for path in (self.out / "html").iterdir():
            self.assertNotRegex(path.read_text(encoding="utf-8"), r"//|src=|@import|url\(", path.name)

    def test_who_it_is_for_and_what_it_is(self):
        text = self.pages["sample.html"].text
        self.assertIn("This routine exists on 32-bit targets only.", text)
        self.assertRegex(text, r"It is not in the Fortran module: a standard intrinsic has the name\.\n")
        self.assertIn("Version V9.9-009, Nov 21 2026", text)
        self.assertIn("a count, in bytes", text)


class ManPages(CatalogueCase):
    def setUp(self):
        super().setUp()
        self.generate("--only", "man")

    def render(self, page):
        environment = os.environ | {"LC_ALL": "C.UTF-8", "MANWIDTH": "80", "MANPAGER": "cat"}
        command = ["man", "-l", "--warnings=w", "-E", "UTF-8", str(self.out / "man" / page)]
        result = subprocess.run(command, capture_output=True, text=True, check=False, env=environment)
        self.assertEqual((result.returncode, result.stderr), (0, ""), page)
        return "\n".join(line.rstrip() for line in result.stdout.splitlines())

    def test_all_render_without_warnings(self):
        pages = sorted(path.relative_to(self.out / "man") for path in (self.out / "man").rglob("*.*"))
        self.assertEqual(len(pages), 18)
        for page in pages:
            with self.subTest(str(page)):
                self.assertIn("V9.9-009", self.render(page))

    def test_routine(self):
        text = self.render("man3/everything.3f")
        for expected in (
            "EVERYTHING(3f)",
            "NAME\n       everything - take all that there is\n",
            "SYNOPSIS\n       use qxport, only: everything\n\n       character(8) function everything(",
            "         character(8), intent(out), optional :: errno\n",
            "         complex(8), intent(in) :: z(n)\n",
            "       n – integer(8), input, by value, in bytes\n              a count\n",
            "       answer_len – integer(c_intptr_t), input and output\n",
            "       sample_record – type(sample_record), output\n",
            "       errno – character(8), output, optional\n",
            "DESCRIPTION\n       See plain, \\n and -1.\n\n       .starts with a dot\n",
            "RETURN VALUE\n       character(8)\n              eight letters\n",
            "ERRORS\n       EINVAL n is -1\n",
            "EXAMPLE\n       use qxport, only: plain\n       implicit none\n       call plain('.', 1)\n       end\n",
            "ORIGIN\n       everything(2)\n",
            "SEE ALSO\n       plain(3f), sample_record(3f), odd_one(3f), qxport(7)\n",
            "Nov 21 2026",
        ):
            self.assertIn(expected, text)

    def test_hyphens_of_code_are_minus_signs(self):
        self.assertIn("\\fB\\-1\\fP", self.read("man/man3/everything.3f"))

    def test_record(self):
        text = self.render("man3/sample_record.3f")
        self.assertIn("The record takes 35 bytes.", text)
        self.assertRegex(text, r"\n +0 +integer\(4\) +default +a C keyword, in s\n")
        self.assertRegex(text, r"\n +4 +integer\(4\) × 2 +words +two\n")
        self.assertRegex(text, r"\n +27 +character\(2\) × 4 +names +letters\n")

    def test_record_kind(self):
        text = self.render("man3/pair_record.3f")
        self.assertIn("pair_record - two & more things\n", text)
        self.assertIn("call pxfstructcreate('pair', jhandle, ierror)\n", text)
        self.assertIn("DESCRIPTION\n       What everything is not.\n", text)
        for row in (r"Name +Type +Use +Meaning", r"st_mtime +integer\(8\) +get set +a macro in C, in s",
                    r"label +character\(8\) +get set +letters; 7 characters",
                    r"codes +integer\(4\) array +get set +numbers; 3 elements",
                    r"owner +character +get set +a name; any length", r"total +integer\(4\) +get +how many",
                    r"members +character array +get +names; total elements"):
            self.assertRegex(text, rf"\n +{row}\n")
        self.assertIn("SEE ALSO\n       pair(3f), pair8(3f), qxport(7)\n", text)

    def test_overview_has_the_constants_of_the_modules(self):
        text = self.render("man7/qxport.7")
        for row in ("LEAST – constant, integer(4), -2147483648\n", "LEAST_LONG – constant, integer(8), -9223372036854775808\n",
                    "BAD_HANDLE – constant, integer(c_intptr_t), -1\n", "HALF – constant, real(8), 0.5\n",
                    "YES – constant, logical(4), .true.\n", "QUOTES – constant, character(6), 'a'b\"\\'\n"):
            self.assertIn(row, text)

    def test_record_kind_without_components(self):
        text = self.render("man3/opaque_record.3f")
        self.assertIn("Nobody looks into it.", text)
        self.assertNotIn("COMPONENTS", text)
        self.assertNotIn("mask", text)

    def test_constants(self):
        text = self.render("man3/constants.3f")
        for expected in (
            "   Some of the host's\n       As SIGINT is.\n\n       SIGINT                  the interrupt key\n",
            "       SIGNOTHING              on no host (the host's, or -1 where it has\n",
            "   Own\n       The same everywhere.\n\n       _LEAST_OF_ALL           the least (always -2147483648)\n",
            "SEE ALSO\n       pair(3f), pxfsend(3f), receive(3f), pair8(3f), qxport_numbers(3f),\n       qxport(7)\n",
        ):
            self.assertIn(expected, text)

    def test_numbers(self):
        text = self.render("man3/qxport_numbers.3f")
        for expected in (
            "   Parameters only\n       Beside SIGINT.\n\n       SA_SIGINFO              more is told\n"
            "       SC_NPROCESSORS_ONLN     processors\n",
            "SEE ALSO\n       constants(3f), qxport(7)\n",
        ):
            self.assertIn(expected, text)
        self.assertNotIn("NSIG", text)
        self.assertNotIn("SA_SIGINFO", self.render("man3/constants.3f"))
        self.assertIn("qxport_numbers(3f)", self.render("man7/qxport.7"))

    def test_intrinsic_of_the_compiler_is_told(self):
        told = "GNU Fortran has an intrinsic procedure {} of its own"
        self.assertNotIn("GNU Fortran", self.render("man3/pair.3f"))
        self.write({"posix_binding.toml": BINDING.replace('"pair8"', '"rename"')})
        self.generate("--only", "man")
        self.assertIn(told.format("rename"), " ".join(self.render("man3/rename.3f").split()))

    def test_routine_like_another(self):
        text = self.render("man3/pair8.3f")
        self.assertIn("DESCRIPTION\n       Makes a pair_record.\n", text)
        self.assertIn("ERRORS\n       ENOMEM there is none\n", text)
        self.assertIn("ORIGIN\n       another one\n", text)
        self.assertIn("SEE ALSO\n       opaque_record(3f), constants(3f), qxport(7)\n", text)

    def test_routine_that_fortran_cannot_name(self):
        text = self.render("man3/odd_one.3f")
        self.assertIn("#include <qxport/qxport.h>\n\n       float $$odd$one_(void);", text)

    def test_routine_outside_of_the_module(self):
        text = self.render("man3/shiftl.3f")
        self.assertIn("integer(4), external :: shiftl\n", text)
        self.assertNotIn("use qxport", text)

    def test_overview(self):
        text = self.render("man7/qxport.7")
        self.assertIn("gfortran prog.f90 $(pkg-config --cflags --libs qxport)", text)
        self.assertIn("ENTRIES OF <EVERY> & ANY SHAPE\n", text)
        self.assertIn(".a leading dot, a \\ backslash, 'quotes', 1 < 2 & 3, and -1.", text)
        for name in ("everything(3f)", "odd_one(3f)", "sample_record(3f)", "LEAST", "ErrCount", "for_nargs",
                     "pair_record(3f)", "constants(3f)"):
            self.assertIn(f"       {name}", text)


if __name__ == "__main__":
    unittest.main()
