// Records and handles with each of their allocations failing in turn: what is reported, what is left, and
// that nothing leaks.
#include "failing_allocations.h"
#include "record_calls.h"

#include <vector>

namespace {

using qxport::GroupRecord;

constexpr int32_t FORMER = 4711;
constexpr bool HAS_TABLE = sizeof(void *) > sizeof(int32_t);

// So many live records that the next one finds no room without an allocation.
class RecordsUpTo {
public:
  explicit RecordsUpTo(int count) : handles_(count) {
    for (int32_t &handle : handles_)
      EXPECT_EQ(create("tms", &handle), succeeded());
  }
  ~RecordsUpTo() {
    for (int32_t &handle : handles_)
      EXPECT_EQ(release(&handle), succeeded());
  }
  RecordsUpTo(const RecordsUpTo &) = delete;
  RecordsUpTo &operator=(const RecordsUpTo &) = delete;

private:
  std::vector<int32_t> handles_;
};

class RecordAllocation : public testing::Test {
protected:
  void SetUp() override { init_handle_table(); }
  void TearDown() override { init_handle_table(); }

  // Creates a record with its first, second, ... allocation failing; `expected` allocations there are.
  void expect_creation_with(size_t expected) {
    int32_t handle = FORMER;
    Outcome outcome;
    const size_t failures = fail_each_allocation(
        [&] {
          handle = FORMER;
          outcome = create("stat", &handle);
        },
        [&](size_t n) {
          EXPECT_EQ(outcome.answer, NO_SUCH_HANDLE) << n;
          EXPECT_EQ(outcome.state.local, SENTINEL) << n;
          EXPECT_TRUE(outcome.state.recorded.empty()) << n;
          EXPECT_EQ(handle, n == 1 ? FORMER : 0) << n;
        });
    EXPECT_EQ(failures, expected);
    EXPECT_EQ(outcome, succeeded());
    EXPECT_EQ(release(&handle), succeeded());
  }
};

// Where the next records will be, addresses were entered before and removed: nothing more need be made known.
void know_pages_around_the_heap() {
  constexpr intptr_t PAGE = 4096;
  void *block = malloc(100);
  for (intptr_t page = -64; page <= 64; ++page) {
    const intptr_t address = reinterpret_cast<intptr_t>(block) + page * PAGE;
    EXPECT_NE(get_handle_from_alloc_address(reinterpret_cast<void *>(address)), 0);
    EXPECT_EQ(free_alloc_handle(static_cast<int32_t>(address)), 0);
  }
  free(block);
}

// One that owns strings, with all of them set.
struct Filled : OwnedRecord {
  explicit Filled(const std::string &kind, int32_t seed = 77) : OwnedRecord(kind) {
    fill_record(*this, seed);
  }
};

// The n-th allocation fails while the source is copied.
Outcome copy_with_failure(const std::string &kind, int32_t source, int32_t destination, size_t n) {
  const FailingAllocation failing(n);
  const Outcome outcome = copy(kind, source, destination);
  EXPECT_TRUE(failing.failed()) << n;
  return outcome;
}

Outcome no_memory() {
  return refused(ENOMEM, ENOMEM);
}

void expect_strings_without_memory(const std::string &kind, const std::vector<std::string> &names) {
  for (const std::string &name : names) {
    const Filled record(kind);
    Contents expected = contents_of(record);
    {
      const FailingAllocation failing(1);
      EXPECT_EQ(strset(record, name, "a new text"), no_memory()) << name;
      EXPECT_TRUE(failing.failed());
    }
    expected[name] = "(none)";
    EXPECT_EQ(contents_of(record), expected) << "the old string is gone, all others stay";
    Character value(4);
    int32_t ilen = SENTINEL;
    EXPECT_EQ(strget(record, name, value, &ilen), succeeded());
    EXPECT_EQ(value.text(), "    ");
    EXPECT_EQ(ilen, 0);
    EXPECT_EQ(strset(record, name, "again"), succeeded());
    expected[name] = "again";
    EXPECT_EQ(contents_of(record), expected);
  }
}

}  // namespace

TEST_F(RecordAllocation, RecordItself) {
  const RecordsUpTo first(1);
  if (!HAS_TABLE)
    know_pages_around_the_heap();
  expect_creation_with(1);
}

#if UINTPTR_MAX > UINT32_MAX

TEST_F(RecordAllocation, TableGrowsAtThe256thRecord) {
  const RecordsUpTo full(255);
  expect_creation_with(2);
  EXPECT_NE(AllocatableHandles[255], 0u);
}

TEST_F(RecordAllocation, FailedGrowthChangesNothing) {
  const RecordsUpTo full(255);
  int32_t handle = FORMER;
  {
    const FailingAllocation failing(2);
    EXPECT_EQ(create("stat", &handle).answer, NO_SUCH_HANDLE);
  }
  EXPECT_EQ(AllocatableHandles[255], 0u);
  EXPECT_EQ(create("stat", &handle), succeeded());
  EXPECT_EQ(handle, 257);
  EXPECT_EQ(release(&handle), succeeded());
}

// Behind 64 blocks the aid beside the chain needs memory too.
TEST_F(RecordAllocation, IndexGrowsBehind64Blocks) {
  const RecordsUpTo full(64 * 255);
  expect_creation_with(4);
  int32_t handle = FORMER;
  EXPECT_EQ(create("stat", &handle), succeeded());
  EXPECT_EQ(handle, 64 * 256 + 1);
  EXPECT_EQ(release(&handle), succeeded());
}

TEST_F(RecordAllocation, NothingIsKeptOfAFailedGrowth) {
  const RecordsUpTo full(64 * 255);
  EXPECT_EQ(heap_growth([] {
              for (size_t n = 2; n <= 3; ++n) {
                int32_t handle = FORMER;
                const FailingAllocation failing(n);
                EXPECT_EQ(create("stat", &handle).answer, NO_SUCH_HANDLE) << n;
              }
            }),
            0u);
}

TEST_F(RecordAllocation, FirstRecordsNeedNothingButThemselves) {
  const FailingAllocation counting(0);
  const RecordsUpTo full(255);
  EXPECT_EQ(counting.allocations(), 255u);
}

TEST_F(RecordAllocation, ProcedureTableGrowsAtThe241st) {
  static char procedures[300];
  const auto get_handle = [](int number, int32_t *handle) {
    return reported_by([&](int32_t *ierror) {
      pxfgetsubhandle_(reinterpret_cast<void (*)()>(&procedures[number]), handle, ierror);
    });
  };
  int32_t handle = FORMER;
  {
    const FailingAllocation counting(0);
    for (int number = 0; number < 240; ++number)
      EXPECT_EQ(get_handle(number, &handle), succeeded());
    EXPECT_EQ(counting.allocations(), 0u);
  }
  Outcome outcome;
  const size_t failures = fail_each_allocation(
      [&] {
        handle = FORMER;
        outcome = get_handle(240, &handle);
      },
      [&](size_t) {
        EXPECT_EQ(outcome, refused(NO_SUCH_HANDLE));
        EXPECT_EQ(handle, 0);
        EXPECT_EQ(StaticHandles[255], 0u);
      });
  EXPECT_EQ(failures, 1u);
  EXPECT_EQ(outcome, succeeded());
  EXPECT_EQ(handle, 257);
}

#else

// The page of the record's address, and the pages around it, are made known when the first address there is
// entered.
TEST_F(RecordAllocation, FirstRecordNeedsThePagesOfItsAddress) {
  expect_creation_with(3);
}

TEST_F(RecordAllocation, PagesAreKeptForTheNextRecordThere) {
  static char things[2];
  ASSERT_NE(get_handle_from_alloc_address(&things[0]), 0);
  ASSERT_EQ(free_alloc_handle(static_cast<int32_t>(reinterpret_cast<intptr_t>(&things[0]))), 0);
  const FailingAllocation counting(0);
  EXPECT_NE(get_handle_from_alloc_address(&things[0]), 0);
  EXPECT_EQ(counting.allocations(), 0u);
}

TEST_F(RecordAllocation, SetOfProceduresGrows) {
  static char procedure;
  int32_t handle = FORMER;
  Outcome outcome;
  const size_t failures = fail_each_allocation(
      [&] {
        init_handle_table();
        handle = FORMER;
        outcome = reported_by([&](int32_t *ierror) {
          pxfgetsubhandle_(reinterpret_cast<void (*)()>(&procedure), &handle, ierror);
        });
      },
      [&](size_t) {
        EXPECT_EQ(outcome, refused(NO_SUCH_HANDLE));
        EXPECT_EQ(handle, 0);
      });
  EXPECT_EQ(failures, 2u);
  EXPECT_EQ(outcome, succeeded());
}

TEST_F(RecordAllocation, ProcedureEnteredAgainNeedsNoMore) {
  static char procedure;
  get_handle_from_static_address(&procedure);
  const FailingAllocation counting(0);
  for (int i = 0; i < 1000; ++i)
    get_handle_from_static_address(&procedure);
  EXPECT_EQ(counting.allocations(), 0u);
}

#endif

// So many that all that stands beside the tables has grown twice.
TEST_F(RecordAllocation, TablesGiveBackAllTheirMemory) {
  static char things[192 * 255 + 1];
  EXPECT_EQ(heap_growth([] {
              for (char &thing : things)
                get_handle_from_alloc_address(&thing);
              init_handle_table();
            }),
            0u);
}

TEST(StringAllocation, PasswdStringIsLost) {
  expect_strings_without_memory("passwd", {"pw_name", "pw_dir", "pw_shell"});
}

TEST(StringAllocation, GroupNameIsLost) {
  expect_strings_without_memory("group", {"gr_name"});
}

// ENOMEM for a user's texts, whatever the heap says; the host's own number for a group's name.
TEST(StringAllocation, NumberIsEnomemButForAGroupsName) {
  const auto set_without_memory = [](const std::string &kind, const std::string &name) {
    const Filled record(kind);
    const FailingAllocation failing(1, EAGAIN);
    return strset(record, name, "a new text");
  };
  for (const char *name : {"pw_name", "pw_dir", "pw_shell"})
    EXPECT_EQ(set_without_memory("passwd", name), no_memory()) << name;
  EXPECT_EQ(set_without_memory("group", "gr_name"), refused(EAGAIN, EAGAIN));
}

TEST(StringAllocation, IsExactlyTheTextAndItsNul) {
  const OwnedRecord record("passwd");
  for (const std::string &text : {std::string(), std::string("x"), std::string(1000, 'x')}) {
    const FailingAllocation counting(0);
    EXPECT_EQ(strset(record, "pw_dir", text + "   "), succeeded());
    EXPECT_EQ(counting.requested(counting.allocations()), text.size() + 1);
  }
}

TEST(StringAllocation, TextsInTheRecordNeedNone) {
  const OwnedRecord names("utsname");
  const FailingAllocation counting(0);
  const std::string compnam = "sysname";
  const int32_t handle = names;
  const int32_t ilen = 3;
  int32_t ierror = SENTINEL;
  pxfstrset_(&handle, compnam.data(), "abc", &ilen, &ierror, 7, 3);
  EXPECT_EQ(ierror, 0);
  EXPECT_EQ(counting.allocations(), 0u);
}

TEST(FieldAllocation, NumbersAndArraysNeedNone) {
  const OwnedRecord stat("stat");
  const OwnedRecord termios("termios");
  const int32_t jstat = stat;
  const int32_t jtermios = termios;
  const int32_t index = 3;
  int32_t ialen = 20;
  int32_t value[20] = {};
  int64_t wide[20] = {};
  int32_t ierrors[10];
  const std::string long_name(10'000, 'x');
  const FailingAllocation counting(0);
  pxfintget_(&jstat, "st_size", value, &ierrors[0], 7);
  pxfintset_(&jstat, "st_size", value, &ierrors[1], 7);
  pxfint8get_(&jstat, "st_size", wide, &ierrors[2], 7);
  pxfint8set_(&jstat, "st_size", wide, &ierrors[3], 7);
  pxfaintget_(&jtermios, "c_cc", value, &ialen, &ierrors[4], 4);
  pxfaintset_(&jtermios, "c_cc", value, &ialen, &ierrors[5], 4);
  pxfaint8get_(&jtermios, "c_cc", wide, &ialen, &ierrors[6], 4);
  pxfaint8set_(&jtermios, "c_cc", wide, &ialen, &ierrors[7], 4);
  pxfeintget_(&jtermios, "c_cc", &index, value, &ierrors[8], 4);
  pxfeintset_(&jtermios, "c_cc", &index, value, &ierrors[9], 4);
  for (const int32_t ierror : ierrors)
    EXPECT_EQ(ierror, 0);
  pxfintget_(&jstat, long_name.data(), value, &ierrors[0], 10'000);
  EXPECT_EQ(ierrors[0], NO_SUCH_NAME);
  EXPECT_EQ(counting.allocations(), 0u);
}

TEST(ConstantAllocation, LookUpsNeedNone) {
  const std::string long_name(10'000, 'x');
  int32_t ival = 0;
  int32_t ierror = SENTINEL;
  const FailingAllocation counting(0);
  pxfconst_("SIGINT", &ival, &ierror, 6);
  EXPECT_EQ(ierror, 0);
  pxfconst_(long_name.data(), &ival, &ierror, 10'000);
  EXPECT_EQ(ierror, NO_SUCH_NAME);
  EXPECT_EQ(ipxfconst_("SIGINT", 6), 2);
  EXPECT_EQ(pxfisconst_("SIGINT", 6), -1);
  EXPECT_EQ(counting.allocations(), 0u);
}

// The numbers are there, and the strings up to the one that could not be had.
TEST(CopyAllocation, PasswdMidway) {
  const std::vector<std::string> strings = {"pw_name", "pw_dir", "pw_shell"};
  const Filled source("passwd");
  const Contents wanted = contents_of(source);
  for (size_t n = 1; n <= strings.size(); ++n) {
    const Filled destination("passwd", 5'000'000);
    Contents expected = contents_of(destination);
    EXPECT_EQ(copy_with_failure("passwd", source, destination, n), no_memory()) << n;
    for (const char *number : {"pw_uid", "pw_gid"})
      expected[number] = wanted.at(number);
    for (size_t done = 0; done < n - 1; ++done)
      expected[strings[done]] = wanted.at(strings[done]);
    EXPECT_EQ(contents_of(destination), expected) << n;
    EXPECT_EQ(copy("passwd", source, destination), succeeded());
    EXPECT_EQ(contents_of(destination), wanted);
  }
  EXPECT_EQ(contents_of(source), wanted);
}

TEST(CopyAllocation, TheHostsNumberIsReported) {
  for (const std::string kind : {"passwd", "group"}) {
    const Filled source(kind);
    const Filled destination(kind, 5'000'000);
    for (const size_t n : {1, 2, 3}) {
      const FailingAllocation failing(n, EAGAIN);
      EXPECT_EQ(copy(kind, source, destination), refused(EAGAIN, EAGAIN)) << kind << ' ' << n;
    }
  }
}

TEST(CopyAllocation, GroupNameFails) {
  const Filled source("group");
  const Filled destination("group", 5'000'000);
  Contents expected = contents_of(destination);
  EXPECT_EQ(copy_with_failure("group", source, destination, 1), no_memory());
  expected["gr_gid"] = contents_of(source).at("gr_gid");
  EXPECT_EQ(contents_of(destination), expected);
}

// The list, then each of its members.
TEST(CopyAllocation, GroupMembersMidway) {
  const Filled source("group");
  const Contents wanted = contents_of(source);
  for (size_t n = 2; n <= 5; ++n) {
    const OwnedRecord destination("group");
    set_members(record_as<GroupRecord>(destination), {"x"});
    EXPECT_EQ(strset(destination, "gr_name", "former"), succeeded());
    EXPECT_EQ(copy_with_failure("group", source, destination, n), no_memory()) << n;
    const GroupRecord &left = record_as<GroupRecord>(destination);
    EXPECT_EQ(contents_of(destination).at("gr_name"), wanted.at("gr_name")) << n;
    EXPECT_EQ(contents_of(destination).at("gr_gid"), wanted.at("gr_gid")) << n;
    EXPECT_EQ(left.gr_mem, nullptr) << n;
    Character value(4);
    int32_t ilen = SENTINEL;
    EXPECT_EQ(estrget(destination, "gr_mem", 1, value, &ilen), succeeded()) << "as a member that is missing";
    EXPECT_EQ(ilen, 0);
    EXPECT_EQ(copy("group", source, destination), succeeded());
    EXPECT_EQ(contents_of(destination), wanted);
  }
  EXPECT_EQ(contents_of(source), wanted);
}

TEST(CopyAllocation, OtherKindsAndCopiesOntoItselfNeedNone) {
  for (const KnownKind &kind : known_kinds()) {
    const Filled source(kind.name);
    const OwnedRecord destination(kind.name);
    const int32_t from = source;
    const int32_t to = kind.name == "group" || kind.name == "passwd" ? from : int32_t{destination};
    int32_t ierror = SENTINEL;
    const FailingAllocation counting(0);
    pxfstructcopy_(kind.name.data(), &from, &to, &ierror, length_of_name(kind.name));
    EXPECT_EQ(ierror, 0) << kind.name;
    EXPECT_EQ(counting.allocations(), 0u) << kind.name;
  }
}

TEST(RecordMemory, NothingIsKept) {
  for (const KnownKind &kind : known_kinds()) {
    EXPECT_EQ(heap_growth([&] {
                const Filled source(kind.name);
                const Filled destination(kind.name, 5'000'000);
                copy(kind.name, source, destination);
                for (size_t n = 1; n <= 6; ++n) {
                  const FailingAllocation failing(n);
                  copy(kind.name, source, destination);
                }
              }),
              0u)
        << kind.name;
  }
}

TEST(RecordMemory, NothingIsKeptOfAFailedCreation) {
  const RecordsUpTo some(HAS_TABLE ? 255 : 256);
  EXPECT_EQ(heap_growth([] {
              for (size_t n = 1; n <= 2; ++n) {
                int32_t handle = FORMER;
                const FailingAllocation failing(n);
                if (create("stat", &handle).answer == 0)
                  release(&handle);
              }
            }),
            0u);
}
