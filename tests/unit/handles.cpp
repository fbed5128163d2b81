// Handles as a program meets them, and the internal services behind them: on targets of 64-bit addresses a
// place in a table, on targets of 32-bit addresses the address itself.
#include "record_calls.h"

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

namespace {

constexpr int WORDS = 256;
constexpr int RESERVED = 15;

// Addresses to enter; nobody looks behind them.
char things[2000];

class Handles : public testing::Test {
protected:
  void SetUp() override {
    init_handle_table();
    reset_error_state();
  }
  void TearDown() override {
    EXPECT_EQ(error_state(), untouched()) << "the services report to nobody";
    init_handle_table();
  }
};

int32_t enter(int thing) {
  return get_handle_from_alloc_address(&things[thing]);
}
int32_t enter_static(int thing) {
  return get_handle_from_static_address(&things[thing]);
}
void *resolve(int32_t handle) {
  return get_address_from_handle(handle, AllocatableHandles);
}
void *resolve_static(int32_t handle) {
  return get_address_from_handle(handle, StaticHandles);
}

// The handles of the things 0 to count - 1.
std::vector<int32_t> enter_many(int count) {
  std::vector<int32_t> handles;
  for (int thing = 0; thing < count; ++thing)
    handles.push_back(enter(thing));
  return handles;
}

}  // namespace

TEST_F(Handles, EveryThingIsFoundByItsHandle) {
  const std::vector<int32_t> handles = enter_many(1000);
  for (int thing = 0; thing < 1000; ++thing)
    EXPECT_EQ(resolve(handles[thing]), &things[thing]) << thing;
}

TEST_F(Handles, ZeroIsNoHandle) {
  enter_many(300);
  enter_static(0);
  EXPECT_EQ(resolve(0), nullptr);
  EXPECT_EQ(resolve_static(0), nullptr);
  EXPECT_EQ(free_alloc_handle(0), -1);
}

TEST_F(Handles, FreedHandleIsStale) {
  const std::vector<int32_t> handles = enter_many(600);
  for (const int thing : {0, 1, 254, 255, 256, 599}) {
    EXPECT_EQ(free_alloc_handle(handles[thing]), 0);
    EXPECT_EQ(resolve(handles[thing]), nullptr) << thing;
  }
  EXPECT_EQ(resolve(handles[2]), &things[2]);
}

TEST_F(Handles, FreeingDoesNotTouchTheThing) {
  things[7] = 'x';
  const int32_t handle = enter(7);
  EXPECT_EQ(free_alloc_handle(handle), 0);
  EXPECT_EQ(things[7], 'x');
}

TEST_F(Handles, ProcedureHasOneHandle) {
  const int32_t first = enter_static(0);
  const int32_t second = enter_static(1);
  EXPECT_NE(first, second);
  EXPECT_EQ(enter_static(0), first);
  EXPECT_EQ(enter_static(1), second);
  EXPECT_EQ(resolve_static(first), &things[0]);
}

TEST_F(Handles, TablesAreApart) {
  const int32_t of_record = enter(0);
  const int32_t of_procedure = enter_static(1);
  EXPECT_EQ(resolve(of_procedure), nullptr);
  EXPECT_EQ(resolve_static(of_record) == &things[0], false);
}

TEST_F(Handles, FreeingARecordLeavesTheProcedures) {
  std::vector<int32_t> handles;
  for (int thing = 0; thing < 300; ++thing)
    handles.push_back(enter_static(thing));
  for (const int32_t handle : handles)
    free_alloc_handle(handle);
  for (int thing = 0; thing < 300; ++thing)
    EXPECT_EQ(resolve_static(handles[thing]), &things[thing]);
}

// Records of the library's own, freed in no order.
TEST_F(Handles, MillionLiveRecords) {
  constexpr int COUNT = 1'000'000;
  std::vector<int32_t> handles(COUNT, 0);
  int32_t ierror = 0;
  int failures = 0;
  for (int32_t &handle : handles) {
    pxfstructcreate_("sigset", &handle, &ierror, 6);
    failures += ierror != 0;
  }
  ASSERT_EQ(failures, 0);

  std::vector<int32_t> distinct = handles;
  std::sort(distinct.begin(), distinct.end());
  EXPECT_EQ(std::adjacent_find(distinct.begin(), distinct.end()), distinct.end());
  EXPECT_TRUE(std::all_of(handles.begin(), handles.end(), [](int32_t handle) {
    const void *record = resolve(handle);
    return record != nullptr && *static_cast<const uint32_t *>(record) == 1;
  }));

  std::shuffle(handles.begin(), handles.end(), std::mt19937(1));
  for (size_t i = 0; i < handles.size(); ++i) {
    const int32_t former = handles[i];
    pxfstructfree_(&handles[i], &ierror);
    failures += ierror != 0 || handles[i] != 0 || resolve(former) != nullptr;
  }
  EXPECT_EQ(failures, 0);
}

#if UINTPTR_MAX > UINT32_MAX

TEST_F(Handles, FirstThreeRecordsAre1To3AndAFreedOneComesNext) {
  std::vector<int32_t> records(3);
  for (int32_t &record : records)
    EXPECT_EQ(create("stat", &record), succeeded());
  EXPECT_EQ(records, (std::vector<int32_t>{1, 2, 3}));
  EXPECT_EQ(release(&records[1]), succeeded());
  EXPECT_EQ(create("tms", &records[1]), succeeded());
  EXPECT_EQ(records[1], 2);
  for (int32_t &record : records)
    EXPECT_EQ(release(&record), succeeded());
  reset_error_state();
}

TEST_F(Handles, The256thIs257AndThe511thIs513) {
  const std::vector<int32_t> handles = enter_many(511);
  EXPECT_EQ(handles[0], 1);
  EXPECT_EQ(handles[254], 255);
  EXPECT_EQ(handles[255], 257);
  EXPECT_EQ(handles[509], 511);
  EXPECT_EQ(handles[510], 513);
}

TEST_F(Handles, ExportedBlocksHold255SlotsAndALink) {
  enter_many(511);
  for (int slot = 0; slot < 255; ++slot)
    EXPECT_EQ(AllocatableHandles[slot], reinterpret_cast<uintptr_t>(&things[slot])) << slot;
  const uintptr_t *second = reinterpret_cast<const uintptr_t *>(AllocatableHandles[255]);
  for (int slot = 0; slot < 255; ++slot)
    EXPECT_EQ(second[slot], reinterpret_cast<uintptr_t>(&things[255 + slot])) << slot;
  const uintptr_t *third = reinterpret_cast<const uintptr_t *>(second[255]);
  EXPECT_EQ(third[0], reinterpret_cast<uintptr_t>(&things[510]));
  for (int word = 1; word < WORDS; ++word)
    EXPECT_EQ(third[word], 0u) << word;
}

TEST_F(Handles, FullBlockIsFollowedByNoneUntilItIsNeeded) {
  enter_many(255);
  EXPECT_EQ(AllocatableHandles[255], 0u);
  enter(255);
  EXPECT_NE(AllocatableHandles[255], 0u);
}

TEST_F(Handles, LowestFreeSlotOfTheEarliestBlockIsTaken) {
  enter_many(800);
  const std::vector<int32_t> freed = {700, 513, 767, 300, 511, 257, 255, 64, 65, 63, 128, 1};
  for (const int32_t handle : freed)
    EXPECT_EQ(free_alloc_handle(handle), 0);
  std::vector<int32_t> expected = freed;
  std::sort(expected.begin(), expected.end());
  for (const int32_t handle : expected)
    EXPECT_EQ(enter(0), handle);
  EXPECT_EQ(enter(0), 3 * 256 + 800 - 3 * 255 + 1);
}

TEST_F(Handles, TableNeverShrinks) {
  for (const int32_t handle : enter_many(600))
    EXPECT_EQ(free_alloc_handle(handle), 0);
  const uintptr_t second = AllocatableHandles[255];
  ASSERT_NE(second, 0u);
  EXPECT_NE(reinterpret_cast<const uintptr_t *>(second)[255], 0u);
  EXPECT_EQ(free_alloc_handle(600), 0) << "the slot is there, if free";
  EXPECT_EQ(enter_many(256).back(), 257);
  EXPECT_EQ(AllocatableHandles[255], second) << "and is used again";
}

TEST_F(Handles, ThingEnteredTwiceGetsTwoHandles) {
  EXPECT_EQ(enter(5), 1);
  EXPECT_EQ(enter(5), 2);
  EXPECT_EQ(free_alloc_handle(1), 0);
  EXPECT_EQ(resolve(2), &things[5]);
}

// The first block is a program's to write as well.
TEST_F(Handles, SlotsThatAProgramFilledAreNotTaken) {
  AllocatableHandles[1] = reinterpret_cast<uintptr_t>(&things[900]);
  EXPECT_EQ(enter(0), 1);
  EXPECT_EQ(enter(1), 3);
  EXPECT_EQ(resolve(2), &things[900]);
  EXPECT_EQ(free_alloc_handle(2), 0);
  EXPECT_EQ(enter(2), 2);
  for (int slot = 3; slot < 255; ++slot)
    AllocatableHandles[slot] = reinterpret_cast<uintptr_t>(&things[901]);
  EXPECT_EQ(enter(3), 257);
  EXPECT_EQ(resolve(255), &things[901]);
}

TEST_F(Handles, MultiplesOf256NameNothing) {
  enter_many(600);
  enter_static(0);
  for (const int32_t handle : {256, 512, 768, 65536, 0x7FFFFF00, -256, -512, INT32_MIN}) {
    EXPECT_EQ(resolve(handle), nullptr) << handle;
    EXPECT_EQ(resolve_static(handle), nullptr) << handle;
    EXPECT_EQ(free_alloc_handle(handle), -1) << handle;
  }
}

TEST_F(Handles, NothingIsBehindTheLastBlock) {
  enter_many(300);
  for (const int32_t handle : {513, 600, 767, 65537, 1'000'001, 0x7FFFFF01, INT32_MAX}) {
    EXPECT_EQ(resolve(handle), nullptr) << handle;
    EXPECT_EQ(free_alloc_handle(handle), -1) << handle;
  }
}

TEST_F(Handles, Freeing300WithOneBlockIsRefused) {
  enter_many(255);
  EXPECT_EQ(free_alloc_handle(300), -1);
  enter(255);
  EXPECT_EQ(free_alloc_handle(300), 0) << "with two blocks it names a slot, if a free one";
  EXPECT_EQ(enter(256), 258);
}

TEST_F(Handles, FreeingTwiceNamesTheSameSlot) {
  enter_many(3);
  EXPECT_EQ(free_alloc_handle(2), 0);
  EXPECT_EQ(free_alloc_handle(2), 0);
  EXPECT_EQ(enter(9), 2);
  EXPECT_EQ(enter(10), 4);
}

TEST_F(Handles, NegativeHandleIsResolvedInTheFirstBlockByItsLowBits) {
  enter_many(600);
  EXPECT_EQ(resolve(-1), &things[254]);
  EXPECT_EQ(resolve(-255), &things[0]);
  EXPECT_EQ(resolve(-257), &things[254]);
  EXPECT_EQ(resolve(INT32_MIN + 1), &things[0]);
  EXPECT_EQ(resolve_static(-255), reinterpret_cast<void *>(UINTPTR_MAX)) << "a reserved slot";
  EXPECT_EQ(resolve_static(-1), nullptr) << "a free slot";
}

TEST_F(Handles, NegativeHandleFreesInTheFirstBlock) {
  enter_many(600);
  EXPECT_EQ(free_alloc_handle(-1), 0);
  EXPECT_EQ(resolve(255), nullptr);
  EXPECT_EQ(free_alloc_handle(-255), 0);
  EXPECT_EQ(resolve(1), nullptr);
  EXPECT_EQ(enter(0), 1);
  EXPECT_EQ(enter(254), 255);
}

TEST_F(Handles, FirstProcedureIs16AndThe241stIs257) {
  EXPECT_EQ(enter_static(0), 16);
  EXPECT_EQ(enter_static(0), 16);
  for (int thing = 1; thing < 240; ++thing)
    EXPECT_EQ(enter_static(thing), 16 + thing);
  EXPECT_EQ(StaticHandles[255], 0u);
  EXPECT_EQ(enter_static(240), 257);
  EXPECT_EQ(enter_static(240), 257);
  EXPECT_EQ(enter_static(239), 255);
  EXPECT_EQ(enter_static(0), 16);
}

TEST_F(Handles, ProceduresFillLaterBlocksFromTheirFirstSlot) {
  int32_t last = 0;
  for (int thing = 0; thing < 240 + 255; ++thing)
    last = enter_static(thing);
  EXPECT_EQ(last, 511);
  EXPECT_EQ(enter_static(240 + 255), 513);
  const uintptr_t *second = reinterpret_cast<const uintptr_t *>(StaticHandles[255]);
  EXPECT_EQ(second[0], reinterpret_cast<uintptr_t>(&things[240]));
  EXPECT_EQ(second[254], reinterpret_cast<uintptr_t>(&things[494]));
  EXPECT_EQ(reinterpret_cast<const uintptr_t *>(second[255])[0], reinterpret_cast<uintptr_t>(&things[495]));
  EXPECT_EQ(resolve_static(513), &things[495]);
}

TEST_F(Handles, ReservedSlotsAreNotSearched) {
  EXPECT_EQ(get_handle_from_static_address(reinterpret_cast<void *>(UINTPTR_MAX)), 16);
  for (int slot = 0; slot < RESERVED; ++slot)
    EXPECT_EQ(StaticHandles[slot], UINTPTR_MAX);
}

TEST_F(Handles, NoProcedureTakesNoSlot) {
  EXPECT_EQ(get_handle_from_static_address(nullptr), 16);
  EXPECT_EQ(enter_static(3), 16);
}

#else

TEST_F(Handles, HandleIsTheAddress) {
  for (int thing = 0; thing < 1000; ++thing) {
    EXPECT_EQ(enter(thing), reinterpret_cast<intptr_t>(&things[thing]));
    EXPECT_EQ(enter_static(thing), reinterpret_cast<intptr_t>(&things[thing]));
  }
}

TEST_F(Handles, TablesStayEmpty) {
  enter_many(1000);
  for (int thing = 0; thing < 1000; ++thing)
    enter_static(thing);
  for (int word = 0; word < WORDS; ++word) {
    EXPECT_EQ(AllocatableHandles[word], 0u) << word;
    EXPECT_EQ(StaticHandles[word], word < RESERVED ? UINTPTR_MAX : 0u) << word;
  }
}

TEST_F(Handles, ForeignNumbersAreRefused) {
  const std::vector<int32_t> handles = enter_many(100);
  for (const int32_t handle :
       {1, 16, 256, 257, -1, -256, INT32_MAX, INT32_MIN, handles[99] + 1, handles[0] - 1,
        static_cast<int32_t>(reinterpret_cast<intptr_t>(AllocatableHandles))}) {
    EXPECT_EQ(resolve(handle), nullptr) << handle;
    EXPECT_EQ(resolve_static(handle), nullptr) << handle;
    EXPECT_EQ(free_alloc_handle(handle), -1) << handle;
  }
}

TEST_F(Handles, FreeingTwiceIsRefused) {
  const std::vector<int32_t> handles = enter_many(100);
  EXPECT_EQ(free_alloc_handle(handles[50]), 0);
  EXPECT_EQ(free_alloc_handle(handles[50]), -1);
  EXPECT_EQ(enter(50), handles[50]);
  EXPECT_EQ(resolve(handles[50]), &things[50]);
}

#endif
