// The process's zone while one is alive, as a program sets it: the environment changes, nothing else.
#ifndef TESTS_SUPPORT_ZONE_H
#define TESTS_SUPPORT_ZONE_H

#include <cstdlib>
#include <optional>
#include <string>

// Zones in the notation that needs no file. Offsets are to the west.
constexpr char UTC[] = "UTC0";
constexpr char CENTRAL_EUROPE[] = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr char NEPAL[] = "<+0545>-5:45";
constexpr char LORD_HOWE[] = "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0";  // half an hour of daylight saving
constexpr char NEWFOUNDLAND[] = "NST3:30NDT,M3.2.0,M11.1.0";
constexpr char NEW_YORK[] = "EST5EDT,M3.2.0,M11.1.0";

class Zone {
public:
  explicit Zone(const char *zone) {
    if (const char *former = getenv("TZ"); former != nullptr)
      former_ = former;
    set(zone);
  }
  ~Zone() { set(former_ ? former_->c_str() : nullptr); }
  Zone(const Zone &) = delete;
  Zone &operator=(const Zone &) = delete;

  // Null unsets.
  static void set(const char *zone) {
    if (zone == nullptr)
      unsetenv("TZ");
    else
      setenv("TZ", zone, 1);
  }

private:
  std::optional<std::string> former_;
};

#endif
