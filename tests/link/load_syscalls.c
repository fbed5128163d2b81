/* Runs a program under ptrace and prints the system calls that it makes between two marks: load_syscalls
   PROGRAM... The marks are numbers that no system call has, so the kernel refuses them and nothing else makes
   them. Ends with 0 when there was no call between the marks, 1 when there was one, 2 when the marks were not
   met in their order. */
#include "load_marks.h"

#include <signal.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/ptrace.h>
#include <sys/types.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef __x86_64__
#define NUMBER_OF_CALL offsetof(struct user_regs_struct, orig_rax)
#else
#define NUMBER_OF_CALL offsetof(struct user_regs_struct, orig_eax)
#endif

static void fail(const char *what) {
  perror(what);
  exit(2);
}

static pid_t start(char **program) {
  const pid_t child = fork();
  if (child < 0)
    fail("fork");
  if (child > 0)
    return child;
  if (ptrace(PTRACE_TRACEME, 0, NULL, NULL) != 0)
    fail("ptrace");
  execv(program[0], program);
  fail(program[0]);
  return 0;
}

int main(int argc, char **argv) {
  if (argc < 2)
    return 2;
  const pid_t child = start(argv + 1);
  int status, entering = 1, calls_between = 0, marks = 0, delivered = 0;
  if (waitpid(child, &status, 0) != child || !WIFSTOPPED(status))
    fail("the program did not start");
  ptrace(PTRACE_SETOPTIONS, child, NULL, (void *)(long)PTRACE_O_TRACESYSGOOD);
  for (;;) {
    if (ptrace(PTRACE_SYSCALL, child, NULL, (void *)(long)delivered) != 0 ||
        waitpid(child, &status, 0) != child)
      fail("the program is gone");
    if (WIFEXITED(status) || WIFSIGNALED(status))
      break;
    const int is_call = WSTOPSIG(status) == (SIGTRAP | 0x80);
    delivered = is_call || WSTOPSIG(status) == SIGTRAP ? 0 : WSTOPSIG(status);
    if (!is_call)
      continue;
    if (entering) {
      const long number = ptrace(PTRACE_PEEKUSER, child, (void *)NUMBER_OF_CALL, NULL);
      if (number == (marks == 0 ? BEFORE_LOAD : AFTER_LOAD)) {
        ++marks;
      } else if (marks == 1) {
        ++calls_between;
        printf("system call %ld\n", number);
      }
    }
    entering = !entering;
  }
  if (marks != 2 || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    printf("%d marks, status %#x\n", marks, (unsigned)status);
    return 2;
  }
  return calls_between > 0;
}
