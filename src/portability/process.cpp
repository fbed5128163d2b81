// Commands, waiting, and the identity of the process, its user and its host.
#include "frame/errors.h"
#include "frame/strings.h"

#include <csignal>
#include <cstdlib>
#include <unistd.h>

using namespace qxport;

// N = SYSTEM(COMMAND)
// The answer is the raw wait status: 256 times the exit code of a command that ended normally.
int32_t system_(const char *command, charlen command_len) {
  const CString text(command, command_len);
  return text ? system(text.get()) : -1;
}

// CALL SLEEP(SECONDS)
void sleep_(const int32_t *seconds) {
  if (seconds != nullptr && *seconds > 0)
    sleep(static_cast<unsigned>(*seconds));
}

// N = GETGID()
int32_t getgid_() {
  return static_cast<int32_t>(getgid());
}

// N = GETUID()
int32_t getuid_() {
  return static_cast<int32_t>(getuid());
}

// N = GETPID()
int32_t getpid_() {
  return getpid();
}

// N = KILL(PID, SIGNUM)
int32_t kill_(const int32_t *pid, const int32_t *signum) {
  return kill(*pid, *signum);
}

namespace {

constexpr size_t HOST_NAME_LIMIT = 255;

int32_t host_name(char *name, charlen name_len) {
  char text[HOST_NAME_LIMIT + 1] = {};
  if (gethostname(text, HOST_NAME_LIMIT) != 0) {
    const int error = errno;
    blank_fill(name, name_len);
    record_status(error);
    return error;
  }
  const size_t length = strlen(text);
  return store_padded(name, name_len, text, length) < length ? -1 : 0;
}

}  // namespace

// N = HOSTNAM(NAME)
int32_t hostnam_(char *name, charlen name_len) {
  return host_name(name, name_len);
}

// N = HOSTNM(NAME)
int32_t hostnm_(char *name, charlen name_len) {
  return host_name(name, name_len);
}

// CALL GETLOG(NAME)
void getlog_(char *name, charlen name_len) {
  const char *login = getlogin();
  store_padded(name, name_len, login, login == nullptr ? 0 : strlen(login));
}

QXPORT_ALIAS(system_)
QXPORT_ALIAS(sleep_)
QXPORT_ALIAS(getgid_)
QXPORT_ALIAS(getuid_)
QXPORT_ALIAS(getpid_)
QXPORT_ALIAS(kill_)
QXPORT_ALIAS(hostnam_)
QXPORT_ALIAS(hostnm_)
QXPORT_ALIAS(getlog_)
