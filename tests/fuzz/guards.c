/* The host calls that a made-up call must not reach as they are: those that wait without an end, those that
   reach other processes, and those that would end or disarm the driver. Defined in the program, they come
   before the C library's for the library under test and for the Fortran run-time alike. */
/* Both widths of a file offset have names of their own here. */
#undef _FILE_OFFSET_BITS
#undef _TIME_BITS
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>
#include <sys/select.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#define REAL(function) ((__typeof__(&function))real(#function))

static void *real(const char *name) {
  void *address = dlsym(RTLD_NEXT, name);
  if (address == NULL)
    abort();
  return address;
}

/* Down in the driver that watches. */
int fuzz_guards_are_up = 0;

/* May the process become another user's? */
int fuzz_users_change = 1;

/* Where the driver and the sanitizers report. */
int fuzz_reports = STDERR_FILENO;

static int fails(int error) {
  errno = error;
  return -1;
}

/* Signals that say that the driver itself is broken, and the driver's own timer. */
static int is_guarded(int signal) {
  switch (signal) {
  case SIGSEGV:
  case SIGBUS:
  case SIGILL:
  case SIGFPE:
  case SIGABRT:
  case SIGTRAP:
  case SIGALRM:
  case SIGKILL:
  case SIGSTOP:
  case SIGTSTP:
  case SIGTTIN:
  case SIGTTOU:
    return 1;
  default:
    return 0;
  }
}

/* Would its arrival do no more than call a procedure, or nothing? */
static int is_harmless(int signal) {
  struct sigaction action;
  if (is_guarded(signal) || sigaction(signal, NULL, &action) != 0)
    return 0;
  return action.sa_handler != SIG_DFL;
}

int sigaction(int signal, const struct sigaction *action, struct sigaction *former) {
  if (fuzz_guards_are_up && action != NULL && is_guarded(signal))
    return fails(EINVAL);
  return REAL(sigaction)(signal, action, former);
}

__sighandler_t signal(int number, __sighandler_t handler) {
  struct sigaction action = {.sa_flags = SA_RESTART};
  struct sigaction former;
  action.sa_handler = handler;
  return sigaction(number, &action, &former) == 0 ? former.sa_handler : SIG_ERR;
}

int raise(int signal) {
  return is_harmless(signal) ? REAL(raise)(signal) : fails(EINVAL);
}

int kill(pid_t pid, int signal) {
  if (!fuzz_guards_are_up)
    return REAL(kill)(pid, signal);
  if (pid != getpid() || (signal != 0 && !is_harmless(signal)))
    return fails(pid == getpid() ? EPERM : ESRCH);
  return REAL(kill)(pid, signal);
}

int killpg(pid_t group, int signal) {
  (void)group;
  (void)signal;
  return fails(ESRCH);
}

/* The child ends at once: two drivers would share what each takes for its own. */
pid_t fork(void) {
  const pid_t pid = REAL(fork)();
  if (fuzz_guards_are_up && pid == 0)
    REAL(_exit)(7);
  return pid;
}

pid_t vfork(void) {
  return fork();
}

int execve(const char *path, char *const arguments[], char *const environment[]) {
  (void)path;
  (void)arguments;
  (void)environment;
  return fails(ENOENT);
}
int execv(const char *path, char *const arguments[]) {
  return execve(path, arguments, NULL);
}
int execvp(const char *path, char *const arguments[]) {
  return execve(path, arguments, NULL);
}
int execvpe(const char *path, char *const arguments[], char *const environment[]) {
  return execve(path, arguments, environment);
}

int posix_spawn(pid_t *pid, const char *path, const void *actions, const void *attributes,
                char *const arguments[], char *const environment[]) {
  (void)pid;
  (void)actions;
  (void)attributes;
  execve(path, arguments, environment);
  return ENOENT;
}
int posix_spawnp(pid_t *pid, const char *path, const void *actions, const void *attributes,
                 char *const arguments[], char *const environment[]) {
  return posix_spawn(pid, path, actions, attributes, arguments, environment);
}

int system(const char *command) {
  if (command == NULL)
    return 1;
  return command[0] == '\0' ? 0 : 127 << 8;
}

int setuid(uid_t user) {
  return fuzz_users_change ? REAL(setuid)(user) : fails(EPERM);
}
int setgid(gid_t group) {
  return fuzz_users_change ? REAL(setgid)(group) : fails(EPERM);
}

/* What waits is told that a signal came. */
int pause(void) {
  return fails(EINTR);
}
int sigsuspend(const sigset_t *mask) {
  (void)mask;
  return fails(EINTR);
}
unsigned sleep(unsigned seconds) {
  return seconds / 2;
}
int usleep(useconds_t microseconds) {
  (void)microseconds;
  return fails(EINTR);
}
int nanosleep(const struct timespec *span, struct timespec *left) {
  if (!fuzz_guards_are_up)
    return REAL(nanosleep)(span, left);
  if (left != NULL)
    *left = *span;
  return fails(EINTR);
}
int select(int count, fd_set *readable, fd_set *writable, fd_set *failed, struct timeval *span) {
  if (!fuzz_guards_are_up)
    return REAL(select)(count, readable, writable, failed, span);
  return fails(EINTR);
}
pid_t waitpid(pid_t pid, int *status, int options) {
  if (!fuzz_guards_are_up)
    return REAL(waitpid)(pid, status, options);
  const pid_t ended = REAL(waitpid)(pid, status, options | WNOHANG);
  return ended == 0 && (options & WNOHANG) == 0 ? fails(EINTR) : ended;
}
pid_t wait(int *status) {
  return waitpid(-1, status, 0);
}
int tcdrain(int fd) {
  return isatty(fd) ? fails(EINTR) : fails(ENOTTY);
}
unsigned alarm(unsigned seconds) {
  return seconds / 2;
}

static int is_ready(int fd, short events) {
  struct pollfd asked = {.fd = fd, .events = events};
  return poll(&asked, 1, 0) != 0;
}

/* Nothing to read now is the end; no room to write now is a full device. */
ssize_t read(int fd, void *buffer, size_t count) {
  return is_ready(fd, POLLIN) ? REAL(read)(fd, buffer, count) : 0;
}
ssize_t write(int fd, const void *buffer, size_t count) {
  return is_ready(fd, POLLOUT) ? REAL(write)(fd, buffer, count) : fails(ENOSPC);
}

int close(int fd) {
  return fd == fuzz_reports ? fails(EIO) : REAL(close)(fd);
}
int dup2(int from, int to) {
  return to == fuzz_reports ? fails(EBUSY) : REAL(dup2)(from, to);
}

/* The other end of a FIFO may never come, and no terminal becomes the driver's. */
#define GUARDED_OPEN(function)                                                                               \
  int function(const char *path, int flags, ...) {                                                           \
    va_list rest;                                                                                            \
    va_start(rest, flags);                                                                                   \
    const mode_t mode = va_arg(rest, mode_t);                                                                \
    va_end(rest);                                                                                            \
    return REAL(function)(path, flags | O_NONBLOCK | O_NOCTTY, mode);                                        \
  }
GUARDED_OPEN(open)
GUARDED_OPEN(open64)

int creat(const char *path, mode_t mode) {
  return open(path, O_WRONLY | O_CREAT | O_TRUNC, mode);
}
int creat64(const char *path, mode_t mode) {
  return open64(path, O_WRONLY | O_CREAT | O_TRUNC, mode);
}

/* The commands that a program of any age uses. Others write through the pointer what their caller has to have
   room for, or tell other processes of a descriptor's input. Locks are not waited for. */
static int control(int (*call)(int, int, ...), int fd, int command, void *argument) {
  if (command == F_SETLKW)
    command = F_SETLK;
  if (command == F_SETLKW64)
    command = F_SETLK64;
  const int known = (command >= F_DUPFD && command <= F_SETFL) || command == F_GETLK || command == F_SETLK ||
                    command == F_GETLK64 || command == F_SETLK64 || command == F_GETOWN ||
                    !fuzz_guards_are_up;
  return known ? call(fd, command, argument) : fails(EINVAL);
}
#define GUARDED_FCNTL(function)                                                                              \
  int function(int fd, int command, ...) {                                                                   \
    va_list rest;                                                                                            \
    va_start(rest, command);                                                                                 \
    void *argument = va_arg(rest, void *);                                                                   \
    va_end(rest);                                                                                            \
    return control(REAL(function), fd, command, argument);                                                   \
  }
GUARDED_FCNTL(fcntl)
GUARDED_FCNTL(fcntl64)

/* What programs with times of 64 bits call on a target of 32. */
#ifdef __i386__
int __fcntl_time64(int fd, int command, ...);
GUARDED_FCNTL(__fcntl_time64)

int __select64(int count, fd_set *readable, fd_set *writable, fd_set *failed, void *span);
int __select64(int count, fd_set *readable, fd_set *writable, fd_set *failed, void *span) {
  return fuzz_guards_are_up ? fails(EINTR) : REAL(__select64)(count, readable, writable, failed, span);
}
#endif
