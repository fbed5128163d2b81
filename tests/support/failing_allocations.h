// Makes the n-th allocation of the code under test fail. The linker redirects malloc and its kin here
// (--wrap).
#ifndef TESTS_SUPPORT_FAILING_ALLOCATIONS_H
#define TESTS_SUPPORT_FAILING_ALLOCATIONS_H

#include <cstddef>

// While one is alive, allocation number n (from 1) fails with ENOMEM, all others succeed; n = 0 only counts.
class FailingAllocation {
public:
  explicit FailingAllocation(size_t n);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation &) = delete;
  FailingAllocation &operator=(const FailingAllocation &) = delete;

  // Was there an n-th allocation?
  bool failed() const;
  size_t allocations() const;
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

#endif
