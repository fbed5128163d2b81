/* The exported cells are one with the program's, also where the linker gave the program the only copy of
 * them. */
#include <qxport/qxport.h>

#include <stdio.h>
#include <string.h>

static int expect(int holds, const char *what) {
  if (!holds)
    printf("wrong: %s\n", what);
  return holds;
}

int main(void) {
  int good = expect(access_("/no/such/name", "r", 13, 1) == 22 && portlib_local_errno == 22,
                    "what the library stored");
  portlib_local_errno = 7;
  good &= expect(ierrno_() == 7, "what the program stored");
  good &= expect(strcmp(ErrMesArr[1], "Domain error") == 0, "a text of ErrMesArr");
  good &= expect(ErrMesArr[7] == NULL, "the end of ErrMesArr");
  good &= expect(strcmp(err_array[7], "Input value was invalid") == 0, "a text of err_array");
  good &= expect(memcmp(for__portlib_version_string, "@(#)Zelta", 9) == 0, "the identity");
  return !good;
}
