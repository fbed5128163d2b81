// Signals that come while records are created and freed.
#include "signal_actions.h"

#include <algorithm>
#include <ctime>
#include <sys/mman.h>
#include <sys/wait.h>

namespace {

// Two processes exchange signals while each creates, fills, checks and frees records and changes actions. The
// next signal of a number is sent only when the one before was counted, so none may get lost.
class Storm {
public:
  static constexpr int NUMBERS[] = {SIGUSR1, SIGUSR2, SIGURG, SIGWINCH, SIGIO, SIGPROF, SIGVTALRM, SIGALRM};
  static constexpr int EACH = 12500;  // of each number to each of the two: 200,000 in all

  struct Side {
    volatile sig_atomic_t received[33];
    int32_t sent[33];
    volatile sig_atomic_t failures;
  };

  Storm()
      : sides_(static_cast<Side *>(
            mmap(nullptr, 2 * sizeof(Side), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {
    EXPECT_NE(static_cast<void *>(sides_), MAP_FAILED);
  }
  ~Storm() { munmap(sides_, 2 * sizeof(Side)); }
  Storm(const Storm &) = delete;
  Storm &operator=(const Storm &) = delete;

  const Side &side(int index) const { return sides_[index]; }

  // Where the handlers of this process count.
  void prepare(int index) { own_ = &sides_[index]; }

  // One side's part, up to its end or the deadline.
  void run(int index, pid_t other) {
    Side &opposite = sides_[1 - index];
    const time_t deadline = time(nullptr) + 90;
    for (int round = 0; !finished(opposite) && time(nullptr) < deadline; ++round) {
      bool sent = false;
      for (const int number : NUMBERS)
        if (own_->sent[number] < EACH && opposite.received[number] == own_->sent[number]) {
          ++own_->sent[number];
          int32_t ierror = -1;
          pxfkill_(&other, &number, &ierror);
          expect(ierror == 0);
          sent = true;
        }
      use_records(round);
      if (!sent)
        usleep(50);
    }
  }

  static void install(const int32_t *handles) {
    for (const int number : NUMBERS) {
      const Action action(handles[0], 0, SA_RESTART);
      EXPECT_EQ(call(number, action, 0), succeeded());
    }
    handles_[0] = handles[0];
    handles_[1] = handles[1];
  }

  static void count(int32_t *number) { own_->received[*number] = own_->received[*number] + 1; }
  static void count_too(int32_t *number) { own_->received[*number] = own_->received[*number] + 1; }

private:
  static void expect(bool holds) { own_->failures = own_->failures + (holds ? 0 : 1); }

  // All was sent and counted on both sides.
  static bool finished(const Side &opposite) {
    return std::all_of(std::begin(NUMBERS), std::end(NUMBERS), [&](int number) {
      return own_->sent[number] == EACH && opposite.received[number] == EACH &&
             own_->received[number] == EACH;
    });
  }

  static void use_records(int round) {
    int32_t records[8], ierror = -1;
    for (int i = 0; i < 8; ++i) {
      pxfstructcreate_(i % 2 == 0 ? "flock" : "sigaction", &records[i], &ierror, i % 2 == 0 ? 5 : 9);
      expect(ierror == 0);
      const int32_t value = round * 8 + i;
      pxfintset_(&records[i], i % 2 == 0 ? "l_pid" : "sa_flags", &value, &ierror, i % 2 == 0 ? 5 : 8);
      expect(ierror == 0);
    }
    exchange_action(round, records[1]);
    for (int i = 7; i >= 0; --i) {
      int32_t value = -1;
      pxfintget_(&records[i], i % 2 == 0 ? "l_pid" : "sa_flags", &value, &ierror, i % 2 == 0 ? 5 : 8);
      expect(ierror == 0 && (i == 1 || value == round * 8 + i));
      pxfstructfree_(&records[i], &ierror);
      expect(ierror == 0);
    }
  }

  // Installs the one procedure where the other was: the old action names that one.
  static void exchange_action(int round, int32_t action) {
    const int32_t isig = NUMBERS[0];
    auto &fields = record_as<qxport::SigactionRecord>(action);
    fields = {fields.kind, widened(handles_[(round + 1) % 2]), 0, SA_RESTART};
    int32_t ierror = -1;
    pxfsigaction_(&isig, &action, &action, &ierror);
    expect(ierror == 0 && fields.sa_handler_ == widened(handles_[round % 2]) &&
           fields.sa_flags == SA_RESTART);
  }

  static Side *own_;
  static int32_t handles_[2];
  Side *const sides_;
};

Storm::Side *Storm::own_;
int32_t Storm::handles_[2];

TEST_F(Signals, StormLosesNoStateAndCrashesNothing) {
  Storm storm;
  const int32_t handles[] = {handle_of(Storm::count), handle_of(Storm::count_too)};
  ASSERT_NE(handles[0], handles[1]);
  Storm::install(handles);
  // What comes before a side runs has to wait.
  sigset_t all, former;
  sigfillset(&all);
  sigprocmask(SIG_SETMASK, &all, &former);
  const pid_t parent = getpid();
  const pid_t child = fork();
  ASSERT_NE(child, -1);
  const int index = child == 0 ? 1 : 0;
  storm.prepare(index);
  sigprocmask(SIG_SETMASK, &former, nullptr);
  storm.run(index, child == 0 ? parent : child);
  if (child == 0)
    _exit(0);
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  for (const int number : Storm::NUMBERS) {
    EXPECT_EQ(storm.side(0).received[number], Storm::EACH) << number;
    EXPECT_EQ(storm.side(1).received[number], Storm::EACH) << number;
    signal(number, SIG_DFL);
  }
  EXPECT_EQ(storm.side(0).failures, 0);
  EXPECT_EQ(storm.side(1).failures, 0);
}

}  // namespace
