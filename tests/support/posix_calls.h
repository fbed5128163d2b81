// A caller's side of the routines that report in IERROR, and what the host's own call on the same object
// leads to expect of them.
#ifndef TESTS_SUPPORT_POSIX_CALLS_H
#define TESTS_SUPPORT_POSIX_CALLS_H

#include "in_child.h"
#include "record_calls.h"

#include <cstdio>
#include <filesystem>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

// Values go by reference, as from Fortran; addresses as they are.
inline const int32_t *by_reference(const int32_t &value) {
  return &value;
}
inline int32_t *by_reference(int32_t *value) {
  return value;
}
inline void *by_reference(void *buffer) {
  return buffer;
}
inline const void *by_reference(const void *buffer) {
  return buffer;
}

// CALL ROUTINE(ARGUMENTS..., IERROR)
template <typename Routine, typename... Arguments>
Outcome call(Routine routine, const Arguments &...arguments) {
  return reported_by([&](int32_t *ierror) { routine(by_reference(arguments)..., ierror); });
}

// CALL ROUTINE(NAME, ILEN, ARGUMENTS..., IERROR)
template <typename Routine, typename... Arguments>
Outcome call_named(Routine routine, const std::string &name, int32_t ilen, const Arguments &...arguments) {
  return reported_by([&](int32_t *ierror) {
    routine(name.data(), &ilen, by_reference(arguments)..., ierror, length_of_name(name));
  });
}

// CALL ROUTINE(FIRST, ILEN1, SECOND, ILEN2, IERROR)
template <typename Routine>
Outcome call_named_twice(Routine routine, const std::string &first, int32_t ilen1, const std::string &second,
                         int32_t ilen2) {
  return reported_by([&](int32_t *ierror) {
    routine(first.data(), &ilen1, second.data(), &ilen2, ierror, length_of_name(first),
            length_of_name(second));
  });
}

// The host's error number in IERROR and, left there, in errno.
inline Outcome failed_with(int error) {
  return refused(error, error);
}

// What a routine must report that makes this call, which answers -1 for a failure.
template <typename HostCall>
Outcome as_the_host(HostCall host_call) {
  errno = ERRNO_SENTINEL;
  return host_call() == -1 ? failed_with(errno) : succeeded();
}

// A directory stream of the library, closed at the end of the scope.
class DirectoryStream {
public:
  explicit DirectoryStream(const std::string &path) {
    EXPECT_EQ(call_named(pxfopendir_, path, 0, &handle_), succeeded()) << path;
  }
  ~DirectoryStream() { EXPECT_EQ(call(pxfclosedir_, &handle_), succeeded()); }
  DirectoryStream(const DirectoryStream &) = delete;
  DirectoryStream &operator=(const DirectoryStream &) = delete;

  operator int32_t() const { return handle_; }

private:
  int32_t handle_ = 0;
};

// The next entry's name; a number in words where there is none. No failure is left over from before.
inline std::string next_entry(int32_t stream) {
  const OwnedRecord entry("dirent");
  Guarded<int32_t> ierror(SENTINEL);
  errno = 0;
  const int32_t dirent = entry;
  pxfreaddir_(&stream, &dirent, &ierror);
  return ierror == 0 ? record_as<qxport::DirentRecord>(entry).d_name : std::to_string(ierror.value());
}

// Calls with a handle that is none.
template <typename CallWithHandle>
void expect_unknown_handles_refused(CallWithHandle call_with, bool zero_is_unknown = true) {
  int32_t stale = 0;
  create("stat", &stale);
  const int32_t released = stale;
  release(&stale);
  for (const int32_t handle : {-1, 99999, INT32_MAX, INT32_MIN, released})
    EXPECT_EQ(call_with(handle), refused(NO_SUCH_HANDLE)) << handle;
  if (zero_is_unknown) {
    EXPECT_EQ(call_with(0), refused(NO_SUCH_HANDLE));
  }
}

// Calls with everything that is registered and not of the kind the routine works on, which stays as it was.
template <typename CallWithHandle>
void expect_other_kinds_refused(const std::string &kind, CallWithHandle call_with) {
  for (const KnownKind &other : known_kinds()) {
    if (other.name == kind)
      continue;
    const OwnedRecord record(other.name);
    fill_record(record);
    const Contents before = contents_of(record);
    EXPECT_EQ(call_with(record), refused(EINVAL)) << other.name;
    EXPECT_EQ(contents_of(record), before) << other.name;
  }
  const ForeignObject foreign;
  EXPECT_EQ(call_with(foreign), refused(EINVAL));
  const DirectoryStream stream("/"), twin("/");
  EXPECT_EQ(call_with(stream), refused(EINVAL));
  EXPECT_EQ(next_entry(stream), next_entry(twin));
}

template <typename CallWithHandle>
void expect_handle_checked(const std::string &kind, CallWithHandle call_with) {
  expect_unknown_handles_refused(call_with);
  expect_other_kinds_refused(kind, call_with);
}

inline std::ptrdiff_t open_descriptors() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return std::distance(begin(descriptors), end(descriptors));
}

// A directory of its own, with a file of ten digits in it.
class DataFile : public testing::Test {
protected:
  const TemporaryDirectory directory_;
  const std::string data_ = directory_.file("data.txt", "0123456789");
  const WorkingDirectory working_{directory_.path()};
};

#endif
