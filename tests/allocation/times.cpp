// No routine of the clock and the calendar asks for memory.
#include "contract/services.h"
#include "failing_allocations.h"
#include "recorder.h"
#include "zone.h"

namespace {

void call_all() {
  int32_t array[9], number;
  int16_t narrow;
  float single[2];
  double real[2];
  char text[25];
  const int32_t instant = 1782907200;
  const int64_t far_instant = 4118083200;
  const float zero = 0;
  time_();
  rtc_();
  clockx_(real);
  gettimeofday_(array, &number);
  timef_();
  dclock_();
  secnds_(&zero);
  for (const auto routine : {fdate_, clock_, time2_, date_, date8_, date4_, jdate_, jdate4_})
    routine(text, 25);
  ctime_(text, 25, &instant);
  ctimei8_(text, 25, &far_instant);
  ltime_(&instant, array);
  ltimei8_(&far_instant, array);
  gmtime_(&instant, array);
  gmtimei8_(&far_instant, array);
  for (const auto routine : {itime_, idate_, f_idate4_})
    routine(array);
  getdat_(&number, &number, &number);
  getdati2_(&narrow, &narrow, &narrow);
  gettim_(&number, &number, &number, &number);
  gettimi2_(&narrow, &narrow, &narrow, &narrow);
  etime_(single);
  dtime_(single);
  dtimer8_(real);
  for__process_start_time();
  setdat_(&number, &number, &number);
}

TEST(TimesAllocation, NoneIsMade) {
  const Zone zone(CENTRAL_EUROPE);
  const FailingAllocation none(1);
  call_all();
  EXPECT_EQ(none.allocations(), 0u);
}

TEST(TimesAllocation, HeapDoesNotGrow) {
  const Zone zone(CENTRAL_EUROPE);
  EXPECT_EQ(heap_growth([] {
              recorded_statuses.clear();
              call_all();
            }),
            0u);
}

}  // namespace
