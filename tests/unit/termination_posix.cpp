// EXIT and ABORT with the provider that has no Fortran run-time.
#include "captured_child.h"
#include "contract/services.h"

#include <qxport/qxport.h>

#include <csignal>
#include <cstdlib>
#include <string>

namespace {

ChildReport exited(const int32_t *status) {
  return run_in_child([status] { exit_(status); });
}

ChildReport aborted(const char *msg, qxport_charlen length) {
  return run_in_child([msg, length] { abort_(msg, length); });
}

}  // namespace

TEST(Exit, StatusIsTheProcesss) {
  for (const int32_t status : {0, 1, 7, 255}) {
    const ChildReport child = exited(&status);
    EXPECT_EQ(child.exit_code(), status);
    EXPECT_EQ(child.out + child.err, "");
  }
}

TEST(Exit, SystemKeepsTheLowEightBits) {
  for (const int32_t status : {256, -1, 1008, INT32_MIN})
    EXPECT_EQ(exited(&status).exit_code(), status & 0xff);
}

TEST(Exit, AbsentStatusIs0) {
  EXPECT_EQ(exited(nullptr).exit_code(), 0);
}

TEST(Exit, OrdinaryEnd) {
  const ChildReport child = run_in_child([] {
    atexit([] { printf("procedure of atexit\n"); });
    printf("buffered\n");
    const int32_t status = 3;
    qxport_exit_(&status);
  });
  EXPECT_EQ(child.exit_code(), 3);
  EXPECT_EQ(child.out, "buffered\nprocedure of atexit\n");
}

TEST(Abort, TextOnStandardErrorAndSigabrt) {
  const ChildReport child = aborted("bad", 3);
  EXPECT_EQ(child.signal(), SIGABRT);
  EXPECT_EQ(child.err, "abort: bad\n");
  EXPECT_EQ(child.out, "");
}

TEST(Abort, AbsentMessage) {
  const ChildReport child = aborted(nullptr, 0);
  EXPECT_EQ(child.signal(), SIGABRT);
  EXPECT_EQ(child.err, "abort: Fortran Abort Called\n");
}

TEST(Abort, MessageIsCutAt240Characters) {
  const std::string text(300, 'x');
  const ChildReport child = aborted(text.data(), 300);
  EXPECT_EQ(child.signal(), SIGABRT);
  EXPECT_EQ(child.err, "abort: " + std::string(240, 'x') + "\n");
}

TEST(Abort, TrailingBlanksArePrinted) {
  EXPECT_EQ(aborted("bad  ", 5).err, "abort: bad  \n");
}

TEST(Abort, IgnoredSignalDoesNotHelp) {
  const ChildReport child = run_in_child([] {
    signal(SIGABRT, SIG_IGN);
    qxport_abort_("bad", 3);
  });
  EXPECT_EQ(child.signal(), SIGABRT);
}

TEST(Abort, ProgramsHandlerIsAsked) {
  const ChildReport child = run_in_child([] {
    signal(SIGABRT, [](int) { _exit(5); });
    abort_("bad", 3);
  });
  EXPECT_EQ(child.exit_code(), 5);
  EXPECT_EQ(child.err, "abort: bad\n");
}
