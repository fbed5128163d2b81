// Tests of permissions, which do not bind the superuser.
#ifndef TESTS_SUPPORT_ORDINARY_USER_H
#define TESTS_SUPPORT_ORDINARY_USER_H

#include <gtest/gtest.h>

#include <cstdio>
#include <grp.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

// Gives up the superuser's rights for good, in the real ids too, by which access(2) judges.
inline bool become_ordinary_user() {
  constexpr uid_t NOBODY = 65534;
  if (geteuid() != 0)
    return true;
  return setgroups(0, nullptr) == 0 && setresgid(NOBODY, NOBODY, NOBODY) == 0 &&
         setresuid(NOBODY, NOBODY, NOBODY) == 0;
}

// Runs the check in a child process without privileges; its failures are the test's.
template <typename Check>
void as_ordinary_user(Check check) {
  fflush(nullptr);
  const pid_t child = fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    if (become_ordinary_user())
      check();
    else
      ADD_FAILURE() << "the superuser's rights stay";
    fflush(nullptr);
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0) << "failed as an ordinary user";
}

#endif
