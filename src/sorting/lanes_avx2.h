// Vectors of 256 bits.
#ifndef QXPORT_SORTING_LANES_AVX2_H
#define QXPORT_SORTING_LANES_AVX2_H

#include "sorting/cells.h"

#include <immintrin.h>

namespace qxport::sorting::avx2 {

// What does not depend on the width of an element: a vector is loaded, stored and shuffled as a whole.
template <typename Element, typename Word>
struct Vector256 {
  using T = Element;
  typedef Word V __attribute__((vector_size(32)));
  static constexpr int N = 32 / sizeof(T);
  static constexpr int WORDS = 32 / sizeof(Word);
  static constexpr int WORDS_OF_ONE = WORDS / N;
#ifdef __x86_64__
  static constexpr int ROWS = 16;
#else
  // Of sixteen registers there are eight.
  static constexpr int ROWS = 8;
#endif

  static SORTING_INLINE V load(const Cell<T> *from) {
    return (V)_mm256_loadu_si256(reinterpret_cast<const __m256i *>(from));
  }
  static SORTING_INLINE void store(Cell<T> *to, V lanes) {
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(to), (__m256i)lanes);
  }

  static SORTING_INLINE const int *words_at(const void *from) {
    return static_cast<const int *>(from);
  }
  static SORTING_INLINE int *words_at(void *to) {
    return static_cast<int *>(to);
  }

  // All ones in the first `count` elements.
  static SORTING_INLINE __m256i first(size_t count) {
    const __m256i words = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
    return _mm256_cmpgt_epi32(_mm256_set1_epi32(static_cast<int>(count * sizeof(T) / 4)), words);
  }
  static SORTING_INLINE V load_some(const Cell<T> *from, size_t count) {
    const __m256i mask = first(count);
    const __m256i lanes = _mm256_maskload_epi32(words_at(from), mask);
    return (V)_mm256_blendv_epi8((__m256i)all_words(Limits<Word>::LARGEST), lanes, mask);
  }
  static SORTING_INLINE void store_some(Cell<T> *to, size_t count, V lanes) {
    _mm256_maskstore_epi32(words_at(to), first(count), (__m256i)lanes);
  }

  static SORTING_INLINE V all_words(Word word) {
    return word - V{};
  }
  // A mask is a vector: all ones in the lanes that are meant.
  using Mask = V;
  static SORTING_INLINE Mask first_lanes(size_t count) {
    return (V)first(count);
  }
  static SORTING_INLINE bool none(Mask lanes) {
    return _mm256_testz_si256((__m256i)lanes, (__m256i)lanes) != 0;
  }
  static SORTING_INLINE V choose(V if_not, V if_so, V mask) {
    return (V)_mm256_blendv_epi8((__m256i)if_not, (__m256i)if_so, (__m256i)mask);
  }
  // Writes what is there where the others are: some processors take long over a store with a mask.
  static SORTING_INLINE void store_chosen(Cell<T> *to, Mask chosen, V lanes) {
    store(to, choose(load(to), lanes, chosen));
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
  // All ones in the lanes that lie above those that they change places with.
  template <int MASK>
  static SORTING_INLINE V upper_lanes() {
    return upper_words<MASK>(typename IndicesBelow<WORDS>::Type());
  }
  template <int MASK, int... I>
  static SORTING_INLINE V upper_words(Indices<I...>) {
    return V{(I / WORDS_OF_ONE > (I / WORDS_OF_ONE ^ MASK) ? Word{-1} : Word{0})...};
  }
};

// A bit for each of the lanes that lie above those that they change places with.
template <int LANES, int MASK>
constexpr int upper_lane_bits() {
  int bits = 0;
  for (int lane = 0; lane < LANES; ++lane)
    if (lane > (lane ^ MASK))
      bits |= 1 << lane;
  return bits;
}

// Where the elements of a vector go when those chosen by a mask are brought to its end: for every mask the
// words, as a permutation takes them.
template <int LANES, int WORDS_OF_ONE>
struct Permutations {
  alignas(32) int32_t words[1 << LANES][8];

  constexpr Permutations() : words() {
    for (int mask = 0; mask < 1 << LANES; ++mask) {
      int next = 0;
      for (int chosen = 0; chosen < 2; ++chosen)
        for (int lane = 0; lane < LANES; ++lane)
          if ((mask >> lane & 1) == chosen)
            for (int word = 0; word < WORDS_OF_ONE; ++word)
              words[mask][next++] = lane * WORDS_OF_ONE + word;
    }
  }
};
template <int LANES>
constexpr Permutations<LANES, 8 / LANES> PERMUTATIONS;

// Brings the lanes of the mask to the end of the vector and stores it to both ends; how many the others are.
template <typename Lanes>
SORTING_INLINE size_t spread_by_mask(typename Lanes::V lanes, unsigned mask, Cell<typename Lanes::T> *left,
                                     Cell<typename Lanes::T> *right) {
  const __m256i places =
      _mm256_load_si256(reinterpret_cast<const __m256i *>(PERMUTATIONS<Lanes::N>.words[mask]));
  const typename Lanes::V parted = (typename Lanes::V)_mm256_permutevar8x32_epi32((__m256i)lanes, places);
  Lanes::store(left, parted);
  Lanes::store(right - Lanes::N, parted);
  return static_cast<size_t>(__builtin_popcount(mask ^ ((1U << Lanes::N) - 1)));
}

struct Int32 : Vector256<int32_t, int32_t> {
  static SORTING_INLINE V all(T value) { return all_words(value); }
  static SORTING_INLINE V smaller(V a, V b) { return (V)_mm256_min_epi32((__m256i)a, (__m256i)b); }
  static SORTING_INLINE V larger(V a, V b) { return (V)_mm256_max_epi32((__m256i)a, (__m256i)b); }
  static SORTING_INLINE V greater(V a, V b) { return (V)_mm256_cmpgt_epi32((__m256i)a, (__m256i)b); }
  static SORTING_INLINE V greater(V a, V b, Mask among) { return greater(a, b) & among; }
  static SORTING_INLINE unsigned lanes_greater(V a, V b) {
    return static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps((__m256i)greater(a, b))));
  }
  static SORTING_INLINE bool any_greater(V a, V b) { return lanes_greater(a, b) != 0; }
  static SORTING_INLINE void order(V &a, V &b) {
    const V one = a;
    a = smaller(one, b);
    b = larger(one, b);
  }
  template <int MASK>
  static SORTING_INLINE V order_lanes(V lanes) {
    const V other = flipped<MASK>(lanes);
    return choose(smaller(lanes, other), larger(lanes, other), upper_lanes<MASK>());
  }
  static SORTING_INLINE size_t spread(V lanes, V pivot, Cell<T> *left, Cell<T> *right) {
    return spread_by_mask<Int32>(lanes, lanes_greater(lanes, pivot), left, right);
  }
};

struct Real32 : Vector256<float, float> {
  using Bits = Int32;
  static SORTING_INLINE V all(T value) { return all_words(value); }
  static SORTING_INLINE unsigned lanes_greater(V a, V b) {
    return static_cast<unsigned>(_mm256_movemask_ps(_mm256_cmp_ps((__m256)a, (__m256)b, _CMP_GT_OQ)));
  }
  static SORTING_INLINE bool any_greater(V a, V b) { return lanes_greater(a, b) != 0; }
  static SORTING_INLINE void order(V &a, V &b) {
    const __m256 one = (__m256)a, other = (__m256)b;
    a = (V)_mm256_min_ps(one, other);
    b = (V)_mm256_max_ps(one, other);
  }
  template <int MASK>
  static SORTING_INLINE V order_lanes(V lanes) {
    constexpr int UPPER = upper_lane_bits<N, MASK>();
    const __m256 one = (__m256)lanes, other = (__m256)flipped<MASK>(lanes);
    return (V)_mm256_blend_ps(_mm256_min_ps(one, other), _mm256_max_ps(one, other), UPPER);
  }
  static SORTING_INLINE size_t spread(V lanes, V pivot, Cell<T> *left, Cell<T> *right) {
    return spread_by_mask<Real32>(lanes, lanes_greater(lanes, pivot), left, right);
  }
};

// Elements of eight and sixteen bytes are compared and exchanged by a mask; Compare(a, b) is all ones in the
// elements of which a's is greater.
template <typename Element, typename Derived>
struct ByMask : Vector256<Element, int64_t> {
  using Base = Vector256<Element, int64_t>;
  using typename Base::T;
  using typename Base::V;

  static SORTING_INLINE unsigned words_greater(V a, V b) {
    return static_cast<unsigned>(_mm256_movemask_pd(_mm256_castsi256_pd((__m256i)Derived::greater(a, b))));
  }
  static SORTING_INLINE bool any_greater(V a, V b) { return words_greater(a, b) != 0; }
  static SORTING_INLINE void order(V &a, V &b) {
    const V one = a, exchanged = Derived::greater(a, b);
    a = Base::choose(one, b, exchanged);
    b = Base::choose(b, one, exchanged);
  }
  template <int MASK>
  static SORTING_INLINE V order_lanes(V lanes) {
    const V other = Base::template flipped<MASK>(lanes);
    return Base::choose(lanes, other, Derived::greater(lanes, other) ^ Base::template upper_lanes<MASK>());
  }
};

struct Int64 : ByMask<int64_t, Int64> {
  static SORTING_INLINE V all(T value) { return all_words(value); }
  static SORTING_INLINE V greater(V a, V b) { return (V)_mm256_cmpgt_epi64((__m256i)a, (__m256i)b); }
  static SORTING_INLINE V greater(V a, V b, Mask among) { return greater(a, b) & among; }
  static SORTING_INLINE size_t spread(V lanes, V pivot, Cell<T> *left, Cell<T> *right) {
    return spread_by_mask<Int64>(lanes, words_greater(lanes, pivot), left, right);
  }
};

struct Real64 : Vector256<double, double> {
  using Bits = Int64;
  static SORTING_INLINE V all(T value) { return all_words(value); }
  static SORTING_INLINE unsigned lanes_greater(V a, V b) {
    return static_cast<unsigned>(_mm256_movemask_pd(_mm256_cmp_pd((__m256d)a, (__m256d)b, _CMP_GT_OQ)));
  }
  static SORTING_INLINE bool any_greater(V a, V b) { return lanes_greater(a, b) != 0; }
  static SORTING_INLINE void order(V &a, V &b) {
    const __m256d one = (__m256d)a, other = (__m256d)b;
    a = (V)_mm256_min_pd(one, other);
    b = (V)_mm256_max_pd(one, other);
  }
  template <int MASK>
  static SORTING_INLINE V order_lanes(V lanes) {
    constexpr int UPPER = upper_lane_bits<N, MASK>();
    const __m256d one = (__m256d)lanes, other = (__m256d)flipped<MASK>(lanes);
    return (V)_mm256_blend_pd(_mm256_min_pd(one, other), _mm256_max_pd(one, other), UPPER);
  }
  static SORTING_INLINE size_t spread(V lanes, V pivot, Cell<T> *left, Cell<T> *right) {
    return spread_by_mask<Real64>(lanes, lanes_greater(lanes, pivot), left, right);
  }
};

struct Int128 : ByMask<Wide, Int128> {
  static SORTING_INLINE V all(T value) { return V{value.high, value.low, value.high, value.low}; }
  static SORTING_INLINE V greater(V a, V b) {
    const __m256i above = _mm256_cmpgt_epi64((__m256i)a, (__m256i)b);
    const __m256i same = _mm256_cmpeq_epi64((__m256i)a, (__m256i)b);
    const __m256i low_above = _mm256_shuffle_epi32(above, 0x4E);
    const __m256i high_decides = _mm256_or_si256(above, _mm256_and_si256(same, low_above));
    return (V)_mm256_unpacklo_epi64(high_decides, high_decides);
  }
  static SORTING_INLINE V greater(V a, V b, Mask among) { return greater(a, b) & among; }
  static SORTING_INLINE size_t spread(V lanes, V pivot, Cell<T> *left, Cell<T> *right) {
    const unsigned words = words_greater(lanes, pivot);
    return spread_by_mask<Int128>(lanes, (words & 1) | (words >> 1 & 2), left, right);
  }
};

}  // namespace qxport::sorting::avx2

#endif
