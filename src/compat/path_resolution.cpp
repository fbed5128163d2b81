#include "compat/path_resolution.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

using namespace qxport;

namespace {

// A path that grows at its end, as far as there is room.
class Path {
public:
  explicit Path(char *text) : text_(text) { *text_ = '\0'; }

  void append(const char *more, size_t count) {
    const size_t added = std::min(count, RESOLVED_LIMIT - length_);
    memcpy(text_ + length_, more, added);
    length_ += added;
    text_[length_] = '\0';
  }
  size_t length() const { return length_; }

private:
  char *text_;
  size_t length_ = 0;
};

// The host's own resolution. One that would leave no room for a slash behind it counts as none.
bool append_existing(const char *name, Path *path) {
  char resolved[PATH_MAX];
  if (realpath(name, resolved) == nullptr)
    return false;
  const size_t length = strlen(resolved);
  if (length >= RESOLVED_LIMIT)
    return false;
  path->append(resolved, length);
  return true;
}

bool append_current_directory(Path *path) {
  char current[RESOLVED_LIMIT];
  if (getcwd(current, sizeof(current)) == nullptr)
    return false;
  path->append(current, strlen(current));
  path->append("/", 1);
  return true;
}

// Appends the longest leading part of the name that ends at a slash and exists; its length, or 0 for none.
// The root directory's own slash is not the end of a part. Files that are missing have a directory as a rule,
// so the search begins at the end.
size_t append_existing_prefix(const char *in, size_t length, Path *path) {
  char prefix[RESOLVED_LIMIT];
  for (size_t end = std::min(length, sizeof(prefix)); end-- > 1;) {
    if (in[end] != '/')
      continue;
    memcpy(prefix, in, end);
    prefix[end] = '\0';
    if (append_existing(prefix, path))
      return end;
  }
  return 0;
}

bool append_missing(const char *in, size_t length, Path *path) {
  if (const size_t existing = append_existing_prefix(in, length, path); existing > 0) {
    const size_t skipped = path->length() < 2 ? existing + 1 : existing;
    path->append(in + skipped, length - skipped);
    return true;
  }
  if (in[0] != '/' && !append_current_directory(path))
    return false;
  path->append(in, length);
  return true;
}

void move_down(char *to, const char *from) {
  memmove(to, from, strlen(from) + 1);
}

// Takes "/." and "/.." out of a path by its text alone.
void normalise(char *path) {
  char *from = path;
  while (char *dot = strstr(from, "/.")) {
    if (dot[2] == '\0') {
      *dot = '\0';
      return;
    }
    if (dot[2] == '/') {
      move_down(dot + 1, dot + 3);
      from = dot;
      continue;
    }
    if (dot[2] != '.' || (dot[3] != '/' && dot[3] != '\0')) {
      from = dot + 2;
      continue;
    }
    const bool at_end = dot[3] == '\0';
    *dot = '\0';
    char *parent = strrchr(path, '/');
    if (parent == nullptr) {
      memcpy(path, "/", sizeof("/"));
      return;
    }
    if (!at_end) {
      move_down(parent + 1, dot + 4);
      from = parent;
      continue;
    }
    // "/a/.." stays "/a" where "/a/b/.." becomes "/a": programs know the parent of a missing directory below
    // the root by the directory's own name.
    if (parent != path)
      *parent = '\0';
    return;
  }
}

bool resolve(const char *in, char *out) {
  const size_t length = strlen(in);
  Path path(out);
  if (append_existing(in, &path)) {
    // A directory that is named with a slash at its end keeps it.
    if (in[length - 1] == '/' && path.length() >= 2)
      path.append("/", 1);
    return true;
  }
  if (in[0] == '/' && strchr(in + 1, '/') == nullptr) {
    path.append(in, length);
    return true;
  }
  if (!append_missing(in, length, &path))
    return false;
  normalise(out);
  return true;
}

}  // namespace

void __qxport_resolve_unix_path(const char *in, char *out) {
  const int before = errno;
  if (resolve(in, out))
    errno = before;
}
