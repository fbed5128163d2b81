// PXFSTRUCTCOPY: what a copy gives and shares, and what it refuses.
#include "record_calls.h"

namespace {

using qxport::GroupRecord;
using qxport::PasswdRecord;

class CopyOfKind : public testing::TestWithParam<KnownKind> {
protected:
  const std::string &kind() const { return GetParam().name; }
};
INSTANTIATE_TEST_SUITE_P(Records, CopyOfKind, testing::ValuesIn(known_kinds()),
                         [](const auto &info) { return info.param.name; });

std::string in_capitals(std::string name) {
  for (char &c : name)
    c = static_cast<char>(toupper(c));
  return name;
}

// A record whose components have values of their own.
struct FilledRecord : OwnedRecord {
  explicit FilledRecord(const std::string &kind, int32_t seed = 77) : OwnedRecord(kind) {
    fill_record(*this, seed);
  }
};

}  // namespace

TEST_P(CopyOfKind, GivesEveryComponent) {
  const FilledRecord source(kind());
  const OwnedRecord destination(kind());
  const Contents before = contents_of(source);
  EXPECT_EQ(copy(kind(), source, destination), succeeded());
  EXPECT_EQ(contents_of(destination), before);
  EXPECT_EQ(contents_of(source), before);
}

TEST_P(CopyOfKind, ReplacesWhatTheDestinationHeld) {
  const FilledRecord source(kind());
  const FilledRecord destination(kind(), 5'000'000);
  EXPECT_EQ(copy(kind(), source, destination), succeeded());
  EXPECT_EQ(contents_of(destination), contents_of(source));
}

TEST_P(CopyOfKind, OfAnEmptyRecordEmpties) {
  const OwnedRecord source(kind());
  const FilledRecord destination(kind());
  EXPECT_EQ(copy(kind(), source, destination), succeeded());
  EXPECT_EQ(contents_of(destination), contents_of(source));
}

TEST_P(CopyOfKind, SharesNothing) {
  const OwnedRecord destination(kind());
  Contents expected;
  {
    const FilledRecord source(kind());
    EXPECT_EQ(copy(kind(), source, destination), succeeded());
    expected = contents_of(source);
    for (const KnownComponent &component : GetParam().components) {
      intset(source, component.name, 3);
      strset(source, component.name, "changed");
      eintset(source, component.name, 1, 3);
    }
    EXPECT_EQ(contents_of(destination), expected);
  }
  EXPECT_EQ(contents_of(destination), expected) << "the source is freed";
}

TEST_P(CopyOfKind, OntoItselfChangesNothing) {
  const FilledRecord record(kind());
  const Contents before = contents_of(record);
  EXPECT_EQ(copy(kind(), record, record), succeeded());
  EXPECT_EQ(contents_of(record), before);
}

TEST_P(CopyOfKind, OntoItselfUnderAnotherHandleChangesNothing) {
  const FilledRecord record(kind());
  const Contents before = contents_of(record);
  const int32_t another = get_handle_from_alloc_address(address_of_record(record));
  EXPECT_EQ(copy(kind(), record, another), succeeded());
  EXPECT_EQ(contents_of(record), before);
  if (another != record) {
    free_alloc_handle(another);
  }
}

TEST_P(CopyOfKind, NameByTheUsualRule) {
  const FilledRecord source(kind());
  for (const std::string &name :
       {in_capitals(kind()), kind() + "   ", kind() + " x", kind() + std::string("\0x", 2)}) {
    const OwnedRecord destination(kind());
    EXPECT_EQ(copy(name, source, destination), succeeded()) << name;
    EXPECT_EQ(contents_of(destination), contents_of(source)) << name;
  }
}

TEST_P(CopyOfKind, WrongNamesAreRefused) {
  const FilledRecord source(kind());
  const FilledRecord destination(kind(), 5'000'000);
  const Contents before = contents_of(destination);
  std::vector<std::string> names = {"",
                                    " ",
                                    ' ' + kind(),
                                    kind() + "x",
                                    kind() + '\t',
                                    "none",
                                    std::string(10'000, 'x'),
                                    kind() + std::string(10'000, 'x')};
  for (const KnownKind &other : known_kinds())
    if (other.name != kind())
      names.push_back(other.name);
  for (const std::string &name : names) {
    EXPECT_EQ(copy(name, source, destination), refused_silently(NO_SUCH_NAME)) << name;
    EXPECT_EQ(copy(name, source, source), refused_silently(NO_SUCH_NAME)) << name;
  }
  EXPECT_EQ(contents_of(destination), before);
}

TEST_P(CopyOfKind, AnotherKindIsRefusedBeforeTheNameIsLookedAt) {
  const FilledRecord source(kind());
  const Contents source_before = contents_of(source);
  for (const KnownKind &other : known_kinds()) {
    if (other.name == kind())
      continue;
    const FilledRecord destination(other.name);
    const Contents before = contents_of(destination);
    for (const std::string &name : {kind(), other.name, std::string("none"), std::string()})
      EXPECT_EQ(copy(name, source, destination), refused(EINVAL)) << other.name;
    EXPECT_EQ(contents_of(destination), before);
  }
  EXPECT_EQ(contents_of(source), source_before);
}

TEST_P(CopyOfKind, UnknownHandlesComeBeforeAll) {
  const FilledRecord record(kind());
  const Contents before = contents_of(record);
  int32_t stale = 0;
  EXPECT_EQ(create(kind(), &stale), succeeded());
  int32_t freed = stale;
  EXPECT_EQ(release(&freed), succeeded());
  for (const int32_t unknown : {0, 256, -256, INT32_MAX, 254, stale}) {
    for (const std::string &name : {kind(), std::string("none")}) {
      EXPECT_EQ(copy(name, unknown, record), refused(NO_SUCH_HANDLE)) << unknown;
      EXPECT_EQ(copy(name, record, unknown), refused(NO_SUCH_HANDLE)) << unknown;
      EXPECT_EQ(copy(name, unknown, unknown), refused(NO_SUCH_HANDLE)) << unknown;
    }
  }
  EXPECT_EQ(contents_of(record), before);
}

TEST_P(CopyOfKind, ForeignObjectsAreRefused) {
  const FilledRecord record(kind());
  const Contents before = contents_of(record);
  const ForeignObject object;
  const ForeignObject another;
  EXPECT_EQ(copy(kind(), object, record), refused(EINVAL));
  EXPECT_EQ(copy(kind(), record, object), refused(EINVAL));
  EXPECT_EQ(copy(kind(), object, another), refused_silently(NO_SUCH_NAME)) << "no structure is named so";
  EXPECT_EQ(contents_of(record), before);
}

TEST(Copy, StatAndTmsAreNotOfOneKind) {
  const OwnedRecord stat("stat");
  const OwnedRecord tms("tms");
  EXPECT_EQ(copy("stat", stat, tms), refused(EINVAL));
}

TEST(Copy, PasswdRecordsAreNotNamedGroup) {
  const OwnedRecord first("passwd");
  const OwnedRecord second("passwd");
  EXPECT_EQ(copy("group", first, second), refused_silently(NO_SUCH_NAME));
}

TEST(Copy, WideNumbersAreCopiedWhole) {
  const OwnedRecord source("stat");
  const OwnedRecord destination("stat");
  EXPECT_EQ(int8set(source, "st_size", 0x123456789ABCDEF0), succeeded());
  EXPECT_EQ(int8set(source, "st_ino", INT64_MIN), succeeded());
  EXPECT_EQ(copy("stat", source, destination), succeeded());
  EXPECT_EQ(contents_of(destination), contents_of(source));
}

TEST(Copy, SignalSetIsCopied) {
  const OwnedRecord source("sigset");
  const OwnedRecord destination("sigset");
  record_as<qxport::SigsetRecord>(source).mask = 0x80000001;
  EXPECT_EQ(copy("SIGSET", source, destination), succeeded());
  EXPECT_EQ(record_as<qxport::SigsetRecord>(destination).mask, 0x80000001u);
}

// Its NUL stands in the next component.
TEST(Copy, TextOfFullCapacityIsCopiedAsItStands) {
  const OwnedRecord source("utsname");
  const OwnedRecord destination("utsname");
  EXPECT_EQ(strset(source, "sysname", std::string(256, 's')), succeeded());
  EXPECT_EQ(strset(source, "nodename", "behind"), succeeded());
  EXPECT_EQ(copy("utsname", source, destination), succeeded());
  EXPECT_EQ(contents_of(destination), contents_of(source));
}

TEST(Copy, AbsentStringsStayAbsent) {
  const OwnedRecord source("passwd");
  const FilledRecord destination("passwd");
  EXPECT_EQ(strset(source, "pw_dir", "/home"), succeeded());
  EXPECT_EQ(copy("passwd", source, destination), succeeded());
  EXPECT_EQ(record_as<PasswdRecord>(destination).pw_name, nullptr);
  EXPECT_EQ(contents_of(destination).at("pw_dir"), "/home");
  EXPECT_EQ(record_as<PasswdRecord>(destination).pw_shell, nullptr);
}

TEST(Copy, StringsWithoutANulAreCopiedByTheirLengths) {
  const OwnedRecord source("passwd");
  const OwnedRecord destination("passwd");
  PasswdRecord &user = record_as<PasswdRecord>(source);
  user.pw_name = allocated_without_nul("nobody");
  user.pw_name_length = 6;
  user.pw_shell = allocated_without_nul("");
  user.pw_shell_length = 0;
  EXPECT_EQ(copy("passwd", source, destination), succeeded());
  EXPECT_EQ(contents_of(destination), contents_of(source));
  Character value(8);
  int32_t ilen = SENTINEL;
  EXPECT_EQ(strget(destination, "pw_name", value, &ilen), succeeded());
  EXPECT_EQ(value.text(), "nobody  ");
  EXPECT_EQ(ilen, 6);
}

TEST(Copy, MemberListsOfEveryLength) {
  const std::vector<std::vector<std::string>> lists = {
      {}, {"one"}, {"", ""}, {"one", "two", "three"}, std::vector<std::string>(1000, "many")};
  for (const auto &from : lists) {
    for (const auto &to : lists) {
      const OwnedRecord source("group");
      const OwnedRecord destination("group");
      set_members(record_as<GroupRecord>(source), from);
      set_members(record_as<GroupRecord>(destination), to);
      EXPECT_EQ(copy("group", source, destination), succeeded());
      const GroupRecord &copied = record_as<GroupRecord>(destination);
      ASSERT_EQ(copied.gr_nmem, static_cast<int32_t>(from.size()));
      for (size_t i = 0; i < from.size(); ++i) {
        EXPECT_EQ(copied.gr_mem[i], from[i]);
        EXPECT_NE(copied.gr_mem[i], record_as<GroupRecord>(source).gr_mem[i]);
      }
    }
  }
}

TEST(Copy, MissingMembersReadAsEmpty) {
  const OwnedRecord source("group");
  const FilledRecord destination("group");
  GroupRecord &group = record_as<GroupRecord>(source);
  set_members(group, {"a", "b", "c"});
  free(group.gr_mem[1]);
  group.gr_mem[1] = nullptr;
  EXPECT_EQ(copy("group", source, destination), succeeded());
  for (int32_t index = 1; index <= 3; ++index) {
    Character value(3);
    int32_t ilen = SENTINEL;
    EXPECT_EQ(estrget(destination, "gr_mem", index, value, &ilen), succeeded());
    EXPECT_EQ(value.text(), index == 1 ? "a  " : index == 2 ? "   " : "c  ");
    EXPECT_EQ(ilen, index == 2 ? 0 : 1);
  }
}

TEST(Copy, CountWithoutAListIsCopied) {
  const OwnedRecord source("group");
  const FilledRecord destination("group");
  record_as<GroupRecord>(source).gr_nmem = 4;
  EXPECT_EQ(copy("group", source, destination), succeeded());
  EXPECT_EQ(record_as<GroupRecord>(destination).gr_nmem, 4);
  Character value(3);
  int32_t ilen = SENTINEL;
  EXPECT_EQ(estrget(destination, "gr_mem", 4, value, &ilen), succeeded());
  EXPECT_EQ(value.text(), "   ");
  EXPECT_EQ(ilen, 0);
}

TEST(Copy, ProcedureHandleIsCopiedAsANumber) {
  const OwnedRecord source("sigaction");
  const OwnedRecord destination("sigaction");
  EXPECT_EQ(int8set(source, "sa_handler", 123456789012), succeeded());
  EXPECT_EQ(copy("sigaction", source, destination), succeeded());
  EXPECT_EQ(contents_of(destination).at("sa_handler"), "123456789012");
}
