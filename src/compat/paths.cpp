// FULLPATHQQ and SPLITPATHQQ.
#include "compat/path_resolution.h"
#include "frame/errors.h"
#include "frame/strings.h"

using namespace qxport;

namespace {

// The resolved path of a name. One that cannot be told is empty, and its reason recorded; a path that is
// empty by its own rules is none of these, and leaves errno alone.
class ResolvedPath {
public:
  explicit ResolvedPath(const char *name) {
    const int before = errno;
    errno = 0;
    __qxport_resolve_unix_path(name, text_);
    length_ = strlen(text_);
    if (length_ == 0 && errno != 0)
      record_status(errno);
    else
      errno = before;
  }
  const char *get() const { return text_; }
  size_t length() const { return length_; }

private:
  char text_[RESOLVED_LIMIT + 1];
  size_t length_;
};

// Stores a part of a path; one that does not fit is cut, with EINVAL recorded.
void store(char *variable, charlen variable_len, const char *part, size_t count) {
  if (store_padded(variable, variable_len, part, count) < count)
    set_and_record_status(EINVAL);
}

// The length of a file's name without its extension: a dot that begins the name, or ends it, begins none.
size_t length_without_extension(const char *name, size_t length) {
  const void *found = memrchr(name, '.', length);
  if (found == nullptr)
    return length;
  const auto dot = static_cast<size_t>(static_cast<const char *>(found) - name);
  return dot == 0 || dot + 1 == length ? length : dot;
}

}  // namespace

// N = FULLPATHQQ(NAME, PATHBUF)
int32_t fullpathqq_(const char *name, char *pathbuf, charlen name_len, charlen pathbuf_len) {
  if (name == nullptr || pathbuf == nullptr) {
    set_and_record_status(EINVAL);
    return 0;
  }
  const CString text(name, name_len);
  if (!text)
    return 0;
  const ResolvedPath path(text.get());
  return static_cast<int32_t>(
      CstrToFstr(pathbuf, path.get(), pathbuf_len, static_cast<charlen>(path.length())));
}

// N = SPLITPATHQQ(PATH, DRIVE, DIR, NAME, EXT)
int32_t splitpathqq_(const char *path, char *drive, char *dir, char *name, char *ext, charlen path_len,
                     charlen drive_len, charlen dir_len, charlen name_len, charlen ext_len) {
  blank_fill(drive, drive_len);
  blank_fill(dir, dir_len);
  blank_fill(name, name_len);
  blank_fill(ext, ext_len);
  const CString text(path, path_len);
  if (!text || *text.get() == '\0')
    return 0;
  const ResolvedPath resolved(text.get());
  const char *last_slash = strrchr(resolved.get(), '/');
  if (last_slash == nullptr)
    return 0;

  const auto directory_length = static_cast<size_t>(last_slash + 1 - resolved.get());
  const char *file = last_slash + 1;
  const size_t file_length = resolved.length() - directory_length;
  const size_t stem_length = length_without_extension(file, file_length);
  store(ext, ext_len, file + stem_length, file_length - stem_length);
  store(name, name_len, file, stem_length);
  store(dir, dir_len, resolved.get(), directory_length);
  // The length that the directory has, also where it did not fit.
  return static_cast<int32_t>(directory_length);
}
