// What the routines that take a file name hand to the host: the name by the rule, the other arguments as they
// came; and what they make of every error number.
#include "fenced_text.h"
#include "posix_calls.h"

#include <climits>
#include <cstdarg>
#include <dirent.h>
#include <fcntl.h>
#include <grp.h>
#include <optional>
#include <pwd.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

namespace {

// The host calls since the last clear.
std::vector<std::string> host_calls;
// The error number of the next host calls, or nothing for calls that succeed.
std::optional<int> host_error;

template <typename... Arguments>
int host_call(const Arguments &...arguments) {
  std::ostringstream made;
  ((made << arguments << '|'), ...);
  host_calls.push_back(made.str());
  if (!host_error)
    return 0;
  errno = *host_error;
  return -1;
}

constexpr int DESCRIPTOR = 1234;

}  // namespace

int open(const char *path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const unsigned mode = va_arg(rest, unsigned);
  va_end(rest);
  return host_call("open", path, flags, mode) == 0 ? DESCRIPTOR : -1;
}
int creat(const char *path, mode_t mode) {
  return host_call("creat", path, mode) == 0 ? DESCRIPTOR : -1;
}
int chdir(const char *path) noexcept {
  return host_call("chdir", path);
}
int mkdir(const char *path, mode_t mode) noexcept {
  return host_call("mkdir", path, mode);
}
int rmdir(const char *path) noexcept {
  return host_call("rmdir", path);
}
int unlink(const char *path) noexcept {
  return host_call("unlink", path);
}
int access(const char *path, int mode) noexcept {
  return host_call("access", path, mode);
}
int chmod(const char *path, mode_t mode) noexcept {
  return host_call("chmod", path, mode);
}
int chown(const char *path, uid_t owner, gid_t group) noexcept {
  return host_call("chown", path, owner, group);
}
int mkfifo(const char *path, mode_t mode) noexcept {
  return host_call("mkfifo", path, mode);
}
int link(const char *first, const char *second) noexcept {
  return host_call("link", first, second);
}
int rename(const char *first, const char *second) noexcept {
  return host_call("rename", first, second);
}
int stat(const char *path, struct stat *status) noexcept {
  memset(status, 0x55, sizeof(*status));
  return host_call("stat", path);
}
int utime(const char *path, const utimbuf *times) noexcept {
  return times == nullptr ? host_call("utime", path, "now")
                          : host_call("utime", path, times->actime, times->modtime);
}
long pathconf(const char *path, int name) noexcept {
  return host_call("pathconf", path, name) == 0 ? static_cast<long>(0x500000007) : -1;
}
DIR *opendir(const char *path) {
  host_call("opendir", path);
  errno = host_error.value_or(ENOENT);
  return nullptr;
}
group *getgrnam(const char *name) {
  host_call("getgrnam", name);
  return nullptr;
}
passwd *getpwnam(const char *name) {
  host_call("getpwnam", name);
  return nullptr;
}

namespace {

struct NameRoutine {
  std::string host;
  std::function<Outcome(const char *name, int32_t ilen, size_t length)> make;
};
std::ostream &operator<<(std::ostream &out, const NameRoutine &routine) {
  return out << routine.host;
}

template <typename Routine, typename... Arguments>
NameRoutine name_routine(const char *host, Routine routine, Arguments... arguments) {
  return {host, [=](const char *name, int32_t ilen, size_t length) {
            return reported_by([&](int32_t *ierror) {
              routine(name, &ilen, by_reference(arguments)..., ierror, static_cast<qxport_charlen>(length));
            });
          }};
}

int32_t result;

// The two names of the same length and text, so that each is put to the test.
template <typename Routine>
NameRoutine first_of_two(const char *host, Routine routine) {
  return {host, [=](const char *name, int32_t ilen, size_t length) {
            return reported_by([&](int32_t *ierror) {
              const int32_t one = 1;
              routine(name, &ilen, "s", &one, ierror, static_cast<qxport_charlen>(length), 1);
            });
          }};
}
template <typename Routine>
NameRoutine second_of_two(const char *host, Routine routine) {
  return {host, [=](const char *name, int32_t ilen, size_t length) {
            return reported_by([&](int32_t *ierror) {
              const int32_t one = 1;
              routine("f", &one, name, &ilen, ierror, 1, static_cast<qxport_charlen>(length));
            });
          }};
}

// What stands before and behind the name in the call that the host sees.
struct Expected {
  NameRoutine routine;
  std::string before, behind;
};

const std::vector<Expected> &routines_of_the_rule() {
  static const std::vector<Expected> routines = {
      {name_routine("open", pxfopen_, O_RDWR | O_CREAT, 0640, &result), "open|",
       '|' + std::to_string(O_RDWR | O_CREAT) + "|416|"},
      {name_routine("creat", pxfcreat_, -1, &result), "creat|", "|4294967295|"},
      {name_routine("chdir", pxfchdir_), "chdir|", "|"},
      {name_routine("mkdir", pxfmkdir_, 0751), "mkdir|", "|489|"},
      {name_routine("rmdir", pxfrmdir_), "rmdir|", "|"},
      {name_routine("unlink", pxfunlink_), "unlink|", "|"},
      {name_routine("access", pxfaccess_, -3), "access|", "|-3|"},
      {name_routine("chmod", pxfchmod_, 0640), "chmod|", "|416|"},
      {name_routine("chown", pxfchown_, -1, INT32_MIN), "chown|", "|4294967295|2147483648|"},
      {name_routine("mkfifo", pxfmkfifo_, 0600), "mkfifo|", "|384|"},
      {first_of_two("link", pxflink_), "link|", "|s|"},
      {second_of_two("link", pxflink_), "link|f|", "|"},
      {first_of_two("rename", pxfrename_), "rename|", "|s|"},
      {second_of_two("rename", pxfrename_), "rename|f|", "|"},
  };
  return routines;
}

class HostName : public testing::Test {
protected:
  void SetUp() override {
    host_error = std::nullopt;
    host_calls.clear();
  }

  // What a call with this name hands to the host, as one made and no other.
  std::string handed_over(const NameRoutine &routine, const char *name, int32_t ilen, size_t length) {
    host_calls.clear();
    routine.make(name, ilen, length);
    EXPECT_EQ(host_calls.size(), 1u) << routine;
    return host_calls.empty() ? "" : host_calls[0];
  }

  // Puts a name through every routine that follows the rule.
  void expect_name(const char *name, int32_t ilen, size_t length, const std::string &expected) {
    for (const auto &[routine, before, behind] : routines_of_the_rule())
      EXPECT_EQ(handed_over(routine, name, ilen, length), before + expected + behind)
          << '"' << std::string(name, std::min<size_t>(length, 100)) << "\", " << ilen;
    const OwnedRecord group("group"), passwd("passwd");
    EXPECT_EQ(
        handed_over(name_routine("getgrnam", pxfgetgrnam_, static_cast<int32_t>(group)), name, ilen, length),
        "getgrnam|" + expected + '|');
    EXPECT_EQ(
        handed_over(name_routine("getpwnam", pxfgetpwnam_, static_cast<int32_t>(passwd)), name, ilen, length),
        "getpwnam|" + expected + '|');
    EXPECT_EQ(handed_over(name_routine("opendir", pxfopendir_, &result), name, ilen, length),
              "opendir|" + expected + '|');
  }
  void expect_name(const std::string &name, int32_t ilen, const std::string &expected) {
    expect_name(name.data(), ilen, name.size(), expected);
  }
};

TEST_F(HostName, WithLength0LosesTrailingWhiteSpace) {
  expect_name("data.txt   ", 0, "data.txt");
  expect_name("data.txt", 0, "data.txt");
  expect_name("a b \t\n\v\f\r ", 0, "a b");
  expect_name("  leading", 0, "  leading");
  expect_name("\tx\t", 0, "\tx");
}

TEST_F(HostName, WithLength0KeepsWhatIsNoWhiteSpace) {
  for (const std::string end : {"\x08", "\x0e", "\x1f", "\x7f", "\x85", "\xa0", "\xff", "."})
    expect_name("x" + end, 0, "x" + end);
}

TEST_F(HostName, OfWhiteSpaceOnlyIsItsFirstCharacter) {
  expect_name(" ", 0, " ");
  expect_name("      ", 0, " ");
  expect_name("\t    ", 0, "\t");
  expect_name(" \t\n\r", 0, " ");
}

TEST_F(HostName, OfNoCharactersIsEmpty) {
  expect_name("", 0, "");
}

TEST_F(HostName, WithALengthIsExact) {
  expect_name("data.txt", 4, "data");
  expect_name("data.txt", 8, "data.txt");
  expect_name("data      ", 6, "data  ");
  expect_name("   ", 3, "   ");
  expect_name("x", 1, "x");
}

TEST_F(HostName, LengthIsNotCheckedAgainstTheVariable) {
  expect_name("data.txt", 8, 4, "data.txt");
  expect_name("data", 100, 4, "data");
  expect_name("data", INT32_MAX, 4, "data");
  expect_name("data", INT32_MAX, 0, "data");
}

TEST_F(HostName, EndsAtANul) {
  expect_name(std::string("data\0rest", 9), 0, "data");
  expect_name(std::string("data\0rest", 9), 9, "data");
  expect_name(std::string("\0rest", 5), 0, "");
  expect_name(std::string("x \0   ", 6), 0, "x ");
}

// No host takes more, so nothing is read behind that many characters of the caller's.
TEST_F(HostName, IsCutWhereNoHostTakesMore) {
  const FencedText text(std::string(PATH_MAX, 'p'));
  for (const int32_t ilen : {PATH_MAX, PATH_MAX + 1, 1000000, INT32_MAX})
    expect_name(text.data(), ilen, PATH_MAX, std::string(PATH_MAX, 'p'));
  expect_name(text.data(), PATH_MAX - 1, PATH_MAX, std::string(PATH_MAX - 1, 'p'));
  expect_name(std::string(10000, 'p'), 0, std::string(PATH_MAX, 'p'));
  expect_name(padded("file", 10000), 0, "file");
}

TEST_F(HostName, IsNotReadBehindItsLength) {
  const FencedText text("data.txt  "), one("x"), none("");
  expect_name(text.data(), 0, 10, "data.txt");
  expect_name(text.data(), 10, 10, "data.txt  ");
  expect_name(one.data(), 0, 1, "x");
  expect_name(none.data(), 0, 0, "");
}

TEST_F(HostName, IsNotReadBeforeItsStart) {
  const FencedText blanks(std::string(20, ' '), FencedText::Fence::Before);
  expect_name(blanks.data(), 0, 20, " ");
}

TEST_F(HostName, OfNegativeLengthIs22AndNoCall) {
  const OwnedRecord group("group"), passwd("passwd");
  result = SENTINEL;
  for (const int32_t ilen : {-1, -2, INT32_MIN}) {
    for (const auto &[routine, before, behind] : routines_of_the_rule())
      EXPECT_EQ(routine.make("name", ilen, 4), failed_with(EINVAL)) << routine;
    EXPECT_EQ(call_named(pxfgetgrnam_, "name", ilen, group), failed_with(EINVAL));
    EXPECT_EQ(call_named(pxfgetpwnam_, "name", ilen, passwd), failed_with(EINVAL));
    EXPECT_EQ(call_named(pxfopendir_, "name", ilen, &result), failed_with(EINVAL));
  }
  EXPECT_EQ(result, SENTINEL);
  EXPECT_EQ(host_calls, std::vector<std::string>());
}

// Each of the three others has a rule of its own.
TEST_F(HostName, OfStatLosesBlanksOnly) {
  const OwnedRecord record("stat");
  const NameRoutine routine = name_routine("stat", pxfstat_, static_cast<int32_t>(record));
  for (const int32_t ilen : {0, 3, -1, 100, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(handed_over(routine, "/etc/hosts", ilen, 10), "stat|/etc/hosts|");
    EXPECT_EQ(handed_over(routine, "name   ", ilen, 7), "stat|name|");
    EXPECT_EQ(handed_over(routine, "name\t  ", ilen, 7), "stat|name\t|");
    EXPECT_EQ(handed_over(routine, " a b ", ilen, 5), "stat| a b|");
    EXPECT_EQ(handed_over(routine, "     ", ilen, 5), "stat||");
    EXPECT_EQ(handed_over(routine, "", ilen, 0), "stat||");
    EXPECT_EQ(handed_over(routine, "na\0me", ilen, 5), "stat|na|");
  }
}

TEST_F(HostName, OfUtimeEndsAtTheFirstBlank) {
  const NameRoutine routine = name_routine("utime", pxfutime_, 0);
  for (const int32_t ilen : {0, 1, -1, 100, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(handed_over(routine, "my file", ilen, 7), "utime|my|now|");
    EXPECT_EQ(handed_over(routine, "name", ilen, 4), "utime|name|now|");
    EXPECT_EQ(handed_over(routine, "name and more", ilen, 4), "utime|name|now|");
    EXPECT_EQ(handed_over(routine, "na\tme\t x", ilen, 8), "utime|na\tme\t|now|");
    EXPECT_EQ(handed_over(routine, " name", ilen, 5), "utime||now|");
    EXPECT_EQ(handed_over(routine, "", ilen, 0), "utime||now|");
  }
}

TEST_F(HostName, OfUtimeComesWithTheRecordsTimes) {
  const OwnedRecord record("utimbuf");
  record_as<qxport::UtimbufRecord>(record).actime = 5000000001;
  record_as<qxport::UtimbufRecord>(record).modtime = -5000000002;
  EXPECT_EQ(handed_over(name_routine("utime", pxfutime_, static_cast<int32_t>(record)), "name", 0, 4),
            "utime|name|5000000001|-5000000002|");
}

TEST_F(HostName, OfPathconfHasItsLengthChecked) {
  result = SENTINEL;
  for (const int32_t ilen : {-1, INT32_MIN, 5, INT32_MAX})
    EXPECT_EQ(call_named(pxfpathconf_, "name", ilen, 3, &result), failed_with(EINVAL));
  EXPECT_EQ(host_calls, std::vector<std::string>());
  EXPECT_EQ(result, SENTINEL);
  const NameRoutine routine = name_routine("pathconf", pxfpathconf_, 3, &result);
  EXPECT_EQ(handed_over(routine, "name  ", 0, 6), "pathconf|name|3|");
  EXPECT_EQ(handed_over(routine, "name  ", 5, 6), "pathconf|name |3|");
  EXPECT_EQ(handed_over(routine, "name  ", 6, 6), "pathconf|name  |3|");
  EXPECT_EQ(handed_over(routine, "na\0me", 5, 5), "pathconf|na|3|");
  EXPECT_EQ(handed_over(routine, "", 0, 0), "pathconf||3|");
}

#if UINTPTR_MAX > UINT32_MAX
TEST_F(HostName, LowHalfOfTheHiddenLengthCounts) {
  constexpr size_t BEYOND = size_t{1} << 32;
  expect_name("name  and more", 0, BEYOND + 6, "name");
  expect_name("name", 0, BEYOND - 1, "");
  const OwnedRecord record("stat");
  const NameRoutine stat = name_routine("stat", pxfstat_, static_cast<int32_t>(record));
  EXPECT_EQ(handed_over(stat, "name  and more", 0, BEYOND + 6), "stat|name|");
  EXPECT_EQ(handed_over(stat, "name", 0, BEYOND - 1), "stat||");
  const NameRoutine utime = name_routine("utime", pxfutime_, 0);
  EXPECT_EQ(handed_over(utime, "name and more", 0, BEYOND + 2), "utime|na|now|");
  EXPECT_EQ(handed_over(utime, "name", 0, BEYOND - 1), "utime||now|");
  const NameRoutine pathconf = name_routine("pathconf", pxfpathconf_, 3, &result);
  EXPECT_EQ(handed_over(pathconf, "name", 4, BEYOND + 4), "pathconf|name|3|");
  EXPECT_EQ(handed_over(pathconf, "name", 4, BEYOND + 3), "pathconf|name|3|") << "compared with the whole";
  EXPECT_EQ(handed_over(pathconf, "name", 1, BEYOND - 1), "pathconf|n|3|");
  EXPECT_EQ(handed_over(pathconf, "name", 0, BEYOND - 1), "pathconf||3|")
      << "of which the low half is counted";
}
#endif

using HostResult = HostName;

TEST_F(HostResult, IsStored) {
  EXPECT_EQ(call_named(pxfopen_, "name", 0, 0, 0, &result), succeeded());
  EXPECT_EQ(result, DESCRIPTOR);
  result = 0;
  EXPECT_EQ(call_named(pxfcreat_, "name", 0, 0, &result), succeeded());
  EXPECT_EQ(result, DESCRIPTOR);
  // The low 32 bits; a long of 32 has no others.
  EXPECT_EQ(call_named(pxfpathconf_, "name", 0, 0, &result), succeeded());
  EXPECT_EQ(result, 7);
}

constexpr int ERRORS[] = {0, EPERM, ENOENT, EINTR, EIO, EBADF, ENOMEM, EACCES, EEXIST, EMFILE, EROFS, 4095};

TEST_F(HostResult, EveryErrorIsReported) {
  const OwnedRecord record("stat"), times("utimbuf");
  fill_record(record);
  const Contents before = contents_of(record);
  for (const int error : ERRORS) {
    host_error = error;
    for (const auto &[routine, first, last] : routines_of_the_rule())
      EXPECT_EQ(routine.make("name", 0, 4), failed_with(error)) << routine;
    EXPECT_EQ(call_named(pxfstat_, "name", 0, record), failed_with(error));
    EXPECT_EQ(call_named(pxfutime_, "name", 0, 0), failed_with(error));
    EXPECT_EQ(call_named(pxfutime_, "name", 0, times), failed_with(error));
    EXPECT_EQ(call_named(pxfpathconf_, "name", 0, 0, &result), failed_with(error));
    EXPECT_EQ(result, -1);
    result = SENTINEL;
    EXPECT_EQ(call_named(pxfopendir_, "name", 0, &result), failed_with(error));
    EXPECT_EQ(result, SENTINEL);
    EXPECT_EQ(call_named(pxfopen_, "name", 0, 0, 0, &result), failed_with(error));
    EXPECT_EQ(result, -1);
    result = SENTINEL;
    EXPECT_EQ(call_named(pxfcreat_, "name", 0, 0, &result), failed_with(error));
    EXPECT_EQ(result, -1);
  }
  EXPECT_EQ(contents_of(record), before);
}

}  // namespace
