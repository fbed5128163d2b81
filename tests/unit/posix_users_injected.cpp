// The lookups of users and groups above a database of the tests' own.
#include "posix_calls.h"

#include <grp.h>
#include <optional>
#include <pwd.h>

namespace {

using qxport::GroupRecord;
using qxport::PasswdRecord;

// What the next lookups answer: an entry, or nothing with an error number, which 0 leaves alone.
std::optional<group> group_entry;
std::optional<passwd> passwd_entry;
int host_error;
std::vector<std::string> lookups;

template <typename Entry>
Entry *answer(std::optional<Entry> &entry, const std::string &lookup) {
  lookups.push_back(lookup);
  if (entry)
    return &*entry;
  if (host_error != 0)
    errno = host_error;
  return nullptr;
}

}  // namespace

group *getgrgid(gid_t gid) {
  return answer(group_entry, "gid " + std::to_string(gid));
}
group *getgrnam(const char *name) {
  return answer(group_entry, std::string("group ") + name);
}
passwd *getpwuid(uid_t uid) {
  return answer(passwd_entry, "uid " + std::to_string(uid));
}
passwd *getpwnam(const char *name) {
  return answer(passwd_entry, std::string("user ") + name);
}

namespace {

// A routine's success: the caller's IERROR and the error state stay.
const Outcome FOUND = {SENTINEL, untouched()};

class UsersBase {
protected:
  UsersBase() {
    group_entry = std::nullopt;
    passwd_entry = std::nullopt;
    host_error = 0;
    lookups.clear();
  }

  void answer_group(const std::string &name, gid_t gid, const std::vector<std::string> &members) {
    name_ = name;
    members_ = members;
    addresses_.clear();
    for (std::string &member : members_)
      addresses_.push_back(member.data());
    addresses_.push_back(nullptr);
    group_entry = group{name_.data(), nullptr, gid, addresses_.data()};
  }
  void answer_user(const std::string &name, uid_t uid, gid_t gid, const std::string &dir,
                   const std::string &shell) {
    name_ = name;
    dir_ = dir;
    shell_ = shell;
    passwd_entry = passwd{name_.data(), nullptr, uid, gid, nullptr, dir_.data(), shell_.data()};
  }

private:
  std::string name_, dir_, shell_;
  std::vector<std::string> members_;
  std::vector<char *> addresses_;
};

// A lookup that finds nobody reports what the host left in errno, and leaves the record.
template <typename LookUp>
void expect_not_found(const OwnedRecord &record, LookUp look_up) {
  const Contents before = contents_of(record);
  for (const int error : {EINTR, EIO, EMFILE, ENFILE, ENOMEM, ERANGE, ENOENT, 4095}) {
    host_error = error;
    EXPECT_EQ(look_up(), failed_with(error));
  }
  // The host left errno alone: whatever it held before is reported.
  host_error = 0;
  EXPECT_EQ(look_up(), refused(ERRNO_SENTINEL, ERRNO_SENTINEL));
  EXPECT_EQ(contents_of(record), before);
}

// Both ways to look up, each with every test.
class Groups : public UsersBase, public testing::TestWithParam<bool> {
protected:
  Outcome look_up(int32_t handle) {
    return GetParam() ? call_named(pxfgetgrnam_, "name ", 0, handle) : call(pxfgetgrgid_, 17, handle);
  }
  std::string lookup() const { return GetParam() ? "group name" : "gid 17"; }
};
class Users : public UsersBase, public testing::TestWithParam<bool> {
protected:
  Outcome look_up(int32_t handle) {
    return GetParam() ? call_named(pxfgetpwnam_, "name ", 0, handle) : call(pxfgetpwuid_, 17, handle);
  }
  std::string lookup() const { return GetParam() ? "user name" : "uid 17"; }
};

std::string how(const testing::TestParamInfo<bool> &by_name) {
  return by_name.param ? "ByName" : "ById";
}
INSTANTIATE_TEST_SUITE_P(LookedUp, Groups, testing::Bool(), how);
INSTANTIATE_TEST_SUITE_P(LookedUp, Users, testing::Bool(), how);

Contents group_contents(const std::string &name, gid_t gid, const std::vector<std::string> &members) {
  std::string list;
  for (const std::string &member : members)
    list += member + ';';
  return {{"gr_name", name},
          {"gr_gid", std::to_string(static_cast<int32_t>(gid))},
          {"gr_nmem", std::to_string(members.size())},
          {"gr_mem", list}};
}
Contents user_contents(const std::string &name, uid_t uid, gid_t gid, const std::string &dir,
                       const std::string &shell) {
  return {{"pw_name", name},
          {"pw_uid", std::to_string(static_cast<int32_t>(uid))},
          {"pw_gid", std::to_string(static_cast<int32_t>(gid))},
          {"pw_dir", dir},
          {"pw_shell", shell}};
}

TEST_P(Groups, AnswerTheCallerWithIerrorUntouched) {
  const OwnedRecord record("group");
  answer_group("staff", 50, {"ada", "", "grace"});
  EXPECT_EQ(look_up(record), FOUND);
  EXPECT_EQ(contents_of(record), group_contents("staff", 50, {"ada", "", "grace"}));
  EXPECT_EQ(lookups, std::vector{lookup()});
}

TEST_P(Groups, WithoutMembersHaveNmem0) {
  const OwnedRecord record("group");
  fill_record(record);
  answer_group("empty", 4000000000u, {});
  EXPECT_EQ(look_up(record), FOUND);
  EXPECT_EQ(contents_of(record), group_contents("empty", 4000000000u, {}));
  Character value(4);
  int32_t length = SENTINEL;
  EXPECT_EQ(estrget(record, "gr_mem", 1, value, &length), refused(WRONG_INDEX));
}

TEST_P(Groups, WhatTheDatabaseLeavesOutIsEmpty) {
  const OwnedRecord record("group");
  fill_record(record);
  group_entry = group{nullptr, nullptr, 5, nullptr};
  EXPECT_EQ(look_up(record), FOUND);
  EXPECT_EQ(contents_of(record), group_contents("(none)", 5, {}));
  Character value(4);
  int32_t length = SENTINEL;
  EXPECT_EQ(strget(record, "gr_name", value, &length), succeeded());
  EXPECT_EQ(length, 0);
  EXPECT_EQ(estrget(record, "gr_mem", 1, value, &length), refused(WRONG_INDEX));
  answer_group("staff", 50, {"ada"});
  EXPECT_EQ(look_up(record), FOUND);
  EXPECT_EQ(contents_of(record), group_contents("staff", 50, {"ada"}));
}

TEST_P(Groups, MayHaveManyMembers) {
  std::vector<std::string> members;
  for (int i = 0; i < 10000; ++i)
    members.push_back("member" + std::to_string(i) + std::string(static_cast<size_t>(i % 50), 'x'));
  const OwnedRecord record("group");
  answer_group(std::string(100000, 'n'), 1, members);
  EXPECT_EQ(look_up(record), FOUND);
  EXPECT_EQ(contents_of(record), group_contents(std::string(100000, 'n'), 1, members));
  Character value(60);
  int32_t length = SENTINEL;
  EXPECT_EQ(estrget(record, "gr_mem", 10000, value, &length), succeeded());
  EXPECT_EQ(value.text(), padded(members[9999], 60));
}

TEST_P(Groups, StringsAreTheRecordsOwn) {
  const OwnedRecord record("group");
  answer_group("first", 1, {"one", "two"});
  ASSERT_EQ(look_up(record), FOUND);
  const Contents first = contents_of(record);
  memset(group_entry->gr_name, '?', 5);
  memset(group_entry->gr_mem[0], '?', 3);
  EXPECT_EQ(contents_of(record), first);
  EXPECT_EQ(std::string(record_as<GroupRecord>(record).gr_name), "first");
  EXPECT_EQ(std::string(record_as<GroupRecord>(record).gr_mem[1]), "two");
}

// What the first lookup left is freed by the second, or the leak check tells.
TEST_P(Groups, SecondLookupReplacesTheFirst) {
  const OwnedRecord record("group");
  answer_group("a long first name", 1, {"one", "two", "three"});
  ASSERT_EQ(look_up(record), FOUND);
  answer_group("second", 2, {"four"});
  EXPECT_EQ(look_up(record), FOUND);
  EXPECT_EQ(contents_of(record), group_contents("second", 2, {"four"}));
  answer_group("third", 3, {"five", "six"});
  EXPECT_EQ(look_up(record), FOUND);
  EXPECT_EQ(contents_of(record), group_contents("third", 3, {"five", "six"}));
}

// A NUL ends the group's strings.
TEST_P(Groups, NameIsReadBackWithItsLength) {
  const OwnedRecord record("group");
  answer_group("staff", 50, {});
  ASSERT_EQ(look_up(record), FOUND);
  Character value(3);
  int32_t length = SENTINEL;
  EXPECT_EQ(strget(record, "gr_name", value, &length), refused(CUT, ERANGE));
  EXPECT_EQ(value.text(), "sta");
  EXPECT_EQ(length, 5);
}

TEST_P(Groups, NotFoundReportErrnoAndLeaveTheRecord) {
  const OwnedRecord record("group");
  fill_record(record);
  expect_not_found(record, [&] { return look_up(record); });
}

TEST_P(Groups, NotFoundWithErrno0Is0) {
  const OwnedRecord record("group");
  fill_record(record);
  const Contents before = contents_of(record);
  const int32_t gid = 17, ilen = 0, handle = record;
  int32_t ierror = SENTINEL;
  errno = 0;
  if (GetParam())
    pxfgetgrnam_("name", &ilen, &handle, &ierror, 4);
  else
    pxfgetgrgid_(&gid, &handle, &ierror);
  EXPECT_EQ(ierror, 0);
  EXPECT_EQ(contents_of(record), before);
}

TEST_P(Groups, WrongHandleMakesNoLookup) {
  answer_group("staff", 50, {"ada"});
  expect_handle_checked("group", [&](int32_t handle) { return look_up(handle); });
  EXPECT_EQ(lookups, std::vector<std::string>());
}

TEST_P(Users, AnswerTheCallerWithIerrorUntouched) {
  const OwnedRecord record("passwd");
  answer_user("ada", 4000000001u, 4000000002u, "/home/ada", "/bin/sh");
  EXPECT_EQ(look_up(record), FOUND);
  EXPECT_EQ(contents_of(record), user_contents("ada", 4000000001u, 4000000002u, "/home/ada", "/bin/sh"));
  EXPECT_EQ(lookups, std::vector{lookup()});
}

// Blocks of exactly their length: the routine for texts must not look for an end in them.
TEST_P(Users, StringsAreReadBackExactly) {
  const OwnedRecord record("passwd");
  const auto expect_text = [&](const std::string &component, const std::string &text) {
    for (const size_t size : {text.size() + 5, text.size()}) {
      Character value(size);
      int32_t length = SENTINEL;
      EXPECT_EQ(strget(record, component, value, &length), succeeded()) << component;
      EXPECT_EQ(value.text(), padded(text, size)) << component;
      EXPECT_EQ(length, static_cast<int32_t>(text.size())) << component;
    }
  };
  for (size_t size = 1; size < 70; ++size) {
    const std::string name(size, 'n'), dir(71 - size, 'd'), shell(2 * size, 's');
    answer_user(name, 1, 2, dir, shell);
    ASSERT_EQ(look_up(record), FOUND);
    expect_text("pw_name", name);
    expect_text("pw_dir", dir);
    expect_text("pw_shell", shell);
  }
}

TEST_P(Users, StringsMayBeEmptyOrLong) {
  const OwnedRecord record("passwd");
  answer_user("", 1, 2, "", "");
  EXPECT_EQ(look_up(record), FOUND);
  Character value(4);
  for (const std::string component : {"pw_name", "pw_dir", "pw_shell"}) {
    int32_t length = SENTINEL;
    EXPECT_EQ(strget(record, component, value, &length), succeeded());
    EXPECT_EQ(length, 0);
    EXPECT_EQ(value.text(), "    ");
  }
  const std::string text(100000, 'x');
  answer_user(text, 1, 2, text, text);
  EXPECT_EQ(look_up(record), FOUND);
  EXPECT_EQ(contents_of(record), user_contents(text, 1, 2, text, text));
}

// A directory service may leave out what it does not know.
TEST_P(Users, WhatTheDatabaseLeavesOutIsEmpty) {
  const OwnedRecord record("passwd");
  fill_record(record);
  passwd_entry = passwd{nullptr, nullptr, 3, 4, nullptr, nullptr, nullptr};
  EXPECT_EQ(look_up(record), FOUND);
  EXPECT_EQ(contents_of(record), user_contents("(none)", 3, 4, "(none)", "(none)"));
  for (const std::string component : {"pw_name", "pw_dir", "pw_shell"}) {
    Character value(4);
    int32_t length = SENTINEL;
    EXPECT_EQ(strget(record, component, value, &length), succeeded()) << component;
    EXPECT_EQ(length, 0);
    EXPECT_EQ(value.text(), "    ");
  }
  const OwnedRecord twin("passwd");
  EXPECT_EQ(copy("passwd", record, twin), succeeded());
  EXPECT_EQ(contents_of(twin), contents_of(record));
  answer_user("x", 3, 4, "/", "y");
  EXPECT_EQ(look_up(record), FOUND);
  EXPECT_EQ(contents_of(record), user_contents("x", 3, 4, "/", "y"));
}

TEST_P(Users, SecondLookupReplacesTheFirst) {
  const OwnedRecord record("passwd");
  answer_user("a long first name", 1, 2, "/a/long/directory", "/a/long/shell");
  ASSERT_EQ(look_up(record), FOUND);
  answer_user("x", 3, 4, "/", "y");
  EXPECT_EQ(look_up(record), FOUND);
  EXPECT_EQ(contents_of(record), user_contents("x", 3, 4, "/", "y"));
}

TEST_P(Users, NotFoundReportErrnoAndLeaveTheRecord) {
  const OwnedRecord record("passwd");
  fill_record(record);
  expect_not_found(record, [&] { return look_up(record); });
}

TEST_P(Users, WrongHandleMakesNoLookup) {
  answer_user("ada", 1, 2, "/", "/bin/sh");
  expect_handle_checked("passwd", [&](int32_t handle) { return look_up(handle); });
  EXPECT_EQ(lookups, std::vector<std::string>());
}

class Ids : public UsersBase, public testing::Test {};

TEST_F(Ids, AreHandedOverUnsigned) {
  const OwnedRecord record("passwd"), group("group");
  for (const int32_t id : {0, -1, INT32_MIN, INT32_MAX}) {
    lookups.clear();
    call(pxfgetpwuid_, id, record);
    call(pxfgetgrgid_, id, group);
    const std::string number = std::to_string(static_cast<uint32_t>(id));
    EXPECT_EQ(lookups, (std::vector{"uid " + number, "gid " + number}));
  }
}

// Of a group, unlike of a user, the name is converted before the record is looked at.
TEST_F(Ids, GroupsNameIsConvertedBeforeTheRecordIsLookedAt) {
  EXPECT_EQ(call_named(pxfgetgrnam_, "name", -1, 0), failed_with(EINVAL));
  EXPECT_EQ(call_named(pxfgetpwnam_, "name", -1, 0), refused(NO_SUCH_HANDLE));
}

}  // namespace
