// PXFMKDIR, PXFRMDIR, PXFCHDIR and PXFGETCWD against the host's own calls.
#include "ordinary_user.h"
#include "posix_calls.h"

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class Directories : public testing::Test {
protected:
  Directories() { chmod(directory_.path().c_str(), 0777); }

  const TemporaryDirectory directory_;
  const std::string file_ = directory_.file("file", "text");
  const WorkingDirectory working_{directory_.path()};
};

using Mkdir = Directories;
using Rmdir = Directories;
using Chdir = Directories;
using Getcwd = Directories;

// Also where a buffer of any fixed length would not do.
std::string working_directory() {
  char *name = getcwd(nullptr, 0);
  const std::string result = name == nullptr ? "" : name;
  free(name);
  return result;
}

const std::string NO_DIRECTORIES[] = {
    "missing", "file", "file/below", "", " ", std::string(300, 'n'), std::string(5000, 'p'),
};

TEST_F(Mkdir, MakesWhatTheHostMakes) {
  const mode_t former = umask(027);
  for (const int32_t mode : {0777, 0700, 0, 01777, 07777, -1}) {
    EXPECT_EQ(call_named(pxfmkdir_, "made ", 0, mode), succeeded());
    ASSERT_EQ(mkdir("twin", static_cast<mode_t>(mode)), 0);
    struct stat made, twin;
    ASSERT_EQ(stat("made", &made), 0);
    ASSERT_EQ(stat("twin", &twin), 0);
    EXPECT_EQ(made.st_mode, twin.st_mode) << mode;
    EXPECT_TRUE(S_ISDIR(made.st_mode));
    EXPECT_EQ(call_named(pxfrmdir_, "made ", 0), succeeded());
    ASSERT_EQ(rmdir("twin"), 0);
  }
  umask(former);
}

TEST_F(Mkdir, NameEndsWhereItsLengthSays) {
  EXPECT_EQ(call_named(pxfmkdir_, "made-and-more", 4, 0755), succeeded());
  EXPECT_EQ(access("made", F_OK), 0);
  EXPECT_NE(access("made-and-more", F_OK), 0);
}

TEST_F(Mkdir, FailuresAreTheHosts) {
  for (const std::string name : {"file", ".", "missing/made", "file/made", "", "/proc/made"})
    EXPECT_EQ(call_named(pxfmkdir_, name, 0, 0755), as_the_host([&] { return mkdir(name.c_str(), 0755); }))
        << name;
  EXPECT_EQ(call_named(pxfmkdir_, "file", 0, 0755), failed_with(EEXIST));
  ASSERT_EQ(mkdir("closed", 0555), 0);
  ASSERT_EQ(chmod("closed", 0555), 0);
  as_ordinary_user([] { EXPECT_EQ(call_named(pxfmkdir_, "closed/made", 0, 0755), failed_with(EACCES)); });
}

TEST_F(Rmdir, FailuresAreTheHosts) {
  for (const std::string &name : NO_DIRECTORIES)
    EXPECT_EQ(call_named(pxfrmdir_, name, 0), as_the_host([&] { return rmdir(name.c_str()); })) << name;
  ASSERT_EQ(mkdir("full", 0755), 0);
  directory_.file("full/file");
  EXPECT_EQ(call_named(pxfrmdir_, "full", 0), failed_with(ENOTEMPTY));
  EXPECT_EQ(call_named(pxfrmdir_, ".", 0), as_the_host([] { return rmdir("."); }));
  EXPECT_EQ(access("full/file", F_OK), 0);
}

TEST_F(Chdir, GoesThereAndBack) {
  ASSERT_EQ(mkdir("below", 0755), 0);
  EXPECT_EQ(call_named(pxfchdir_, "below   ", 0), succeeded());
  EXPECT_EQ(working_directory(), directory_ / "below");
  EXPECT_EQ(call_named(pxfchdir_, "...", 2), succeeded());
  EXPECT_EQ(working_directory(), directory_.path());
}

TEST_F(Chdir, FailuresAreTheHostsAndStay) {
  for (const std::string &name : NO_DIRECTORIES)
    EXPECT_EQ(call_named(pxfchdir_, name, 0), as_the_host([&] { return chdir(name.c_str()); })) << name;
  EXPECT_EQ(call_named(pxfchdir_, "file", 0), failed_with(ENOTDIR));
  EXPECT_EQ(working_directory(), directory_.path());
}

// GETCWD into a variable of a length: what it reports, the variable, and ILEN.
struct Cwd {
  Outcome outcome;
  std::string buf;
  int32_t ilen;
  bool operator==(const Cwd &) const = default;
};
std::ostream &operator<<(std::ostream &out, const Cwd &cwd) {
  return out << cwd.outcome << ", \"" << cwd.buf << "\", " << cwd.ilen;
}

Cwd getcwd_into(size_t length) {
  Character buf(length);
  Guarded<int32_t> ilen(SENTINEL);
  const Outcome outcome =
      reported_by([&](int32_t *ierror) { pxfgetcwd_(buf.data(), &ilen, ierror, buf.length()); });
  return {outcome, buf.text(), ilen};
}

TEST_F(Getcwd, FillsWithBlanks) {
  const std::string name = working_directory();
  const int32_t length = static_cast<int32_t>(name.size());
  EXPECT_EQ(getcwd_into(name.size()), (Cwd{succeeded(), name, length}));
  EXPECT_EQ(getcwd_into(name.size() + 1), (Cwd{succeeded(), name + ' ', length}));
  EXPECT_EQ(getcwd_into(10000), (Cwd{succeeded(), padded(name, 10000), length}));
}

TEST_F(Getcwd, OneCharacterShortIs129AndCut) {
  const std::string name = working_directory();
  const std::string cut = name.substr(0, name.size() - 1);
  EXPECT_EQ(getcwd_into(name.size() - 1), (Cwd{refused(CUT, ERANGE), cut, 0}));
}

TEST_F(Getcwd, EveryShorterVariableGetsWhatFits) {
  const std::string name = working_directory();
  for (size_t length = 0; length < name.size(); ++length)
    EXPECT_EQ(getcwd_into(length), (Cwd{refused(CUT, ERANGE), name.substr(0, length), 0}));
}

TEST_F(Getcwd, OfARemovedDirectoryIsTheHostsFailure) {
  ASSERT_EQ(mkdir("below", 0755), 0);
  ASSERT_EQ(chdir("below"), 0);
  ASSERT_EQ(rmdir("../below"), 0);
  EXPECT_EQ(getcwd_into(30), (Cwd{failed_with(ENOENT), std::string(30, '#'), 0}));
  EXPECT_EQ(getcwd_into(0), (Cwd{failed_with(ENOENT), "", 0}));
  ASSERT_EQ(chdir(directory_.path().c_str()), 0);
}

TEST_F(Getcwd, OfTheRootIsOneCharacter) {
  const WorkingDirectory root("/");
  EXPECT_EQ(getcwd_into(3), (Cwd{succeeded(), "/  ", 1}));
  EXPECT_EQ(getcwd_into(0), (Cwd{refused(CUT, ERANGE), "", 0}));
}

#if UINTPTR_MAX > UINT32_MAX
TEST_F(Getcwd, LowHalfOfTheHiddenLengthCounts) {
  const WorkingDirectory root("/");
  const qxport_charlen beyond = qxport_charlen{1} << 32;
  Character buf(3);
  int32_t ilen = SENTINEL;
  EXPECT_EQ(reported_by([&](int32_t *ierror) { pxfgetcwd_(buf.data(), &ilen, ierror, beyond + 3); }),
            succeeded());
  EXPECT_EQ(buf.text(), "/  ");
  EXPECT_EQ(ilen, 1);
  EXPECT_EQ(reported_by([&](int32_t *ierror) { pxfgetcwd_(buf.data(), &ilen, ierror, beyond - 1); }),
            refused(CUT, ERANGE));
  EXPECT_EQ(ilen, 0);
}
#endif

// Deeper than any name that a host call takes at once.
TEST_F(Getcwd, HasNoLimitOfItsOwn) {
  const std::string component(200, 'd');
  for (int depth = 0; depth < 25; ++depth) {
    ASSERT_EQ(mkdir(component.c_str(), 0755), 0);
    ASSERT_EQ(call_named(pxfchdir_, component, 0), succeeded());
  }
  const std::string name = working_directory();
  ASSERT_GT(name.size(), 5000u);
  Character buf(6000);
  int32_t ilen = 0, ierror = SENTINEL;
  pxfgetcwd_(buf.data(), &ilen, &ierror, buf.length());
  EXPECT_EQ(ierror, 0);
  EXPECT_EQ(ilen, static_cast<int32_t>(name.size()));
  EXPECT_EQ(buf.text(), padded(name, 6000));
}

}  // namespace
