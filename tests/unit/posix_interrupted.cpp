// A signal in the middle of the routines that wait: EINTR is reported, and what a failure leaves alone stays.
// (Locks that are waited for stand with PXFFCNTL, reads and writes of descriptors with PXFREAD and PXFWRITE.)
#include "interruptions.h"
#include "posix_calls.h"
#include "pseudo_terminal.h"

#include "contract/services.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <termios.h>
#include <unistd.h>

namespace {

// A pipe whose ends wait: nothing to read from one, no room to write to the other after fill().
class Pipe {
public:
  Pipe() { EXPECT_EQ(pipe2(ends_, O_CLOEXEC), 0); }
  ~Pipe() {
    close(ends_[0]);
    close(ends_[1]);
  }
  Pipe(const Pipe &) = delete;
  Pipe &operator=(const Pipe &) = delete;

  int reader() const { return ends_[0]; }
  int writer() const { return ends_[1]; }
  void fill() const {
    fcntl(writer(), F_SETFL, O_NONBLOCK);
    while (write(writer(), "x", 1) == 1) {
    }
    fcntl(writer(), F_SETFL, 0);
  }

private:
  int ends_[2];
};

template <typename Call>
auto interrupted(Call call) {
  const Interruptions alarms;
  return call();
}

TEST(Interrupted, OpeningOfAFifoIs4AndMinus1) {
  const TemporaryDirectory directory;
  const std::string fifo = directory / "fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  for (const int32_t flags : {O_RDONLY, O_WRONLY}) {
    Guarded<int32_t> fd(SENTINEL);
    EXPECT_EQ(interrupted([&] { return call_named(pxfopen_, fifo, 0, flags, 0, &fd); }), failed_with(EINTR));
    EXPECT_EQ(fd, -1);
  }
  Guarded<int32_t> fd(SENTINEL);
  EXPECT_EQ(interrupted([&] { return call_named(pxfcreat_, fifo, 0, 0600, &fd); }), failed_with(EINTR));
  EXPECT_EQ(fd, -1);
}

// What was moved before the signal came is no failure.
TEST(Interrupted, WriteInItsMiddleIsPartial) {
  const Pipe pipe;
  const std::string much(1 << 20, 'x');
  Guarded<int32_t> written(SENTINEL);
  EXPECT_EQ(interrupted([&] {
              return call(pxfwrite_, pipe.writer(), static_cast<const void *>(much.data()), 1 << 20,
                          &written);
            }),
            succeeded());
  EXPECT_GT(written, 0);
  EXPECT_LT(written, 1 << 20);
  EXPECT_EQ(fcntl(pipe.reader(), F_GETPIPE_SZ), written);
}

// A pipe of which the signal's own procedure does what a call waits for, so the call is interrupted first.
int served_end;

template <typename Call>
void served(int end, void (*serve)(int), Call call) {
  served_end = end;
  struct sigaction action = {}, former;
  action.sa_handler = serve;
  sigaction(SIGALRM, &action, &former);
  const itimerval often = {{0, 20000}, {0, 20000}}, never = {};
  setitimer(ITIMER_REAL, &often, nullptr);
  call();
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &former, nullptr);
}

TEST(Interrupted, ReadOfAUnitGoesOn) {
  for (const int32_t unit : {50, 5}) {
    const Pipe pipe;
    ASSERT_EQ(for_fdopen(pipe.reader(), unit, "r", 1), 0);
    Character ch(1);
    int32_t ierror = SENTINEL;
    served(
        pipe.writer(), [](int) { EXPECT_EQ(write(served_end, "c", 1), 1); },
        [&] { unit == 5 ? pxfgetc_(ch.data(), &ierror, 1) : pxffgetc_(&unit, ch.data(), &ierror, 1); });
    EXPECT_EQ(ierror, 0);
    EXPECT_EQ(ch.text(), "c");
  }
  EXPECT_EQ(for_fdopen(STDIN_FILENO, 5, "", 0), 0);
}

TEST(Interrupted, WriteOfAUnitGoesOn) {
  for (const int32_t unit : {51, 6}) {
    const Pipe pipe;
    pipe.fill();
    fcntl(pipe.reader(), F_SETFL, O_NONBLOCK);
    ASSERT_EQ(for_fdopen(pipe.writer(), unit, "w", 1), 0);
    int32_t ierror = SENTINEL;
    served(
        pipe.reader(),
        [](int) {
          char much[65536];
          EXPECT_NE(read(served_end, much, sizeof(much)), 0);
        },
        [&] { unit == 6 ? pxfputc_("c", &ierror, 1) : pxffputc_(&unit, "c", &ierror, 1); });
    EXPECT_EQ(ierror, 0);
  }
  EXPECT_EQ(for_fdopen(STDOUT_FILENO, 6, "", 0), 0);
}

// Output that nobody reads on the other side. Some hosts wait for it to be read, others count it as sent.
TEST(Interrupted, WaitForATerminalsOutputIsTheHosts) {
  const PseudoTerminal pseudo_terminal;
  const int terminal = pseudo_terminal.descriptor();
  ASSERT_EQ(write(terminal, "unread", 6), 6);
  const OwnedRecord record("termios");
  ASSERT_EQ(call(pxftcgetattr_, terminal, record), succeeded());
  termios attributes;
  ASSERT_EQ(tcgetattr(terminal, &attributes), 0);
  const Outcome drained = interrupted([&] { return call(pxftcdrain_, terminal); });
  const Outcome set = interrupted([&] { return call(pxftcsetattr_, terminal, TCSADRAIN, record); });
  EXPECT_EQ(drained, interrupted([&] { return as_the_host([&] { return tcdrain(terminal); }); }));
  EXPECT_EQ(set, interrupted([&] {
              return as_the_host([&] { return tcsetattr(terminal, TCSADRAIN, &attributes); });
            }));
}

}  // namespace
