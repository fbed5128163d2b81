// The group and user databases, read into records that own their strings. A successful lookup leaves IERROR
// as the caller set it: a program tests it only after setting it to 0.
#include "posix/file_name.h"
#include "records/records.h"

#include <cstdlib>
#include <grp.h>
#include <pwd.h>

using namespace qxport;

namespace {

void release_name(GroupRecord *record) {
  free(record->gr_name);
  record->gr_name = nullptr;
  record->gr_name_length = 0;
}

void release_members(GroupRecord *record, int32_t count) {
  for (int32_t i = 0; record->gr_mem != nullptr && i < count; ++i)
    free(record->gr_mem[i]);
  free(record->gr_mem);
  record->gr_mem = nullptr;
}

bool copy_name(GroupRecord *record, const char *name) {
  release_name(record);
  record->gr_name = new_string(name, strlen(name));
  if (record->gr_name == nullptr)
    return false;
  record->gr_name_length = strlen(name);
  return true;
}

// Without memory for all members the record has neither list nor name.
bool copy_members(GroupRecord *record, char *const *members) {
  int32_t count = 0;
  while (members[count] != nullptr)
    ++count;
  record->gr_nmem = count;
  // One more than needed, so that an empty list is a block too.
  record->gr_mem = static_cast<char **>(calloc(static_cast<size_t>(count) + 1, sizeof(char *)));
  for (int32_t i = 0; record->gr_mem != nullptr && i < count; ++i) {
    record->gr_mem[i] = new_string(members[i], strlen(members[i]));
    if (record->gr_mem[i] == nullptr)
      release_members(record, i);
  }
  if (record->gr_mem != nullptr)
    return true;
  release_name(record);
  return false;
}

enum class Lookup { ById, ByName };

// A lookup by name lets go of the old members before it copies the new name, one by id only behind it: what a
// record holds after memory ran out differs, and each is kept.
void fill(GroupRecord *record, const group *entry, Lookup lookup, int32_t *ierror) {
  if (entry == nullptr) {
    *ierror = errno;
    return;
  }
  if (lookup == Lookup::ByName)
    release_members(record, record->gr_nmem);
  if (!copy_name(record, entry->gr_name)) {
    *ierror = errno;
    return;
  }
  record->gr_gid = static_cast<int32_t>(entry->gr_gid);
  release_members(record, record->gr_nmem);
  if (!copy_members(record, entry->gr_mem))
    *ierror = errno;
}

// Exactly the string's bytes, without a NUL: the record's readers know its length.
bool copy_unterminated(const char *text, char **copy, size_t *length) {
  const size_t count = strlen(text);
  *copy = static_cast<char *>(malloc(count));
  if (*copy == nullptr && count > 0)
    return false;
  if (count > 0)
    memcpy(*copy, text, count);
  *length = count;
  return true;
}

void release_strings(PasswdRecord *record) {
  free(record->pw_name);
  free(record->pw_shell);
  free(record->pw_dir);
  record->pw_name = record->pw_shell = record->pw_dir = nullptr;
  record->pw_name_length = record->pw_shell_length = record->pw_dir_length = 0;
}

// A lookup by id answers ENOMEM for the shell whatever the allocation left, as it has always done.
void fill(PasswdRecord *record, const passwd *entry, Lookup lookup, int32_t *ierror) {
  if (entry == nullptr) {
    *ierror = errno;
    return;
  }
  release_strings(record);
  if (!copy_unterminated(entry->pw_name, &record->pw_name, &record->pw_name_length)) {
    *ierror = errno;
    return;
  }
  record->pw_uid = static_cast<int32_t>(entry->pw_uid);
  record->pw_gid = static_cast<int32_t>(entry->pw_gid);
  if (!copy_unterminated(entry->pw_dir, &record->pw_dir, &record->pw_dir_length)) {
    *ierror = errno;
    return;
  }
  if (!copy_unterminated(entry->pw_shell, &record->pw_shell, &record->pw_shell_length)) {
    if (lookup == Lookup::ById)
      errno = ENOMEM;
    *ierror = errno;
  }
}

}  // namespace

// CALL PXFGETGRGID(IGID, JGROUP, IERROR)
void pxfgetgrgid_(const int32_t *igid, const int32_t *jgroup, int32_t *ierror) {
  GroupRecord *record = find_record_as<GroupRecord>(*jgroup, Kind::Group, ierror);
  if (record != nullptr)
    fill(record, getgrgid(static_cast<gid_t>(*igid)), Lookup::ById, ierror);
}

// CALL PXFGETGRNAM(NAME, ILEN, JGROUP, IERROR)
// The name is converted before the record is looked at, unlike in PXFGETPWNAM: which error a call with two
// mistakes reports is kept.
void pxfgetgrnam_(const char *name, const int32_t *ilen, const int32_t *jgroup, int32_t *ierror,
                  charlen name_len) {
  const FileName wanted(name, *ilen, name_len);
  if (!wanted) {
    *ierror = errno;
    return;
  }
  GroupRecord *record = find_record_as<GroupRecord>(*jgroup, Kind::Group, ierror);
  if (record != nullptr)
    fill(record, getgrnam(wanted.c_str()), Lookup::ByName, ierror);
}

// CALL PXFGETPWUID(IUID, JPASSWD, IERROR)
void pxfgetpwuid_(const int32_t *iuid, const int32_t *jpasswd, int32_t *ierror) {
  PasswdRecord *record = find_record_as<PasswdRecord>(*jpasswd, Kind::Passwd, ierror);
  if (record != nullptr)
    fill(record, getpwuid(static_cast<uid_t>(*iuid)), Lookup::ById, ierror);
}

// CALL PXFGETPWNAM(NAME, ILEN, JPASSWD, IERROR)
void pxfgetpwnam_(const char *name, const int32_t *ilen, const int32_t *jpasswd, int32_t *ierror,
                  charlen name_len) {
  PasswdRecord *record = find_record_as<PasswdRecord>(*jpasswd, Kind::Passwd, ierror);
  if (record == nullptr)
    return;
  const FileName wanted(name, *ilen, name_len);
  if (wanted)
    fill(record, getpwnam(wanted.c_str()), Lookup::ByName, ierror);
  else
    *ierror = errno;
}
