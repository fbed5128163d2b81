/* What a program without a Fortran run-time does with the library; it ends with 0 when all of it works. */
#include <qxport/qxport.h>

#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

static int expect(int holds, const char *what) {
  if (!holds)
    printf("wrong: %s\n", what);
  return holds;
}

int main(void) {
  char identity[100];
  int good = expect(for_qxport_version_(identity, sizeof(identity)) == 2 && memcmp(identity, "Zelta", 5) == 0,
                    "the identity");
  char directory[1024];
  good &= expect(getcwd_(directory, sizeof(directory)) == 0 && directory[0] == '/', "the working directory");

  struct stat root;
  int32_t status[13];
  good &= expect(stat("/", &root) == 0 && stat_("/   ", status, 4) == 0 && status[2] == (int32_t)root.st_mode,
                 "the status of a file");
  const int32_t unit = 6;
  good &= expect(fstat_(&unit, status) == 0, "the status of standard output");

  good &= expect(access_("/no/such/name", "r", 13, 1) == 22 && portlib_local_errno == 22,
                 "a name that is not there");
  int32_t io, number, run_time_status, error_unit, condition;
  errsns_(&io, &number, &run_time_status, &error_unit, &condition);
  good &= expect(number == 22, "the recorded error");
  return !good;
}
