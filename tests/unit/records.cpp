// PXFSTRUCTCREATE and PXFSTRUCTFREE: a record's beginning and end.
#include "fenced_text.h"
#include "record_calls.h"

#include <algorithm>
#include <cctype>

namespace {

constexpr int32_t FORMER = 4711;

// Every name of a structure but in what case each letter is: bit i of the mask says it for letter i.
std::string in_mixed_case(std::string name, unsigned mask) {
  for (size_t i = 0; i < name.size(); ++i)
    if (mask >> i & 1)
      name[i] = static_cast<char>(toupper(name[i]));
  return name;
}

// The record that the name makes, as its kind code; 0 for none, with all that must hold then.
uint32_t code_made_by(const std::string &name) {
  int32_t handle = FORMER;
  const Outcome outcome = create(name, &handle);
  if (outcome.answer != 0) {
    EXPECT_EQ(outcome, refused_silently(NO_SUCH_NAME)) << name;
    EXPECT_EQ(handle, FORMER) << name;
    return 0;
  }
  EXPECT_EQ(outcome, succeeded()) << name;
  const uint32_t code = *static_cast<uint32_t *>(address_of_record(handle));
  EXPECT_EQ(release(&handle), succeeded()) << name;
  return code;
}

bool is_empty(const std::string &content) {
  return content == "0" || content == "(none)" || content == held("") ||
         content == "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 ";
}

class EachKind : public testing::TestWithParam<KnownKind> {};
INSTANTIATE_TEST_SUITE_P(Records, EachKind, testing::ValuesIn(known_kinds()),
                         [](const auto &info) { return info.param.name; });

}  // namespace

TEST_P(EachKind, HasItsCode) {
  EXPECT_EQ(code_made_by(GetParam().name), GetParam().code);
}

TEST_P(EachKind, BeginsWithZerosAndEmptyTexts) {
  const OwnedRecord record(GetParam().name);
  for (const auto &[name, content] : contents_of(record))
    EXPECT_TRUE(is_empty(content)) << name << ' ' << content;
}

// What was freed is not handed out as it was.
TEST_P(EachKind, BeginsEmptyAlsoWhereAnotherEnded) {
  for (int round = 0; round < 10; ++round) {
    const OwnedRecord record(GetParam().name);
    for (const auto &[name, content] : contents_of(record))
      EXPECT_TRUE(is_empty(content)) << name << ' ' << content;
    fill_record(record);
  }
}

TEST_P(EachKind, KnownComponentsAreThoseOfTheRecord) {
  const OwnedRecord record(GetParam().name);
  Contents contents = contents_of(record);
  contents.erase("(mask)");
  EXPECT_EQ(contents.size(), GetParam().components.size());
  for (const KnownComponent &component : GetParam().components)
    EXPECT_TRUE(contents.contains(component.name)) << component.name;
}

TEST_P(EachKind, NameInEveryCase) {
  const std::string &name = GetParam().name;
  for (unsigned mask = 0; mask < 1u << name.size(); ++mask)
    EXPECT_EQ(code_made_by(in_mixed_case(name, mask)), GetParam().code);
}

TEST_P(EachKind, NameEndsAtItsFirstBlank) {
  for (const char *behind : {" ", "   ", " x", "  stat", " \t"})
    EXPECT_EQ(code_made_by(GetParam().name + behind), GetParam().code) << behind;
  EXPECT_EQ(code_made_by(GetParam().name + std::string(10'000, ' ')), GetParam().code);
}

TEST_P(EachKind, NameEndsAtANul) {
  EXPECT_EQ(code_made_by(GetParam().name + std::string("\0x", 2)), GetParam().code);
  EXPECT_EQ(code_made_by(GetParam().name.substr(0, 2) + std::string(1, '\0') + GetParam().name.substr(2)),
            0u);
}

TEST_P(EachKind, OtherNamesAreUnknown) {
  const std::string &name = GetParam().name;
  EXPECT_EQ(code_made_by(' ' + name), 0u);
  EXPECT_EQ(code_made_by(name.substr(0, name.size() - 1)), 0u);
  EXPECT_EQ(code_made_by(name.substr(1)), 0u);
  for (const char other : {'\t', '\n', '\v', '\f', '\r', 's', '_', '\x80', '\xff'}) {
    EXPECT_EQ(code_made_by(name + other), 0u) << int{other};
    EXPECT_EQ(code_made_by(other + name), 0u) << int{other};
    EXPECT_EQ(code_made_by(name + other + " "), 0u) << int{other};
  }
  for (size_t length = 1; length <= 70; ++length)
    EXPECT_EQ(code_made_by(name + std::string(length, name.back())), 0u) << length;
  EXPECT_EQ(code_made_by(name + std::string(10'000, 'x')), 0u);
  EXPECT_EQ(code_made_by(std::string(10'000, 'x') + name), 0u);
}

TEST_P(EachKind, NothingBehindTheNameIsRead) {
  const FencedText name(GetParam().name);
  int32_t handle = 0;
  EXPECT_EQ(
      reported_by([&](int32_t *ierror) { pxfstructcreate_(name.data(), &handle, ierror, name.length()); }),
      succeeded());
  EXPECT_EQ(release(&handle), succeeded());
}

TEST_P(EachKind, IsFreedWithAllThatItOwns) {
  int32_t handle = 0;
  EXPECT_EQ(create(GetParam().name, &handle), succeeded());
  fill_record(handle);
  const int32_t former = handle;
  EXPECT_EQ(release(&handle), succeeded());
  EXPECT_EQ(handle, 0);
  EXPECT_EQ(address_of_record(former), nullptr);
}

TEST_P(EachKind, IsNotFreedTwice) {
  int32_t handle = 0;
  EXPECT_EQ(create(GetParam().name, &handle), succeeded());
  const int32_t former = handle;
  EXPECT_EQ(release(&handle), succeeded());
  EXPECT_EQ(release(&handle), refused(NO_SUCH_HANDLE)) << "what the first left is no handle";
  EXPECT_EQ(handle, 0);
  int32_t stale = former;
  EXPECT_EQ(release(&stale), refused(NO_SUCH_HANDLE));
  EXPECT_EQ(stale, former);
}

TEST_P(EachKind, HandleIsGivenBackForTheNext) {
  int32_t handle = 0;
  EXPECT_EQ(create(GetParam().name, &handle), succeeded());
  const OwnedRecord another("dirent");
  const int32_t former = handle;
  EXPECT_EQ(release(&handle), succeeded());
  EXPECT_EQ(address_of_record(former), nullptr);
  const OwnedRecord next(GetParam().name);
  EXPECT_NE(next, another);
  if (sizeof(void *) > sizeof(int32_t)) {
    EXPECT_EQ(next, former);
  }
}

TEST(Create, StatInCapitals) {
  EXPECT_EQ(code_made_by("STAT"), 6u);
}

TEST(Create, StatWithABlankInside) {
  EXPECT_EQ(code_made_by("stat  x"), 6u);
}

TEST(Create, StatsIsUnknown) {
  EXPECT_EQ(code_made_by("stats"), 0u);
}

TEST(Create, EmptyNamesAreUnknown) {
  for (const std::string &name : {std::string(), std::string(" "), std::string(1, '\0'),
                                  std::string("\0stat", 5), std::string("      ")})
    EXPECT_EQ(code_made_by(name), 0u);
}

TEST(Create, NegativeHiddenLengthIsTheEmptyName) {
  int32_t handle = FORMER;
  for (const qxport_charlen length : {qxport_charlen{-1}, qxport_charlen{INTPTR_MIN}})
    EXPECT_EQ(reported_by([&](int32_t *ierror) { pxfstructcreate_("stat", &handle, ierror, length); }),
              refused_silently(NO_SUCH_NAME));
  EXPECT_EQ(handle, FORMER);
}

TEST(Create, ComponentsAndConstantsAreNoStructures) {
  for (const KnownKind &kind : known_kinds())
    for (const KnownComponent &component : kind.components)
      EXPECT_EQ(code_made_by(component.name), 0u);
  EXPECT_EQ(code_made_by("SIGINT"), 0u);
}

TEST(Free, UnknownHandles) {
  const OwnedRecord record("stat");
  for (int32_t handle : {0, 256, -256, INT32_MIN, INT32_MAX, 0x10001, 254}) {
    const int32_t former = handle;
    EXPECT_EQ(release(&handle), refused(NO_SUCH_HANDLE)) << former;
    EXPECT_EQ(handle, former);
  }
  EXPECT_NE(address_of_record(record), nullptr);
}

TEST(Free, ForeignObjectsAreNotReleased) {
  for (const uint32_t kind : {0u, 12u, 13u, 1001u, 0x80000000u, 0xFFFFFFFFu}) {
    const ForeignObject object(kind);
    int32_t handle = object;
    EXPECT_EQ(release(&handle), refused(NO_SUCH_NAME)) << kind;
    EXPECT_EQ(handle, object);
    EXPECT_EQ(address_of_record(handle), object.address());
  }
}

TEST(Free, GroupWithoutAListButWithACount) {
  int32_t handle = 0;
  EXPECT_EQ(create("group", &handle), succeeded());
  record_as<qxport::GroupRecord>(handle).gr_nmem = 5;
  EXPECT_EQ(release(&handle), succeeded());
}

TEST(Free, GroupWithAMemberMissing) {
  int32_t handle = 0;
  EXPECT_EQ(create("group", &handle), succeeded());
  qxport::GroupRecord &group = record_as<qxport::GroupRecord>(handle);
  set_members(group, {"a", "b", "c"});
  free(group.gr_mem[1]);
  group.gr_mem[1] = nullptr;
  EXPECT_EQ(release(&handle), succeeded());
}

TEST(Free, ProcedureOfASigactionStays) {
  int32_t procedure = 0;
  EXPECT_EQ(reported_by([&](int32_t *ierror) {
              pxfgetsubhandle_(reinterpret_cast<void (*)()>(&code_made_by), &procedure, ierror);
            }),
            succeeded());
  int32_t handle = 0;
  EXPECT_EQ(create("sigaction", &handle), succeeded());
  EXPECT_EQ(intset(handle, "sa_handler", procedure), succeeded());
  EXPECT_EQ(release(&handle), succeeded());
  EXPECT_EQ(get_address_from_handle(procedure, StaticHandles), reinterpret_cast<void *>(&code_made_by));
}
