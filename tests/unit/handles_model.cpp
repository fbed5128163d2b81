// Long random sequences of entering, freeing and resolving, checked step by step against a model that is too
// simple to be wrong.
#include "record_calls.h"

#include <random>
#include <unordered_set>
#include <vector>

namespace {

constexpr int STEPS = 100'000;

// More things than will ever be alive at once.
char things[STEPS];

// Entering is favoured, then freeing, in turns, so that the tables fill and empty through several blocks.
bool enters(std::mt19937 &random, int step) {
  const unsigned favour = step / 10'000 % 2 == 0 ? 70 : 33;
  return random() % 100 < favour;
}

}  // namespace

#if UINTPTR_MAX > UINT32_MAX

namespace {

// The table as blocks of 255 slots; the lowest free slot is looked for from the very first.
class Model {
public:
  int32_t enter(const void *address) {
    for (size_t block = 0;; ++block) {
      if (block == blocks_.size())
        blocks_.push_back({});
      const void **slots = blocks_[block].slots;
      for (size_t slot = 0; slot < 255; ++slot) {
        if (slots[slot] == nullptr) {
          slots[slot] = address;
          return static_cast<int32_t>(block * 256 + slot + 1);
        }
      }
    }
  }

  const void *resolve(int32_t handle) const {
    const size_t block = handle < 256 ? 0 : static_cast<size_t>(handle / 256);
    const size_t place = static_cast<size_t>(handle & 255);
    return place == 0 || block >= blocks_.size() ? nullptr : blocks_[block].slots[place - 1];
  }

  int32_t free(int32_t handle) {
    const size_t block = handle < 256 ? 0 : static_cast<size_t>(handle / 256);
    const size_t place = static_cast<size_t>(handle & 255);
    if (place == 0 || block >= blocks_.size())
      return -1;
    blocks_[block].slots[place - 1] = nullptr;
    return 0;
  }

  // The chain that a program sees through the exported block.
  void expect_same_chain() const {
    const uintptr_t *words = AllocatableHandles;
    for (size_t block = 0; block < blocks_.size(); ++block) {
      ASSERT_NE(words, nullptr) << block;
      for (size_t slot = 0; slot < 255; ++slot)
        ASSERT_EQ(words[slot], reinterpret_cast<uintptr_t>(blocks_[block].slots[slot]))
            << block << ' ' << slot;
      words = reinterpret_cast<const uintptr_t *>(words[255]);
    }
    EXPECT_EQ(words, nullptr);
  }

  size_t blocks() const { return blocks_.size(); }

private:
  struct Block {
    const void *slots[255];
  };
  std::vector<Block> blocks_ = std::vector<Block>(1);
};

// Mostly a handle within the blocks in use, taken or not; now and then a strange one.
int32_t any_handle(std::mt19937 &random, const Model &model) {
  if (random() % 20 == 0)
    return static_cast<int32_t>(random());
  return static_cast<int32_t>(random() % (model.blocks() * 256 + 300)) - 20;
}

}  // namespace

TEST(HandlesModel, HundredThousandSteps) {
  init_handle_table();
  std::mt19937 random(19);
  Model model;
  size_t most = 0;
  for (int step = 0; step < STEPS; ++step) {
    if (enters(random, step)) {
      ASSERT_EQ(get_handle_from_alloc_address(&things[step]), model.enter(&things[step])) << step;
    } else {
      const int32_t handle = any_handle(random, model);
      ASSERT_EQ(free_alloc_handle(handle), model.free(handle)) << step << ' ' << handle;
    }
    const int32_t handle = any_handle(random, model);
    ASSERT_EQ(get_address_from_handle(handle, AllocatableHandles), model.resolve(handle)) << handle;
    most = std::max(most, model.blocks());
    if (step % 5'000 == 0)
      model.expect_same_chain();
  }
  model.expect_same_chain();
  EXPECT_GT(most, 8u) << "the sequence is worth its name";
  init_handle_table();
}

// Behind 64 blocks the aid beside the chain grows; the chain must not show it.
TEST(HandlesModel, ThroughHundredsOfBlocks) {
  constexpr int COUNT = 255 * 300;
  init_handle_table();
  std::vector<int32_t> handles;
  for (int thing = 0; thing < COUNT; ++thing) {
    handles.push_back(get_handle_from_alloc_address(&things[thing]));
    ASSERT_EQ(handles.back(), thing / 255 * 256 + thing % 255 + 1);
  }
  std::mt19937 random(5);
  std::vector<int32_t> freed;
  for (int i = 0; i < COUNT; ++i) {
    if (random() % 3 != 0)
      continue;
    ASSERT_EQ(free_alloc_handle(handles[i]), 0);
    freed.push_back(handles[i]);
  }
  for (const int32_t handle : freed)
    ASSERT_EQ(get_handle_from_alloc_address(things), handle) << "lowest first";
  EXPECT_EQ(get_handle_from_alloc_address(things), 300 * 256 + 1);
  init_handle_table();
}

#else

TEST(HandlesModel, HundredThousandSteps) {
  init_handle_table();
  std::mt19937 random(19);
  std::unordered_set<const void *> model;
  for (int step = 0; step < STEPS; ++step) {
    char *const thing = &things[random() % 5'000];
    const int32_t handle = static_cast<int32_t>(reinterpret_cast<intptr_t>(thing));
    if (enters(random, step)) {
      ASSERT_EQ(get_handle_from_alloc_address(thing), handle);
      model.insert(thing);
    } else {
      ASSERT_EQ(free_alloc_handle(handle), model.erase(thing) == 1 ? 0 : -1) << step;
    }
    char *const other = &things[random() % 5'000];
    const int32_t looked_up = static_cast<int32_t>(reinterpret_cast<intptr_t>(other));
    ASSERT_EQ(get_address_from_handle(looked_up, AllocatableHandles),
              model.contains(other) ? other : nullptr);
  }
  for (char *thing = things; thing < things + 5'000; ++thing)
    ASSERT_EQ(
        get_address_from_handle(static_cast<int32_t>(reinterpret_cast<intptr_t>(thing)), AllocatableHandles),
        model.contains(thing) ? thing : nullptr);
  init_handle_table();
}

// Addresses of one stride, as an allocator's are.
TEST(HandlesModel, StridesOfAnAllocator) {
  init_handle_table();
  for (const int stride : {1, 8, 16, 32, 48}) {
    for (int i = 0; i < STEPS / stride; ++i)
      ASSERT_NE(get_handle_from_alloc_address(&things[i * stride]), 0);
    for (int i = 0; i < STEPS / stride; ++i)
      ASSERT_EQ(free_alloc_handle(static_cast<int32_t>(reinterpret_cast<intptr_t>(&things[i * stride]))), 0);
  }
  init_handle_table();
}

#endif
