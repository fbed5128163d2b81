// Handles on targets whose addresses are wider than INTEGER(4).
#include "records/handles.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>

using namespace qxport;

namespace {

constexpr int BITS = 64;
constexpr int WORDS_PER_SUMMARY = WORDS_PER_BLOCK / BITS;

// Which slots of a block are taken, a bit each; the bit of the link is always set.
struct Block {
  uintptr_t *words;
  uint64_t taken[WORDS_PER_SUMMARY];

  bool is_full() const { return (taken[0] & taken[1] & taken[2] & taken[3]) == UINT64_MAX; }
};

constexpr Block empty_block(uintptr_t *words) {
  return {words, {0, 0, 0, uint64_t{1} << (BITS - 1)}};
}

// The blocks of one table by number, and which of them have a free slot: what the chain itself tells only by
// walking it. It is an aid: the chain stays true without it.
class BlockIndex {
public:
  explicit constexpr BlockIndex(uintptr_t *first) : first_(first) { few_[0] = empty_block(first); }

  int32_t count() const { return count_; }
  uintptr_t *words(int32_t number) const { return number < count_ ? blocks_[number].words : nullptr; }

  // Forgets and releases all blocks but the first.
  void reset() {
    for (int32_t number = 1; number < count_; ++number)
      free(blocks_[number].words);
    if (blocks_ != few_) {
      free(blocks_);
      free(open_);
    }
    blocks_ = few_;
    open_ = &few_open_;
    capacity_ = FEW;
    count_ = 1;
    few_[0] = empty_block(first_);
    few_open_ = 1;
    lowest_open_ = 0;
  }

  // The lowest block that has a free slot, or -1.
  int32_t lowest_open() {
    const int32_t words = (count_ + BITS - 1) / BITS;
    for (int32_t i = lowest_open_; i < words; ++i) {
      if (open_[i] != 0) {
        lowest_open_ = i;
        return i * BITS + std::countr_zero(open_[i]);
      }
    }
    lowest_open_ = words;
    return -1;
  }

  // The lowest free slot of a block that has one.
  int32_t lowest_free_slot(int32_t number) const {
    const Block &block = blocks_[number];
    int32_t i = 0;
    while (block.taken[i] == UINT64_MAX)
      ++i;
    return i * BITS + std::countr_one(block.taken[i]);
  }

  void take(int32_t number, int32_t slot) {
    Block &block = blocks_[number];
    block.taken[slot / BITS] |= uint64_t{1} << (slot % BITS);
    if (block.is_full())
      open_[number / BITS] &= ~(uint64_t{1} << (number % BITS));
  }

  void give_back(int32_t number, int32_t slot) {
    blocks_[number].taken[slot / BITS] &= ~(uint64_t{1} << (slot % BITS));
    open_[number / BITS] |= uint64_t{1} << (number % BITS);
    lowest_open_ = std::min(lowest_open_, number / BITS);
  }

  // Links a new empty block behind the last one. False, with nothing changed, when memory ran out.
  bool append() {
    if (count_ == capacity_ && !grow())
      return false;
    uintptr_t *words = static_cast<uintptr_t *>(calloc(WORDS_PER_BLOCK, sizeof(uintptr_t)));
    if (words == nullptr)
      return false;
    blocks_[count_ - 1].words[LINK] = reinterpret_cast<uintptr_t>(words);
    blocks_[count_] = empty_block(words);
    open_[count_ / BITS] |= uint64_t{1} << (count_ % BITS);
    lowest_open_ = std::min(lowest_open_, count_ / BITS);
    ++count_;
    return true;
  }

private:
  // All blocks are full when a table grows, so which of them are open need not be carried over.
  bool grow() {
    const size_t capacity = static_cast<size_t>(capacity_) * 2;
    Block *blocks = static_cast<Block *>(malloc(capacity * sizeof(Block)));
    uint64_t *open = static_cast<uint64_t *>(calloc(capacity / BITS, sizeof(uint64_t)));
    if (blocks == nullptr || open == nullptr) {
      free(blocks);
      free(open);
      return false;
    }
    memcpy(blocks, blocks_, static_cast<size_t>(count_) * sizeof(Block));
    if (blocks_ != few_) {
      free(blocks_);
      free(open_);
    }
    blocks_ = blocks;
    open_ = open;
    capacity_ *= 2;
    return true;
  }

  static constexpr int32_t FEW = BITS;
  uintptr_t *first_;
  Block few_[FEW] = {};
  uint64_t few_open_ = 1;
  Block *blocks_ = few_;
  uint64_t *open_ = &few_open_;
  int32_t capacity_ = FEW;
  int32_t count_ = 1;
  int32_t lowest_open_ = 0;  // no word of open_ below it has a bit set
};

constinit BlockIndex allocatable(AllocatableHandles);
constinit BlockIndex statics(StaticHandles);

constexpr int32_t handle_of(int32_t block, int32_t slot) {
  return block * WORDS_PER_BLOCK + slot + 1;
}

// The slot that a handle names, or null. A negative handle is resolved in the first block by its low eight
// bits.
uintptr_t *slot_of(const BlockIndex &index, int32_t handle) {
  const int32_t number = handle < WORDS_PER_BLOCK ? 0 : handle / WORDS_PER_BLOCK;
  const int32_t place = handle & (WORDS_PER_BLOCK - 1);
  uintptr_t *words = index.words(number);
  return words == nullptr || place == 0 ? nullptr : &words[place - 1];
}

}  // namespace

int32_t init_handle_table() {
  clear_first_blocks();
  allocatable.reset();
  statics.reset();
  return 0;
}

void destroy_handle_table() {
  allocatable.reset();
  statics.reset();
}

int32_t get_handle_from_alloc_address(void *address) {
  for (;;) {
    int32_t block = allocatable.lowest_open();
    if (block < 0) {
      if (!allocatable.append())
        return 0;
      block = allocatable.count() - 1;
    }
    const int32_t slot = allocatable.lowest_free_slot(block);
    allocatable.take(block, slot);
    uintptr_t &word = allocatable.words(block)[slot];
    // The index does not know of a slot that a program filled itself, nor of one filled before a reset.
    if (word != 0)
      continue;
    word = reinterpret_cast<uintptr_t>(address);
    return handle_of(block, slot);
  }
}

int32_t get_handle_from_static_address(void *address) {
  const uintptr_t wanted = reinterpret_cast<uintptr_t>(address);
  for (int32_t block = 0; block < statics.count(); ++block) {
    uintptr_t *words = statics.words(block);
    for (int32_t slot = block == 0 ? RESERVED_STATIC_SLOTS : 0; slot < SLOTS_PER_BLOCK; ++slot) {
      if (words[slot] == 0)
        words[slot] = wanted;
      if (words[slot] == wanted)
        return handle_of(block, slot);
    }
  }
  if (!statics.append())
    return 0;
  const int32_t block = statics.count() - 1;
  statics.words(block)[0] = wanted;
  return handle_of(block, 0);
}

void *get_address_from_handle(int32_t handle, const uintptr_t *table) {
  const uintptr_t *slot = slot_of(table == StaticHandles ? statics : allocatable, handle);
  return slot == nullptr ? nullptr : reinterpret_cast<void *>(*slot);
}

int32_t free_alloc_handle(int32_t handle) {
  uintptr_t *slot = slot_of(allocatable, handle);
  if (slot == nullptr)
    return -1;
  *slot = 0;
  const int32_t block = handle < WORDS_PER_BLOCK ? 0 : handle / WORDS_PER_BLOCK;
  allocatable.give_back(block, (handle & (WORDS_PER_BLOCK - 1)) - 1);
  return 0;
}
