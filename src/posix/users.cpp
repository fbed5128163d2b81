// The group and user databases, read into records that own their strings. A successful lookup leaves IERROR
// as the caller set it: a program tests it only after setting it to 0.
#include "posix/file_name.h"
#include "records/records.h"

#include <grp.h>
#include <pwd.h>

using namespace qxport;

namespace {

OwnedString name_of(GroupRecord *record) {
  return {record->gr_name, record->gr_name_length};
}

int32_t count_of(char *const *members) {
  int32_t count = 0;
  while (members != nullptr && members[count] != nullptr)
    ++count;
  return count;
}

// Without memory for all members the record has neither list nor name.
bool copy_members(GroupRecord *record, char *const *members) {
  record->gr_nmem = count_of(members);
  record->gr_mem = new_strings(members, record->gr_nmem);
  if (record->gr_mem == nullptr)
    release(name_of(record));
  return record->gr_mem != nullptr;
}

enum class Lookup { ById, ByName };

// A lookup by name lets go of the old members before it copies the new name, one by id only behind it: what a
// record holds after memory ran out differs.
void fill(GroupRecord *record, const group *entry, Lookup lookup, int32_t *ierror) {
  if (entry == nullptr) {
    *ierror = errno;
    return;
  }
  if (lookup == Lookup::ByName)
    release_strings(record->gr_mem, record->gr_nmem);
  release(name_of(record));
  if (!replace(name_of(record), entry->gr_name, Ending::Nul)) {
    *ierror = errno;
    return;
  }
  record->gr_gid = static_cast<int32_t>(entry->gr_gid);
  release_strings(record->gr_mem, record->gr_nmem);
  if (!copy_members(record, entry->gr_mem))
    *ierror = errno;
}

// The texts of a user stand without a NUL. A lookup by id answers ENOMEM for the shell whatever the
// allocation left.
void fill(PasswdRecord *record, const passwd *entry, Lookup lookup, int32_t *ierror) {
  if (entry == nullptr) {
    *ierror = errno;
    return;
  }
  const OwnedString name = {record->pw_name, record->pw_name_length};
  const OwnedString dir = {record->pw_dir, record->pw_dir_length};
  const OwnedString shell = {record->pw_shell, record->pw_shell_length};
  for (const OwnedString &text : {name, shell, dir})
    release(text);
  if (!replace(name, entry->pw_name, Ending::None)) {
    *ierror = errno;
    return;
  }
  record->pw_uid = static_cast<int32_t>(entry->pw_uid);
  record->pw_gid = static_cast<int32_t>(entry->pw_gid);
  if (!replace(dir, entry->pw_dir, Ending::None)) {
    *ierror = errno;
    return;
  }
  if (!replace(shell, entry->pw_shell, Ending::None)) {
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
// The name is converted before the record is looked at, unlike in PXFGETPWNAM.
void pxfgetgrnam_(const char *name, const int32_t *ilen, const int32_t *jgroup, int32_t *ierror,
                  charlen name_len) {
  const CString wanted = file_name(name, *ilen, name_len);
  if (!wanted) {
    *ierror = errno;
    return;
  }
  GroupRecord *record = find_record_as<GroupRecord>(*jgroup, Kind::Group, ierror);
  if (record != nullptr)
    fill(record, getgrnam(wanted.get()), Lookup::ByName, ierror);
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
  const CString wanted = file_name(name, *ilen, name_len);
  if (wanted)
    fill(record, getpwnam(wanted.get()), Lookup::ByName, ierror);
  else
    *ierror = errno;
}
