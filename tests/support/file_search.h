// What the tests of the file search share: a caller's side of GETFILEINFOQQ and GETFILEINFOQQI8, and a look
// at the descriptors of the process and the permissions of an ordinary user.
#ifndef TESTS_SUPPORT_FILE_SEARCH_H
#define TESTS_SUPPORT_FILE_SEARCH_H

#include "ordinary_user.h"
#include "recorder.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

constexpr intptr_t BEGIN = -1;
constexpr intptr_t END = -2;
constexpr intptr_t FAILED = -3;

const ErrorState NOTHING = {0, SENTINEL, {}};
const ErrorState NOT_FOUND = {ENOENT, SENTINEL, {ENOENT}};

template <typename T>
void put(std::string &bytes, size_t offset, T value) {
  memcpy(bytes.data() + offset, &value, sizeof(value));
}

// The two routines, each with the layout of its record.
struct Default {
  static constexpr size_t SIZE = 275;
  static constexpr size_t NAME = 20;

  static int32_t call(const char *files, char *record, intptr_t *handle, qxport_charlen length) {
    return getfileinfoqq_(files, reinterpret_cast<qxport_file_info *>(record), handle, length);
  }
  // What `bytes` become when an entry is stored there, but for its name.
  static std::string stored(std::string bytes, const struct stat &status, int32_t attributes) {
    put(bytes, 4, static_cast<int32_t>(status.st_mtime));
    put(bytes, 8, static_cast<int32_t>(status.st_atime));
    put(bytes, 12, static_cast<int32_t>(status.st_size));
    put(bytes, 16, attributes);
    return bytes;
  }
};

struct Wide {
  static constexpr size_t SIZE = 279;
  static constexpr size_t NAME = 24;

  static int32_t call(const char *files, char *record, intptr_t *handle, qxport_charlen length) {
    return getfileinfoqqi8_(files, reinterpret_cast<qxport_file_info_i8 *>(record), handle, length);
  }
  static std::string stored(std::string bytes, const struct stat &status, int32_t attributes) {
    put(bytes, 0, static_cast<int32_t>(status.st_ctime));
    put(bytes, 4, static_cast<int32_t>(status.st_mtime));
    put(bytes, 8, static_cast<int32_t>(status.st_atime));
    put(bytes, 12, static_cast<int64_t>(status.st_size));
    put(bytes, 20, attributes);
    return bytes;
  }
};

using Routines = testing::Types<Default, Wide>;
struct RoutineNames {
  template <typename Routine>
  static std::string GetName(int) {
    return Routine::SIZE == Default::SIZE ? "getfileinfoqq" : "getfileinfoqqi8";
  }
};

// A caller's side of a search: specification, handle and record.
template <typename Routine>
struct Search {
  explicit Search(const std::string &specification) : files(specification) {}

  int32_t next(int error_before = 0) {
    reset_error_state();
    errno = error_before;
    return Routine::call(files.data(), record.data(), &handle, files.length());
  }
  std::string name_field() const { return record.text().substr(Routine::NAME); }

  Character files;
  Character record{Routine::SIZE};
  intptr_t handle = BEGIN;
};

template <typename Routine>
bool under_way(const Search<Routine> &search) {
  return search.handle != BEGIN && search.handle != END && search.handle != FAILED;
}

// The next call stores an entry of that name and touches none of the error state.
template <typename Routine>
void expect_entry(Search<Routine> &search, const std::string &name) {
  EXPECT_EQ(search.next(), static_cast<int32_t>(name.size()));
  EXPECT_EQ(search.name_field(), padded(name, 255));
  EXPECT_EQ(error_state(), NOTHING);
  EXPECT_TRUE(under_way(search)) << search.handle;
}

// The next call ends the search, and the record stays as it is.
template <typename Routine>
void expect_end(Search<Routine> &search, intptr_t handle, int error_before = 0) {
  const std::string before = search.record.text();
  EXPECT_EQ(search.next(error_before), 0);
  EXPECT_EQ(search.handle, handle);
  EXPECT_EQ(error_state(), NOT_FOUND);
  EXPECT_EQ(search.record.text(), before);
}

// The names of all that is left, in order.
template <typename Routine>
std::vector<std::string> rest(Search<Routine> &search) {
  std::vector<std::string> names;
  while (const int32_t length = search.next())
    names.push_back(search.name_field().substr(0, static_cast<size_t>(length)));
  EXPECT_EQ(error_state(), NOT_FOUND);
  return names;
}

// What the host's own reading yields.
inline std::vector<std::string> entries_of(const std::string &directory) {
  std::vector<std::string> names;
  DIR *stream = opendir(directory.c_str());
  while (const dirent *entry = readdir(stream))
    names.push_back(entry->d_name);
  closedir(stream);
  return names;
}

inline size_t open_descriptors() {
  return entries_of("/proc/self/fd").size();
}

inline bool exists(const std::string &path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0;
}

inline std::string working_directory() {
  char name[4096];
  return getcwd(name, sizeof(name)) == nullptr ? std::string() : name;
}

// Runs the check as an ordinary user, in a fresh directory of his own.
template <typename Check>
void in_directory_of_ordinary_user(Check check) {
  const WorkingDirectory open_to_everyone("/");
  as_ordinary_user([&] {
    const TemporaryDirectory directory;
    const WorkingDirectory inside(directory.path());
    check(directory);
  });
}

// The mode of a directory, 0700 again at the end of the scope, so that it can be removed.
class Mode {
public:
  Mode(const std::string &path, mode_t mode) : path_(path) {
    EXPECT_EQ(chmod(path.c_str(), mode), 0) << path;
  }
  ~Mode() { EXPECT_EQ(chmod(path_.c_str(), 0700), 0) << path_; }
  Mode(const Mode &) = delete;
  Mode &operator=(const Mode &) = delete;

private:
  std::string path_;
};

#endif
