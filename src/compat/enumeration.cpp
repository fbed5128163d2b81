// GETFILEINFOQQ and GETFILEINFOQQI8: one directory's matching entries, one a call.
#include "compat/pattern.h"
#include "frame/errors.h"
#include "frame/strings.h"

#include <cstdlib>
#include <dirent.h>
#include <sys/stat.h>

using namespace qxport;

namespace {

constexpr int32_t ATTRIBUTE_READ_ONLY = QXPORT_FILE_ATTRIBUTE_READ_ONLY;
constexpr int32_t ATTRIBUTE_SYSTEM = QXPORT_FILE_ATTRIBUTE_SYSTEM;
constexpr int32_t ATTRIBUTE_DIRECTORY = QXPORT_FILE_ATTRIBUTE_DIRECTORY;

// The streams that callers' handles denote. A handle is the stream's address, or, where the caller's variable
// is too narrow for one, a number; it is looked up here before it is used, so a stale one is refused.
class OpenStreams {
public:
  DIR *open(const char *directory) {
    Node *node = static_cast<Node *>(malloc(sizeof(Node)));
    if (node == nullptr)
      return nullptr;
    node->stream = opendir(directory);
    if (node->stream == nullptr) {
      free(node);
      return nullptr;
    }
    node->number = free_number();
    node->next = first_;
    first_ = node;
    return node->stream;
  }

  // The handle of the stream found or opened last.
  template <typename Handle>
  Handle handle_of_first() const {
    return handle_of<Handle>(*first_);
  }

  // The stream of a handle, or null. The one found moves to the front, where its next call finds it at once.
  template <typename Handle>
  DIR *find(Handle handle) {
    for (Node **link = &first_; *link != nullptr; link = &(*link)->next) {
      Node *node = *link;
      if (handle_of<Handle>(*node) == handle) {
        *link = node->next;
        node->next = first_;
        first_ = node;
        return node->stream;
      }
    }
    return nullptr;
  }

  // Closes the stream found or opened last, which may set errno.
  void close_first() {
    Node *node = first_;
    DIR *stream = node->stream;
    first_ = node->next;
    free(node);
    closedir(stream);
  }

private:
  struct Node {
    DIR *stream;
    Node *next;
    int32_t number;
  };

  template <typename Handle>
  static Handle handle_of(const Node &node) {
    if constexpr (sizeof(Handle) < sizeof(intptr_t))
      return node.number;
    else
      return reinterpret_cast<intptr_t>(node.stream);
  }

  // One that no open stream has: a search that was given up keeps its own, however many follow.
  int32_t free_number() {
    do
      last_number_ = last_number_ == INT32_MAX ? 1 : last_number_ + 1;
    while (has_number(last_number_));
    return last_number_;
  }

  bool has_number(int32_t number) const {
    for (const Node *node = first_; node != nullptr; node = node->next)
      if (node->number == number)
        return true;
    return false;
  }

  Node *first_ = nullptr;
  int32_t last_number_ = 0;
};

// What a routine keeps between calls, for the search begun last.
struct SearchState {
  char pPath[DIRECTORY_LIMIT + 1];
  char pNamePattern[NAME_LIMIT + 1];
  OpenStreams streams;
};

void copy_limited(char *target, const char *source, size_t limit) {
  const size_t length = strnlen(source, limit);
  memcpy(target, source, length);
  target[length] = '\0';
}

template <typename Handle>
int32_t fail(Handle *handle, intptr_t state, int32_t error) {
  *handle = static_cast<Handle>(state);
  set_and_record_status(error);
  return 0;
}

int32_t kind_attributes(mode_t mode) {
  if (S_ISDIR(mode))
    return ATTRIBUTE_DIRECTORY;
  if (S_ISCHR(mode) || S_ISBLK(mode) || S_ISFIFO(mode))
    return ATTRIBUTE_SYSTEM;
  return 0;
}

// The default record leaves the creation time to the caller, cuts the length to 32 bits and never says
// read-only.
void fill(qxport_file_info *record, const struct stat &status) {
  record->last_write_time = static_cast<int32_t>(status.st_mtime);
  record->last_access_time = static_cast<int32_t>(status.st_atime);
  record->length = static_cast<int32_t>(status.st_size);
  record->attributes = kind_attributes(status.st_mode);
}

void fill(qxport_file_info_i8 *record, const struct stat &status) {
  const int64_t length = status.st_size;
  const int32_t kind = kind_attributes(status.st_mode);
  const bool read_only = (status.st_mode & S_IWUSR) == 0;
  record->creation_time = static_cast<int32_t>(status.st_ctime);
  record->last_write_time = static_cast<int32_t>(status.st_mtime);
  record->last_access_time = static_cast<int32_t>(status.st_atime);
  memcpy(record->length_words, &length, sizeof(length));
  record->attributes = kind == 0 && read_only ? ATTRIBUTE_READ_ONLY : kind;
}

template <typename Handle>
DIR *begin(SearchState *search, const char *files, Handle *handle, charlen files_len) {
  const CString text(files, files_len);
  if (!text) {
    fail(handle, QXPORT_FILE_SEARCH_ERROR, ENOMEM);
    return nullptr;
  }
  const FileSpecification specification(text.get());
  copy_limited(search->pPath, specification.directory, DIRECTORY_LIMIT);
  copy_limited(search->pNamePattern, specification.name, NAME_LIMIT);
  DIR *stream = search->streams.open(specification.directory);
  if (stream == nullptr)
    fail(handle, QXPORT_FILE_SEARCH_ERROR, ENOENT);
  else
    *handle = search->streams.handle_of_first<Handle>();
  return stream;
}

void end(SearchState *search) {
  search->streams.close_first();
  search->pNamePattern[0] = '\0';
}

template <typename Record, typename Handle>
int32_t enumerate(SearchState *search, const char *files, Record *record, Handle *handle, charlen files_len) {
  DIR *stream;
  if (*handle == QXPORT_FILE_SEARCH_BEGIN) {
    stream = begin(search, files, handle, files_len);
    if (stream == nullptr)
      return 0;
  } else {
    stream = search->streams.find(*handle);
    if (stream == nullptr)
      return fail(handle, QXPORT_FILE_SEARCH_ERROR, ENOENT);
  }

  const dirent *entry = readdir(stream);
  while (entry != nullptr && patternMatch(entry->d_name, search->pNamePattern) != 0)
    entry = readdir(stream);
  if (entry == nullptr) {
    end(search);
    // errno was not cleared before the reading: a failure that the caller left behind shows here, and so does
    // one to close the directory.
    const bool clean = errno == 0 || errno == ENOENT;
    return fail(handle, clean ? QXPORT_FILE_SEARCH_END : QXPORT_FILE_SEARCH_ERROR, ENOENT);
  }

  const size_t name_length =
      CstrToFstr(record->name, entry->d_name, static_cast<charlen>(sizeof(record->name)),
                 static_cast<charlen>(strlen(entry->d_name)));
  struct stat status;
  if (stat(EntryPath(search->pPath, entry->d_name).get(), &status) != 0) {
    end(search);
    return fail(handle, QXPORT_FILE_SEARCH_ERROR, ENOENT);
  }
  fill(record, status);
  return static_cast<int32_t>(name_length);
}

constinit SearchState search{};
constinit SearchState search_i8{};

}  // namespace

// N = GETFILEINFOQQ(FILES, BUFFER, HANDLE)
int32_t getfileinfoqq_(const char *files, qxport_file_info *buffer, intptr_t *handle, charlen files_len) {
  return enumerate(&search, files, buffer, handle, files_len);
}

// N = GETFILEINFOQQI8(FILES, BUFFER, HANDLE)
int32_t getfileinfoqqi8_(const char *files, qxport_file_info_i8 *buffer, intptr_t *handle,
                         charlen files_len) {
  return enumerate(&search_i8, files, buffer, handle, files_len);
}

QXPORT_ALIAS(getfileinfoqq_)
QXPORT_ALIAS(getfileinfoqqi8_)

// What the module adds: a handle of the kind that is not the size of an address.
#if UINTPTR_MAX > UINT32_MAX

// N = GETFILEINFOQQ(FILES, BUFFER, HANDLE)
int32_t getfileinfoqqh4_(const char *files, qxport_file_info *buffer, int32_t *handle, charlen files_len) {
  return enumerate(&search, files, buffer, handle, files_len);
}

// N = GETFILEINFOQQI8(FILES, BUFFER, HANDLE)
int32_t getfileinfoqqi8h4_(const char *files, qxport_file_info_i8 *buffer, int32_t *handle,
                           charlen files_len) {
  return enumerate(&search_i8, files, buffer, handle, files_len);
}

QXPORT_ALIAS(getfileinfoqqh4_)
QXPORT_ALIAS(getfileinfoqqi8h4_)

#else

// N = GETFILEINFOQQ(FILES, BUFFER, HANDLE)
int32_t getfileinfoqqh8_(const char *files, qxport_file_info *buffer, int64_t *handle, charlen files_len) {
  return enumerate(&search, files, buffer, handle, files_len);
}

// N = GETFILEINFOQQI8(FILES, BUFFER, HANDLE)
int32_t getfileinfoqqi8h8_(const char *files, qxport_file_info_i8 *buffer, int64_t *handle,
                           charlen files_len) {
  return enumerate(&search_i8, files, buffer, handle, files_len);
}

QXPORT_ALIAS(getfileinfoqqh8_)
QXPORT_ALIAS(getfileinfoqqi8h8_)

#endif

// N = FILE_LENGTH(INFO)
int64_t file_length_(const qxport_file_info_i8 *info) {
  int64_t length;
  memcpy(&length, info->length_words, sizeof(length));
  return length;
}

QXPORT_ALIAS(file_length_)
