// PXFESTRGET: the members of a group.
#include "record_calls.h"

namespace {

using qxport::GroupRecord;

class Members : public testing::Test {
protected:
  void SetUp() override {
    set_members(record_as<GroupRecord>(record), {"ann", "", "a member with a long name"});
    before = contents_of(record);
  }
  void TearDown() override { EXPECT_EQ(contents_of(record), before); }

  void expect_refused(const Outcome &expected, int32_t handle, const std::string &name, int32_t index) {
    Character value(8);
    Guarded<int32_t> ilen(SENTINEL);
    EXPECT_EQ(estrget(handle, name, index, value, &ilen), expected) << name << ' ' << index;
    EXPECT_EQ(value.text(), "########");
    EXPECT_EQ(ilen, SENTINEL);
  }

  void expect_member(int32_t index, size_t length, const Outcome &outcome, const std::string &text,
                     int32_t full_length) {
    Character value(length);
    Guarded<int32_t> ilen(SENTINEL);
    EXPECT_EQ(estrget(record, "gr_mem", index, value, &ilen), outcome) << index;
    EXPECT_EQ(value.text(), text);
    EXPECT_EQ(ilen, full_length);
  }

  const OwnedRecord record{"group"};
  Contents before;
};

constexpr int32_t WRONG_INDICES[] = {0, 4, 5, -1, -3, 256, INT32_MAX, INT32_MIN};

}  // namespace

TEST_F(Members, AreGivenOneAtATime) {
  expect_member(1, 8, succeeded(), "ann     ", 3);
  expect_member(1, 3, succeeded(), "ann", 3);
  expect_member(2, 8, succeeded(), "        ", 0);
  expect_member(2, 0, succeeded(), "", 0);
  expect_member(3, 25, succeeded(), "a member with a long name", 25);
}

TEST_F(Members, AreCut) {
  expect_member(1, 2, refused(CUT, ERANGE), "an", 3);
  expect_member(1, 0, refused(CUT, ERANGE), "", 3);
  expect_member(3, 24, refused(CUT, ERANGE), "a member with a long nam", 25);
}

#if UINTPTR_MAX > UINT32_MAX
TEST_F(Members, LowHalfOfTheValuesHiddenLengthCounts) {
  const int32_t handle = record;
  const int32_t index = 1;
  Character value(2);
  int32_t ilen = SENTINEL;
  EXPECT_EQ(reported_by([&](int32_t *ierror) {
              pxfestrget_(&handle, "gr_mem", &index, value.data(), &ilen, ierror, 6,
                          (qxport_charlen{1} << 32) + 2);
            }),
            refused(CUT, ERANGE));
  EXPECT_EQ(value.text(), "an");
}
#endif

TEST_F(Members, NameByTheUsualRule) {
  for (const std::string name : {"GR_MEM", "gr_mem  ", "Gr_Mem x"}) {
    Character value(3);
    Guarded<int32_t> ilen(SENTINEL);
    EXPECT_EQ(estrget(record, name, 1, value, &ilen), succeeded());
    EXPECT_EQ(value.text(), "ann");
  }
}

TEST_F(Members, IndexOutOfRange) {
  for (const int32_t index : WRONG_INDICES)
    expect_refused(refused(WRONG_INDEX), record, "gr_mem", index);
}

TEST_F(Members, IndexComesBeforeTheName) {
  for (const int32_t index : WRONG_INDICES)
    for (const std::string name : {"nothing", "gr_name", "", " gr_mem"})
      expect_refused(refused(WRONG_INDEX), record, name, index);
}

TEST_F(Members, OtherNamesOfAGroup) {
  for (const std::string name :
       {"gr_name", "gr_gid", "gr_nmem", "gr_me", "gr_mem1", "nothing", "", " gr_mem"})
    expect_refused(refused(NO_SUCH_NAME), record, name, 1);
}

TEST_F(Members, OtherKindsComeBeforeIndexAndName) {
  for (const KnownKind &kind : known_kinds()) {
    if (kind.name == "group")
      continue;
    const OwnedRecord other(kind.name);
    for (const std::string name : {"gr_mem", "nothing", ""})
      for (const int32_t index : {0, 1, -1})
        expect_refused(refused(EINVAL), other, name, index);
  }
  const ForeignObject object;
  for (const int32_t index : {0, 1})
    expect_refused(refused(EINVAL), object, "gr_mem", index);
}

TEST_F(Members, UnknownHandleComesFirst) {
  for (const std::string name : {"gr_mem", "nothing"})
    for (const int32_t index : {0, 1})
      for (const int32_t handle : {0, 256, INT32_MAX})
        expect_refused(refused(NO_SUCH_HANDLE), handle, name, index);
}

TEST_F(Members, EmptyGroupHasNone) {
  const OwnedRecord empty("group");
  for (const int32_t index : {0, 1, -1, INT32_MAX})
    expect_refused(refused(WRONG_INDEX), empty, "gr_mem", index);
}

TEST_F(Members, GroupOfNegativeCountHasNone) {
  const OwnedRecord odd("group");
  record_as<GroupRecord>(odd).gr_nmem = -1;
  for (const int32_t index : {0, 1, -1, INT32_MIN})
    expect_refused(refused(WRONG_INDEX), odd, "gr_mem", index);
}

TEST_F(Members, MissingListOrMemberIsEmpty) {
  const OwnedRecord odd("group");
  GroupRecord &group = record_as<GroupRecord>(odd);
  group.gr_nmem = 2;
  for (const int32_t index : {1, 2}) {
    Character value(4);
    Guarded<int32_t> ilen(SENTINEL);
    EXPECT_EQ(estrget(odd, "gr_mem", index, value, &ilen), succeeded());
    EXPECT_EQ(value.text(), "    ");
    EXPECT_EQ(ilen, 0);
  }
  group.gr_mem = static_cast<char **>(calloc(2, sizeof(char *)));
  Character value(4);
  Guarded<int32_t> ilen(SENTINEL);
  EXPECT_EQ(estrget(odd, "gr_mem", 2, value, &ilen), succeeded());
  EXPECT_EQ(value.text(), "    ");
  EXPECT_EQ(ilen, 0);
}

// The module binds to this.
