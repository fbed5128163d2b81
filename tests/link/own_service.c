/* A program that takes the recording of errors over from the run-time's companion. */
#include <qxport/qxport.h>

#include <stdio.h>
#include <string.h>

static int32_t recorded;

void for_errsns_load(int32_t io, int32_t number, int32_t status, int32_t unit, int32_t condition) {
  recorded = io == 0 && status == 0 && unit == 0 && condition == 0 ? number : -1;
}

int main(void) {
  static const char name[] = "/no/such/name";
  if (access_(name, "r", strlen(name), 1) != 22 || recorded != 22)
    return puts("the error did not reach the program's own recorder"), 1;
  int32_t io, number, status, unit, condition;
  errsns_(&io, &number, &status, &unit, &condition);
  if (number != 0)
    return puts("the error reached the companion's recorder"), 1;
  return 0;
}
