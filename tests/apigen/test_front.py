"""What the reference begins with: the families, the tasks, the search, and the forms of a text."""

import json
import re
import unittest

from support import FILES, SAMPLE, CatalogueCase

from qxapi.catalogue import CatalogueError, load

REFERENCE = '''
tasks = ["wait", "ask"]

[[family]]
name = "posix"
title = "Binding & more"
text = "What `pxfsend` belongs to."
areas = ["binding"]

[[family]]
name = "compat"
title = "Samples"
text = "Others."
areas = ["sample"]

[[family]]
name = "frame"
title = "Frame"
text = "Others."
areas = ["bare"]

[[family]]
name = "core"
title = "Core"
text = "Last."
areas = ["run"]

[[family]]
name = "portability"
title = "None"
text = "There is none."
areas = []
'''
WAIT = "! Wait <a while>\n! By `plain`.\n! And so on.\nprogram wait\n  ! inside\n  print '(a)', '.x'\nend program\n"
ASK = "! Ask\nprint *, 1 < 2\nend\n"


class Front(CatalogueCase):
    def setUp(self):
        super().setUp()
        (self.api / "tasks").mkdir(parents=True)
        self.write({"reference.toml": REFERENCE, "tasks/wait.f90": WAIT, "tasks/ask.f90": ASK})

    def html(self, name):
        self.generate("--only", "html")
        return self.read(f"html/{name}.html")

    def test_families_stand_in_their_order(self):
        index = self.html("index")
        titles = re.findall(r'<section class="family">\n<h2>(.*?)</h2>\n<p>(.*?)</p>', index)
        self.assertEqual([title for title, _ in titles][:4], ["Binding &amp; more", "Samples", "Frame", "Core"])
        self.assertIn('<a href="binding.html#pxfsend"><code>pxfsend</code></a>', titles[0][1])
        areas = re.findall(r'<ul class="areas">\n(.*?)</ul>', index, re.DOTALL)
        self.assertEqual([re.findall(r'href="(.*?)"', area) for area in areas],
                         [["binding.html"], ["sample.html"], ["bare.html"], ["run.html"]])
        self.generate("--only", "man")
        page = self.read("man/man7/qxport.7")
        self.assertLess(page.index("Samples"), page.index("ENTRIES OF"))
        self.assertLess(page.index("Binding & more"), page.index("Samples"))

    def test_tasks_have_pages(self):
        page = self.html("tasks")
        self.assertLess(page.index('<section class="entry" id="wait">'), page.index('<section class="entry" id="ask">'))
        self.assertIn("<h2>Wait &lt;a while&gt;</h2>\n<p>By <a href=\"sample.html#plain\"><code>plain</code></a>. "
                      "And so on.</p>", page)
        self.assertIn("program wait\n  ! inside\n", page)
        self.assertIn('<a href="tasks.html">', self.html("index"))
        self.generate("--only", "man")
        manual = self.read("man/man7/qxport_tasks.7")
        self.assertIn('.SH "WAIT <A WHILE>"\nBy \\fBplain\\fP. And so on.\n', manual)
        self.assertIn("qxport_tasks", self.read("man/man7/qxport.7"))

    def test_search_knows_the_texts(self):
        index = self.html("index")
        names = re.findall(r'<li data-name="([^"]*)"', index.partition('id="name-index"')[2])
        words = json.loads(re.search(r"var WORDS = (\[.*\]);\n", index)[1])
        self.assertEqual(len(words), len(names))
        self.assertIn("does it, or everything.", words[names.index("plain")])
        self.assertEqual(names[-2:], ["", ""])  # tasks are found by their titles and texts
        self.assertEqual(words[-2:], ["by plain. and so on.", ""])

    def test_forms_of_a_text(self):
        text = "First `plain`:\\n\\n- one of\\n  two lines\\n- `other`\\n\\n    call x(1 < 2)\\n      end\\n\\nLast."
        self.write({"compat_sample.toml": SAMPLE.replace('text = "Does `it`, or `everything`."', f'text = "{text}"')})
        page = self.html("sample")
        self.assertIn(":</p>\n<ul>\n<li>one of two lines</li>\n<li><code>other</code></li>\n</ul>\n<pre", page)
        self.assertIn("<code>call x(1 &lt; 2)\n  end</code></pre>\n<p>Last.</p>", page)
        self.generate("--only", "man")
        self.assertIn(".IP \\(bu 2\none of two lines\n.IP \\(bu 2\n\\fBother\\fP\n.PP\n.RS 4\n.EX\ncall x(1 < 2)\n  end\n"
                      ".EE\n.RE\n.PP\nLast.\n", self.read("man/man3/plain.3f"))

    def test_what_is_wrong_is_told(self):
        for old, new, reason in (
            ('tasks = ["wait", "ask"]', 'tasks = ["wait"]', "tasks: the names must be those of tasks/*.f90: ask, wait"),
            ('tasks = ["wait", "ask"]', 'tasks = ["wait", "ask", "x"]', "tasks: the names must be those"),
            ('tasks = ["wait", "ask"]', "", "reference: the keys must be tasks and family"),
            ('name = "core"', 'name = "other"', "family: the names must be"),
            ('areas = ["run"]', "areas = []", "core: the areas must be run"),
            ('areas = ["run"]', 'areas = ["run", "run"]', "core: the areas must be run"),
            ('text = "Last."', "", "core: the keys must be name, title, text, areas"),
            ('title = "Core"', "title = 3", "core: the keys must be name, title, text, areas"),
            ("tasks = [", "tasks = ", "reference: "),
        ):
            with self.subTest(new=new, reason=reason):
                self.write({"reference.toml": REFERENCE.replace(old, new)})
                with self.assertRaises(CatalogueError) as caught:
                    load(self.api)
                self.assertEqual(len(caught.exception.problems), 1)
                self.assertIn(f"reference.toml: {reason}", str(caught.exception))

    def test_task_without_a_title(self):
        self.write({"tasks/ask.f90": "print *, 1\nend\n"})
        with self.assertRaises(CatalogueError) as caught:
            load(self.api)
        self.assertIn("tasks/ask.f90: ask: it must begin with a comment", str(caught.exception))

    def test_reference_is_no_area(self):
        self.assertEqual(len(load(self.api).areas), len(FILES))


if __name__ == "__main__":
    unittest.main()
