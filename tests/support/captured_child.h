// Runs code that ends the process, or that writes to the standard streams, in a child process.
#ifndef TESTS_SUPPORT_CAPTURED_CHILD_H
#define TESTS_SUPPORT_CAPTURED_CHILD_H

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

struct ChildReport {
  int status;  // as wait() answers it
  std::string out;
  std::string err;

  int exit_code() const { return WIFEXITED(status) ? WEXITSTATUS(status) : -1; }
  int signal() const { return WIFSIGNALED(status) ? WTERMSIG(status) : 0; }
};

// The exit code of a child whose body came to its end.
constexpr int CAME_BACK = 99;

inline std::string contents_from_start(int fd) {
  std::string contents(static_cast<size_t>(lseek(fd, 0, SEEK_END)), '\0');
  const ssize_t count = pread(fd, contents.data(), contents.size(), 0);
  EXPECT_EQ(count, static_cast<ssize_t>(contents.size()));
  return contents;
}

// The child leaves by _exit(CAME_BACK), nothing flushed, where the body returns. Its assertions are not seen:
// it reports through its streams and its exit code.
template <typename Body>
ChildReport run_in_child(Body body) {
  const int out = memfd_create("out", MFD_CLOEXEC);
  const int err = memfd_create("err", MFD_CLOEXEC);
  EXPECT_GE(out, 0);
  EXPECT_GE(err, 0);
  fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    const rlimit no_core = {0, 0};
    setrlimit(RLIMIT_CORE, &no_core);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    body();
    _exit(CAME_BACK);
  }
  ChildReport report{-1, "", ""};
  EXPECT_EQ(waitpid(child, &report.status, 0), child);
  report.out = contents_from_start(out);
  report.err = contents_from_start(err);
  close(out);
  close(err);
  return report;
}

#endif
