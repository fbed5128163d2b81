"""Prints a C program that has functions of its own by the names of ours: every_name.py SYMBOLS...

It tells when one of them, or a module's alias, is not what it should be.
"""

import sys

own = [symbol for symbol in sys.argv[1:] if not symbol.startswith("qxport_")]
aliases = [symbol for symbol in sys.argv[1:] if symbol.startswith("qxport_")]

print("#include <stdio.h>\n#include <unistd.h>\ntypedef int routine(void);")
for number, symbol in enumerate(own):
    print(f"int {symbol}(void) {{ return {number}; }}")
for alias in aliases:
    print(f"routine {alias};")
for array, symbols in (("own", own), ("aliases", aliases)):
    print(f"static routine *const {array}[] = {{{', '.join(symbols)}}};")
print("""
int main(void) {
  for (size_t i = 0; i < sizeof(own) / sizeof(own[0]); ++i) {
    if (own[i]() != (int)i)
      return printf("name %zu is not the program's own\\n", i), 1;
    for (size_t j = 0; j < sizeof(aliases) / sizeof(aliases[0]); ++j)
      if (aliases[j] == own[i])
        return printf("alias %zu is the program's own name %zu\\n", j, i), 1;
  }
  if (qxport_getpid_() != getpid())
    return puts("the alias of getpid is not ours"), 1;
  return 0;
}""")
