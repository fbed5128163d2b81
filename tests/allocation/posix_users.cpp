// The lookups of users and groups with each of their allocations failing, above a database of the tests' own.
#include "failing_allocations.h"

#include "posix_calls.h"

#include <grp.h>
#include <pwd.h>

namespace {

using qxport::GroupRecord;

char name[] = "new name", dir[] = "/new/dir", shell[] = "/new/shell";
char member_1[] = "new 1", member_2[] = "new 2";
char *members[] = {member_1, member_2, nullptr};
group group_entry = {name, nullptr, 50, members};
passwd passwd_entry = {name, nullptr, 60, 70, nullptr, dir, shell};

}  // namespace

group *getgrgid(gid_t) {
  return &group_entry;
}
group *getgrnam(const char *) {
  return &group_entry;
}
passwd *getpwuid(uid_t) {
  return &passwd_entry;
}
passwd *getpwnam(const char *) {
  return &passwd_entry;
}

namespace {

const Outcome FOUND = {SENTINEL, untouched()};

Outcome group_by_id(int32_t handle) {
  return call(pxfgetgrgid_, 50, handle);
}
Outcome group_by_name(int32_t handle) {
  return call_named(pxfgetgrnam_, "name", 0, handle);
}
Outcome user_by_id(int32_t handle) {
  return call(pxfgetpwuid_, 60, handle);
}
Outcome user_by_name(int32_t handle) {
  return call_named(pxfgetpwnam_, "name", 0, handle);
}

const Contents NEW_GROUP = {
    {"gr_name", "new name"}, {"gr_gid", "50"}, {"gr_nmem", "2"}, {"gr_mem", "new 1;new 2;"}};
const Contents NEW_USER = {{"pw_name", "new name"},
                           {"pw_uid", "60"},
                           {"pw_gid", "70"},
                           {"pw_dir", "/new/dir"},
                           {"pw_shell", "/new/shell"}};

// What a record of old values holds after a lookup whose n-th allocation failed; it is usable afterwards.
template <typename LookUp>
Contents after_failure(const char *kind, LookUp look_up, size_t n, Contents *old) {
  const OwnedRecord record(kind);
  fill_record(record);
  *old = contents_of(record);
  Outcome outcome;
  {
    const FailingAllocation failing(n);
    outcome = look_up(record);
    EXPECT_TRUE(failing.failed()) << n;
  }
  EXPECT_EQ(outcome, failed_with(ENOMEM)) << n;
  const Contents after = contents_of(record);
  EXPECT_EQ(look_up(record), FOUND);
  EXPECT_EQ(contents_of(record), strcmp(kind, "group") == 0 ? NEW_GROUP : NEW_USER);
  return after;
}

// The first of them by name is the converted name, without which nothing happens.
TEST(Groups, WithoutMemoryForTheConvertedNameStay) {
  Contents old;
  EXPECT_EQ(after_failure("group", group_by_name, 1, &old), old);
}

TEST(Groups, WithoutMemoryForTheNameKeepTheirMembersById) {
  Contents old;
  const Contents after = after_failure("group", group_by_id, 1, &old);
  Contents expected = old;
  expected["gr_name"] = "(none)";
  EXPECT_EQ(after, expected);
}

// By name the members go first.
TEST(Groups, WithoutMemoryForTheNameLoseTheirMembersByName) {
  Contents old;
  Contents after = after_failure("group", group_by_name, 2, &old);
  EXPECT_EQ(after["gr_name"], "(none)");
  EXPECT_EQ(after["gr_mem"], "(none)");
  EXPECT_EQ(after["gr_gid"], old["gr_gid"]);
}

TEST(Groups, WithoutMemoryForTheMembersHaveNeitherListNorName) {
  const Contents expected = {{"gr_name", "(none)"}, {"gr_gid", "50"}, {"gr_nmem", "2"}, {"gr_mem", "(none)"}};
  Contents old;
  for (const size_t n : {2, 3, 4}) {
    EXPECT_EQ(after_failure("group", group_by_id, n, &old), expected) << n;
    EXPECT_EQ(after_failure("group", group_by_name, n + 1, &old), expected) << n;
  }
}

// Whatever a failed lookup left is safe to read, copy and free.
TEST(Groups, ThatAreLeftIncompleteAreSafe) {
  for (const auto look_up : {&group_by_id, &group_by_name})
    for (size_t n = 1; n <= 5; ++n) {
      const OwnedRecord record("group"), copied("group");
      fill_record(record);
      {
        const FailingAllocation failing(n);
        look_up(record);
      }
      Character value(20);
      int32_t length = SENTINEL;
      strget(record, "gr_name", value, &length);
      for (int32_t i = 1; i <= 3; ++i)
        estrget(record, "gr_mem", i, value, &length);
      EXPECT_EQ(copy("group", record, copied), succeeded()) << n;
    }
}

TEST(Groups, MakeSoManyAllocations) {
  const OwnedRecord record("group");
  for (const auto &[look_up, count] : {std::pair(&group_by_id, 4u), {&group_by_name, 5u}}) {
    const FailingAllocation counting(0);
    EXPECT_EQ(look_up(record), FOUND);
    EXPECT_EQ(counting.allocations(), count);
  }
}

TEST(Users, WithoutMemoryForTheConvertedNameStay) {
  Contents old;
  EXPECT_EQ(after_failure("passwd", user_by_name, 1, &old), old);
}

TEST(Users, WithoutMemoryHoldWhatWasReached) {
  const auto check = [](auto look_up, size_t first) {
    Contents old;
    Contents expected = NEW_USER;
    expected["pw_shell"] = "(none)";
    EXPECT_EQ(after_failure("passwd", look_up, first + 2, &old), expected);
    expected["pw_dir"] = "(none)";
    EXPECT_EQ(after_failure("passwd", look_up, first + 1, &old), expected);
    expected["pw_name"] = "(none)";
    const Contents after = after_failure("passwd", look_up, first, &old);
    expected["pw_uid"] = old["pw_uid"];
    expected["pw_gid"] = old["pw_gid"];
    EXPECT_EQ(after, expected);
  };
  check(user_by_id, 1);
  check(user_by_name, 2);
}

// A string's block is exactly as long as the string.
TEST(Users, StringsHaveNoTerminator) {
  const OwnedRecord record("passwd");
  const FailingAllocation counting(0);
  EXPECT_EQ(user_by_id(record), FOUND);
  EXPECT_EQ(counting.allocations(), 3u);
  EXPECT_EQ(counting.requested(1), strlen(name));
  EXPECT_EQ(counting.requested(2), strlen(dir));
  EXPECT_EQ(counting.requested(3), strlen(shell));
}

// All report what the allocation left in errno, but one that says ENOMEM itself: the shell's by id.
TEST(Lookups, ReportWhatTheAllocationLeft) {
  constexpr int UNUSUAL = 4095;
  const auto check = [](const char *kind, auto look_up, size_t count, size_t with_number_of_its_own) {
    for (size_t n = 1; n <= count; ++n) {
      const OwnedRecord record(kind);
      const FailingAllocation failing(n, UNUSUAL);
      EXPECT_EQ(look_up(record), failed_with(n == with_number_of_its_own ? ENOMEM : UNUSUAL)) << kind << n;
    }
  };
  check("group", group_by_id, 4, 0);
  check("group", group_by_name, 5, 0);
  check("passwd", user_by_id, 3, 3);
  check("passwd", user_by_name, 4, 0);
}

TEST(Lookups, GiveBackWhatTheyReplace) {
  const OwnedRecord group("group"), user("passwd");
  EXPECT_EQ(heap_growth([&] {
              group_by_id(group);
              group_by_name(group);
              user_by_id(user);
              user_by_name(user);
            }),
            0u);
}

TEST(Lookups, GiveBackWhatTheyReachedBeforeAFailure) {
  const OwnedRecord group("group"), user("passwd");
  EXPECT_EQ(heap_growth([&] {
              for (size_t n = 1; n <= 5; ++n) {
                {
                  const FailingAllocation failing(n);
                  group_by_id(group);
                }
                {
                  const FailingAllocation failing(n);
                  group_by_name(group);
                }
                {
                  const FailingAllocation failing(n);
                  user_by_id(user);
                }
                {
                  const FailingAllocation failing(n);
                  user_by_name(user);
                }
              }
              group_by_id(group);
              user_by_id(user);
            }),
            0u);
}

TEST(Lookups, RefusedRecordsNeedNoHeap) {
  const OwnedRecord group("group"), user("passwd");
  const FailingAllocation failing(1);
  EXPECT_EQ(group_by_id(user), refused(EINVAL));
  EXPECT_EQ(user_by_id(group), refused(EINVAL));
  EXPECT_EQ(user_by_name(group), refused(EINVAL));
  EXPECT_EQ(user_by_name(0), refused(NO_SUCH_HANDLE));
  EXPECT_EQ(failing.allocations(), 0u);
}

}  // namespace
