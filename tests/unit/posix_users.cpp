// PXFGETGRGID, PXFGETGRNAM, PXFGETPWUID and PXFGETPWNAM against the host's own database.
#include "posix_calls.h"

#include <grp.h>
#include <pwd.h>

namespace {

using qxport::GroupRecord;
using qxport::PasswdRecord;

// The host leaves errno as its lookup had it, so what a routine says is told by IERROR alone: a success
// leaves the caller's.
template <typename Routine, typename... Arguments>
int32_t look_up(Routine routine, const Arguments &...arguments) {
  errno = 0;
  Guarded<int32_t> ierror(SENTINEL);
  routine(by_reference(arguments)..., &ierror);
  return ierror;
}
template <typename Routine>
int32_t look_up_named(Routine routine, const std::string &name, int32_t ilen, int32_t handle) {
  errno = 0;
  Guarded<int32_t> ierror(SENTINEL);
  routine(name.data(), &ilen, &handle, &ierror, length_of_name(name));
  return ierror;
}

// A text component as a program reads it.
std::string text_of(int32_t handle, const std::string &component) {
  Character value(300);
  int32_t length = SENTINEL;
  EXPECT_EQ(strget(handle, component, value, &length), succeeded()) << component;
  EXPECT_EQ(value.text(), padded(value.text().substr(0, static_cast<size_t>(length)), 300));
  return value.text().substr(0, static_cast<size_t>(length));
}

struct User {
  std::string name, dir, shell;
  uid_t uid;
  gid_t gid;
  bool operator==(const User &) const = default;
};
std::ostream &operator<<(std::ostream &out, const User &user) {
  return out << user.name << ':' << user.uid << ':' << user.gid << ':' << user.dir << ':' << user.shell;
}

User user_of_host(const passwd *entry) {
  return {entry->pw_name, entry->pw_dir, entry->pw_shell, entry->pw_uid, entry->pw_gid};
}
User user_in(int32_t handle) {
  const PasswdRecord &record = record_as<PasswdRecord>(handle);
  return {text_of(handle, "pw_name"), text_of(handle, "pw_dir"), text_of(handle, "pw_shell"),
          static_cast<uid_t>(record.pw_uid), static_cast<gid_t>(record.pw_gid)};
}

struct Group {
  std::string name;
  gid_t gid;
  std::vector<std::string> members;
  bool operator==(const Group &) const = default;
};
std::ostream &operator<<(std::ostream &out, const Group &group) {
  out << group.name << ':' << group.gid;
  for (const std::string &member : group.members)
    out << ',' << member;
  return out;
}

Group group_of_host(const group *entry) {
  Group result = {entry->gr_name, entry->gr_gid, {}};
  for (char **member = entry->gr_mem; *member != nullptr; ++member)
    result.members.push_back(*member);
  return result;
}
Group group_in(int32_t handle) {
  int32_t gid = SENTINEL, count = SENTINEL;
  EXPECT_EQ(intget(handle, "gr_gid", &gid), succeeded());
  EXPECT_EQ(intget(handle, "gr_nmem", &count), succeeded());
  Group result = {text_of(handle, "gr_name"), static_cast<gid_t>(gid), {}};
  for (int32_t i = 1; i <= count; ++i) {
    Character value(300);
    int32_t length = SENTINEL;
    EXPECT_EQ(estrget(handle, "gr_mem", i, value, &length), succeeded());
    result.members.push_back(value.text().substr(0, static_cast<size_t>(length)));
  }
  return result;
}

std::vector<User> all_users() {
  std::vector<User> users;
  setpwent();
  while (const passwd *entry = getpwent())
    users.push_back(user_of_host(entry));
  endpwent();
  return users;
}
std::vector<Group> all_groups() {
  std::vector<Group> groups;
  setgrent();
  while (const group *entry = getgrent())
    groups.push_back(group_of_host(entry));
  endgrent();
  return groups;
}

// An id that the database does not have.
int32_t nobodys_uid() {
  uid_t uid = 123456789;
  while (getpwuid(uid) != nullptr)
    ++uid;
  return static_cast<int32_t>(uid);
}
int32_t nobodys_gid() {
  gid_t gid = 123456789;
  while (getgrgid(gid) != nullptr)
    ++gid;
  return static_cast<int32_t>(gid);
}

TEST(Getpwuid, Of0IsRootWithoutATerminator) {
  const OwnedRecord record("passwd");
  int32_t ierror = 0;
  const int32_t uid = 0, handle = record;
  pxfgetpwuid_(&uid, &handle, &ierror);
  EXPECT_EQ(ierror, 0);
  const PasswdRecord &fields = record_as<PasswdRecord>(record);
  EXPECT_EQ(memcmp(fields.pw_name, "root", 4), 0);
  EXPECT_EQ(fields.pw_name_length, 4u);
  EXPECT_EQ(fields.pw_uid, 0);
  EXPECT_EQ(text_of(record, "pw_name"), "root");
}

TEST(Getpwuid, GivesWhatTheHostGives) {
  const OwnedRecord record("passwd");
  for (const User &user : all_users()) {
    EXPECT_EQ(look_up(pxfgetpwuid_, static_cast<int32_t>(user.uid), record), SENTINEL) << user;
    EXPECT_EQ(user_in(record), user_of_host(getpwuid(user.uid)));
  }
}

TEST(Getpwnam, GivesWhatTheHostGives) {
  const OwnedRecord record("passwd");
  for (const User &user : all_users()) {
    EXPECT_EQ(look_up_named(pxfgetpwnam_, user.name + "  ", 0, record), SENTINEL) << user;
    EXPECT_EQ(user_in(record), user_of_host(getpwnam(user.name.c_str())));
  }
}

TEST(Getgrgid, GivesWhatTheHostGives) {
  const OwnedRecord record("group");
  for (const Group &group : all_groups()) {
    EXPECT_EQ(look_up(pxfgetgrgid_, static_cast<int32_t>(group.gid), record), SENTINEL) << group;
    EXPECT_EQ(group_in(record), group_of_host(getgrgid(group.gid)));
  }
}

TEST(Getgrnam, GivesWhatTheHostGives) {
  const OwnedRecord record("group");
  for (const Group &group : all_groups()) {
    EXPECT_EQ(look_up_named(pxfgetgrnam_, group.name + '\t', 0, record), SENTINEL) << group;
    EXPECT_EQ(group_in(record), group_of_host(getgrnam(group.name.c_str())));
  }
}

TEST(Getpwnam, NamesByTheRule) {
  const OwnedRecord record("passwd");
  EXPECT_EQ(look_up_named(pxfgetpwnam_, "root   ", 0, record), SENTINEL);
  EXPECT_EQ(look_up_named(pxfgetpwnam_, "rootXYZ", 4, record), SENTINEL);
  EXPECT_EQ(look_up_named(pxfgetpwnam_, "root", -1, record), EINVAL);
  EXPECT_EQ(errno, EINVAL);
  const Contents before = contents_of(record);
  for (const auto &[name, ilen] : {std::pair("root ", 5), {"root", 3}, {"     ", 0}, {"", 0}}) {
    EXPECT_EQ(look_up_named(pxfgetpwnam_, name, ilen, record), 0) << name;
    EXPECT_EQ(contents_of(record), before);
  }
}

TEST(Getgrnam, NamesByTheRule) {
  const OwnedRecord record("group");
  EXPECT_EQ(look_up_named(pxfgetgrnam_, "root   ", 0, record), SENTINEL);
  EXPECT_EQ(look_up_named(pxfgetgrnam_, "rootXYZ", 4, record), SENTINEL);
  EXPECT_EQ(look_up_named(pxfgetgrnam_, "root", -1, record), EINVAL);
  EXPECT_EQ(errno, EINVAL);
  const Contents before = contents_of(record);
  for (const auto &[name, ilen] : {std::pair("root ", 5), {"root", 3}, {"     ", 0}, {"", 0}}) {
    EXPECT_EQ(look_up_named(pxfgetgrnam_, name, ilen, record), 0) << name;
    EXPECT_EQ(contents_of(record), before);
  }
}

TEST(Getgrgid, OfNobodyIs0AndLeavesTheRecord) {
  const OwnedRecord record("group");
  fill_record(record);
  const Contents before = contents_of(record);
  EXPECT_EQ(look_up(pxfgetgrgid_, nobodys_gid(), record), 0);
  EXPECT_EQ(contents_of(record), before);
}

TEST(Getpwuid, OfNobodyIs0AndLeavesTheRecord) {
  const OwnedRecord record("passwd");
  fill_record(record);
  const Contents before = contents_of(record);
  EXPECT_EQ(look_up(pxfgetpwuid_, nobodys_uid(), record), 0);
  EXPECT_EQ(contents_of(record), before);
}

TEST(Lookups, CheckTheHandle) {
  expect_handle_checked("group", [](int32_t handle) { return call(pxfgetgrgid_, 0, handle); });
  expect_handle_checked("group", [](int32_t handle) { return call_named(pxfgetgrnam_, "root", 0, handle); });
  expect_handle_checked("passwd", [](int32_t handle) { return call(pxfgetpwuid_, 0, handle); });
  // Before the name.
  for (const int32_t ilen : {0, -1})
    expect_handle_checked("passwd",
                          [&](int32_t handle) { return call_named(pxfgetpwnam_, "root", ilen, handle); });
}

// A record that was copied owns strings of its own.
TEST(Lookups, CopyOutlivesTheOriginal) {
  const OwnedRecord copied("passwd"), group_copied("group");
  {
    const OwnedRecord record("passwd"), group("group");
    ASSERT_EQ(look_up(pxfgetpwuid_, 0, record), SENTINEL);
    ASSERT_EQ(look_up(pxfgetgrgid_, 0, group), SENTINEL);
    ASSERT_EQ(copy("passwd", record, copied), succeeded());
    ASSERT_EQ(copy("group", group, group_copied), succeeded());
  }
  EXPECT_EQ(user_in(copied), user_of_host(getpwuid(0)));
  EXPECT_EQ(group_in(group_copied), group_of_host(getgrgid(0)));
}

}  // namespace
