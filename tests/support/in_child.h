// Checks that need a process of their own.
#ifndef TESTS_SUPPORT_IN_CHILD_H
#define TESTS_SUPPORT_IN_CHILD_H

#include <cstdio>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

// Runs the check in a child process; its failures are the test's.
template <typename Check>
void in_child(Check check) {
  fflush(nullptr);
  const pid_t child = fork();
  ASSERT_NE(child, -1);
  if (child == 0) {
    check();
    fflush(nullptr);
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0) << "failed in the child";
}

#endif
