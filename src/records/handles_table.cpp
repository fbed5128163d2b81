// Handles on targets whose addresses are wider than INTEGER(4).
#include "records/handles.h"
#include "records/published.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

using namespace qxport;

namespace {

constexpr int BITS = 64;
constexpr int WORDS_PER_SUMMARY = WORDS_PER_BLOCK / BITS;

// Which slots of a block are taken, a bit each; the bit of the link is always set.
struct Block {
  uintptr_t *words;
  uint64_t taken[WORDS_PER_SUMMARY];

  bool is_full() const { return (taken[0] & taken[1] & taken[2] & taken[3]) == UINT64_MAX; }

  // Of a block that has one.
  int32_t lowest_free_slot() const {
    int32_t i = 0;
    while (taken[i] == UINT64_MAX)
      ++i;
    return i * BITS + std::countr_one(taken[i]);
  }
};

constexpr Block empty_block(uintptr_t *words) {
  return {words, {0, 0, 0, uint64_t{1} << (BITS - 1)}};
}

// The blocks of one table by number, and which of them have a free slot: what the chain itself tells only by
// walking it. It is an aid: the chain stays true without it.
//
// One thread enters and frees while others look up, so what they have found once stays where it is until the
// table is reset: the index grows by further segments, each as large as all before it and never moved.
class BlockIndex {
public:
  explicit constexpr BlockIndex(uintptr_t *first) : first_(first) { few_[0] = empty_block(first); }

  int32_t count() const { return count_; }

  // The block of a number, or null where there is none.
  Block *find(int32_t number) const {
    const Place place(number);
    Block *segment = published(segments_[place.segment]);
    if (segment == nullptr || published(segment[place.within].words) == nullptr)
      return nullptr;
    return &segment[place.within];
  }

  // A block that there is.
  Block &block(int32_t number) const {
    const Place place(number);
    return segments_[place.segment][place.within];
  }

  // Forgets and releases all blocks but the first.
  void reset() {
    for (int32_t number = 1; number < count_; ++number)
      free(block(number).words);
    for (int32_t segment = 1; segment < SEGMENTS; ++segment) {
      free(segments_[segment]);
      segments_[segment] = nullptr;
    }
    std::fill_n(few_, FEW, Block{});
    few_[0] = empty_block(first_);
    if (open_ != &few_open_)
      free(open_);
    open_ = &few_open_;
    few_open_ = 1;
    capacity_ = FEW;
    count_ = 1;
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

  // `block` is that of the number, here and below.
  void take(int32_t number, Block &block, int32_t slot) {
    block.taken[slot / BITS] |= uint64_t{1} << (slot % BITS);
    if (block.is_full())
      open_[number / BITS] &= ~(uint64_t{1} << (number % BITS));
  }

  void give_back(int32_t number, Block &block, int32_t slot) {
    block.taken[slot / BITS] &= ~(uint64_t{1} << (slot % BITS));
    open_[number / BITS] |= uint64_t{1} << (number % BITS);
    lowest_open_ = std::min(lowest_open_, number / BITS);
  }

  // Links a new empty block behind the last one. False, with nothing changed, when memory ran out.
  bool append() {
    if (count_ > MOST || (count_ == capacity_ && !grow()))
      return false;
    uintptr_t *words = static_cast<uintptr_t *>(calloc(WORDS_PER_BLOCK, sizeof(uintptr_t)));
    if (words == nullptr)
      return false;
    publish(block(count_ - 1).words[LINK], reinterpret_cast<uintptr_t>(words));
    Block &last = block(count_);
    std::copy_n(empty_block(words).taken, WORDS_PER_SUMMARY, last.taken);
    publish(last.words, words);
    open_[count_ / BITS] |= uint64_t{1} << (count_ % BITS);
    lowest_open_ = std::min(lowest_open_, count_ / BITS);
    ++count_;
    return true;
  }

private:
  static constexpr int32_t FEW = BITS;
  static constexpr int32_t MOST = INT32_MAX / WORDS_PER_BLOCK;  // no handle is greater
  static constexpr int32_t SEGMENTS = std::bit_width(static_cast<uint32_t>(MOST + FEW) / FEW);

  // Where a block stands: the segments hold FEW blocks, twice as many, four times as many, ...
  struct Place {
    explicit Place(int32_t number) {
      const uint32_t shifted = static_cast<uint32_t>(number + FEW);
      segment = static_cast<int32_t>(std::bit_width(shifted / FEW)) - 1;
      within = shifted - (static_cast<uint32_t>(FEW) << segment);
    }
    int32_t segment;
    uint32_t within;
  };

  // All blocks are full when a table grows, so which of them are open need not be carried over.
  bool grow() {
    const int32_t segment = Place(count_).segment;
    const size_t more = static_cast<size_t>(FEW) << segment;
    Block *blocks = static_cast<Block *>(calloc(more, sizeof(Block)));
    uint64_t *open = static_cast<uint64_t *>(calloc((capacity_ + more) / BITS, sizeof(uint64_t)));
    if (blocks == nullptr || open == nullptr) {
      free(blocks);
      free(open);
      return false;
    }
    publish(segments_[segment], blocks);
    if (open_ != &few_open_)
      free(open_);
    open_ = open;
    capacity_ += static_cast<int32_t>(more);
    return true;
  }

  uintptr_t *first_;
  Block few_[FEW] = {};
  Block *segments_[SEGMENTS] = {few_};
  // The rest is the business of the thread that enters and frees.
  uint64_t few_open_ = 1;
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

// The place in the tables that a handle names. A negative handle is resolved in the first block by its low
// eight bits.
struct Slot {
  Slot(const BlockIndex &index, int32_t handle)
      : number(handle < WORDS_PER_BLOCK ? 0 : handle / WORDS_PER_BLOCK),
        place((handle & (WORDS_PER_BLOCK - 1)) - 1), block(place < 0 ? nullptr : index.find(number)) {}

  int32_t number;
  int32_t place;
  Block *block;  // null where the handle names no slot
};

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
    int32_t number = allocatable.lowest_open();
    if (number < 0) {
      if (!allocatable.append())
        return 0;
      number = allocatable.count() - 1;
    }
    Block &block = allocatable.block(number);
    const int32_t slot = block.lowest_free_slot();
    allocatable.take(number, block, slot);
    uintptr_t &word = block.words[slot];
    // The index does not know of a slot that a program filled itself, nor of one filled before a reset.
    if (word != 0)
      continue;
    publish(word, reinterpret_cast<uintptr_t>(address));
    return handle_of(number, slot);
  }
}

int32_t get_handle_from_static_address(void *address) {
  const uintptr_t wanted = reinterpret_cast<uintptr_t>(address);
  for (int32_t number = 0; number < statics.count(); ++number) {
    uintptr_t *words = statics.block(number).words;
    for (int32_t slot = number == 0 ? RESERVED_STATIC_SLOTS : 0; slot < SLOTS_PER_BLOCK; ++slot) {
      if (words[slot] == 0)
        publish(words[slot], wanted);
      if (words[slot] == wanted)
        return handle_of(number, slot);
    }
  }
  if (!statics.append())
    return 0;
  const int32_t number = statics.count() - 1;
  publish(statics.block(number).words[0], wanted);
  return handle_of(number, 0);
}

void *get_address_from_handle(int32_t handle, const uintptr_t *table) {
  const Slot slot(table == StaticHandles ? statics : allocatable, handle);
  return slot.block == nullptr ? nullptr : reinterpret_cast<void *>(published(slot.block->words[slot.place]));
}

int32_t free_alloc_handle(int32_t handle) {
  const Slot slot(allocatable, handle);
  if (slot.block == nullptr)
    return -1;
  publish(slot.block->words[slot.place], uintptr_t{0});
  allocatable.give_back(slot.number, *slot.block, slot.place);
  return 0;
}
