// ACCESS and CHMOD: modes written as text.
#include "frame/errors.h"
#include "frame/strings.h"

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

using namespace qxport;

namespace {

constexpr mode_t PERMISSION_BITS = 07777;
constexpr mode_t SET_ID_BITS = 06000;

// The permission that a letter of ACCESS's mode asks for, or -1.
int access_bit(char letter) {
  switch (letter) {
  case 'r':
  case 'R':
    return R_OK;
  case 'w':
  case 'W':
    return W_OK;
  case 'x':
  case 'X':
    return X_OK;
  case ' ':
    return F_OK;
  default:
    return -1;
  }
}

// The permissions that ACCESS's mode asks for, over its whole declared length, or -1.
int access_mode(const char *mode, charlen length) {
  int wanted = F_OK;
  for (charlen i = 0; i < length; ++i) {
    const int bit = access_bit(mode[i]);
    if (bit < 0)
      return -1;
    wanted |= bit;
  }
  return wanted;
}

// ACCESS tells two reasons apart: a name that leads nowhere (a missing file is EINVAL, not ENOENT) and a file
// that may not be used so. Any other failure is -1.
int32_t access_answer(int error) {
  switch (error) {
  case ENOENT:
  case ENOTDIR:
  case EINVAL:
  case ELOOP:
  case ENAMETOOLONG:
    return EINVAL;
  case EIO:
  case ENOMEM:
  case EACCES:
  case EFAULT:
  case EROFS:
    return EACCES;
  default:
    return -1;
  }
}

// One symbolic clause of CHMOD: who-letters, an operator, permission letters.
struct Clause {
  mode_t bits;     // the effective permission bits
  char operation;  // '+', '-' or '='
};

bool is_operator(char c) {
  return c == '+' || c == '-' || c == '=';
}

// False for a clause that is none.
bool parse_clause(const char *text, Clause *clause) {
  mode_t who = 0;
  bool who_given = false;
  for (; *text != '\0' && strchr("ugoa", *text) != nullptr; ++text) {
    who_given = true;
    switch (*text) {
    case 'u':
      who |= S_IRWXU;
      break;
    case 'g':
      who |= S_IRWXG;
      break;
    case 'o':
      who |= S_IRWXO;
      break;
    default:
      who = 0777;  // "a" replaces what stood before it
    }
  }
  if (!is_operator(*text))
    return false;
  clause->operation = *text++;

  mode_t permissions = 0;
  for (; *text != '\0'; ++text) {
    switch (*text) {
    case 'r':
      permissions |= 0444;
      break;
    case 'w':
      permissions |= 0222;
      break;
    case 'x':
      permissions |= 0111;
      break;
    case 's':
      // Both set-id bits at once, but only for a clause that names somebody.
      permissions |= SET_ID_BITS;
      who |= SET_ID_BITS;
      break;
    case 't':
    case 'X':
      break;  // accepted, and without effect
    default:
      return false;
    }
  }
  clause->bits = permissions & (who_given ? who : 0777);
  return true;
}

mode_t apply(const Clause &clause, const char *name) {
  if (clause.operation == '=')
    return clause.bits;
  struct stat status = {};
  stat(name, &status);  // a file that is not there shows in the chmod that follows
  const mode_t current = status.st_mode & PERMISSION_BITS;
  return clause.operation == '+' ? current | clause.bits : current & ~clause.bits;
}

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

// The value of an octal mode, or 0 for text that is none. A mode of "0" is refused with it.
long octal_mode(const char *text) {
  char *end;
  const long value = strtol(text, &end, 8);
  return *end == '\0' ? value : 0;
}

int32_t change_mode(const char *name, mode_t mode) {
  return chmod(name, mode) == 0 ? 0 : record_local(errno);
}

}  // namespace

// N = ACCESS(NAME, MODE)
int32_t access_(const char *name, const char *mode, charlen name_len, charlen mode_len) {
  if (name_len < 1 || mode_len < 1)
    return set_and_record_local(EINVAL);
  const int wanted = access_mode(mode, mode_len);
  if (wanted < 0)
    return set_and_record_local(EINVAL);
  const CString path(name, name_len);
  if (!path)
    return record_local(ENOMEM);
  if (access(path.get(), wanted) == 0)
    return 0;
  return record_local(access_answer(errno));
}

// N = CHMOD(NAME, MODE)
int32_t chmod_(const char *name, const char *mode, charlen name_len, charlen mode_len) {
  CString path(name, name_len);
  if (!path)
    return set_local(errno);
  CString text(mode, mode_len);
  if (!text)
    return set_local(errno);

  if (is_digit(text.get()[0])) {
    const long value = octal_mode(text.get());
    return value == 0 ? set_and_record_local(EINVAL) : change_mode(path.get(), static_cast<mode_t>(value));
  }

  Clause clause;
  if (!parse_clause(text.get(), &clause))
    return set_and_record_local(EINVAL);
  const int32_t answer = change_mode(path.get(), apply(clause, path.get()));
  // The two copies of a symbolic call outlive it, as the reference tells.
  path.keep();
  text.keep();
  return answer;
}

QXPORT_ALIAS(access_)
QXPORT_ALIAS(chmod_)
