#include "contract/services.h"
#include "frame/fortran.h"

using namespace qxport;

namespace {

constexpr char ABORT_PREFIX[] = "abort: ";
constexpr size_t ABORT_MESSAGE_LIMIT = 240;

}  // namespace

// CALL EXIT(STATUS)
void exit_(const int32_t *status) {
  for_exit(status);
}

// CALL ABORT(MSG)
void abort_(const char *msg, charlen msg_len) {
  if (msg == nullptr) {
    constexpr char DEFAULT_TEXT[] = "abort: Fortran Abort Called";
    for_abort(DEFAULT_TEXT, sizeof(DEFAULT_TEXT) - 1);
    return;
  }
  // Trailing blanks of the message stay; a NUL ends it.
  constexpr size_t PREFIX_LENGTH = sizeof(ABORT_PREFIX) - 1;
  char text[256];
  memcpy(text, ABORT_PREFIX, PREFIX_LENGTH);
  const size_t count = strnlen(msg, std::min(length_of(msg_len), ABORT_MESSAGE_LIMIT));
  memcpy(text + PREFIX_LENGTH, msg, count);
  text[PREFIX_LENGTH + count] = '\0';
  for_abort(text, static_cast<int32_t>(PREFIX_LENGTH + count));
}

QXPORT_ALIAS(exit_)
QXPORT_ALIAS(abort_)
