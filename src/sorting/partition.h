// Parting an array in two around a pivot, in place: the elements not greater than the pivot, then the greater
// ones.
//
// Between the two parts lies a gap, in which are the elements that have not been read, and room on both sides
// of them. Each vector's elements are stored to both ends of the gap at once, in such an order that those
// that belong there come last to lie there: the gap gets shorter by one vector. No branch depends on the
// elements.
#ifndef QXPORT_SORTING_PARTITION_H
#define QXPORT_SORTING_PARTITION_H

#include "sorting/cells.h"

namespace qxport::sorting {

// As many vectors as are read at once.
template <typename Lanes>
class Block {
public:
  static constexpr int VECTORS = 4;
  static constexpr size_t ELEMENTS = VECTORS * Lanes::N;
  using V = typename Lanes::V;

  explicit SORTING_INLINE Block(const Cell<typename Lanes::T> *from) {
    repeat<VECTORS>([&](auto index) SORTING_UNROLLED {
      constexpr int I = decltype(index)::value;
      vectors_[I] = Lanes::load(from + I * Lanes::N);
    });
  }
  // Calls function(vector) for each.
  template <typename Function>
  SORTING_INLINE void for_each(Function function) const {
    repeat<VECTORS>([&](auto index) SORTING_UNROLLED { function(vectors_[decltype(index)::value]); });
  }

private:
  V vectors_[VECTORS];
};

template <typename Lanes>
class Gap {
public:
  using T = typename Lanes::T;
  using V = typename Lanes::V;
  static constexpr size_t BLOCK = Block<Lanes>::ELEMENTS;

  SORTING_INLINE Gap(Cell<T> *array, size_t count, T pivot)
      : left_(array), length_(count), unread_(array), unread_count_(count), pivot_(pivot),
        pivots_(Lanes::all(pivot)) {}

  SORTING_INLINE Cell<T> *left() const { return left_; }
  SORTING_INLINE bool has_unread() const { return unread_count_ > 0; }

  SORTING_INLINE Block<Lanes> read_left() {
    const Block<Lanes> block(unread_);
    unread_ += BLOCK;
    unread_count_ -= BLOCK;
    return block;
  }
  SORTING_INLINE const Cell<T> *read_right(size_t count) {
    unread_count_ -= count;
    return unread_ + unread_count_;
  }
  // From the left, unless there is room for a block. Where two blocks have been read that are not stored
  // there is room for one on both sides afterwards.
  SORTING_INLINE Block<Lanes> read() {
    size_t from_left = -size_t{static_cast<size_t>(unread_ - left_) < BLOCK};
    // The compiler would make a branch of it.
    __asm__("" : "+r"(from_left));
    unread_count_ -= BLOCK;
    const Block<Lanes> block(unread_ + (unread_count_ & ~from_left));
    unread_ += BLOCK & from_left;
    return block;
  }

  // There is room for a vector on both sides, or for one in all.
  SORTING_INLINE void store(V vector) {
    left_ += Lanes::spread(vector, pivots_, left_, left_ + length_);
    length_ -= Lanes::N;
  }
  SORTING_INLINE void store(const Block<Lanes> &block) {
    block.for_each([&](V vector) SORTING_UNROLLED { store(vector); });
  }
  SORTING_INLINE void store_one(Cell<T> element) {
    --length_;
    left_[0] = element;
    left_[length_] = element;
    left_ += !(element.value > pivot_);
  }

private:
  Cell<T> *left_;
  size_t length_;
  const Cell<T> *unread_;
  size_t unread_count_;
  T pivot_;
  V pivots_;
};

// Answers how many are not greater. The array has at least two blocks.
template <typename Lanes>
[[gnu::noinline]] size_t partition(Cell<typename Lanes::T> *array, size_t count, typename Lanes::T pivot) {
  constexpr size_t BLOCK = Block<Lanes>::ELEMENTS;
  Gap<Lanes> gap(array, count, pivot);

  // What does not make a block is put by, with what is before it.
  Cell<typename Lanes::T> rest[BLOCK];
  const size_t rest_begin = BLOCK - count % BLOCK;
  gap.read_right(count % BLOCK);
  __builtin_memcpy(rest, array + count - BLOCK, sizeof(rest));

  // A block is read before the one before it is stored, so that no load waits for where the stores end.
  const Block<Lanes> first = gap.read_left();
  Block<Lanes> block(gap.read_right(BLOCK));
  while (gap.has_unread()) {
    const Block<Lanes> next = gap.read();
    gap.store(block);
    block = next;
  }

  // Single elements before the last vectors, which then have room for whole vectors alone.
  size_t place = rest_begin;
  for (; place + Lanes::N <= BLOCK; place += Lanes::N)
    gap.store(Lanes::load(rest + place));
  for (; place < BLOCK; ++place)
    gap.store_one(rest[place]);
  gap.store(block);
  gap.store(first);
  return static_cast<size_t>(gap.left() - array);
}

}  // namespace qxport::sorting

#endif
