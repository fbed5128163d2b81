// Time zones of a test's own.
#ifndef TESTS_SUPPORT_TIME_ZONE_H
#define TESTS_SUPPORT_TIME_ZONE_H

#include <cstdlib>
#include <optional>
#include <string>

// The zone of the process while one is alive; nothing for one that is not set.
class TimeZone {
public:
  explicit TimeZone(const char *name) {
    if (const char *value = getenv("TZ"))
      former_ = value;
    set(name);
  }
  ~TimeZone() { set(former_ ? former_->c_str() : nullptr); }
  TimeZone(const TimeZone &) = delete;
  TimeZone &operator=(const TimeZone &) = delete;

  // The host is not told of it: the library must see for itself.
  static void set(const char *name) {
    if (name == nullptr)
      unsetenv("TZ");
    else
      setenv("TZ", name, 1);
  }

private:
  std::optional<std::string> former_;
};

#endif
