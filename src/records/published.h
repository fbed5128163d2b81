// What one thread makes while others read: words that stand in memory for good, stored so that whoever sees
// one sees all that was written before it. There are no locks, and nothing waits.
#ifndef QXPORT_RECORDS_PUBLISHED_H
#define QXPORT_RECORDS_PUBLISHED_H

#include <atomic>

namespace qxport {

template <typename Word>
Word published(const Word &cell) {
  return std::atomic_ref(const_cast<Word &>(cell)).load(std::memory_order_acquire);
}

template <typename Word>
void publish(Word &cell, Word value) {
  std::atomic_ref(cell).store(value, std::memory_order_release);
}

}  // namespace qxport

#endif
