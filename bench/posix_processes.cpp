// Processes and signals of the binding, beside the same calls in C.
#include "ratios.h"

#include <qxport/qxport.h>

#include <csignal>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

namespace {

void run_ours(benchmark::State &state) {
  const int32_t length = 0, one = 1, failed = 127, options = 0;
  for (auto _ : state) {
    int32_t child, status, ended, ierror;
    pxffork_(&child, &ierror);
    if (child == 0) {
      pxfexecv_("/bin/true", &length, "true", &length, &one, &ierror, 9, 4);
      pxffastexit_(&failed);
    }
    pxfwaitpid_(&child, &status, &options, &ended, &ierror);
    if (status != 0)
      return state.SkipWithError("the child failed");
  }
}
void run_by_hand(benchmark::State &state) {
  for (auto _ : state) {
    const pid_t child = fork();
    if (child == 0) {
      char name[] = "true";
      char *const arguments[] = {name, nullptr};
      execv("/bin/true", arguments);
      _exit(127);
    }
    int status;
    waitpid(child, &status, 0);
    if (status != 0)
      return state.SkipWithError("the child failed");
  }
}
BENCHMARK(run_ours)->Name("fork, exec, wait/ours")->UseRealTime();
BENCHMARK(run_by_hand)->Name("fork, exec, wait/by hand")->UseRealTime();

volatile int delivered;

void fortran_handler(const int32_t *) {
  delivered = delivered + 1;
}
void native_handler(int) {
  delivered = delivered + 1;
}

void signal_ours(benchmark::State &state) {
  const int32_t signal = SIGUSR1, none = 0;
  int32_t action = 0, procedure, ierror;
  pxfstructcreate_("sigaction", &action, &ierror, 9);
  pxfgetsubhandle_(reinterpret_cast<void (*)()>(fortran_handler), &procedure, &ierror);
  pxfintset_(&action, "sa_handler", &procedure, &ierror, 10);
  pxfsigaction_(&signal, &action, &none, &ierror);
  for (auto _ : state)
    raise(SIGUSR1);
  pxfstructfree_(&action, &ierror);
}
void signal_native(benchmark::State &state) {
  struct sigaction action = {};
  action.sa_handler = native_handler;
  sigaction(SIGUSR1, &action, nullptr);
  for (auto _ : state)
    raise(SIGUSR1);
}
BENCHMARK(signal_ours)->Name("signal delivery/ours");
BENCHMARK(signal_native)->Name("signal delivery/native handler");

}  // namespace

int main(int argc, char **argv) {
  return bench::run(argc, argv,
                    {{"fork, exec, wait", "by hand", 1.10}, {"signal delivery", "native handler", 1.30}});
}
