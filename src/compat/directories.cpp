// Directories, renaming, and the drives that a Unix file system has not.
#include "frame/errors.h"
#include "frame/strings.h"

#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

using namespace qxport;

namespace {

constexpr int32_t NO_DRIVE = 0;
constexpr size_t WORKING_DIRECTORY_LIMIT = 1024;
constexpr mode_t NEW_DIRECTORY_MODE = 0755;

int32_t no_memory() {
  set_and_record_status(ENOMEM);
  return 0;
}

int32_t succeeded_or_recorded(int result) {
  if (result != 0)
    record_status(errno);
  return result == 0 ? 1 : 0;
}

// Where an environment of drives asks for the current directory of one, a blank or a NUL stands for the
// current drive, and there is no other.
bool names_current_drive(const char *drive, charlen length) {
  return length > 0 && (*drive == ' ' || *drive == '\0');
}

}  // namespace

// L = CHANGEDIRQQ(DIR)
int32_t changedirqq_(const char *dir, charlen dir_len) {
  const CString name(dir, dir_len);
  return name ? succeeded_or_recorded(chdir(name.get())) : no_memory();
}

// L = MAKEDIRQQ(DIR)
int32_t makedirqq_(const char *dir, charlen dir_len) {
  const CString name(dir, dir_len);
  return name && mkdir(name.get(), NEW_DIRECTORY_MODE) == 0 ? 1 : 0;
}

// L = DELDIRQQ(DIR)
int32_t deldirqq_(const char *dir, charlen dir_len) {
  const CString name(dir, dir_len);
  return name && rmdir(name.get()) == 0 ? 1 : 0;
}

// L = RENAMEFILEQQ(FROM, TO)
int32_t renamefileqq_(const char *from, const char *to, charlen from_len, charlen to_len) {
  const CString source(from, from_len);
  if (!source)
    return no_memory();
  const CString target(to, to_len);
  return target ? succeeded_or_recorded(rename(source.get(), target.get())) : no_memory();
}

// N = GETDRIVEDIRQQ(DRIVEDIR)
int32_t getdrivedirqq_(char *drivedir, charlen drivedir_len) {
  if (!names_current_drive(drivedir, drivedir_len))
    return 0;
  const size_t size = std::min(length_of(drivedir_len) + 1, WORKING_DIRECTORY_LIMIT);
  char *directory = static_cast<char *>(malloc(size));
  if (directory == nullptr) {
    blank_fill(drivedir, drivedir_len);
    return no_memory();
  }
  size_t stored = 0;
  if (getcwd(directory, size) != nullptr)
    stored = store_padded(drivedir, drivedir_len, directory, strlen(directory));
  free(directory);
  return static_cast<int32_t>(stored);
}

// L = CHANGEDRIVEQQ(DRIVE)
int32_t changedriveqq_(const char *, charlen) {
  return NO_DRIVE;
}

// L = GETDRIVESIZEQQ(DRIVE, TOTAL, AVAIL)
int32_t getdrivesizeqq_(const char *, int32_t *, int32_t *, charlen) {
  return NO_DRIVE;
}

// L = GETDRIVESIZEQQI8(DRIVE, TOTAL, AVAIL)
int32_t getdrivesizeqqi8_(const char *, int64_t *, int64_t *, charlen) {
  return NO_DRIVE;
}

// DRIVES = GETDRIVESQQ()
void getdrivesqq_(char *result, charlen result_len) {
  blank_fill(result, result_len);
}

QXPORT_ALIAS(changedirqq_)
QXPORT_ALIAS(makedirqq_)
QXPORT_ALIAS(deldirqq_)
QXPORT_ALIAS(renamefileqq_)
QXPORT_ALIAS(changedriveqq_)
QXPORT_ALIAS(getdrivesizeqq_)
QXPORT_ALIAS(getdrivesizeqqi8_)
