"""The fixed parts of the HTML reference."""

STYLE = """\
:root {
  color-scheme: light dark;
  --text: #1c1e21; --muted: #55595f; --back: #ffffff; --panel: #f4f5f7; --line: #d5d8dc; --link: #0a58b8;
}
@media (prefers-color-scheme: dark) {
  :root {
    --text: #e4e6e9; --muted: #a5abb3; --back: #17191c; --panel: #22262b; --line: #3a4047; --link: #82b5f5;
  }
}
* { box-sizing: border-box; }
html { scroll-padding-top: 1rem; }
body {
  margin: 0 auto; padding: 1rem 1.25rem 3rem; max-width: 60rem;
  font: 1rem/1.55 system-ui, sans-serif; color: var(--text); background: var(--back);
}
a { color: var(--link); }
a:focus-visible, input:focus-visible { outline: 3px solid var(--link); outline-offset: 2px; }
.skip { position: absolute; left: -100rem; }
.skip:focus { left: 1rem; }
h1, h2, h3, h4 { line-height: 1.25; margin: 1.8em 0 .5em; }
h1 { margin-top: .6em; font-size: 1.8rem; }
h2 { font-size: 1.4rem; border-bottom: 1px solid var(--line); padding-bottom: .2em; }
h3 { font-size: 1.15rem; }
h4 { font-size: 1rem; margin-top: 1.2em; }
.entry { border-top: 1px solid var(--line); }
.entry:first-of-type { border-top: 0; }
code, pre { font-family: ui-monospace, "DejaVu Sans Mono", monospace; font-size: .92em; }
pre { background: var(--panel); padding: .75rem 1rem; border-radius: .4rem; overflow-x: auto; line-height: 1.4; }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; width: 100%; margin: .5rem 0 1rem; }
caption { text-align: left; color: var(--muted); padding-bottom: .25rem; }
th, td { text-align: left; vertical-align: top; padding: .3rem .8rem .3rem 0; border-bottom: 1px solid var(--line); }
.number { text-align: right; }
dt { font-weight: 600; margin-top: .5rem; }
dd { margin-left: 1.5rem; }
label { display: block; font-weight: 600; }
input[type=search] {
  width: 100%; max-width: 30rem; padding: .5rem .7rem; font: inherit; color: inherit;
  background: var(--panel); border: 1px solid var(--muted); border-radius: .4rem;
}
.family h2 { border-bottom: 0; font-size: 1.15rem; margin: 1.2em 0 .2em; }
.family p { margin: .2em 0; }
.areas { display: flex; flex-wrap: wrap; gap: .1rem 1.2rem; list-style: none; padding: 0; margin: .2em 0; }
[hidden] { display: none; }
.names { list-style: none; padding: 0; }
.names li { padding: .15rem 0; }
.muted, footer { color: var(--muted); }
footer { margin-top: 3rem; border-top: 1px solid var(--line); padding-top: .5rem; font-size: .9rem; }
"""

SEARCH = r"""
(function () {
  var input = document.getElementById('name-search');
  var count = document.getElementById('name-count');
  var front = document.getElementById('front');
  var list = document.getElementById('name-index');
  var entries = Array.prototype.map.call(list.children, function (item, place) {
    return {
      item: item, place: place, name: item.dataset.name, line: item.textContent.toLowerCase(), words: WORDS[place],
      kind: /^(routine|task|type|record)$/.test(item.querySelector('.muted').textContent) ? 20 : -20
    };
  });
  /* What a word and its other forms begin with: "directories" and "directory", "deleting" and "delete". */
  function stem(word) {
    return word.length < 5 ? word : word.replace(/(ies|ing|ed|es|s|e|y)$/, '');
  }
  /* How many words of a text begin so. */
  function times(text, part) {
    var at, number = 0;
    for (at = text.indexOf(part); at >= 0; at = text.indexOf(part, at + 1))
      if (at === 0 || !/[a-z0-9]/.test(text.charAt(at - 1))) number += 1;
    return number;
  }
  function score(entry, word) {
    var part = stem(word), said;
    if (entry.name === word) return 100;
    if (times(entry.line, part)) return entry.name.indexOf(word) === 0 ? 50 : 40;
    said = times(entry.words, part);
    if (said) return 9 + Math.min(said, 10);
    return entry.name.indexOf(word) >= 0 ? 5 : 0;
  }
  function show() {
    var wanted = input.value.toLowerCase().split(/\s+/).filter(Boolean), shown = 0;
    entries.forEach(function (entry) {
      var scores = wanted.map(function (word) { return score(entry, word); });
      entry.item.hidden = scores.indexOf(0) >= 0;
      entry.score = entry.item.hidden ? 0 : scores.reduce(function (sum, one) { return sum + one; }, entry.kind);
      if (!entry.item.hidden) shown += 1;
    });
    front.hidden = wanted.length > 0;
    entries.slice().sort(function (a, b) {
      return (wanted.length ? b.score - a.score : 0) || a.place - b.place;
    }).forEach(function (entry) { list.appendChild(entry.item); });
    count.textContent = wanted.length ? shown + (shown === 1 ? ' entry' : ' entries') : '';
  }
  input.addEventListener('input', show);
  document.getElementById('search-form').addEventListener('submit', function (event) {
    event.preventDefault();
    var first = list.querySelector('li:not([hidden]) a');
    if (first && input.value.trim()) window.location.href = first.getAttribute('href');
  });
  show();
})();
"""
