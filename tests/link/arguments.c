/* A program whose main is that of C or C++, started with the arguments "one", "" and " a b ". It ends by the
   routine for that, with 0 when it got them all. */
#include <qxport/qxport.h>

#include <stdio.h>
#include <string.h>

static int good = 1;

static void expect(int holds, const char *what) {
  if (!holds)
    printf("wrong: %s\n", what);
  good &= holds;
}

static void expect_argument(int32_t m, const char *expected) {
  char value[8];
  int32_t length = -7, ierror = -7;
  pxfgetarg_(&m, value, &length, &ierror, sizeof(value));
  expect(ierror == 0 && length == (int32_t)strlen(expected) && memcmp(value, expected, strlen(expected)) == 0,
         expected);
  for (int32_t i = length; i >= 0 && i < (int32_t)sizeof(value); ++i)
    expect(value[i] == ' ', "the blanks behind an argument");
}

int main(int argc, char **argv) {
  expect(argc == 4 && ipxfargc_() == 3, "the number of arguments");
  expect_argument(1, "one");
  expect_argument(2, "");
  expect_argument(3, " a b ");
  char name[4096];
  int32_t m = 0, length = -7, ierror = -7;
  pxfgetarg_(&m, name, &length, &ierror, sizeof(name));
  expect(ierror == 0 && length == (int32_t)strlen(argv[0]) && memcmp(name, argv[0], strlen(argv[0])) == 0,
         "the name of the program");
  m = 4;
  pxfgetarg_(&m, name, &length, &ierror, sizeof(name));
  expect(ierror == 22 && length == 0, "no further argument");
  const int32_t status = !good;
  pxfexit_(&status);
  return 1;
}
