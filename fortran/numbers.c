/* numbers FILE KIND: writes the module of the host's numbers, of integers of the KIND, as the compiler of this target sees
   them. Run by the build. */
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

/* The least integer has no literal of its own: its positive counterpart does not fit. */
static void number(const char *kind, const char *name, int32_t value) {
  if (value == INT32_MIN)
    printf("  integer(%s), parameter :: %s = -%d - 1\n", kind, name, INT32_MAX);
  else
    printf("  integer(%s), parameter :: %s = %d\n", kind, name, value);
}

int main(int argc, char **argv) {
  if (argc != 3 || freopen(argv[1], "w", stdout) == NULL)
    return 1;
  puts("! Made from the catalogue and this host's headers, do not edit.\n"
       "module qxport_numbers\n"
       "  implicit none\n"
       "  public");
#define NUMBER(name, value) number(argv[2], name, (int32_t)(value));
#include <qxport_numbers.inc>
  puts("end module qxport_numbers");
  return fclose(stdout) != 0;
}
