// Dates and times of day: as text in several layouts of old, and as arrays.
#include "frame/calendar.h"
#include "frame/strings.h"

#include <ctime>
#include <string_view>
#include <sys/time.h>

using namespace qxport;

namespace {

constexpr char datetable[12][4] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr char DAYS[7][4] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

constexpr int CENTURY_BEGIN = 1900;  // of the host's years
constexpr int LONGEST_TWO_DIGIT_YEAR = 96;

// The text of a date as it grows.
class Text {
public:
  Text &add(std::string_view text) {
    memcpy(end_, text.data(), text.size());
    end_ += text.size();
    return *this;
  }
  Text &add(char character) {
    *end_++ = character;
    return *this;
  }
  // A month or a day.
  Text &add_name(const char *name) {
    memcpy(end_, name, 3);
    end_ += 3;
    return *this;
  }
  // Decimal, filled up to the width.
  Text &add(int64_t number, int width, char fill = '0') {
    if (width == 2 && number >= 0 && number < 100) {
      end_[0] = number < 10 ? fill : static_cast<char>('0' + number / 10);
      end_[1] = static_cast<char>('0' + number % 10);
      end_ += 2;
      return *this;
    }
    if (number >= 1000 && number <= 9999)
      return add(number / 100, 2).add(number % 100, 2);
    char digits[20];
    char *first = digits + sizeof(digits);
    uint64_t rest = static_cast<uint64_t>(number < 0 ? -number : number);
    do {
      *--first = static_cast<char>('0' + rest % 10);
      rest /= 10;
    } while (rest > 0);
    if (number < 0)
      *--first = '-';
    const size_t length = static_cast<size_t>(digits + sizeof(digits) - first);
    for (size_t i = length; i < static_cast<size_t>(width); ++i)
      add(fill);
    return add({first, length});
  }

  void store(char *answer, charlen answer_len) {
    *end_ = '\0';
    CstrToFstr(answer, text_, answer_len, end_ - text_);
  }

private:
  char text_[64];
  char *end_ = text_;
};

// Years until 1999 have two digits in some layouts: programs of that time take them so.
int short_year(const tm &date) {
  const int year = date.tm_year % 100;
  return year < LONGEST_TWO_DIGIT_YEAR ? year + 2000 : year;
}

Text &add_time(Text &text, const tm &date) {
  return text.add(date.tm_hour, 2).add(':').add(date.tm_min, 2).add(':').add(date.tm_sec, 2);
}

// As the host's ctime() has it, but for the line feed at the end.
void write_ctime(const tm &date, Text &text) {
  text.add_name(DAYS[date.tm_wday])
      .add(' ')
      .add_name(datetable[date.tm_mon])
      .add(' ')
      .add(date.tm_mday, 2, ' ')
      .add(' ');
  add_time(text, date).add(' ').add(int64_t{date.tm_year} + CENTURY_BEGIN, 1);
}

void write_clock(const tm &date, Text &text) {
  add_time(text, date);
}

void write_date(const tm &date, Text &text) {
  text.add(date.tm_mday, 2).add('-').add_name(datetable[date.tm_mon]).add('-').add(date.tm_year % 100, 2);
}

void write_numeric_date(const tm &date, Text &text) {
  text.add(date.tm_mon + 1, 2).add('/').add(date.tm_mday, 2).add('/').add(date.tm_year % 100, 2);
}

void write_date4(const tm &date, Text &text) {
  text.add(date.tm_mday, 2).add('-').add_name(datetable[date.tm_mon]).add('-').add(short_year(date), 1);
}

void write_jdate(const tm &date, Text &text) {
  text.add(date.tm_year % 100, 2).add(date.tm_yday + 1, 3);
}

void write_jdate4(const tm &date, Text &text) {
  text.add(date.tm_year + CENTURY_BEGIN, 4).add(date.tm_yday + 1, 3);
}

// False, with zeros, where the host knows no date of the instant.
bool local_date(time_t seconds, tm *date) {
  const bool known = local_fields(seconds, date);
  if (!known)
    *date = {};
  return known;
}

// The text of now in a layout; blank where the host knows no date for it.
void store_now(char *answer, charlen answer_len, void (*layout)(const tm &, Text &)) {
  tm now;
  if (!local_date(time(nullptr), &now))
    return blank_fill(answer, answer_len);
  Text text;
  layout(now, text);
  text.store(answer, answer_len);
}

void store_ctime(char *answer, charlen answer_len, time_t seconds) {
  tm date;
  if (!local_date(seconds, &date))
    return blank_fill(answer, answer_len);
  Text text;
  write_ctime(date, text);
  text.add('\n').store(answer, answer_len);
}

struct Date {
  int day, month, year;
};

// Zeros where the host knows no date.
Date date_now(int (*year)(const tm &)) {
  tm now;
  if (!local_date(time(nullptr), &now))
    return {};
  return {now.tm_mday, now.tm_mon + 1, year(now)};
}

int full_year(const tm &date) {
  return date.tm_year + CENTURY_BEGIN;
}

int year_of_century(const tm &date) {
  return date.tm_year % 100;
}

template <typename Integer>
void store_getdat(Integer *year, Integer *month, Integer *day) {
  const Date now = date_now(full_year);
  *year = static_cast<Integer>(now.year);
  *month = static_cast<Integer>(now.month);
  *day = static_cast<Integer>(now.day);
}

template <typename Integer>
void store_gettim(Integer *hour, Integer *minute, Integer *second, Integer *hundredths) {
  timeval time_of_day = {};
  gettimeofday(&time_of_day, nullptr);
  tm now;
  local_date(time_of_day.tv_sec, &now);
  *hour = static_cast<Integer>(now.tm_hour);
  *minute = static_cast<Integer>(now.tm_min);
  *second = static_cast<Integer>(now.tm_sec);
  *hundredths = static_cast<Integer>(time_of_day.tv_usec / 10000);
}

void store_fields(int32_t *tarray, const tm &date, int first_day_of_year) {
  tarray[0] = date.tm_sec;
  tarray[1] = date.tm_min;
  tarray[2] = date.tm_hour;
  tarray[3] = date.tm_mday;
  tarray[4] = date.tm_mon;
  tarray[5] = date.tm_year;
  tarray[6] = date.tm_wday;
  tarray[7] = date.tm_yday + first_day_of_year;
  tarray[8] = date.tm_isdst;
}

constexpr size_t FIELDS = 9;

// The day of the year counts from 1 in LTIME and from 0 in GMTIME; programs depend on both.
void store_ltime(int32_t *tarray, time_t seconds) {
  tm date;
  if (local_date(seconds, &date))
    store_fields(tarray, date, 1);
  else
    std::fill_n(tarray, FIELDS, 0);
}

void store_gmtime(int32_t *tarray, time_t seconds) {
  tm date;
  if (gmtime_r(&seconds, &date) != nullptr)
    store_fields(tarray, date, 0);
  else
    std::fill_n(tarray, FIELDS, 0);
}

}  // namespace

// TEXT = CTIME(STIME)
void ctime_(char *answer, charlen answer_len, const int32_t *stime) {
  store_ctime(answer, answer_len, *stime);
}

// TEXT = CTIME(STIME), with an INTEGER(8) time
void ctimei8_(char *answer, charlen answer_len, const int64_t *stime) {
  store_ctime(answer, answer_len, *stime);
}

// TEXT = FDATE()
void fdate_(char *answer, charlen answer_len) {
  store_now(answer, answer_len, write_ctime);
}

// TEXT = CLOCK()
void clock_(char *answer, charlen answer_len) {
  store_now(answer, answer_len, write_clock);
}

// TEXT = TIME2()
void time2_(char *answer, charlen answer_len) {
  store_now(answer, answer_len, write_clock);
}

// TEXT = DATE()
// A variable of eight characters gets the layout that fits.
void date_(char *answer, charlen answer_len) {
  store_now(answer, answer_len, answer_len >= 9 ? write_date : write_numeric_date);
}

// TEXT = DATE8()
void date8_(char *answer, charlen answer_len) {
  store_now(answer, answer_len, write_numeric_date);
}

// TEXT = DATE4()
void date4_(char *answer, charlen answer_len) {
  store_now(answer, answer_len, write_date4);
}

// TEXT = JDATE()
void jdate_(char *answer, charlen answer_len) {
  store_now(answer, answer_len, write_jdate);
}

// TEXT = JDATE4()
void jdate4_(char *answer, charlen answer_len) {
  store_now(answer, answer_len, write_jdate4);
}

// CALL GETDAT(YEAR, MONTH, DAY)
void getdat_(int32_t *year, int32_t *month, int32_t *day) {
  store_getdat(year, month, day);
}

// CALL GETDATI2(YEAR, MONTH, DAY)
void getdati2_(int16_t *year, int16_t *month, int16_t *day) {
  store_getdat(year, month, day);
}

// CALL GETTIM(HOUR, MINUTE, SECOND, HUNDREDTHS)
void gettim_(int32_t *hour, int32_t *minute, int32_t *second, int32_t *hundredths) {
  store_gettim(hour, minute, second, hundredths);
}

// CALL GETTIMI2(HOUR, MINUTE, SECOND, HUNDREDTHS)
void gettimi2_(int16_t *hour, int16_t *minute, int16_t *second, int16_t *hundredths) {
  store_gettim(hour, minute, second, hundredths);
}

// CALL ITIME(IARRAY)
void itime_(int32_t *iarray) {
  tm now;
  local_date(time(nullptr), &now);
  iarray[0] = now.tm_hour;
  iarray[1] = now.tm_min;
  iarray[2] = now.tm_sec;
}

// CALL IDATE(IARRAY)
void idate_(int32_t *iarray) {
  const Date now = date_now(year_of_century);
  iarray[0] = now.day;
  iarray[1] = now.month;
  iarray[2] = now.year;
}

// CALL IDATE1(MONTH, DAY, YEAR)
void idate1_(int32_t *month, int32_t *day, int32_t *year) {
  const Date now = date_now(year_of_century);
  *month = now.month;
  *day = now.day;
  *year = now.year;
}

// CALL IDATE4(MONTH, DAY, YEAR)
void idate4_(int32_t *month, int32_t *day, int32_t *year) {
  const Date now = date_now(short_year);
  *month = now.month;
  *day = now.day;
  *year = now.year;
}

// CALL F_IDATE4(IARRAY)
void f_idate4_(int32_t *iarray) {
  const Date now = date_now(short_year);
  iarray[0] = now.day;
  iarray[1] = now.month;
  iarray[2] = now.year;
}

// CALL LTIME(STIME, TARRAY)
void ltime_(const int32_t *stime, int32_t *tarray) {
  store_ltime(tarray, *stime);
}

// CALL LTIME(STIME, TARRAY), with an INTEGER(8) time
void ltimei8_(const int64_t *stime, int32_t *tarray) {
  store_ltime(tarray, *stime);
}

// CALL GMTIME(STIME, TARRAY)
void gmtime_(const int32_t *stime, int32_t *tarray) {
  store_gmtime(tarray, *stime);
}

// CALL GMTIME(STIME, TARRAY), with an INTEGER(8) time
void gmtimei8_(const int64_t *stime, int32_t *tarray) {
  store_gmtime(tarray, *stime);
}

QXPORT_ALIAS(ctime_)
QXPORT_ALIAS(ctimei8_)
QXPORT_ALIAS(fdate_)
QXPORT_ALIAS(clock_)
QXPORT_ALIAS(time2_)
QXPORT_ALIAS(date_)
QXPORT_ALIAS(date8_)
QXPORT_ALIAS(date4_)
QXPORT_ALIAS(jdate_)
QXPORT_ALIAS(jdate4_)
QXPORT_ALIAS(getdat_)
QXPORT_ALIAS(getdati2_)
QXPORT_ALIAS(gettim_)
QXPORT_ALIAS(gettimi2_)
QXPORT_ALIAS(itime_)
QXPORT_ALIAS(idate_)
QXPORT_ALIAS(idate1_)
QXPORT_ALIAS(idate4_)
QXPORT_ALIAS(f_idate4_)
QXPORT_ALIAS(ltime_)
QXPORT_ALIAS(ltimei8_)
QXPORT_ALIAS(gmtime_)
QXPORT_ALIAS(gmtimei8_)
