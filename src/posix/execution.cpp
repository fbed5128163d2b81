// PXFEXECV, PXFEXECVE, PXFEXECVP: another program in this process. They return only for a failure.
#include "posix/file_name.h"
#include "records/records.h"

#include <cstdlib>
#include <unistd.h>

using namespace qxport;

namespace {

// A CHARACTER array with the length of each element beside it.
struct TextArray {
  const char *elements;
  const int32_t *lengths;
  int32_t count;
  charlen element_length;

  bool has_excessive_length() const {
    return std::any_of(lengths, lengths + std::max(count, 0),
                       [this](int32_t length) { return exceeds(length, element_length); });
  }
};

// Owns a null-terminated vector of strings. Without one, errno tells why.
class StringVector {
public:
  explicit StringVector(const TextArray &array) {
    const size_t count = static_cast<size_t>(std::max(array.count, 0));
    strings_ = static_cast<char **>(calloc(count + 1, sizeof(char *)));
    for (size_t i = 0; strings_ != nullptr && i < count; ++i) {
      const char *element = array.elements + i * length_of(array.element_length);
      strings_[i] = new_copy(element, length_by_rule(element, array.lengths[i], array.element_length));
      if (strings_[i] == nullptr)
        release();
    }
  }
  ~StringVector() { release(); }
  StringVector(const StringVector &) = delete;
  StringVector &operator=(const StringVector &) = delete;

  explicit operator bool() const { return strings_ != nullptr; }
  char *const *get() const { return strings_; }

private:
  void release() {
    for (char **string = strings_; string != nullptr && *string != nullptr; ++string)
      free(*string);
    free(strings_);
    strings_ = nullptr;
  }

  char **strings_;
};

// Converts the path and the arguments and makes the call.
template <typename Call>
void execute(const char *path, int32_t lenpath, charlen path_len, const TextArray &arguments, int32_t *ierror,
             Call call) {
  const CString name = file_name(path, lenpath, path_len);
  if (name) {
    const StringVector vector(arguments);
    if (vector)
      call(name.get(), vector.get());
  }
  *ierror = errno;
}

}  // namespace

// CALL PXFEXECV(PATH, LENPATH, ARGV, LENARGV, IARGC, IERROR)
void pxfexecv_(const char *path, const int32_t *lenpath, const char *argv, const int32_t *lenargv,
               const int32_t *iargc, int32_t *ierror, charlen path_len, charlen argv_len) {
  const TextArray arguments = {argv, lenargv, *iargc, argv_len};
  if (exceeds(*lenpath, path_len) || arguments.has_excessive_length())
    return refuse(ierror, EINVAL);
  execute(path, *lenpath, path_len, arguments, ierror, execv);
}

// CALL PXFEXECVE(PATH, LENPATH, ARGV, LENARGV, IARGC, ENV, LENENV, IENVC, IERROR)
void pxfexecve_(const char *path, const int32_t *lenpath, const char *argv, const int32_t *lenargv,
                const int32_t *iargc, const char *env, const int32_t *lenenv, const int32_t *ienvc,
                int32_t *ierror, charlen path_len, charlen argv_len, charlen env_len) {
  const TextArray arguments = {argv, lenargv, *iargc, argv_len};
  const TextArray variables = {env, lenenv, *ienvc, env_len};
  if (exceeds(*lenpath, path_len))
    return refuse(ierror, EINVAL);
  if (arguments.has_excessive_length()) {
    // -1, and errno as it was: by this a program tells a bad argument from a bad path or variable.
    *ierror = -1;
    return;
  }
  if (variables.has_excessive_length())
    return refuse(ierror, EINVAL);
  execute(path, *lenpath, path_len, arguments, ierror, [&](const char *name, char *const *vector) {
    const StringVector environment(variables);
    if (environment)
      execve(name, vector, environment.get());
  });
}

// CALL PXFEXECVP(FILE, LENFILE, ARGV, LENARGV, IARGC, IERROR)
// No length is checked against its variable here.
void pxfexecvp_(const char *file, const int32_t *lenfile, const char *argv, const int32_t *lenargv,
                const int32_t *iargc, int32_t *ierror, charlen file_len, charlen argv_len) {
  execute(file, *lenfile, file_len, {argv, lenargv, *iargc, argv_len}, ierror, execvp);
}
