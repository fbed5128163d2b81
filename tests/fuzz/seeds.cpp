// Random calls with fixed seeds: each seed a process of its own in a directory of its own, watched by this
// one.
//   fuzz_PROVIDER [--seconds S] [--seed N] [--calls K] [--trace 1]
#include "fuzz/calls.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

// What is left over when a process is killed between two calls is no leak of the library's.
extern "C" const char *__asan_default_options() {
  return "detect_leaks=0:allocator_may_return_null=1:handle_abort=0";
}

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
  std::chrono::seconds time{2};
  uint64_t first_seed = 1;
  bool one_seed = false;
  uint32_t calls = 1000;
  bool trace = false;
};

Options options_of(int count, char **words) {
  Options options;
  for (int i = 1; i + 1 < count; i += 2) {
    const std::string name = words[i];
    const unsigned long long number = strtoull(words[i + 1], nullptr, 10);
    if (name == "--seconds")
      options.time = std::chrono::seconds(number);
    else if (name == "--seed")
      options.first_seed = number, options.one_seed = true;
    else if (name == "--trace")
      options.trace = number != 0;
    else if (name == "--calls")
      options.calls = static_cast<uint32_t>(number);
  }
  return options;
}

void limit(int resource, rlim_t amount) {
  const rlimit both = {amount, amount};
  setrlimit(static_cast<__rlimit_resource>(resource), &both);
}

[[noreturn]] void run(uint64_t seed, const Options &options, const std::string &directory) {
  setsid();
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  limit(RLIMIT_CORE, 0);
  limit(RLIMIT_FSIZE, 1 << 20);
  limit(RLIMIT_NOFILE, 256);
  fuzz::enter_own_directory(directory.c_str(), true);
  fuzz::keep_reports_apart();
  fuzz::start_signals();
  fuzz::raise_guards();
  fuzz::Choices choices(seed);
  for (uint32_t i = 0; i < options.calls; ++i) {
    fuzz::make_call(choices, true);
    if (options.trace)
      fuzz::tell(fuzz::last_call());
  }
  _exit(0);
}

// Waits for the process; false when it makes no call for a minute. It is ended then, by a signal upon which
// the address sanitizer tells where it was.
bool await(pid_t child, int *status) {
  uint32_t calls = fuzz::calls_made();
  Clock::time_point since = Clock::now();
  while (waitpid(child, status, WNOHANG) == 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    if (fuzz::calls_made() != calls) {
      calls = fuzz::calls_made();
      since = Clock::now();
    } else if (Clock::now() - since > std::chrono::minutes(1)) {
      kill(child, SIGSEGV);
      std::this_thread::sleep_for(std::chrono::seconds(5));
      kill(child, SIGKILL);
      waitpid(child, status, 0);
      return false;
    }
  }
  return true;
}

// What is wrong with how a seed ended; empty for nothing.
std::string judge(bool in_time, int status) {
  if (!in_time)
    return "no answer for a minute";
  if (fuzz::may_end())
    return "";
  if (WIFSIGNALED(status))
    return "ended by signal " + std::to_string(WTERMSIG(status));
  return WEXITSTATUS(status) == 0 ? "" : "exit status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

int main(int count, char **words) {
  const Options options = options_of(count, words);
  const Clock::time_point end = Clock::now() + options.time;
  uint64_t seeds = 0;
  do {
    const uint64_t seed = options.first_seed + seeds;
    std::string directory = std::filesystem::temp_directory_path() / "fuzz.XXXXXX";
    if (mkdtemp(directory.data()) == nullptr)
      return perror("fuzz: no directory"), 1;
    const pid_t child = fork();
    if (child == 0)
      run(seed, options, directory);
    int status;
    const bool in_time = await(child, &status);
    fuzz::remove_own_directory(directory);
    if (const std::string wrong = judge(in_time, status); !wrong.empty()) {
      fprintf(stderr, "fuzz: %s in call %u of --seed %llu: %s\n", wrong.c_str(), fuzz::calls_made(),
              static_cast<unsigned long long>(seed), fuzz::last_call());
      return 1;
    }
    ++seeds;
  } while (!options.one_seed && Clock::now() < end);
  printf("%llu seeds, the last one %llu\n", static_cast<unsigned long long>(seeds),
         static_cast<unsigned long long>(options.first_seed + seeds - 1));
}
