// A signal that goes off again and again while one is alive, so that what blocks is interrupted.
#ifndef TESTS_SUPPORT_INTERRUPTIONS_H
#define TESTS_SUPPORT_INTERRUPTIONS_H

#include <csignal>
#include <sys/time.h>

class Interruptions {
public:
  Interruptions() {
    // Not restarted: no SA_RESTART.
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, &former_);
    const itimerval often = {{0, 20000}, {0, 20000}};
    setitimer(ITIMER_REAL, &often, nullptr);
  }
  ~Interruptions() {
    const itimerval never = {};
    setitimer(ITIMER_REAL, &never, nullptr);
    sigaction(SIGALRM, &former_, nullptr);
  }
  Interruptions(const Interruptions &) = delete;
  Interruptions &operator=(const Interruptions &) = delete;

private:
  struct sigaction former_;
};

#endif
