// Directories of files to measure on, and names as Fortran holds them.
#ifndef QXPORT_BENCH_FILES_H
#define QXPORT_BENCH_FILES_H

#include <string>

namespace bench {

// A CHARACTER variable of the size that programs give to a file's name.
class Padded {
public:
  explicit Padded(const std::string &text = "", size_t length = 80) : text_(text) {
    text_.resize(length, ' ');
  }
  char *data() { return text_.data(); }
  const char *data() const { return text_.data(); }
  size_t size() const { return text_.size(); }

private:
  std::string text_;
};

// A directory of `count` empty files, file000000.dat and so on; it goes with the object.
class FullDirectory {
public:
  explicit FullDirectory(int count);
  ~FullDirectory();
  FullDirectory(const FullDirectory &) = delete;
  FullDirectory &operator=(const FullDirectory &) = delete;

  // Makes the files that are missing.
  void fill() const;

  const std::string &path() const { return path_; }
  std::string file(int number) const;

private:
  std::string path_;
  int count_;
};

}  // namespace bench

#endif
