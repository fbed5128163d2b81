#!/usr/bin/env python3
"""The HTML reference in a browser: the search finds what people look for, and no page is wider than its window.

    reference.py HTML_DIRECTORY [CHROMIUM]
"""

import json
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True

# What people type, and what must be among the first entries shown.
SEARCHES = {
    "delete": ["unlink", "delfilesqq", "Delete a file, or all files of a pattern"],
    "delete a file": ["unlink", "Delete a file, or all files of a pattern"],
    "directory": ["chdir", "makedirqq"],
    "directories": ["chdir", "makedirqq"],
    "signal": ["signal", "signalqq"],
    "environment": ["getenv", "setenvqq"],
    "sleep": ["sleep", "sleepqq"],
    "lock": ["Lock a file against other programs", "pxffcntl"],
    "sort": ["sortqq"],
    "terminal": ["isatty"],
    "date": ["date", "fdate"],
    "random": ["rand", "random_save"],
    "rename": ["rename", "renamefileqq"],
    "user": ["getlog", "getuid"],
    "run a program": ["runqq", "Run a program and read its output"],
    "ctrl-c": ["Catch Ctrl-C"],
    "command line": ["pxfgetarg"],
    "getpid": ["getpid"],
    "rounding": ["ieee_flags", "setcontrolfpqq"],
    "error text": ["error_text"],
    "PXFSTAT": ["pxfstat"],
}
FIRST = 12
PHONE = 390

ASK = """
<script>
(function () {
  var input = document.getElementById('name-search'), answers = {};
  QUERIES.forEach(function (query) {
    input.value = query;
    input.dispatchEvent(new Event('input'));
    var shown = document.querySelectorAll('#name-index li:not([hidden]) a');
    answers[query] = Array.prototype.slice.call(shown, 0, LIMIT).map(function (link) { return link.textContent; });
  });
  document.body.textContent = 'ANSWER' + JSON.stringify(answers) + 'END';
})();
</script>
"""
WIDTHS = """
<script>
  var tooWide = [], left = PAGES.length;
  document.body.textContent = '';
  function measure(frame, name) {
    var inner = frame.contentDocument, width = inner.documentElement.clientWidth, first = tooWide.length;
    if (width > WIDTH) tooWide.push(name + ' was not tried');
    if (inner.documentElement.scrollWidth > width)
      inner.querySelectorAll('main *').forEach(function (element) {
        if (element.getBoundingClientRect().right > width + 1 && !element.closest('.scroll, pre'))
          tooWide.push(name + ': ' + element.tagName + ' ' + element.textContent.slice(0, 60));
      });
    left -= 1;
    if (!left) document.body.textContent = 'ANSWER' + JSON.stringify(tooWide) + 'END';
  }
  PAGES.forEach(function (name) {
    var frame = document.createElement('iframe');
    frame.style.width = WIDTH + 'px';
    frame.addEventListener('load', function () { measure(frame, name); });
    frame.src = name;
    document.body.appendChild(frame);
  });
</script>
"""


def answer(page, script, *options):
    """What `script`, put at the end of a page, says."""
    with tempfile.TemporaryDirectory() as directory:
        copy = page.parent / f".asked-{page.name}"
        copy.write_text(page.read_text(encoding="utf-8").replace("</body>", script + "</body>"), encoding="utf-8")
        try:
            command = [BROWSER, "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                       "--virtual-time-budget=60000",
                       f"--user-data-dir={directory}", *options, "--dump-dom", copy.as_uri()]
            shown = subprocess.run(command, capture_output=True, text=True, check=True, timeout=120).stdout
        finally:
            copy.unlink()
    return json.loads(shown[shown.index("ANSWER") + 6:shown.rindex("END")].replace("&lt;", "<").replace("&amp;", "&"))


class Reference(unittest.TestCase):
    def test_search(self):
        queries = json.dumps(list(SEARCHES))
        answers = answer(HTML / "index.html", ASK.replace("QUERIES", queries).replace("LIMIT", str(FIRST)))
        for query, expected in SEARCHES.items():
            for name in expected:
                with self.subTest(query=query, name=name):
                    self.assertIn(name, answers[query])
        self.assertEqual(answers["getpid"][0], "getpid")

    def test_search_shows_only_what_fits(self):
        answers = answer(HTML / "index.html", ASK.replace("QUERIES", '["xyzzy file", ""]').replace("LIMIT", "5"))
        self.assertEqual(answers["xyzzy file"], [])
        self.assertEqual(len(answers[""]), 5)

    def test_no_page_is_wider_than_a_phone(self):
        pages = sorted(page.name for page in HTML.glob("[!.]*.html"))
        self.assertIn("tasks.html", pages)
        script = WIDTHS.replace("PAGES", json.dumps(pages)).replace("WIDTH", str(PHONE))
        self.assertEqual(answer(HTML / "index.html", script, "--allow-file-access-from-files"), [])


if __name__ == "__main__":
    HTML = Path(sys.argv[1]).resolve()
    BROWSER = sys.argv[2] if len(sys.argv) > 2 else "chromium"
    unittest.main(argv=sys.argv[:1])
