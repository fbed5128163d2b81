// Tests of permissions, which do not bind the superuser.
#ifndef TESTS_SUPPORT_ORDINARY_USER_H
#define TESTS_SUPPORT_ORDINARY_USER_H

#include "in_child.h"

#include <cstdlib>
#include <grp.h>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

constexpr uid_t NOBODY = 65534;

// Gives up the superuser's rights for good, in the real ids too, by which access(2) judges.
inline bool become_ordinary_user() {
  if (geteuid() != 0)
    return true;
  return setgroups(0, nullptr) == 0 && setresgid(NOBODY, NOBODY, NOBODY) == 0 &&
         setresuid(NOBODY, NOBODY, NOBODY) == 0;
}

// May everybody go through the directories down to this one?
inline bool is_open_to_everybody(std::string directory) {
  for (;;) {
    struct stat status;
    if (stat((directory + "/").c_str(), &status) != 0 || (status.st_mode & S_IXOTH) == 0)
      return false;
    const size_t slash = directory.rfind('/');
    if (slash == std::string::npos || slash == 0)
      return true;
    directory.erase(slash);
  }
}

// A place for temporary directories of the ordinary user: the superuser's may be closed to it. The ordinary
// user has the one that there is.
class OrdinaryUsersPlace {
public:
  OrdinaryUsersPlace() {
    if (geteuid() != 0)
      return;
    std::string directory = testing::TempDir();
    while (directory.size() > 1 && directory.back() == '/')
      directory.pop_back();
    path_ = (is_open_to_everybody(directory) ? directory : "/tmp") + "/qxport.XXXXXX";
    EXPECT_NE(mkdtemp(path_.data()), nullptr) << path_;
    EXPECT_EQ(chown(path_.c_str(), NOBODY, NOBODY), 0);
  }
  ~OrdinaryUsersPlace() {
    if (!path_.empty())
      rmdir(path_.c_str());
  }
  OrdinaryUsersPlace(const OrdinaryUsersPlace &) = delete;
  OrdinaryUsersPlace &operator=(const OrdinaryUsersPlace &) = delete;

  bool take() const { return path_.empty() || setenv("TMPDIR", path_.c_str(), 1) == 0; }

private:
  std::string path_;
};

// Runs the check in a child process without privileges; its failures are the test's.
template <typename Check>
void as_ordinary_user(Check check) {
  const OrdinaryUsersPlace place;
  in_child([&] {
    if (place.take() && become_ordinary_user())
      check();
    else
      ADD_FAILURE() << "the superuser's rights stay";
  });
}

#endif
