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
struct ColumnNetwork<4> {
  static constexpr int LENGTH = 5;
  static constexpr Exchange STEPS[LENGTH] = {{0, 1}, {2, 3}, {0, 2}, {1, 3}, {1, 2}};
};
template <>
struct ColumnNetwork<8> {
  static constexpr int LENGTH = 19;
  static constexpr Exchange STEPS[LENGTH] = {{0, 2}, {1, 3}, {4, 6}, {5, 7}, {0, 4}, {1, 5}, {2, 6},
                                             {3, 7}, {0, 1}, {2, 3}, {4, 5}, {6, 7}, {2, 4}, {3, 5},
                                             {1, 4}, {3, 6}, {1, 2}, {3, 4}, {5, 6}};
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

// Orders every element of the lower half of `COUNT` rows with its mirror image, in groups of 2 * WIDTH lanes,
// then does so with both halves; at last within each row.
template <typename Lanes, int COUNT, int WIDTH>
SORTING_INLINE void halve_rows(typename Lanes::V *rows) {
  if constexpr (COUNT > 1) {
    repeat<COUNT / 2>([&](auto index) SORTING_UNROLLED {
      constexpr int ROW = decltype(index)::value;
      typename Lanes::V mirrored = Lanes::template flipped<2 * WIDTH - 1>(rows[COUNT - 1 - ROW]);
      Lanes::order(rows[ROW], mirrored);
      rows[COUNT - 1 - ROW] = mirrored;
    });
    halve_rows<Lanes, COUNT / 2, WIDTH>(rows);
    halve_rows<Lanes, COUNT / 2, WIDTH>(rows + COUNT / 2);
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

// More than half of the rows are full; what is missing behind the last element counts as the largest value,
// and is not stored.
template <typename Lanes, int ROWS>
[[gnu::noinline]] void sort_in_rows(Cell<typename Lanes::T> *array, size_t count) {
  constexpr size_t FULL = ROWS / 2 * Lanes::N;
  typename Lanes::V rows[ROWS];
  const auto rest_of_row = [&](int row) SORTING_UNROLLED {
    const size_t begin = static_cast<size_t>(row) * Lanes::N;
    const size_t rest = count > begin ? count - begin : 0;
    return rest < Lanes::N ? rest : size_t{Lanes::N};
  };
  repeat<ROWS>([&](auto index) SORTING_UNROLLED {
    constexpr int ROW = decltype(index)::value;
    if constexpr (ROW * Lanes::N < FULL)
      rows[ROW] = Lanes::load(array + ROW * Lanes::N);
    else
      rows[ROW] = Lanes::load_some(array + ROW * Lanes::N, rest_of_row(ROW));
  });
  sort_rows<Lanes, ROWS>(rows);
  repeat<ROWS>([&](auto index) SORTING_UNROLLED {
    constexpr int ROW = decltype(index)::value;
    if constexpr (ROW * Lanes::N < FULL)
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
    return sort_in_rows<Lanes, 1>(array, count);
  if (count <= 2 * Lanes::N)
    return sort_in_rows<Lanes, 2>(array, count);
  if (count <= 4 * Lanes::N)
    return sort_in_rows<Lanes, 4>(array, count);
  if (Lanes::ROWS == 8 || count <= 8 * Lanes::N)
    return sort_in_rows<Lanes, 8>(array, count);
  return sort_in_rows<Lanes, Lanes::ROWS>(array, count);
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
