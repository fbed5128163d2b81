/* Prints the identities of both libraries, a line each. */
#include <qxport/qxport.h>

#include <stdio.h>

static void print(int32_t (*identity)(char *, qxport_charlen)) {
  char text[200];
  identity(text, sizeof(text));
  printf("%.*s\n", (int)lnblnk_(text, sizeof(text)), text);
}

int main(void) {
  print(for_qxport_version_);
  print(for_qxcore_version_);
  return 0;
}
