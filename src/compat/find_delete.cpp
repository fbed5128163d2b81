// FINDFILEQQ and DELFILESQQ: one file by its exact name, and the deletion of files by a pattern.
#include "compat/pattern.h"
#include "frame/errors.h"
#include "frame/strings.h"

#include <climits>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace qxport;

namespace {

constexpr charlen FOUND_PATH_LIMIT = 1279;
constexpr size_t WORKING_DIRECTORY_LIMIT = 1024;

// Reads a directory entry by entry; takes the descriptor over.
bool is_listed(int descriptor, const char *name) {
  DIR *stream = fdopendir(descriptor);
  if (stream == nullptr) {
    close(descriptor);
    return false;
  }
  const dirent *entry = readdir(stream);
  while (entry != nullptr && strcmp(entry->d_name, name) != 0)
    entry = readdir(stream);
  const bool found = entry != nullptr;
  closedir(stream);
  return found;
}

// Has the directory an entry of that name, of whatever kind? The directory must be readable, as for a
// listing. Asking for the one name is the quick way to say no; what answers to it must be listed too, under
// exactly this name: a file system may fold case, or know entries that no listing shows. errno ends as a
// reading would leave it: set by a directory that cannot be opened, else as it was.
bool holds(const char *directory, const char *name) {
  const int descriptor = open(directory, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0)
    return false;
  const int before = errno;
  struct stat status;
  const bool absent = fstatat(descriptor, name, &status, AT_SYMLINK_NOFOLLOW) != 0 &&
                      (errno == ENOENT || errno == ENAMETOOLONG);
  errno = before;
  if (!absent)
    return is_listed(descriptor, name);
  close(descriptor);
  return false;
}

int32_t not_found() {
  set_and_record_status(ENOENT);
  return 0;
}

int32_t store_found(char *pathbuf, charlen pathbuf_len, const char *directory, const char *name) {
  const EntryPath path(directory, name);
  const size_t count = CstrToFstr(pathbuf, path.get(), pathbuf_len, FOUND_PATH_LIMIT);
  return count == 0 ? not_found() : static_cast<int32_t>(count);
}

// The next element of a list of directories, or false at its end; empty elements are skipped. An element too
// long for any path is cut: it cannot be opened either way.
bool next_directory(const char **list, char *directory) {
  *list += strspn(*list, ":");
  const size_t length = strcspn(*list, ":");
  const size_t kept = std::min<size_t>(length, PATH_MAX);
  memcpy(directory, *list, kept);
  directory[kept] = '\0';
  *list += length;
  return length > 0;
}

int32_t find_in_list(const char *list, const char *name, char *pathbuf, charlen pathbuf_len) {
  char directory[PATH_MAX + 1];
  while (next_directory(&list, directory))
    if (holds(directory, name))
      return store_found(pathbuf, pathbuf_len, directory, name);
  return not_found();
}

bool is_regular(int directory, const char *name) {
  struct stat status;
  return fstatat(directory, name, &status, 0) == 0 && S_ISREG(status.st_mode);
}

// Works by the directory's descriptor, so that the working directory, which is the whole process's, stays.
int32_t delete_matching(DIR *stream, const char *pattern) {
  const int directory = dirfd(stream);
  int32_t deleted = 0;
  while (const dirent *entry = readdir(stream))
    if (patternMatch(entry->d_name, pattern) == 0 && is_regular(directory, entry->d_name) &&
        unlinkat(directory, entry->d_name, 0) == 0)
      ++deleted;
  return deleted;
}

}  // namespace

// N = FINDFILEQQ(FILENAME, VARNAME, PATHBUF)
int32_t findfileqq_(const char *filename, const char *varname, char *pathbuf, charlen filename_len,
                    charlen varname_len, charlen pathbuf_len) {
  errno = 0;
  blank_fill(pathbuf, pathbuf_len);
  const CString text(filename, filename_len);
  if (!text)
    return 0;
  const FileSpecification specification(text.get());
  if (holds(specification.directory, specification.name))
    return store_found(pathbuf, pathbuf_len, specification.directory, specification.name);

  const CString variable(varname, varname_len);
  const char *list = variable ? getenv(variable.get()) : nullptr;
  return list == nullptr ? not_found() : find_in_list(list, specification.name, pathbuf, pathbuf_len);
}

// N = DELFILESQQ(FILES)
// The working directory is searched by its name, like any other: where the name cannot be had, or leads
// nowhere, nothing is deleted.
int32_t delfilesqq_(const char *files, charlen files_len) {
  char working_directory[WORKING_DIRECTORY_LIMIT];
  if (getcwd(working_directory, sizeof(working_directory)) == nullptr)
    return 0;
  const CString text(files, files_len);
  if (!text)
    return 0;
  const FileSpecification specification(text.get());
  DIR *stream = opendir(specification.has_slash ? specification.directory : working_directory);
  if (stream == nullptr)
    return 0;
  const int32_t deleted = delete_matching(stream, specification.name);
  closedir(stream);
  return deleted;
}
