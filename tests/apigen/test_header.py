"""The C header: valid in C and C++, and with the catalogue's signatures."""

import os
import subprocess
import unittest

from support import CatalogueCase, widths

C = ("gcc", "-std=c11", "-x", "c")
CXX = ("g++", "-std=c++20", "-x", "c++")
STRICT = ("-Wall", "-Wextra", "-Wpedantic", "-Werror")

# Declared a second time, a function must have the same type.
SIGNATURES = """
#include <qxport/qxport.h>
#ifdef __cplusplus
extern "C" {
#endif
void everything_(char *, qxport_charlen, const int32_t *, intptr_t *, struct qxport_sample_record *, const char *,
                 char *, void *, const void *, int64_t, void (*)(void), void (*)(void), const int16_t *,
                 const int8_t *, qxport_charlen, qxport_charlen);
void plain_(const char *, const int32_t *, qxport_charlen);
void qxport_plain_(const char *, const int32_t *, qxport_charlen);
float $$odd$one_(void);
int32_t shiftl_(void);
void fortran_other(void);
void qxport_other_(void);
void other8_(const int64_t *);
int32_t receive_(const int64_t *, int32_t *);
void pxfsend_(const char *, const int32_t *, qxport_charlen);
int32_t flushqq_(const int32_t *);
int32_t for_nargs(void);
extern int32_t ErrCount;
extern int32_t HiddenCells[16];
#ifdef __cplusplus
}
#endif
struct qxport_sample_record record;
int checks[QXPORT_LEAST == INT32_MIN && QXPORT_LEAST_LONG == INT64_MIN && QXPORT_BAD_HANDLE == -1 &&
           QXPORT_YES == 1 && sizeof(QXPORT_QUOTES) == 7 && sizeof(record) == 35 &&
           sizeof record.default_ == 4 && sizeof record.names == 8 ? 1 : -1];
"""


class Header(CatalogueCase):
    def compile(self, source, compiler, width, *flags):
        command = [*compiler, f"-m{width}", *STRICT, *flags, f"-I{self.out}/include", "-fsyntax-only", "-"]
        return subprocess.run(command, input=source, capture_output=True, text=True, check=False,
                              env=os.environ | {"LC_ALL": "C"})

    def test_signatures_in_both_languages_and_widths(self):
        for width in widths():
            self.generate("--only", "header", target=width)
            for compiler in (C, CXX):
                with self.subTest(compiler=compiler[0], width=width):
                    result = self.compile(SIGNATURES, compiler, width)
                    self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_other_signature_does_not_compile(self):
        self.generate("--only", "header")
        result = self.compile(SIGNATURES.replace("other8_(const int64_t *)", "other8_(const int32_t *)"), C, "64")
        self.assertIn("conflicting types for 'other8_'", result.stderr)

    def test_only_the_narrow_target_has_its_routine(self):
        for target, expected in (("64", 0), ("32", 1)):
            self.generate("--only", "header", target=target)
            self.assertEqual(self.read("include/qxport/qxport.h").count("void _narrow(void);"), expected)

    def test_no_alias_without_an_interface(self):
        self.generate("--only", "header")
        text = self.read("include/qxport/qxport.h")
        self.assertIn("int32_t shiftl_(void);", text)
        self.assertNotIn("qxport_shiftl_", text)
        self.assertNotIn("qxport_fortran_other", text)
        self.assertIn("void pxfsend_(", text)
        self.assertNotIn("qxport_pxfsend_", text)

    def test_macros_mark_their_own_declarations(self):
        self.generate("--only", "header")
        marks = {
            "QXPORT_API": "plain_", "QXPORT_MODULE_API": "qxport_plain_", "QXPORT_CORE_API": "flushqq_",
            "QXPORT_DATA": "ErrCount", "QXPORT_SERVICE_API": "for_nargs",
        }
        source = "#include <qxport/qxport.h>\n"
        flags = [f'-D{macro}=__attribute__((section(".{macro}")))' for macro in marks]
        bodies = {
            "plain_": "void plain_(const char *n, const int32_t *c, qxport_charlen l) { (void)n; (void)c; (void)l; }",
            "qxport_plain_": "void qxport_plain_(const char *n, const int32_t *c, qxport_charlen l)"
                             " { (void)n; (void)c; (void)l; }",
            "flushqq_": "int32_t flushqq_(const int32_t *u) { return *u; }",
            "ErrCount": "int32_t ErrCount = 1;",
            "for_nargs": "int32_t for_nargs(void) { return 1; }",
        }
        (self.root / "m.c").write_text(source + "\n".join(bodies.values()))
        self.run_clean("gcc", "-std=c11", *STRICT, *flags, f"-I{self.out}/include", "-c", self.root / "m.c", "-o",
                       self.root / "m.o")
        table = self.run_clean("objdump", "-t", self.root / "m.o")
        placed = {line.split()[-1]: line.split() for line in table.splitlines() if line.split()}
        for macro, symbol in marks.items():
            self.assertIn(f".{macro}", placed[symbol])

    def test_real_constant(self):
        self.generate("--only", "header")
        self.assertIn("#define QXPORT_HALF 0.5\n", self.read("include/qxport/qxport.h"))

    def test_fortran_call_stands_above(self):
        self.generate("--only", "header")
        text = self.read("include/qxport/qxport.h")
        self.assertIn("/* CALL PLAIN(NAME, COUNT) */\nQXPORT_API void plain_(const char *name", text)


if __name__ == "__main__":
    unittest.main()
