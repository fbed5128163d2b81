// Packed times above a host that cannot convert them.
#include "outcome.h"

#include <ctime>

struct tm *localtime_r(const time_t *, struct tm *) noexcept {
  return nullptr;
}
time_t mktime(struct tm *) noexcept {
  return -1;
}

namespace {

TEST(PackedTimeOfAHostThatFails, FieldsAreMinusOne) {
  for (const int32_t time : {0, 1700000000, -1}) {
    int16_t f[6] = {1, 2, 3, 4, 5, 6};
    unpacktimeqq_(&time, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
    for (const int16_t field : f)
      EXPECT_EQ(field, -1);
  }
}

TEST(PackedTimeOfAHostThatFails, TimeIsMinusOne) {
  const int16_t year = 2023, one = 1, zero = 0;
  int32_t time = SENTINEL;
  packtimeqq_(&time, &year, &one, &one, &zero, &zero, &zero);
  EXPECT_EQ(time, -1);
}

}  // namespace
