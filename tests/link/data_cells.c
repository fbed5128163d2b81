/* The exported cells are one with the program's, also where the linker gave the program the only copy of
 * them. */
#include <qxport/qxport.h>

#include <signal.h>
#include <stdio.h>
#include <string.h>

static int expect(int holds, const char *what) {
  if (!holds)
    printf("wrong: %s\n", what);
  return holds;
}

static int32_t heard;

static int32_t on_signal(int32_t number) {
  heard = number;
  return 0;
}

static int32_t on_another(int32_t number) {
  return on_signal(100 + number);
}

static void by_reference(int32_t *number) {
  heard = *number;
}

static void another_by_reference(int32_t *number) {
  heard = 1000 + *number;
}

static int signal_cells(void) {
  const int32_t number = SIGUSR2, with_procedure = -1;
  int good = expect(signal_(&number, (void (*)(void))by_reference, &with_procedure) != -1 &&
                        sigForHandlers[SIGUSR2] == by_reference && sigForHandlers[SIGUSR1] == NULL,
                    "the procedure that the library stored");
  good &= expect(raise(SIGUSR2) == 0 && heard == SIGUSR2, "the procedure that the library called");
  sigForHandlers[SIGUSR2] = another_by_reference;
  return good &
         expect(raise(SIGUSR2) == 0 && heard == 1000 + SIGUSR2, "the procedure that the program stored");
}

static int exception_cells(void) {
  return expect(valFPE_INVALID == 129 && valFPE_ZERODIVIDE == 131 && valFPE_OVERFLOW == 132 &&
                    valFPE_UNDERFLOW == 133 && valFPE_INEXACT == 134,
                "the codes of the exceptions");
}

/* Where a handle is a place in the tables; elsewhere it is the address itself. */
static int handle_cells(void) {
  int32_t handle = 0, ierror = -1;
  int good = expect(sizeof(void *) == 4 || StaticHandles[0] == UINTPTR_MAX, "the first static handle");
  pxfstructcreate_("tms", &handle, &ierror, 3);
  good &= expect(ierror == 0 && (sizeof(void *) == 4 ? AllocatableHandles[0] == 0
                                                     : handle == 1 && AllocatableHandles[0] != 0),
                 "the first record");
  pxfstructfree_(&handle, &ierror);
  return good & expect(ierror == 0 && AllocatableHandles[0] == 0, "the first record, freed");
}

static int desktop_signal_cells(void) {
  const int32_t user_signal = 16;
  int good = expect(sigXlatTable[5][0] == 16 && sigXlatTable[5][1] == SIGUSR1 && sigXlatTable[8][0] == 22 &&
                        sigXlatTable[8][1] == SIGABRT && sigXlatTable[11][0] == 0,
                    "the numbers in sigXlatTable");
  good &= expect(signalqq_(&user_signal, (void (*)(void))on_signal) == 0 &&
                     sigQQForHandlers[5] == (void *)on_signal && sigQQForHandlers[8] == NULL,
                 "the handler that the library stored");
  good &= expect(raiseqq_(&user_signal) == 0 && heard == 16, "the handler that the library called");
  sigQQForHandlers[5] = (void *)on_another;
  good &= expect(raiseqq_(&user_signal) == 0 && heard == 116, "the handler that the program stored");
  return good;
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
  good &= signal_cells();
  good &= desktop_signal_cells();
  good &= exception_cells();
  good &= handle_cells();
  return !good;
}
