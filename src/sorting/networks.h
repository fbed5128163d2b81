// Sorting few elements without a branch: rows of vectors, compared and exchanged in an order that does not
// depend on the data.
//
// Up to sixteen rows are loaded, and each column is sorted through the rows. Then the columns are merged: two
// neighbours to one sorted sequence of twice the length, then pairs of those, until the whole is one
// sequence, row by row. Two sorted sequences that meet head to tail fall into a lower and an upper half when
// each element is compared with its mirror image, and so does each half again; the mirror image of lane `l`
// in groups of `w` lanes is lane `l xor (w - 1)`, which a processor finds with one instruction.
#ifndef QXPORT_SORTING_NETWORKS_H
#define QXPORT_SORTING_NETWORKS_H

#include "sorting/cells.h"
#include "sorting/lanes_portable.h"

namespace qxport::sorting {

struct Exchange {
  int8_t low, high;
};

// The shortest networks known for a column.
template <int ROWS>
struct ColumnNetwork;
template <>
struct ColumnNetwork<1> {
  static constexpr int LENGTH = 0;
  static constexpr Exchange STEPS[1] = {{0, 0}};
};
template <>
struct ColumnNetwork<2> {
  static constexpr int LENGTH = 1;
  static constexpr Exchange STEPS[LENGTH] = {{0, 1}};
};
template <>
struct ColumnNetwork<3> {
  static constexpr int LENGTH = 3;
  static constexpr Exchange STEPS[LENGTH] = {{0, 2}, {0, 1}, {1, 2}};
};
template <>
struct ColumnNetwork<4> {
  static constexpr int LENGTH = 5;
  static constexpr Exchange STEPS[LENGTH] = {{0, 1}, {2, 3}, {0, 2}, {1, 3}, {1, 2}};
};
template <>
struct ColumnNetwork<6> {
  static constexpr int LENGTH = 12;
  static constexpr Exchange STEPS[LENGTH] = {{0, 5}, {1, 3}, {2, 4}, {1, 2}, {3, 4}, {0, 3},
                                             {2, 5}, {0, 1}, {2, 3}, {4, 5}, {1, 2}, {3, 4}};
};
template <>
struct ColumnNetwork<8> {
  static constexpr int LENGTH = 19;
  static constexpr Exchange STEPS[LENGTH] = {{0, 2}, {1, 3}, {4, 6}, {5, 7}, {0, 4}, {1, 5}, {2, 6},
                                             {3, 7}, {0, 1}, {2, 3}, {4, 5}, {6, 7}, {2, 4}, {3, 5},
                                             {1, 4}, {3, 6}, {1, 2}, {3, 4}, {5, 6}};
};
template <>
struct ColumnNetwork<12> {
  static constexpr int LENGTH = 39;
  static constexpr Exchange STEPS[LENGTH] = {{0, 8}, {1, 7}, {2, 6},  {3, 11}, {4, 10}, {5, 9},    //
                                             {0, 1}, {2, 5}, {3, 4},  {6, 9},  {7, 8},  {10, 11},  //
                                             {0, 2}, {1, 6}, {5, 10}, {9, 11},                     //
                                             {0, 3}, {1, 2}, {4, 6},  {5, 7},  {8, 11}, {9, 10},   //
                                             {1, 4}, {3, 5}, {6, 8},  {7, 10},                     //
                                             {1, 3}, {2, 5}, {6, 9},  {8, 10},                     //
                                             {2, 3}, {4, 5}, {6, 7},  {8, 9},                      //
                                             {4, 6}, {5, 7},                                       //
                                             {3, 4}, {5, 6}, {7, 8}};
};
template <>
struct ColumnNetwork<16> {
  static constexpr int LENGTH = 60;
  static constexpr Exchange STEPS[LENGTH] = {
      {0, 1},  {2, 3},   {4, 5},  {6, 7},   {8, 9},   {10, 11}, {12, 13}, {14, 15},  //
      {0, 2},  {1, 3},   {4, 6},  {5, 7},   {8, 10},  {9, 11},  {12, 14}, {13, 15},  //
      {0, 4},  {1, 5},   {2, 6},  {3, 7},   {8, 12},  {9, 13},  {10, 14}, {11, 15},  //
      {0, 8},  {1, 9},   {2, 10}, {3, 11},  {4, 12},  {5, 13},  {6, 14},  {7, 15},   //
      {5, 10}, {6, 9},   {3, 12}, {13, 14}, {4, 8},   {7, 11},  {1, 2},              //
      {1, 4},  {7, 13},  {2, 8},  {11, 14},                                          //
      {2, 4},  {5, 6},   {9, 10}, {11, 13}, {3, 8},   {7, 12},                       //
      {6, 8},  {10, 12}, {3, 5},  {7, 9},                                            //
      {3, 4},  {5, 6},   {7, 8},  {9, 10},  {11, 12},                                //
      {6, 7},  {8, 9}};
};

template <typename Lanes, int ROWS>
SORTING_INLINE void sort_columns(typename Lanes::V *rows) {
  using Network = ColumnNetwork<ROWS>;
  repeat<Network::LENGTH>([&](auto step) SORTING_UNROLLED {
    constexpr Exchange EXCHANGE = Network::STEPS[decltype(step)::value];
    Lanes::order(rows[EXCHANGE.low], rows[EXCHANGE.high]);
  });
}

// Half of the first power of two that is not below a count of two or more.
constexpr int half_of_power_from(int count) {
  int half = 1;
  while (2 * half < count)
    half *= 2;
  return half;
}

// Orders every element of the lower half of COUNT rows with its mirror image, in groups of 2 * WIDTH lanes,
// then does so with both halves; at last within each row. Where COUNT is not a power of two the rows up to it
// count as rows of greatest elements, which stay where they are.
template <typename Lanes, int COUNT, int WIDTH>
SORTING_INLINE void halve_rows(typename Lanes::V *rows) {
  if constexpr (COUNT > 1) {
    constexpr int HALF = half_of_power_from(COUNT);
    repeat<COUNT - HALF>([&](auto index) SORTING_UNROLLED {
      constexpr int UPPER = HALF + decltype(index)::value, LOWER = 2 * HALF - 1 - UPPER;
      typename Lanes::V mirrored = Lanes::template flipped<2 * WIDTH - 1>(rows[UPPER]);
      Lanes::order(rows[LOWER], mirrored);
      rows[UPPER] = mirrored;
    });
    halve_rows<Lanes, HALF, WIDTH>(rows);
    halve_rows<Lanes, COUNT - HALF, WIDTH>(rows + HALF);
  }
}

template <typename Lanes, int WIDTH>
SORTING_INLINE typename Lanes::V halve_lanes(typename Lanes::V row) {
  if constexpr (WIDTH > 0)
    return halve_lanes<Lanes, WIDTH / 2>(Lanes::template order_lanes<WIDTH>(row));
  else
    return row;
}

// Sequences of WIDTH lanes to sequences of twice as many.
template <typename Lanes, int ROWS, int WIDTH>
SORTING_INLINE void merge_neighbours(typename Lanes::V *rows) {
  halve_rows<Lanes, ROWS, WIDTH>(rows);
  repeat<ROWS>([&](auto row) SORTING_UNROLLED {
    typename Lanes::V &lanes = rows[decltype(row)::value];
    lanes = halve_lanes<Lanes, WIDTH / 2>(Lanes::template order_lanes<2 * WIDTH - 1>(lanes));
  });
}

template <typename Lanes, int ROWS, int WIDTH>
SORTING_INLINE void merge_columns(typename Lanes::V *rows) {
  if constexpr (WIDTH < Lanes::N) {
    merge_neighbours<Lanes, ROWS, WIDTH>(rows);
    merge_columns<Lanes, ROWS, 2 * WIDTH>(rows);
  }
}

template <typename Lanes, int ROWS>
SORTING_INLINE void sort_rows(typename Lanes::V *rows) {
  sort_columns<Lanes, ROWS>(rows);
  merge_columns<Lanes, ROWS, 1>(rows);
}

// The first FULL rows are full; what is missing behind the last element counts as the largest value, and is
// not stored.
template <typename Lanes, int FULL, int ROWS>
[[gnu::noinline]] void sort_in_rows(Cell<typename Lanes::T> *array, size_t count) {
  typename Lanes::V rows[ROWS];
  const auto rest_of_row = [&](int row) SORTING_UNROLLED {
    const size_t begin = static_cast<size_t>(row) * Lanes::N;
    const size_t rest = count > begin ? count - begin : 0;
    return rest < Lanes::N ? rest : size_t{Lanes::N};
  };
  repeat<ROWS>([&](auto index) SORTING_UNROLLED {
    constexpr int ROW = decltype(index)::value;
    if constexpr (ROW < FULL)
      rows[ROW] = Lanes::load(array + ROW * Lanes::N);
    else
      rows[ROW] = Lanes::load_some(array + ROW * Lanes::N, rest_of_row(ROW));
  });
  sort_rows<Lanes, ROWS>(rows);
  repeat<ROWS>([&](auto index) SORTING_UNROLLED {
    constexpr int ROW = decltype(index)::value;
    if constexpr (ROW < FULL)
      Lanes::store(array + ROW * Lanes::N, rows[ROW]);
    else
      Lanes::store_some(array + ROW * Lanes::N, rest_of_row(ROW), rows[ROW]);
  });
}

// The most elements that the networks sort.
template <typename Lanes>
constexpr size_t FEW = Lanes::ROWS *Lanes::N;

template <typename Lanes>
SORTING_INLINE void sort_few(Cell<typename Lanes::T> *array, size_t count) {
  if (count <= Lanes::N)
    return sort_in_rows<Lanes, 0, 1>(array, count);
  if (count <= 2 * Lanes::N)
    return sort_in_rows<Lanes, 1, 2>(array, count);
  if (count <= 3 * Lanes::N)
    return sort_in_rows<Lanes, 2, 3>(array, count);
  if (count <= 4 * Lanes::N)
    return sort_in_rows<Lanes, 3, 4>(array, count);
  if (count <= 6 * Lanes::N)
    return sort_in_rows<Lanes, 4, 6>(array, count);
  if (Lanes::ROWS == 8 || count <= 8 * Lanes::N)
    return sort_in_rows<Lanes, 6, 8>(array, count);
  if (count <= 12 * Lanes::N)
    return sort_in_rows<Lanes, 8, 12>(array, count);
  return sort_in_rows<Lanes, 12, 16>(array, count);
}

// Elements of which a vector would be filled in part, and which are worth a look whether they are in order.
constexpr size_t HANDFUL = 8;

template <typename Lanes>
SORTING_INLINE void sort_handful(Cell<typename Lanes::T> *array, size_t count) {
  for (size_t place = 1; place < count; ++place)
    if (array[place - 1].value > array[place].value)
      return sort_few<portable::Single<typename Lanes::T, Lanes>>(array, count);
}

}  // namespace qxport::sorting

#endif
