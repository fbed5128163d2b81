// PXFCONST, IPXFCONST, PXFISCONST: the host's constants by name.
#include "records/component.h"
#include "records/records.h"
#include "records/text_length.h"

#include "frame/fortran.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

using namespace qxport;

namespace {

struct Constant {
  FoldedName name;
  int64_t value;
};

// The host's values, by the host's headers: a name that a host lacks stops the build there.
constexpr Constant name_val_table[] = {
#define CONSTANT(name, value) {FoldedName(name), value},
#include <qxport_constants.inc>
#undef CONSTANT
};

// Open addressing over the table, built by the compiler: a place holds an entry's number plus 1, or 0.
constexpr size_t PLACES = 1024;
constexpr size_t place_of(const FoldedName &name) {
  return static_cast<size_t>(name.hash() >> 54);
}

consteval std::array<uint16_t, PLACES> make_index() {
  std::array<uint16_t, PLACES> index = {};
  uint16_t number = 0;
  for (const Constant &constant : name_val_table) {
    size_t place = place_of(constant.name);
    while (index[place] != 0)
      place = (place + 1) % PLACES;
    index[place] = ++number;
  }
  return index;
}

constexpr std::array<uint16_t, PLACES> INDEX = make_index();

const Constant *find_constant(const char *constname, charlen length) {
  const FoldedName wanted(constname, length_of(narrow_length(length)));
  for (size_t place = place_of(wanted); INDEX[place] != 0; place = (place + 1) % PLACES) {
    const Constant &constant = name_val_table[INDEX[place] - 1];
    if (constant.name == wanted)
      return &constant;
  }
  return nullptr;
}

}  // namespace

// CALL PXFCONST(CONSTNAME, IVAL, IERROR)
// A caller who gives one variable for both finds the value there, or ENONAME.
void pxfconst_(const char *constname, int32_t *ival, int32_t *ierror, charlen constname_len) {
  *ierror = 0;
  const Constant *constant = find_constant(constname, constname_len);
  if (constant == nullptr) {
    *ival = -1;
    *ierror = ENONAME;
  } else {
    *ival = static_cast<int32_t>(constant->value);
  }
}

// N = IPXFCONST(CONSTNAME)
// A constant whose value is -1 reads like an unknown name here; PXFISCONST tells them apart.
int32_t ipxfconst_(const char *constname, charlen constname_len) {
  const Constant *constant = find_constant(constname, constname_len);
  return constant == nullptr ? -1 : static_cast<int32_t>(constant->value);
}

// L = PXFISCONST(CONSTNAME)
// True is all bits set, which old compilers' .TRUE. is; the module's callers get 1.
int32_t pxfisconst_(const char *constname, charlen constname_len) {
  return find_constant(constname, constname_len) == nullptr ? 0 : -1;
}

int32_t qxport_pxfisconst_(const char *constname, charlen constname_len) {
  return find_constant(constname, constname_len) == nullptr ? 0 : 1;
}
