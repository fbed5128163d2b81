// Makes the n-th allocation of the code under test fail. The linker redirects malloc and its kin here
// (--wrap).
#ifndef TESTS_SUPPORT_FAILING_ALLOCATIONS_H
#define TESTS_SUPPORT_FAILING_ALLOCATIONS_H

#include <cerrno>
#include <cstddef>

// While one is alive, allocation number n (from 1) fails, all others succeed; n = 0 only counts.
class FailingAllocation {
public:
  explicit FailingAllocation(size_t n, int error = ENOMEM);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation &) = delete;
  FailingAllocation &operator=(const FailingAllocation &) = delete;

  // Was there an n-th allocation?
  bool failed() const;
  size_t allocations() const;
  // How many bytes allocation number n (from 1, at most 1000) asked for, whether it failed or not; 0 where
  // there was none.
  size_t requested(size_t n) const;
};

// Calls `attempt` with its first, second, ... allocation failing, and `check_failure` behind each; then once
// with none failing. Answers how many failed. (An attempt that would not end fails the test after a
// thousand.)
template <typename Attempt, typename Check>
size_t fail_each_allocation(Attempt attempt, Check check_failure) {
  for (size_t n = 1; n <= 1000; ++n) {
    bool failed;
    {
      const FailingAllocation failing(n);
      attempt();
      failed = failing.failed();
    }
    if (!failed)
      return n - 1;
    check_failure(n);
  }
  return 1000;
}

// Bytes of the heap in use. The address sanitizer's heap always answers 0; there the leak check at the end of
// the program does this work.
size_t heap_in_use();

// By how many bytes the heap grows over a hundred calls; 0 for code that gives back all that it obtains.
template <typename Attempt>
size_t heap_growth(Attempt attempt) {
  // The first calls fill the C library's caches.
  for (int i = 0; i < 16; ++i)
    attempt();
  const size_t before = heap_in_use();
  for (int i = 0; i < 100; ++i)
    attempt();
  return heap_in_use() - before;
}

#endif
