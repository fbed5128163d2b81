// Commands, and waiting.
#include "frame/errors.h"
#include "frame/strings.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/select.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace qxport;

namespace {

constexpr int32_t RUN_FAILED = -1;
constexpr int NOT_EXECUTED = 127;
constexpr char BELL = '\a';

// While a command runs, its signals from the keyboard are none of the caller's, and the end of the child
// reaches only the wait for it. The destructor puts all back as it was.
class CommandSignals {
public:
  CommandSignals() {
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGINT, &ignore, &interrupt_);
    sigaction(SIGQUIT, &ignore, &quit_);
    sigset_t child;
    sigemptyset(&child);
    sigaddset(&child, SIGCHLD);
    sigprocmask(SIG_BLOCK, &child, &mask_);
  }
  ~CommandSignals() { restore(); }
  CommandSignals(const CommandSignals &) = delete;
  CommandSignals &operator=(const CommandSignals &) = delete;

  void restore() const {
    sigaction(SIGINT, &interrupt_, nullptr);
    sigaction(SIGQUIT, &quit_, nullptr);
    sigprocmask(SIG_SETMASK, &mask_, nullptr);
  }

private:
  struct sigaction interrupt_;
  struct sigaction quit_;
  sigset_t mask_;
};

// Was there a child, and was its end seen?
bool run_and_wait(const char *command) {
  const CommandSignals signals;
  const pid_t child = fork();
  if (child == 0) {
    signals.restore();
    execl("/bin/sh", "sh", "-c", command, nullptr);
    _exit(NOT_EXECUTED);
  }
  if (child < 0)
    return false;
  int status;
  pid_t ended;
  do
    ended = waitpid(child, &status, 0);
  while (ended < 0 && errno == EINTR);
  return ended == child;
}

// "filename" arguments: the name in quotes, so that blanks in it do not split it.
char *new_command(const char *filename, const char *arguments, size_t arguments_length) {
  const size_t name_length = strlen(filename);
  char *command = static_cast<char *>(malloc(name_length + 4 + arguments_length));
  if (command == nullptr)
    return nullptr;
  char *end = command;
  *end++ = '"';
  end = static_cast<char *>(mempcpy(end, filename, name_length));
  *end++ = '"';
  *end++ = ' ';
  end = static_cast<char *>(mempcpy(end, arguments, arguments_length));
  *end = '\0';
  return command;
}

int32_t no_memory() {
  set_and_record_status(ENOMEM);
  return RUN_FAILED;
}

}  // namespace

// N = RUNQQ(FILENAME, COMMANDLINE)
int32_t runqq_(const char *filename, const char *commandline, charlen filename_len, charlen commandline_len) {
  const CString name(filename, filename_len);
  if (!name)
    return no_memory();
  char *command = new_command(name.get(), commandline, trimmed_length(commandline, commandline_len));
  if (command == nullptr)
    return no_memory();
  const int status = system(command);
  free(command);
  return status == 0 ? 0 : RUN_FAILED;
}

// L = SYSTEMQQ(COMMANDLINE)
// What the command answered does not count: a command that failed has been run.
int32_t systemqq_(const char *commandline, charlen commandline_len) {
  const CString command(commandline, commandline_len);
  return command && run_and_wait(command.get()) ? 1 : 0;
}

// CALL SLEEPQQ(DURATION)
void sleepqq_(const int32_t *duration) {
  if (*duration < 0)
    return;
  const int64_t microseconds = int64_t{*duration} * 1000;
  timeval timeout = {};
  timeout.tv_sec = static_cast<time_t>(microseconds / 1'000'000);
  timeout.tv_usec = static_cast<suseconds_t>(microseconds % 1'000'000);
  select(0, nullptr, nullptr, nullptr, &timeout);
}

// CALL BEEPQQ(FREQUENCY, DURATION)
void beepqq_(const int32_t *, const int32_t *) {
  fputc(BELL, stdout);
  // It is heard now, not when the buffer is full.
  fflush(stdout);
}

QXPORT_ALIAS(systemqq_)
