// The status array of the STAT family between guards.
#ifndef TESTS_SUPPORT_STATUS_ARRAY_H
#define TESTS_SUPPORT_STATUS_ARRAY_H

#include "recorder.h"

#include <algorithm>
#include <array>
#include <cstddef>

template <typename Integer>
class StatusArray {
public:
  // What the elements hold before the call; no file has it.
  static constexpr Integer FORMER = static_cast<Integer>(0x5A17BEEF5A17BEEF);

  StatusArray() { all_.fill(FORMER); }
  ~StatusArray() {
    EXPECT_EQ(all_.front(), FORMER) << "written before a status array";
    EXPECT_EQ(all_.back(), FORMER) << "written behind a status array";
  }
  StatusArray(const StatusArray &) = delete;
  StatusArray &operator=(const StatusArray &) = delete;

  Integer *data() { return all_.data() + 1; }

  std::array<Integer, 13> elements() const {
    std::array<Integer, 13> elements;
    std::copy(all_.begin() + 1, all_.end() - 1, elements.begin());
    return elements;
  }

  static std::array<Integer, 13> former() {
    std::array<Integer, 13> elements;
    elements.fill(FORMER);
    return elements;
  }

private:
  std::array<Integer, 15> all_;
};

#endif
