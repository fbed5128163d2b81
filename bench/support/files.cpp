#include "files.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace bench {

namespace {

// A file system in memory where there is one: the disk's share would hide what is measured.
const char *parent() {
  const char *chosen = getenv("TMPDIR");
  if (chosen != nullptr)
    return chosen;
  return access("/dev/shm", W_OK | X_OK) == 0 ? "/dev/shm" : "/tmp";
}

}  // namespace

FullDirectory::FullDirectory(int count) : count_(count) {
  path_ = std::string(parent()) + "/qxport-bench.XXXXXX";
  if (mkdtemp(path_.data()) == nullptr) {
    perror(path_.c_str());
    exit(1);
  }
  fill();
}

FullDirectory::~FullDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void FullDirectory::fill() const {
  for (int number = 0; number < count_; ++number) {
    const int descriptor = open(file(number).c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    if (descriptor < 0) {
      perror(path_.c_str());
      exit(1);
    }
    close(descriptor);
  }
}

std::string FullDirectory::file(int number) const {
  char name[32];
  snprintf(name, sizeof(name), "/file%06d.dat", number);
  return path_ + name;
}

}  // namespace bench
