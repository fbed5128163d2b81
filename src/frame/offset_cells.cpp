#include "frame/offset_cells.h"

#include "frame/civil_time.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <unistd.h>

using namespace qxport;

namespace {

// Threads may be here at the same time: each remembered fact is one atomic word, complete in itself. That no
// thread changes the environment meanwhile is a rule of the host.

// A cell has 2^14 s, 4.5 hours. No zone of the database changes to and fro within so short a time.
constexpr int CELL_BITS = 14;
constexpr int64_t CELL = int64_t{1} << CELL_BITS;
constexpr size_t REMEMBERED = 256;
// Half a million years on either side: the fields of a cell's number have 31 bits.
constexpr int64_t FARTHEST = int64_t{1} << (30 + CELL_BITS);

// An entry: the cell's number, the offset, daylight saving, and 1 in the lowest bit; 0 where there is none.
std::atomic<uint64_t> entries[REMEMBERED];

constexpr int OFFSET_BITS = 20;
constexpr int32_t OFFSET_BIAS = 1 << (OFFSET_BITS - 1);
constexpr int NUMBER_PLACE = 2 + OFFSET_BITS;

uint64_t numbered(int64_t cell) {
  return static_cast<uint64_t>(cell + (int64_t{1} << 30)) << NUMBER_PLACE;
}

uint64_t entry_of(int64_t cell, const ZoneOffset &offset) {
  return numbered(cell) | static_cast<uint64_t>(offset.seconds + OFFSET_BIAS) << 2 |
         (offset.daylight_saving ? 2U : 0U) | 1U;
}

ZoneOffset offset_in(uint64_t entry) {
  const auto biased = static_cast<int32_t>(entry >> 2 & ((1U << OFFSET_BITS) - 1));
  return {biased - OFFSET_BIAS, (entry & 2) != 0};
}

// The zone that the host was told of last: the text of TZ, filled with NULs.
enum class Zone : int { Unknown, System, Named, Ruled };
constexpr size_t ZONE_WORDS = 8;
using ZoneText = uint64_t[ZONE_WORDS];

std::atomic<Zone> zone{Zone::Unknown};
std::atomic<uint64_t> zone_text[ZONE_WORDS];

// Where TZ was found last, and in which list: to search an environment of a hundred variables takes as long
// as all the rest. Another variable stands there when one before it has been taken out.
std::atomic<char **> searched_list{nullptr};
std::atomic<char **> place_of_zone{nullptr};

constexpr char ZONE_NAME[] = "TZ=";
constexpr size_t ZONE_NAME_LENGTH = sizeof(ZONE_NAME) - 1;

bool sets_zone(const char *entry) {
  return entry != nullptr && strncmp(entry, ZONE_NAME, ZONE_NAME_LENGTH) == 0;
}

// What getenv tells of TZ, or null.
const char *value_of_zone() {
  char **const list = environ;
  // Programs empty the environment also by ending its list at the first entry.
  if (list == nullptr || *list == nullptr)
    return nullptr;
  if (list == searched_list.load(std::memory_order_acquire))
    if (const char *entry = *place_of_zone.load(std::memory_order_relaxed); sets_zone(entry))
      return entry + ZONE_NAME_LENGTH;
  char **place = list;
  while (*place != nullptr && !sets_zone(*place))
    ++place;
  if (*place == nullptr)
    return nullptr;
  place_of_zone.store(place, std::memory_order_relaxed);
  searched_list.store(list, std::memory_order_release);
  return *place + ZONE_NAME_LENGTH;
}

bool is_remembered(const ZoneText &text) {
  for (size_t i = 0; i < ZONE_WORDS; ++i)
    if (zone_text[i].load(std::memory_order_acquire) != text[i])
      return false;
  return true;
}

void take_over(Zone kind, const ZoneText &text) {
  for (std::atomic<uint64_t> &entry : entries)
    entry.store(0, std::memory_order_relaxed);
  zone.store(kind, std::memory_order_release);
  for (size_t i = 0; i < ZONE_WORDS; ++i)
    zone_text[i].store(text[i], std::memory_order_release);
}

// The host is told of TZ whenever it is asked: the program may have told it of another one meanwhile.
void tell_host() {
  // A zone's file that is not there is no error of the caller's.
  const int before = errno;
  tzset();
  errno = before;
}

bool host_offset(int64_t instant, ZoneOffset *offset) {
  const auto asked = static_cast<time_t>(instant);
  struct tm fields;
  if (localtime_r(&asked, &fields) == nullptr)
    return false;
  // What the host names as offset leaves out the leap seconds of the zones that count them.
  const int64_t seconds = clock_of(fields) - instant;
  *offset = {static_cast<int32_t>(seconds), fields.tm_isdst > 0};
  return seconds > -OFFSET_BIAS && seconds < OFFSET_BIAS;
}

bool host_offset_of_cell(int64_t cell, ZoneOffset *offset) {
  tell_host();
  ZoneOffset last;
  return host_offset(cell * CELL, offset) && host_offset(cell * CELL + CELL - 1, &last) && last == *offset;
}

}  // namespace

void qxport::follow_zone() {
  const Zone known = zone.load(std::memory_order_acquire);
  const char *value = value_of_zone();
  ZoneText text = {};
  if (value == nullptr) {
    if (known != Zone::System)
      take_over(Zone::System, text);
    return;
  }
  const size_t length = strnlen(value, sizeof(text));
  memcpy(text, value, length);
  if (length < sizeof(text) && (known == Zone::Named || known == Zone::Ruled) && is_remembered(text))
    return;
  // A rule may say anything, also that daylight saving lasts for an hour: it is not divided into cells. Nor
  // is a text that is too long to be told from another.
  const bool ruled = length == sizeof(text) || memchr(value, ',', length) != nullptr;
  take_over(ruled ? Zone::Ruled : Zone::Named, text);
}

bool qxport::host_fields(time_t instant, struct tm *fields) {
  tell_host();
  return localtime_r(&instant, fields) != nullptr;
}

bool qxport::offset_of_cell(int64_t instant, ZoneOffset *offset) {
  if (instant < -FARTHEST || instant >= FARTHEST || zone.load(std::memory_order_acquire) == Zone::Ruled)
    return false;
  const int64_t cell = instant >> CELL_BITS;
  std::atomic<uint64_t> &place = entries[static_cast<size_t>(cell) % REMEMBERED];
  const uint64_t entry = place.load(std::memory_order_relaxed);
  if ((entry & 1) != 0 && entry >> NUMBER_PLACE == numbered(cell) >> NUMBER_PLACE) {
    *offset = offset_in(entry);
    return true;
  }
  if (!host_offset_of_cell(cell, offset))
    return false;
  place.store(entry_of(cell, *offset), std::memory_order_relaxed);
  return true;
}

bool qxport::offset_around(int64_t instant, const ZoneOffset &offset) {
  for (const int64_t beside : {instant, instant - CELL, instant + CELL}) {
    ZoneOffset found;
    if (!offset_of_cell(beside, &found) || found != offset)
      return false;
  }
  return true;
}
