// Vectors of 512 bits.
#ifndef QXPORT_SORTING_LANES_AVX512_H
#define QXPORT_SORTING_LANES_AVX512_H

#include "sorting/cells.h"

// gcc 12 takes the operands that its own intrinsics leave undefined on purpose for mistakes.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>
#pragma GCC diagnostic pop

namespace qxport::sorting::avx512 {

// What does not depend on the width of an element. A mask has a bit for each word.
template <typename Element, typename Word>
struct Vector512 {
  using T = Element;
  typedef Word V __attribute__((vector_size(64)));
  static constexpr int N = 64 / sizeof(T);
  static constexpr int WORDS = 64 / sizeof(Word);
  static constexpr int WORDS_OF_ONE = WORDS / N;
#ifdef __x86_64__
  static constexpr int ROWS = 16;
#else
  // Of thirty-two registers there are eight.
  static constexpr int ROWS = 8;
#endif

  static SORTING_INLINE V load(const Cell<T> *from) {
    return (V)_mm512_loadu_si512(from);
  }
  static SORTING_INLINE void store(Cell<T> *to, V lanes) {
    _mm512_storeu_si512(to, (__m512i)lanes);
  }

  // The words of the first `count` elements.
  static SORTING_INLINE unsigned first(size_t count) {
    return _bzhi_u32(~0U, static_cast<unsigned>(count) * WORDS_OF_ONE);
  }
  static SORTING_INLINE V all_words(Word word) {
    return word - V{};
  }

  // Lane i becomes lane i xor MASK.
  template <int MASK>
  static SORTING_INLINE V flipped(V lanes) {
    return shuffle<MASK * WORDS_OF_ONE>(lanes, typename IndicesBelow<WORDS>::Type());
  }
  template <int MASK, int... I>
  static SORTING_INLINE V shuffle(V lanes, Indices<I...>) {
    return __builtin_shufflevector(lanes, lanes, (I ^ MASK)...);
  }
  // The words of the lanes that lie above those that they change places with.
  template <int MASK>
  static constexpr unsigned upper_words() {
    unsigned words = 0;
    for (int word = 0; word < WORDS; ++word) {
      const int lane = word / WORDS_OF_ONE;
      if (lane > (lane ^ MASK))
        words |= 1U << word;
    }
    return words;
  }
};

// Words of four bytes.
template <typename Word>
struct Words32 : Vector512<Word, Word> {
  using Base = Vector512<Word, Word>;
  using typename Base::T;
  using typename Base::V;
  using Mask = __mmask16;

  static SORTING_INLINE V all(T value) { return Base::all_words(value); }
  static SORTING_INLINE Mask first_lanes(size_t count) { return static_cast<Mask>(Base::first(count)); }
  static SORTING_INLINE V load_some(const Cell<T> *from, size_t count) {
    return (V)_mm512_mask_loadu_epi32((__m512i)all(Limits<T>::LARGEST), first_lanes(count), from);
  }
  static SORTING_INLINE void store_chosen(Cell<T> *to, Mask chosen, V lanes) {
    _mm512_mask_storeu_epi32(to, chosen, (__m512i)lanes);
  }
  static SORTING_INLINE void store_some(Cell<T> *to, size_t count, V lanes) {
    store_chosen(to, first_lanes(count), lanes);
  }
  // Stores the lanes of the mask to the right end, the others to the left one; how many the latter are.
  static SORTING_INLINE size_t spread_by_mask(V lanes, Mask greater, Cell<T> *left, Cell<T> *right) {
    const size_t count = static_cast<size_t>(__builtin_popcount(greater));
    _mm512_storeu_si512(left, _mm512_maskz_compress_epi32(static_cast<Mask>(~greater), (__m512i)lanes));
    _mm512_mask_storeu_epi32(right - count, first_lanes(count),
                             _mm512_maskz_compress_epi32(greater, (__m512i)lanes));
    return Base::N - count;
  }
};

struct Int32 : Words32<int32_t> {
  static SORTING_INLINE bool none(Mask lanes) { return lanes == 0; }
  static SORTING_INLINE V choose(V if_not, V if_so, Mask mask) {
    return (V)_mm512_mask_mov_epi32((__m512i)if_not, mask, (__m512i)if_so);
  }
  static SORTING_INLINE Mask greater(V a, V b, Mask among) {
    return _mm512_mask_cmpgt_epi32_mask(among, (__m512i)a, (__m512i)b);
  }
  static SORTING_INLINE Mask greater(V a, V b) { return _mm512_cmpgt_epi32_mask((__m512i)a, (__m512i)b); }
  static SORTING_INLINE bool any_greater(V a, V b) { return greater(a, b) != 0; }
  static SORTING_INLINE void order(V &a, V &b) {
    const __m512i one = (__m512i)a, other = (__m512i)b;
    a = (V)_mm512_min_epi32(one, other);
    b = (V)_mm512_max_epi32(one, other);
  }
  template <int MASK>
  static SORTING_INLINE V order_lanes(V lanes) {
    const __m512i one = (__m512i)lanes, other = (__m512i)flipped<MASK>(lanes);
    return (V)_mm512_mask_max_epi32(_mm512_min_epi32(one, other), upper_words<MASK>(), one, other);
  }
  static SORTING_INLINE size_t spread(V lanes, V pivot, Cell<T> *left, Cell<T> *right) {
    return spread_by_mask(lanes, greater(lanes, pivot), left, right);
  }
};

struct Real32 : Words32<float> {
  using Bits = Int32;
  static SORTING_INLINE Mask greater(V a, V b) {
    return _mm512_cmp_ps_mask((__m512)a, (__m512)b, _CMP_GT_OQ);
  }
  static SORTING_INLINE bool any_greater(V a, V b) { return greater(a, b) != 0; }
  static SORTING_INLINE void order(V &a, V &b) {
    const __m512 one = (__m512)a, other = (__m512)b;
    a = (V)_mm512_min_ps(one, other);
    b = (V)_mm512_max_ps(one, other);
  }
  template <int MASK>
  static SORTING_INLINE V order_lanes(V lanes) {
    const __m512 one = (__m512)lanes, other = (__m512)flipped<MASK>(lanes);
    return (V)_mm512_mask_max_ps(_mm512_min_ps(one, other), upper_words<MASK>(), one, other);
  }
  static SORTING_INLINE size_t spread(V lanes, V pivot, Cell<T> *left, Cell<T> *right) {
    return spread_by_mask(lanes, greater(lanes, pivot), left, right);
  }
};

// For every mask of eight lanes their order when those of the mask are brought to the front; four bits a
// lane.
struct Permutations {
  uint32_t lanes[256];

  constexpr Permutations() : lanes() {
    for (unsigned mask = 0; mask < 256; ++mask) {
      int next = 0;
      for (unsigned chosen = 0; chosen < 2; ++chosen)
        for (unsigned lane = 0; lane < 8; ++lane)
          if ((mask >> lane & 1) != chosen)
            lanes[mask] |= lane << (4 * next++);
    }
  }
};
inline constexpr Permutations PERMUTATIONS;

// Words of eight bytes, one or two an element.
template <typename Element, typename Word = int64_t>
struct Words64 : Vector512<Element, Word> {
  using Base = Vector512<Element, Word>;
  using typename Base::T;
  using typename Base::V;

  static SORTING_INLINE V load_some(const Cell<T> *from, size_t count) {
    return (V)_mm512_mask_loadu_epi64((__m512i)Base::all_words(Limits<Word>::LARGEST),
                                      static_cast<__mmask8>(Base::first(count)), from);
  }
  static SORTING_INLINE void store_some(Cell<T> *to, size_t count, V lanes) {
    _mm512_mask_storeu_epi64(to, static_cast<__mmask8>(Base::first(count)), (__m512i)lanes);
  }

  using Mask = __mmask8;
  static SORTING_INLINE Mask first_lanes(size_t count) { return static_cast<Mask>(Base::first(count)); }
  static SORTING_INLINE bool none(Mask words) { return words == 0; }
  static SORTING_INLINE void store_chosen(Cell<T> *to, Mask chosen, V lanes) {
    _mm512_mask_storeu_epi64(to, chosen, (__m512i)lanes);
  }
  static SORTING_INLINE V choose(V if_not, V if_so, Mask mask) {
    return (V)_mm512_mask_mov_epi64((__m512i)if_not, mask, (__m512i)if_so);
  }
};

// Elements of one word. One permutation is less work than bringing both parts together; what stands beside
// the part at either end is stored over later.
template <typename Word>
struct OneWord64 : Words64<Word, Word> {
  using Base = Words64<Word, Word>;
  using typename Base::T;
  using typename Base::V;

  static SORTING_INLINE V all(T value) { return Base::all_words(value); }
  // Stores the lanes of the mask to the left end, the others to the right one; how many the former are.
  static SORTING_INLINE size_t spread_by_mask(V lanes, __mmask8 not_greater, Cell<T> *left, Cell<T> *right) {
    const size_t mask = _cvtmask8_u32(not_greater);
    const __m512i packed = _mm512_set1_epi32(static_cast<int>(PERMUTATIONS.lanes[mask]));
    const __m512i places = _mm512_srlv_epi64(packed, _mm512_setr_epi64(0, 4, 8, 12, 16, 20, 24, 28));
    const __m512i parted = _mm512_permutexvar_epi64(places, (__m512i)lanes);
    _mm512_storeu_si512(left, parted);
    _mm512_storeu_si512(right - Base::N, parted);
    return static_cast<size_t>(__builtin_popcountll(mask));
  }
};

struct Int64 : OneWord64<int64_t> {
  static SORTING_INLINE Mask greater(V a, V b, Mask among) {
    return _mm512_mask_cmpgt_epi64_mask(among, (__m512i)a, (__m512i)b);
  }
  static SORTING_INLINE Mask greater(V a, V b) { return _mm512_cmpgt_epi64_mask((__m512i)a, (__m512i)b); }
  static SORTING_INLINE Mask not_greater(V a, V b) { return _mm512_cmple_epi64_mask((__m512i)a, (__m512i)b); }
  static SORTING_INLINE bool any_greater(V a, V b) { return greater(a, b) != 0; }
  static SORTING_INLINE void order(V &a, V &b) {
    const __m512i one = (__m512i)a, other = (__m512i)b;
    a = (V)_mm512_min_epi64(one, other);
    b = (V)_mm512_max_epi64(one, other);
  }
  template <int MASK>
  static SORTING_INLINE V order_lanes(V lanes) {
    const __m512i one = (__m512i)lanes, other = (__m512i)flipped<MASK>(lanes);
    return (V)_mm512_mask_max_epi64(_mm512_min_epi64(one, other), upper_words<MASK>(), one, other);
  }
  static SORTING_INLINE size_t spread(V lanes, V pivot, Cell<T> *left, Cell<T> *right) {
    return spread_by_mask(lanes, not_greater(lanes, pivot), left, right);
  }
};

struct Real64 : OneWord64<double> {
  using Bits = Int64;
  static SORTING_INLINE Mask greater(V a, V b) {
    return _mm512_cmp_pd_mask((__m512d)a, (__m512d)b, _CMP_GT_OQ);
  }
  static SORTING_INLINE Mask not_greater(V a, V b) {
    return _mm512_cmp_pd_mask((__m512d)a, (__m512d)b, _CMP_LE_OQ);
  }
  static SORTING_INLINE bool any_greater(V a, V b) { return greater(a, b) != 0; }
  static SORTING_INLINE void order(V &a, V &b) {
    const __m512d one = (__m512d)a, other = (__m512d)b;
    a = (V)_mm512_min_pd(one, other);
    b = (V)_mm512_max_pd(one, other);
  }
  template <int MASK>
  static SORTING_INLINE V order_lanes(V lanes) {
    const __m512d one = (__m512d)lanes, other = (__m512d)flipped<MASK>(lanes);
    return (V)_mm512_mask_max_pd(_mm512_min_pd(one, other), upper_words<MASK>(), one, other);
  }
  static SORTING_INLINE size_t spread(V lanes, V pivot, Cell<T> *left, Cell<T> *right) {
    return spread_by_mask(lanes, not_greater(lanes, pivot), left, right);
  }
};

struct Int128 : Words64<Wide> {
  static SORTING_INLINE V all(T value) {
    return V{value.high, value.low, value.high, value.low, value.high, value.low, value.high, value.low};
  }
  // Both words of the elements of which a's is greater.
  static SORTING_INLINE __mmask8 greater(V a, V b) {
    const unsigned above = _mm512_cmpgt_epi64_mask((__m512i)a, (__m512i)b);
    const unsigned same = _mm512_cmpeq_epi64_mask((__m512i)a, (__m512i)b);
    const unsigned high_decides = (above | (same & above >> 1)) & 0x55;
    return static_cast<__mmask8>(3 * high_decides);
  }
  static SORTING_INLINE Mask greater(V a, V b, Mask among) { return greater(a, b) & among; }
  static SORTING_INLINE bool any_greater(V a, V b) { return greater(a, b) != 0; }
  static SORTING_INLINE void order(V &a, V &b) {
    const __m512i one = (__m512i)a, other = (__m512i)b;
    const __mmask8 exchanged = greater(a, b);
    a = (V)_mm512_mask_mov_epi64(one, exchanged, other);
    b = (V)_mm512_mask_mov_epi64(other, exchanged, one);
  }
  template <int MASK>
  static SORTING_INLINE V order_lanes(V lanes) {
    constexpr unsigned UPPER = upper_words<MASK>();
    const V other = flipped<MASK>(lanes);
    return (V)_mm512_mask_mov_epi64((__m512i)lanes, static_cast<__mmask8>(greater(lanes, other) ^ UPPER),
                                    (__m512i)other);
  }
  static SORTING_INLINE size_t spread(V lanes, V pivot, Cell<T> *left, Cell<T> *right) {
    const __mmask8 words = greater(lanes, pivot);
    const size_t count = static_cast<size_t>(__builtin_popcount(words)) / WORDS_OF_ONE;
    _mm512_storeu_si512(left, _mm512_maskz_compress_epi64(static_cast<__mmask8>(~words), (__m512i)lanes));
    _mm512_mask_storeu_epi64(right - count, static_cast<__mmask8>(first(count)),
                             _mm512_maskz_compress_epi64(words, (__m512i)lanes));
    return N - count;
  }
};

}  // namespace qxport::sorting::avx512

#endif
