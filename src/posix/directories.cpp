// Directories: made, removed, changed to, and read.
#include "posix/file_name.h"
#include "records/records.h"

#include <cstdlib>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace qxport;

namespace {

// A stream is registered as a record of a kind of its own, so neither can be taken for the other.
constexpr uint32_t STREAM_KIND = 1001;

struct StreamRecord {
  uint32_t kind;
  DIR *stream;
};

StreamRecord *find_stream(int32_t handle) {
  Record *record = find_record(handle);
  return record != nullptr && record->kind == STREAM_KIND ? reinterpret_cast<StreamRecord *>(record)
                                                          : nullptr;
}

// Registers a stream, or closes it: 0 with errno set.
int32_t register_stream(DIR *stream) {
  StreamRecord *record = static_cast<StreamRecord *>(malloc(sizeof(StreamRecord)));
  int32_t handle = 0;
  if (record != nullptr) {
    *record = {STREAM_KIND, stream};
    handle = get_handle_from_alloc_address(record);
  }
  if (handle == 0) {
    free(record);
    closedir(stream);
    errno = ENOMEM;
  }
  return handle;
}

}  // namespace

// CALL PXFCHDIR(PATH, ILEN, IERROR)
void pxfchdir_(const char *path, const int32_t *ilen, int32_t *ierror, charlen path_len) {
  call_with_name(path, *ilen, path_len, ierror, chdir);
}

// CALL PXFMKDIR(PATH, ILEN, IMODE, IERROR)
void pxfmkdir_(const char *path, const int32_t *ilen, const int32_t *imode, int32_t *ierror,
               charlen path_len) {
  call_with_name(path, *ilen, path_len, ierror,
                 [&](const char *name) { return mkdir(name, static_cast<mode_t>(*imode)); });
}

// CALL PXFRMDIR(PATH, ILEN, IERROR)
void pxfrmdir_(const char *path, const int32_t *ilen, int32_t *ierror, charlen path_len) {
  call_with_name(path, *ilen, path_len, ierror, rmdir);
}

// CALL PXFGETCWD(BUF, ILEN, IERROR)
// ILEN is an output.
void pxfgetcwd_(char *buf, int32_t *ilen, int32_t *ierror, charlen buf_len) {
  // The host allocates what the name needs, so a name that does not fit can be handed out cut.
  char *name = getcwd(nullptr, 0);
  if (name == nullptr) {
    *ierror = errno;
    *ilen = 0;
    return;
  }
  const size_t length = strlen(name);
  if (store_padded(buf, narrow_length(buf_len), name, length) < length) {
    *ierror = ETRUNC;
    *ilen = 0;
    free(name);
    errno = ERANGE;
    return;
  }
  *ilen = static_cast<int32_t>(length);
  *ierror = 0;
  free(name);
}

// CALL PXFOPENDIR(DIRNAME, ILEN, IDIRID, IERROR)
void pxfopendir_(const char *dirname, const int32_t *ilen, int32_t *idirid, int32_t *ierror,
                 charlen dirname_len) {
  call_with_name(dirname, *ilen, dirname_len, ierror, [&](const char *name) {
    DIR *stream = opendir(name);
    const int32_t handle = stream == nullptr ? 0 : register_stream(stream);
    if (handle == 0)
      return -1;
    *idirid = handle;
    return 0;
  });
}

// CALL PXFREADDIR(IDIRID, JDIRENT, IERROR)
void pxfreaddir_(const int32_t *idirid, const int32_t *jdirent, int32_t *ierror) {
  constexpr int32_t END_OF_DIRECTORY = 128;
  if (find_record(*idirid) == nullptr)
    return refuse(ierror, ENOHANDLE);
  const StreamRecord *stream = find_stream(*idirid);
  if (stream == nullptr)
    return refuse(ierror, EINVAL);
  DirentRecord *record = find_record_as<DirentRecord>(*jdirent, Kind::Dirent, ierror);
  if (record == nullptr)
    return;
  const dirent *entry = readdir(stream->stream);
  if (entry == nullptr) {
    // errno was not cleared before, so a failure left over from an earlier call is reported here; and the end
    // is 128, not the -1 of a unit's end of file.
    *ierror = errno != 0 ? errno : END_OF_DIRECTORY;
    return;
  }
  const size_t length = strnlen(entry->d_name, sizeof(record->d_name) - 1);
  memcpy(record->d_name, entry->d_name, length);
  record->d_name[length] = '\0';
  *ierror = 0;
}

// CALL PXFREWINDDIR(IDIRID, IERROR)
// Without a stream there is nothing to rewind, and no error either.
void pxfrewinddir_(const int32_t *idirid, int32_t *ierror) {
  const StreamRecord *stream = find_stream(*idirid);
  if (stream != nullptr)
    rewinddir(stream->stream);
  *ierror = 0;
}

// CALL PXFCLOSEDIR(IDIRID, IERROR)
// The caller's handle is 0 afterwards, whatever happened. One that names no stream is EINVAL, as closing a
// null stream is; a record that it names stays.
void pxfclosedir_(int32_t *idirid, int32_t *ierror) {
  StreamRecord *stream = find_stream(*idirid);
  if (stream == nullptr) {
    refuse(ierror, EINVAL);
  } else {
    report(closedir(stream->stream), ierror);
    free_alloc_handle(*idirid);
    free(stream);
  }
  *idirid = 0;
}
