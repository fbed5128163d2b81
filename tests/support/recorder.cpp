#include "recorder.h"

#include "contract/services.h"

#include <atomic>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sys/stat.h>
#include <unistd.h>

thread_local std::vector<RecordedStatus> recorded_statuses;

void for_errsns_load(int32_t io, int32_t number, int32_t status, int32_t unit, int32_t condition) {
  const int before = errno;
  recorded_statuses.push_back({io, number, status, unit, condition});
  errno = before;
}

void reset_error_state() {
  recorded_statuses.clear();
  std::atomic_ref(portlib_local_errno).store(SENTINEL);  // which other threads may be storing to
  errno = ERRNO_SENTINEL;
}

ErrorState error_state() {
  ErrorState state{errno, std::atomic_ref(portlib_local_errno).load(), {}};
  for (const RecordedStatus &recorded : recorded_statuses) {
    EXPECT_EQ(recorded.io, 0);
    EXPECT_EQ(recorded.status, 0);
    EXPECT_EQ(recorded.unit, 0);
    EXPECT_EQ(recorded.condition, 0);
    state.recorded.push_back(recorded.number);
  }
  return state;
}

ErrorState untouched() {
  return {ERRNO_SENTINEL, SENTINEL, {}};
}

std::ostream &operator<<(std::ostream &out, const ErrorState &state) {
  out << "errno " << state.error << ", local " << state.local << ", recorded";
  for (const int32_t number : state.recorded)
    out << ' ' << number;
  return out;
}

TemporaryDirectory::TemporaryDirectory() {
  std::string pattern = testing::TempDir() + "qxport.XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr)
    ADD_FAILURE() << "no temporary directory: " << strerror(errno);
  path_ = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code error;
  std::filesystem::remove_all(path_, error);
  EXPECT_FALSE(error) << path_ << " stays: " << error.message();
}

std::string TemporaryDirectory::file(const std::string &name, const std::string &contents,
                                     unsigned mode) const {
  const std::string path = path_ + "/" + name;
  std::ofstream(path) << contents;
  chmod(path.c_str(), mode);
  return path;
}

WorkingDirectory::WorkingDirectory(const std::string &path)
    : former_(open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (chdir(path.c_str()) != 0)
    ADD_FAILURE() << "no way to " << path << ": " << strerror(errno);
}

WorkingDirectory::~WorkingDirectory() {
  if (fchdir(former_) != 0)
    ADD_FAILURE() << "no way back: " << strerror(errno);
  close(former_);
}
