"""Guides: prose that becomes pages of both references."""

import shutil
import subprocess
import unittest

from support import CatalogueCase

GUIDE = """<!-- sample-guide(1) -->

# The guide - what is <told> here

A paragraph of `everything`,
in two lines.

## Heading of `plain`

- one `item`
- another
  in two lines

### Smaller

```
.not a request  -1
- no list
```

| name | what |
|---|---|
| `a` | b & c |
"""


class Guides(CatalogueCase):
    def setUp(self):
        super().setUp()
        (self.root / "docs").mkdir()
        (self.root / "docs/sample.md").write_text(GUIDE, encoding="utf-8")
        self.generate("--guides", self.root / "docs")

    def test_html(self):
        page = self.read("html/guide_sample.html")
        for text in ("<h1>The guide</h1>\n<p>What is &lt;told&gt; here.</p>", "in two lines.</p>", "<h2>Heading of ",
                     "<li>one <code>item</code></li>\n<li>another in two lines</li>", "<h3>Smaller</h3>",
                     "<code>.not a request  -1\n- no list</code>", '<th scope="row"><code>a</code></th><td>b &amp; c</td>',
                     '<a href="sample.html#everything"><code>everything</code></a>'):
            self.assertIn(text, page)

    def test_index_leads_there(self):
        self.assertIn('<li><a href="guide_sample.html">The guide</a>: what is &lt;told&gt; here</li>', self.read("html/index.html"))

    def test_man(self):
        page = self.read("man/man1/sample-guide.1")
        for text in ("what is <told> here", ".SH \"HEADING OF PLAIN\"", ".IP \\(bu 2\none \\fBitem\\fP", ".SS Smaller",
                     ".EX\n\\&.not a request  \\-1\n", "T{\n\\fBa\\fP\nT}\tT{\nb & c\nT}"):
            self.assertIn(text, page)
        self.assertIn(".BR sample\\-guide (1)", self.read("man/man7/qxport.7"))
        self.assertNoWarnings()

    def test_long_table(self):
        """One that is longer than a page."""
        rows = "".join(f"| row {number} | more |\n" for number in range(90))
        (self.root / "docs/sample.md").write_text(GUIDE + rows, encoding="utf-8")
        self.generate("--guides", self.root / "docs")
        self.assertIn("\nallbox nokeep tab(", self.read("man/man1/sample-guide.1"))
        self.assertNoWarnings()

    def assertNoWarnings(self):
        if shutil.which("groff"):
            page = self.out / "man/man1/sample-guide.1"
            done = subprocess.run(["groff", "-man", "-t", "-ww", "-z", page], capture_output=True, text=True, check=False)
            self.assertEqual(done.stderr, "")

    def test_without_guides(self):
        shutil.rmtree(self.out)
        self.generate()
        self.assertNotIn("Guides", self.read("html/index.html"))
        self.assertFalse((self.out / "man/man1").exists())

    def test_head_is_asked_for(self):
        (self.root / "docs/sample.md").write_text("# A guide - of no page\n", encoding="utf-8")
        with self.assertRaises(AssertionError):
            self.generate("--guides", self.root / "docs")


if __name__ == "__main__":
    unittest.main()
