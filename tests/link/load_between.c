/* Marks the time between the loader's own work and main: functions of .preinit_array run before any library's
   constructor, the program's own constructors after all of them. */
#include "load_marks.h"

#include <qxport/qxport.h>

#include <stdio.h>
#include <sys/syscall.h>
#include <unistd.h>

static void before_all_constructors(void) {
  mark(BEFORE_LOAD);
}
__attribute__((section(".preinit_array"), used)) static void (*const first)(void) = before_all_constructors;

#ifdef CALLS_THE_SYSTEM
/* What the test must notice. */
__attribute__((constructor)) static void call_the_system(void) {
  syscall(SYS_getppid);
}
#endif

/* What the library's constructor leaves: slots that are never issued, and an end of the chain. */
static int tables_are_ready(void) {
#ifdef __x86_64__
  return StaticHandles[0] == UINTPTR_MAX && StaticHandles[14] == UINTPTR_MAX && StaticHandles[15] == 0 &&
         AllocatableHandles[0] == 0 && AllocatableHandles[255] == 0;
#else
  return getpid_() == getpid();
#endif
}

int main(void) {
  mark(AFTER_LOAD);
  return tables_are_ready() ? 0 : (puts("the handle tables are not ready"), 1);
}
