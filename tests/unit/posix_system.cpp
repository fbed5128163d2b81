// Time, process times, and what the system is called and allows.
#include "outcome.h"
#include "record_calls.h"

#include <array>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <optional>
#include <sys/times.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace {

// What the host's calls fail with, or answer in place of the host.
int localtime_error, uname_error;
std::optional<clock_t> times_answer;
tms times_used;
struct {
  bool given;
  long value;
} sysconf_answer;

template <typename Function>
Function *next_definition(Function *, const char *name) {
  return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

}  // namespace

struct tm *localtime(const time_t *seconds) noexcept {
  if (localtime_error != 0) {
    errno = localtime_error;
    return nullptr;
  }
  static struct tm result;
  tzset();
  return localtime_r(seconds, &result);
}

clock_t times(struct tms *used) noexcept {
  static const auto real = next_definition(times, "times");
  if (!times_answer)
    return real(used);
  *used = times_used;
  if (*times_answer == -1)
    errno = EFAULT;
  return *times_answer;
}

int uname(struct utsname *names) noexcept {
  static const auto real = next_definition(uname, "uname");
  if (uname_error == 0)
    return real(names);
  errno = uname_error;
  return -1;
}

// A sanitizer asks before it is ready to watch anyone, so this can neither be watched nor look a name up.
extern "C" long __sysconf(int name) noexcept;
__attribute__((no_sanitize("thread"))) long sysconf(int name) noexcept {
  return sysconf_answer.given ? sysconf_answer.value : __sysconf(name);
}

namespace {

TEST(Pxftime, IsTheSecondsSinceTheEpoch) {
  Guarded<int32_t> itime(SENTINEL);
  const time_t before = time(nullptr);
  EXPECT_EQ(reported_by([&](int32_t *ierror) { pxftime_(&itime, ierror); }), succeeded());
  EXPECT_GE(itime.value(), static_cast<int32_t>(before));
  EXPECT_LE(itime.value(), static_cast<int32_t>(time(nullptr)));
}

TEST(Pxftime, NullAddressIsMinus1) {
  EXPECT_EQ(reported_by([](int32_t *ierror) { pxftime_(nullptr, ierror); }), refused_silently(-1));
}

using Calendar = std::array<int32_t, 9>;

// The time zone of the process while one is alive.
class TimeZone {
public:
  explicit TimeZone(const char *zone) : former_(getenv("TZ") == nullptr ? "" : getenv("TZ")) {
    setenv("TZ", zone, 1);
  }
  ~TimeZone() {
    if (former_.empty())
      unsetenv("TZ");
    else
      setenv("TZ", former_.c_str(), 1);
  }
  TimeZone(const TimeZone &) = delete;
  TimeZone &operator=(const TimeZone &) = delete;

private:
  const std::string former_;
};

Calendar local_time(int32_t isecnds) {
  std::array<int32_t, 11> guarded;
  guarded.fill(SENTINEL);
  EXPECT_EQ(reported_by([&](int32_t *ierror) { pxflocaltime_(&isecnds, guarded.data() + 1, ierror); }).answer,
            0);
  EXPECT_EQ(guarded.front(), SENTINEL);
  EXPECT_EQ(guarded.back(), SENTINEL);
  Calendar calendar;
  std::copy(guarded.begin() + 1, guarded.end() - 1, calendar.begin());
  return calendar;
}

TEST(Pxflocaltime, EpochInAUtcZone) {
  const TimeZone zone("UTC");
  EXPECT_EQ(local_time(0), (Calendar{0, 0, 0, 1, 1, 1970, 4, 1, 0}));
}

TEST(Pxflocaltime, NegativeSecondsAreBeforeTheEpoch) {
  const TimeZone zone("UTC");
  EXPECT_EQ(local_time(-1), (Calendar{59, 59, 23, 31, 12, 1969, 3, 365, 0}));
  EXPECT_EQ(local_time(INT32_MIN), (Calendar{52, 45, 20, 13, 12, 1901, 5, 347, 0}));
}

TEST(Pxflocaltime, LastSecondOfAnInteger) {
  const TimeZone zone("UTC");
  EXPECT_EQ(local_time(INT32_MAX), (Calendar{7, 14, 3, 19, 1, 2038, 2, 19, 0}));
}

TEST(Pxflocaltime, LastDayOfALeapYearIs366) {
  const TimeZone zone("UTC");
  EXPECT_EQ(local_time(1483228799), (Calendar{59, 59, 23, 31, 12, 2016, 6, 366, 0}));
}

TEST(Pxflocaltime, DaylightSavingTimeOfAZone) {
  const TimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ(local_time(1427590799), (Calendar{59, 59, 1, 29, 3, 2015, 0, 88, 0}));
  EXPECT_EQ(local_time(1427590800), (Calendar{0, 0, 3, 29, 3, 2015, 0, 88, 1}));
  EXPECT_EQ(local_time(1445734800 - 1), (Calendar{59, 59, 2, 25, 10, 2015, 0, 298, 1}));
  EXPECT_EQ(local_time(1445734800), (Calendar{0, 0, 2, 25, 10, 2015, 0, 298, 0}));
}

TEST(Pxflocaltime, ZoneBehindUtcHasTheDayBefore) {
  const TimeZone zone("EST5");
  EXPECT_EQ(local_time(0), (Calendar{0, 0, 19, 31, 12, 1969, 3, 365, 0}));
}

TEST(Pxflocaltime, FailureIsTheHostsErrorAndTheArrayStays) {
  Calendar calendar;
  calendar.fill(SENTINEL);
  const Calendar before = calendar;
  const int32_t isecnds = 0;
  localtime_error = EOVERFLOW;
  EXPECT_EQ(reported_by([&](int32_t *ierror) { pxflocaltime_(&isecnds, calendar.data(), ierror); }),
            refused(EOVERFLOW, EOVERFLOW));
  localtime_error = 0;
  EXPECT_EQ(calendar, before);
}

class Pxftimes : public testing::Test {
protected:
  ~Pxftimes() override { times_answer = std::nullopt; }

  Outcome call(int32_t jtms) {
    return reported_by([&](int32_t *ierror) { pxftimes_(&jtms, &itime_, ierror); });
  }

  const OwnedRecord record_{"tms"};
  Guarded<int32_t> itime_{SENTINEL};
};

TEST_F(Pxftimes, FillsTheRecordAndTheTicks) {
  times_used = {11, 22, 33, 44};
  times_answer = 55;
  EXPECT_EQ(call(record_), succeeded());
  EXPECT_EQ(itime_, 55);
  EXPECT_EQ(contents_of(record_),
            (Contents{{"tms_utime", "11"}, {"tms_stime", "22"}, {"tms_cutime", "33"}, {"tms_cstime", "44"}}));
}

TEST_F(Pxftimes, IsTheHosts) {
  tms before, after;
  const clock_t first = times(&before);
  ASSERT_EQ(call(record_), succeeded());
  const clock_t last = times(&after);
  EXPECT_LE(static_cast<uint32_t>(itime_.value() - static_cast<int32_t>(first)),
            static_cast<uint32_t>(last - first));
  const auto &used = record_as<qxport::TmsRecord>(record_);
  EXPECT_GE(used.tms_utime, before.tms_utime);
  EXPECT_LE(used.tms_utime, after.tms_utime);
  EXPECT_EQ(used.tms_cutime, after.tms_cutime);
}

#if UINTPTR_MAX > UINT32_MAX
TEST_F(Pxftimes, TicksAre64BitsInTheRecordAndTheLow32InTheInteger) {
  constexpr int64_t LARGE = int64_t{5} << 32;
  times_used = {LARGE + 1, LARGE + 2, LARGE + 3, LARGE + 4};
  times_answer = LARGE + 0xfffffffe;
  EXPECT_EQ(call(record_), succeeded());
  EXPECT_EQ(itime_, -2);
  EXPECT_EQ(record_as<qxport::TmsRecord>(record_).tms_utime, LARGE + 1);
  EXPECT_EQ(record_as<qxport::TmsRecord>(record_).tms_stime, LARGE + 2);
  EXPECT_EQ(record_as<qxport::TmsRecord>(record_).tms_cutime, LARGE + 3);
  EXPECT_EQ(record_as<qxport::TmsRecord>(record_).tms_cstime, LARGE + 4);
}

TEST_F(Pxftimes, OnlyAllBitsAreAFailure) {
  times_answer = 0xffffffff;
  EXPECT_EQ(call(record_), succeeded());
  EXPECT_EQ(itime_, -1);
}
#endif

TEST_F(Pxftimes, FailureIsTheHostsErrorAndAllStays) {
  fill_record(record_);
  const Contents before = contents_of(record_);
  times_answer = -1;
  EXPECT_EQ(call(record_), refused(EFAULT, EFAULT));
  EXPECT_EQ(itime_, SENTINEL);
  EXPECT_EQ(contents_of(record_), before);
}

TEST_F(Pxftimes, UnknownHandleIs127AndAnotherKindIs22) {
  const OwnedRecord other("utsname");
  const ForeignObject stream;
  int32_t freed = 0;
  ASSERT_EQ(create("tms", &freed), succeeded());
  const int32_t stale = freed;
  ASSERT_EQ(release(&freed), succeeded());
  const Contents before = contents_of(other);
  EXPECT_EQ(call(stale), refused(NO_SUCH_HANDLE));
  EXPECT_EQ(call(0), refused(NO_SUCH_HANDLE));
  EXPECT_EQ(call(INT32_MAX), refused(NO_SUCH_HANDLE));
  EXPECT_EQ(call(other), refused(EINVAL));
  EXPECT_EQ(call(stream), refused(EINVAL));
  EXPECT_EQ(itime_, SENTINEL);
  EXPECT_EQ(contents_of(other), before);
}

Outcome uname_into(int32_t juname) {
  return reported_by([&](int32_t *ierror) { pxfuname_(&juname, ierror); });
}

TEST(Pxfuname, NamesAreTheHosts) {
  const OwnedRecord record("utsname");
  fill_record(record);
  utsname names;
  ASSERT_EQ(uname(&names), 0);
  EXPECT_EQ(uname_into(record), succeeded());
  const auto &held_names = record_as<qxport::UtsnameRecord>(record);
  EXPECT_STREQ(held_names.sysname, names.sysname);
  EXPECT_STREQ(held_names.nodename, names.nodename);
  EXPECT_STREQ(held_names.release, names.release);
  EXPECT_STREQ(held_names.version, names.version);
  EXPECT_STREQ(held_names.machine, names.machine);
  Character value(100);
  int32_t ilen;
  EXPECT_EQ(strget(record, "sysname", value, &ilen), succeeded());
  EXPECT_EQ(value.text(), padded("Linux", 100));
}

TEST(Pxfuname, FailureIsTheHostsErrorAndTheRecordStays) {
  const OwnedRecord record("utsname");
  fill_record(record);
  const Contents before = contents_of(record);
  uname_error = EFAULT;
  EXPECT_EQ(uname_into(record), refused(EFAULT, EFAULT));
  uname_error = 0;
  EXPECT_EQ(contents_of(record), before);
}

TEST(Pxfuname, UnknownHandleIs127AndAnotherKindIs22) {
  const OwnedRecord other("tms");
  const ForeignObject stream;
  EXPECT_EQ(uname_into(0), refused(NO_SUCH_HANDLE));
  EXPECT_EQ(uname_into(INT32_MAX), refused(NO_SUCH_HANDLE));
  EXPECT_EQ(uname_into(other), refused(EINVAL));
  EXPECT_EQ(uname_into(stream), refused(EINVAL));
}

struct Limit {
  int32_t ival;
  Outcome outcome;
  bool operator==(const Limit &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Limit &limit) {
  return out << limit.ival << ", " << limit.outcome;
}

Limit limit(int32_t name) {
  Guarded<int32_t> ival(SENTINEL);
  const Outcome outcome = reported_by([&](int32_t *ierror) { pxfsysconf_(&name, &ival, ierror); });
  return {ival, outcome};
}

TEST(Pxfsysconf, ValuesAreTheHosts) {
  for (const int name : {_SC_PAGESIZE, _SC_OPEN_MAX, _SC_CLK_TCK, _SC_NPROCESSORS_ONLN, _SC_ARG_MAX,
                         _SC_NGROUPS_MAX, _SC_VERSION, _SC_JOB_CONTROL, _SC_SAVED_IDS}) {
    errno = ERRNO_SENTINEL;
    const auto value = static_cast<int32_t>(sysconf(name));
    // A file that the host looks for in vain on its way to an answer leaves its mark there.
    const int error = errno;
    EXPECT_EQ(limit(name), (Limit{value, {0, {error, SENTINEL, {}}}})) << name;
  }
}

TEST(Pxfsysconf, UnknownNameIs22AndTheValueStays) {
  for (const int32_t name : {-1, 99999, INT32_MAX, INT32_MIN})
    EXPECT_EQ(limit(name), (Limit{SENTINEL, refused(EINVAL, EINVAL)})) << name;
}

TEST(Pxfsysconf, NoLimitStoresNothingAndReportsErrnoAsItWas) {
  sysconf_answer = {true, -1};
  EXPECT_EQ(limit(_SC_OPEN_MAX), (Limit{SENTINEL, {ERRNO_SENTINEL, untouched()}}));
  int32_t ival = SENTINEL, ierror = SENTINEL;
  const int32_t name = _SC_OPEN_MAX;
  errno = 0;
  pxfsysconf_(&name, &ival, &ierror);
  sysconf_answer = {};
  EXPECT_EQ(ierror, 0);
  EXPECT_EQ(ival, SENTINEL);
}

#if UINTPTR_MAX > UINT32_MAX
TEST(Pxfsysconf, LargeValueKeepsItsLow32Bits) {
  for (const long value : {0x1fffffffeL, 0xffffffffL, LONG_MIN, 0x700000005L}) {
    sysconf_answer = {true, value};
    EXPECT_EQ(limit(_SC_OPEN_MAX), (Limit{static_cast<int32_t>(value), succeeded()}));
  }
  sysconf_answer = {};
}
#endif

}  // namespace
