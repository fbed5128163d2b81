// Sees what the library records in the run-time's status: the tests' own for_errsns_load takes the provider's
// over.
#ifndef TESTS_SUPPORT_RECORDER_H
#define TESTS_SUPPORT_RECORDER_H

#include <gtest/gtest.h>
#include <qxport/qxport.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

struct RecordedStatus {
  int32_t io, number, status, unit, condition;
  bool operator==(const RecordedStatus &) const = default;
};

// All that this thread recorded since its last clear, in order.
extern thread_local std::vector<RecordedStatus> recorded_statuses;

// Values that no routine stores by accident.
constexpr int32_t SENTINEL = 0x5EA15EA1;
constexpr int32_t ERRNO_SENTINEL = 9999;

// Sets errno, the library's cell and the list of recordings to known values.
void reset_error_state();

// What the three places of the error convention hold after a call, for comparison in one line.
struct ErrorState {
  int error;
  int32_t local;
  std::vector<int32_t> recorded;
  bool operator==(const ErrorState &) const = default;
};
std::ostream &operator<<(std::ostream &out, const ErrorState &state);
ErrorState error_state();

// The state of a call that touched none of the three.
ErrorState untouched();

// Two names of one routine. A compiler may take it for granted that two functions have two addresses, so they
// are compared as values that it cannot know.
template <typename Routine>
void expect_same_routine(Routine *name, Routine *alias) {
  Routine *volatile one = name;
  Routine *volatile other = alias;
  EXPECT_TRUE(one == other);
}

// A CHARACTER variable of a fixed length between guard bytes; the destructor fails the test when one was
// written.
class Character {
public:
  explicit Character(size_t length, char fill = '#')
      : bytes_(length + 2 * GUARD, GUARD_BYTE), length_(length) {
    memset(data(), fill, length);
  }
  explicit Character(const std::string &text) : Character(text.size()) {
    memcpy(data(), text.data(), text.size());
  }
  ~Character() { EXPECT_TRUE(guards_intact()) << "written past a CHARACTER variable of length " << length_; }
  Character(const Character &) = delete;
  Character &operator=(const Character &) = delete;

  char *data() { return bytes_.data() + GUARD; }
  qxport_charlen length() const { return static_cast<qxport_charlen>(length_); }
  std::string text() const { return std::string(bytes_.data() + GUARD, length_); }

private:
  bool guards_intact() const {
    for (size_t i = 0; i < GUARD; ++i)
      if (bytes_[i] != GUARD_BYTE || bytes_[GUARD + length_ + i] != GUARD_BYTE)
        return false;
    return true;
  }

  static constexpr size_t GUARD = 32;
  static constexpr char GUARD_BYTE = '\x7e';
  std::vector<char> bytes_;
  size_t length_;
};

// The text blank-padded to a length.
inline std::string padded(std::string text, size_t length) {
  text.resize(length, ' ');
  return text;
}

// A fresh directory, removed with all that is in it.
class TemporaryDirectory {
public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory &) = delete;
  TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;

  const std::string &path() const { return path_; }
  std::string operator/(const std::string &name) const { return path_ + "/" + name; }
  // Creates a regular file and answers its path.
  std::string file(const std::string &name, const std::string &contents = "", unsigned mode = 0644) const;

private:
  std::string path_;
};

// The process's working directory, restored at the end of the scope.
class WorkingDirectory {
public:
  explicit WorkingDirectory(const std::string &path);
  ~WorkingDirectory();
  WorkingDirectory(const WorkingDirectory &) = delete;
  WorkingDirectory &operator=(const WorkingDirectory &) = delete;

private:
  int former_;
};

#endif
