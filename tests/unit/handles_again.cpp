// The tables prepared or given back once more, with records alive and after growth: what is issued afterwards
// must be as true as before.
#include "record_calls.h"

#include <vector>

namespace {

char things[2000];

class HandlesAgain : public testing::Test {
protected:
  void SetUp() override { init_handle_table(); }
  void TearDown() override { init_handle_table(); }
};

std::vector<int32_t> enter_many(int count) {
  std::vector<int32_t> handles;
  for (int thing = 0; thing < count; ++thing)
    handles.push_back(get_handle_from_alloc_address(&things[thing]));
  return handles;
}
std::vector<int32_t> enter_many_static(int count) {
  std::vector<int32_t> handles;
  for (int thing = 0; thing < count; ++thing)
    handles.push_back(get_handle_from_static_address(&things[thing]));
  return handles;
}
void *resolve(int32_t handle) {
  return get_address_from_handle(handle, AllocatableHandles);
}

}  // namespace

TEST_F(HandlesAgain, InitForgetsEverything) {
  const std::vector<int32_t> handles = enter_many(1000);
  const std::vector<int32_t> static_handles = enter_many_static(1000);
  reset_error_state();
  EXPECT_EQ(init_handle_table(), 0);
  EXPECT_EQ(error_state(), untouched());
  for (const int32_t handle : handles)
    EXPECT_EQ(resolve(handle), nullptr) << handle;
  for (const int32_t handle : static_handles)
    EXPECT_EQ(get_address_from_handle(handle, StaticHandles), nullptr) << handle;
}

TEST_F(HandlesAgain, InitIssuesTheSameHandlesAgain) {
  const std::vector<int32_t> handles = enter_many(1000);
  const std::vector<int32_t> static_handles = enter_many_static(1000);
  for (int round = 0; round < 3; ++round) {
    init_handle_table();
    EXPECT_EQ(enter_many(1000), handles);
    EXPECT_EQ(enter_many_static(1000), static_handles);
    for (int thing = 0; thing < 1000; ++thing)
      EXPECT_EQ(resolve(handles[thing]), &things[thing]);
  }
}

TEST_F(HandlesAgain, RecordsOutliveInit) {
  int32_t handle = 0;
  EXPECT_EQ(create("passwd", &handle), succeeded());
  void *record = resolve(handle);
  init_handle_table();
  int32_t former = handle;
  EXPECT_EQ(release(&former), refused(NO_SUCH_HANDLE));
  handle = get_handle_from_alloc_address(record);
  EXPECT_EQ(strset(handle, "pw_name", "still here"), succeeded());
  EXPECT_EQ(release(&handle), succeeded());
}

TEST_F(HandlesAgain, DestroyCanBeRepeated) {
  enter_many(1000);
  enter_many_static(1000);
  reset_error_state();
  destroy_handle_table();
  destroy_handle_table();
  EXPECT_EQ(error_state(), untouched());
  EXPECT_EQ(init_handle_table(), 0);
  EXPECT_NE(get_handle_from_alloc_address(things), 0);
}

#if UINTPTR_MAX > UINT32_MAX

TEST_F(HandlesAgain, InitClearsWordsSetByHand) {
  for (const int word : {0, 1, 63, 64, 128, 254, 255}) {
    AllocatableHandles[word] = reinterpret_cast<uintptr_t>(&things[word]);
    StaticHandles[word] = 5;
  }
  init_handle_table();
  for (int word = 0; word < 256; ++word) {
    EXPECT_EQ(AllocatableHandles[word], 0u) << word;
    EXPECT_EQ(StaticHandles[word], word < 15 ? UINTPTR_MAX : 0u) << word;
  }
  EXPECT_EQ(enter_many(256).back(), 257);
  EXPECT_EQ(enter_many_static(241).back(), 257);
}

// Entries of the first block stay; the further blocks are gone.
TEST_F(HandlesAgain, DestroyLeavesTheFirstBlock) {
  const std::vector<int32_t> handles = enter_many(600);
  destroy_handle_table();
  for (int thing = 0; thing < 600; ++thing)
    EXPECT_EQ(resolve(handles[thing]), thing < 255 ? &things[thing] : nullptr) << thing;
  EXPECT_EQ(free_alloc_handle(300), -1);
}

TEST_F(HandlesAgain, TableGrowsAnewAfterDestroy) {
  enter_many(600);
  enter_many_static(600);
  destroy_handle_table();
  EXPECT_EQ(free_alloc_handle(3), 0);
  EXPECT_EQ(free_alloc_handle(200), 0);
  EXPECT_EQ(get_handle_from_alloc_address(&things[1000]), 3);
  EXPECT_EQ(get_handle_from_alloc_address(&things[1001]), 200);
  EXPECT_EQ(get_handle_from_alloc_address(&things[1002]), 257);
  EXPECT_EQ(get_handle_from_alloc_address(&things[1003]), 258);
  const uintptr_t *second = reinterpret_cast<const uintptr_t *>(AllocatableHandles[255]);
  EXPECT_EQ(second[0], reinterpret_cast<uintptr_t>(&things[1002]));
  EXPECT_EQ(second[255], 0u);
  EXPECT_EQ(get_handle_from_static_address(&things[0]), 16) << "as before";
  EXPECT_EQ(get_handle_from_static_address(&things[599]), 257) << "entered anew";
}

TEST_F(HandlesAgain, DestroyKnowsWordsSetByHand) {
  AllocatableHandles[0] = reinterpret_cast<uintptr_t>(&things[0]);
  AllocatableHandles[2] = reinterpret_cast<uintptr_t>(&things[2]);
  destroy_handle_table();
  EXPECT_EQ(resolve(1), &things[0]);
  EXPECT_EQ(resolve(3), &things[2]);
  EXPECT_EQ(get_handle_from_alloc_address(&things[1]), 2);
  EXPECT_EQ(get_handle_from_alloc_address(&things[3]), 4);
}

// More blocks than fit in the static part of the aid beside the chain.
TEST_F(HandlesAgain, AfterHundredBlocks) {
  for (void (*again)() : {+[] { init_handle_table(); }, +[] { destroy_handle_table(); }}) {
    init_handle_table();
    for (int i = 0; i < 255 * 100; ++i)
      get_handle_from_alloc_address(&things[i % 2000]);
    again();
    EXPECT_EQ(resolve(99 * 256 + 1), nullptr);
    for (int32_t handle = 1; handle <= 255; ++handle)
      if (resolve(handle) != nullptr)
        free_alloc_handle(handle);
    for (int i = 0; i < 255 * 100; ++i)
      ASSERT_EQ(get_handle_from_alloc_address(&things[i % 2000]), i / 255 * 256 + i % 255 + 1);
  }
}

#else

TEST_F(HandlesAgain, InitClearsWordsSetByHand) {
  AllocatableHandles[0] = 1;
  AllocatableHandles[255] = 1;
  StaticHandles[0] = 1;
  StaticHandles[255] = 1;
  init_handle_table();
  for (int word = 0; word < 256; ++word) {
    EXPECT_EQ(AllocatableHandles[word], 0u) << word;
    EXPECT_EQ(StaticHandles[word], word < 15 ? UINTPTR_MAX : 0u) << word;
  }
}

TEST_F(HandlesAgain, DestroyForgetsEverything) {
  const std::vector<int32_t> handles = enter_many(1000);
  destroy_handle_table();
  for (const int32_t handle : handles)
    EXPECT_EQ(resolve(handle), nullptr);
  EXPECT_EQ(enter_many(1000), handles);
}

#endif
