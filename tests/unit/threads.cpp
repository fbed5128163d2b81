// What the reference says of threads, outside the records: what they may do at once, what is one for the
// whole process, and where they take turns.
#include "file_search.h"
#include "outcome.h"
#include "pseudo_terminal.h"
#include "record_calls.h"
#include "together.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <grp.h>
#include <mutex>
#include <pwd.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int THREADS = 4;
constexpr int ROUNDS = 200;

// The work of several threads in rounds, of which only one at a time is under way.
void take_turns(const std::function<void(int thread, int round)> &piece) {
  std::mutex turn;
  do_together(THREADS, [&](int thread) {
    for (int round = 0; round < ROUNDS; ++round) {
      const std::lock_guard mine(turn);
      piece(thread, round);
    }
  });
}

std::string trimmed(const char *text, size_t size) {
  std::string answer(text, size);
  answer.erase(answer.find_last_not_of(' ') + 1);
  return answer;
}

std::string environment_value(const std::string &name) {
  char value[64];
  getenv_(name.data(), value, length_of_name(name), sizeof(value));
  return trimmed(value, sizeof(value));
}

std::string posix_environment_value(const std::string &name) {
  char value[64];
  const int32_t name_length = static_cast<int32_t>(name.size());
  int32_t length = 0, ierror = SENTINEL;
  pxfgetenv_(name.data(), &name_length, value, &length, &ierror, length_of_name(name), sizeof(value));
  return ierror == 0 ? std::string(value, static_cast<size_t>(length)) : "(error)";
}

}  // namespace

// --- The environment

TEST(Threads, ReadTheEnvironmentAtOnce) {
  setenv("QXPORT_THREADS", "a value", 1);
  do_together(THREADS, [](int) {
    for (int round = 0; round < ROUNDS; ++round) {
      EXPECT_EQ(environment_value("QXPORT_THREADS"), "a value");
      EXPECT_EQ(posix_environment_value("QXPORT_THREADS"), "a value");
    }
  });
}

TEST(Threads, ChangeTheEnvironmentInTurns) {
  take_turns([](int thread, int round) {
    const std::string name = "QXPORT_THREADS", value = std::to_string(thread * 1000 + round);
    const int32_t name_length = static_cast<int32_t>(name.size());
    const int32_t length = static_cast<int32_t>(value.size()), overwrite = 1;
    int32_t ierror = SENTINEL;
    pxfsetenv_(name.data(), &name_length, value.data(), &length, &overwrite, &ierror, length_of_name(name),
               length_of_name(value));
    EXPECT_EQ(ierror, 0);
    EXPECT_EQ(posix_environment_value(name), value);
  });
}

TEST(Threads, ScanTheEnvironmentInTurnsAndGoOnWithOneScan) {
  for (const char *name : {"QXSCAN_A", "QXSCAN_B", "QXSCAN_C"})
    setenv(name, "x", 1);
  const auto next = [](const std::string &wanted) {
    char name[32], value[32];
    scanenv_(wanted.data(), name, value, length_of_name(wanted), sizeof(name), sizeof(value));
    return trimmed(name, sizeof(name));
  };
  std::vector<std::string> found;
  EXPECT_EQ(next("="), "") << "which begins anew";
  for (int thread = 0; thread < 3; ++thread)
    std::thread([&] { found.push_back(next("QXSCAN_")); }).join();
  std::sort(found.begin(), found.end());
  EXPECT_EQ(found, (std::vector<std::string>{"QXSCAN_A", "QXSCAN_B", "QXSCAN_C"}));
  EXPECT_EQ(next("QXSCAN_"), "");
  take_turns([&](int, int) {
    EXPECT_EQ(next("="), "");
    EXPECT_NE(next("QXSCAN_"), "");
  });
}

// --- Files

TEST(Threads, HaveOneWorkingDirectory) {
  const TemporaryDirectory directory;
  const std::string path = std::filesystem::canonical(directory.path());
  const WorkingDirectory former("/");
  std::thread([&] { EXPECT_EQ(chdir_(path.data(), length_of_name(path)), 0); }).join();
  EXPECT_EQ(working_directory(), path);
  const int32_t ilen = 1;
  int32_t ierror = SENTINEL;
  std::thread([&] { pxfchdir_("/", &ilen, &ierror, 1); }).join();
  EXPECT_EQ(ierror, 0);
  EXPECT_EQ(working_directory(), "/");
}

TEST(Threads, FindAndDeleteFilesAtOnce) {
  const TemporaryDirectory directory;
  const WorkingDirectory inside(directory.path());
  for (int thread = 0; thread < THREADS; ++thread)
    std::filesystem::create_directory("d" + std::to_string(thread));
  directory.file("mine");
  do_together(THREADS, [&](int thread) {
    const std::string own = "d" + std::to_string(thread);
    for (int round = 0; round < 20; ++round) {
      const std::string name = own + "/f" + std::to_string(round);
      directory.file(name);
      char path[64];
      EXPECT_EQ(findfileqq_(name.data(), "QXPORT_NONE", path, length_of_name(name), 11, sizeof(path)),
                static_cast<int32_t>(name.size()));
      EXPECT_EQ(trimmed(path, sizeof(path)), name);
      const std::string pattern = own + "/*";
      EXPECT_EQ(delfilesqq_(pattern.data(), length_of_name(pattern)), 1);
      EXPECT_TRUE(exists("mine")) << "relative names mean what they meant";
    }
  });
}

TEST(Threads, EnumerateWithTheTwoRoutinesAtOnce) {
  const TemporaryDirectory one, two;
  for (const char *name : {"a1", "a2", "a3"})
    one.file(name);
  for (const char *name : {"b1", "b2"})
    two.file(name);
  const auto count = [](auto search) {
    int entries = 0;
    while (search->next() > 0)
      ++entries;
    return entries;
  };
  do_together({[&] {
                 for (int round = 0; round < ROUNDS; ++round)
                   EXPECT_EQ(count(std::make_unique<Search<Default>>(one / "a?")), 3);
               },
               [&] {
                 for (int round = 0; round < ROUNDS; ++round)
                   EXPECT_EQ(count(std::make_unique<Search<Wide>>(two / "b*")), 2);
               }});
}

// --- What is one a thread, and what is one for the process

// The sleeper's own signal, until it came while it slept.
TEST(Threads, SleepEachForItself) {
  struct sigaction action = {}, former;
  action.sa_handler = [](int) {};
  sigaction(SIGUSR1, &action, &former);
  std::atomic<bool> awake = false;
  std::thread sleeper([&] {
    const int32_t seconds = 100'000;
    sleep_(&seconds);
    awake = true;
  });
  EXPECT_EQ(environment_value("QXPORT_NO_SUCH_VARIABLE"), "") << "this thread goes on";
  while (!awake) {
    pthread_kill(sleeper.native_handle(), SIGUSR1);
    usleep(1000);
  }
  sleeper.join();
  sigaction(SIGUSR1, &former, nullptr);
}

TEST(Threads, HaveSignalMasksOfTheirOwn) {
  const OwnedRecord set("sigset");
  const int32_t handle = set, signal = SIGUSR2, none = 0, how = SIG_BLOCK;
  int32_t ierror = SENTINEL;
  pxfsigaddset_(&handle, &signal, &ierror);
  const auto blocked = [] {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    return sigismember(&mask, SIGUSR2) == 1;
  };
  std::atomic<int> stage = 0;
  do_together({[&] {
                 pxfsigprocmask_(&how, &handle, &none, &ierror);
                 EXPECT_EQ(ierror, 0);
                 EXPECT_TRUE(blocked());
                 stage = 1;
               },
               [&] {
                 while (stage == 0)
                   std::this_thread::yield();
                 EXPECT_FALSE(blocked());
               }});
  EXPECT_FALSE(blocked());
}

TEST(Threads, StayBehindInTheParentOfAFork) {
  std::atomic<bool> over = false;
  std::atomic<unsigned> steps = 0;
  std::thread other([&] {
    while (!over)
      ++steps;
  });
  while (steps == 0)
    std::this_thread::yield();
  int32_t pid = SENTINEL, ierror = SENTINEL;
  pxffork_(&pid, &ierror);
  if (pid == 0) {
    const unsigned before = steps;
    usleep(20'000);
    _exit(steps == before ? 42 : 1);
  }
  EXPECT_EQ(ierror, 0);
  int status = 0;
  EXPECT_EQ(waitpid(pid, &status, 0), pid);
  over = true;
  other.join();
  EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, 42);
}

// The run-time's own, which the tests' recorder stands before.
TEST(Threads, RecordOneStatusForTheProcess) {
  const auto load = reinterpret_cast<decltype(&for_errsns_load)>(dlsym(RTLD_NEXT, "for_errsns_load"));
  ASSERT_NE(load, nullptr);
  struct Values {
    int32_t io, number, status, unit, condition;
  };
  const auto read = [] {
    Values values;
    errsns_(&values.io, &values.number, &values.status, &values.unit, &values.condition);
    return values;
  };
  std::thread([&] { load(1, 2, 3, 4, 5); }).join();
  const Values seen = read();
  EXPECT_EQ(seen.io, 1);
  EXPECT_EQ(seen.number, 2);
  EXPECT_EQ(seen.status, 3);
  EXPECT_EQ(seen.unit, 4);
  EXPECT_EQ(seen.condition, 5);
  load(0, 0, 0, 0, 0);
  do_together(THREADS, [&](int thread) {
    for (int round = 0; round < ROUNDS; ++round) {
      load(0, thread, thread, thread, thread);
      const Values values = read();
      EXPECT_EQ(values.io, 0);
      for (const int32_t value : {values.number, values.status, values.unit, values.condition}) {
        EXPECT_GE(value, 0);
        EXPECT_LT(value, THREADS);
      }
    }
  });
}

TEST(Threads, StoreTheLastFailureInOneCell) {
  do_together(THREADS, [](int thread) {
    for (int round = 0; round < ROUNDS; ++round) {
      errno = 0;
      const int32_t answer = thread % 2 == 0 ? unlink_("/no such file", 13) : access_("/", "q", 1, 1);
      const int32_t expected = thread % 2 == 0 ? ENOENT : EINVAL;
      EXPECT_EQ(answer, expected);
      EXPECT_EQ(getlasterror_(), expected) << "errno is the thread's own";
      EXPECT_EQ(getlasterrorqq_(), expected);
      const int32_t last = ierrno_();
      EXPECT_TRUE(last == ENOENT || last == EINVAL) << last;
    }
  });
}

// --- What the system keeps in one place

TEST(Threads, AskForTheLocalTimeInTurns) {
  take_turns([](int thread, int) {
    const int32_t seconds = (thread + 1) * 86400 * 366;
    int32_t parts[9] = {}, ierror = SENTINEL;
    pxflocaltime_(&seconds, parts, &ierror);
    EXPECT_EQ(ierror, 0);
    EXPECT_EQ(parts[5], 1971 + thread);
  });
}

TEST(Threads, AskForTheNamesOfTerminalsInTurns) {
  const PseudoTerminal terminals[THREADS];
  take_turns([&](int thread, int) {
    const int32_t descriptor = terminals[thread].descriptor();
    char name[64];
    int32_t length = 0, ierror = SENTINEL;
    pxfttyname_(&descriptor, name, &length, &ierror, sizeof(name));
    EXPECT_EQ(ierror, 0);
    EXPECT_EQ(trimmed(name, sizeof(name)), terminals[thread].name());
    pxfctermid_(name, &length, &ierror, sizeof(name));
    EXPECT_EQ(ierror, 0);
    EXPECT_EQ(trimmed(name, sizeof(name)), "/dev/tty");
  });
}

TEST(Threads, AskForTheLoginNameInTurns) {
  char expected[64];
  getlog_(expected, sizeof(expected));
  take_turns([&](int, int) {
    char name[64];
    int32_t length = 0, ierror = SENTINEL;
    getlog_(name, sizeof(name));
    EXPECT_EQ(trimmed(name, sizeof(name)), trimmed(expected, sizeof(expected)));
    pxfgetlogin_(name, &length, &ierror, sizeof(name));
    EXPECT_EQ(trimmed(name, sizeof(name)), trimmed(expected, sizeof(expected)));
  });
}

TEST(Threads, LookUpUsersAndGroupsInTurns) {
  const OwnedRecord records[THREADS] = {OwnedRecord("passwd"), OwnedRecord("passwd"), OwnedRecord("group"),
                                        OwnedRecord("group")};
  take_turns([&](int thread, int) {
    const int32_t id = 0, handle = records[thread];
    int32_t ierror = 0;
    if (thread < 2) {
      pxfgetpwuid_(&id, &handle, &ierror);
      EXPECT_EQ(contents_of(handle).at("pw_name"), "root");
    } else {
      pxfgetgrgid_(&id, &handle, &ierror);
      EXPECT_EQ(contents_of(handle).at("gr_name"), "root");
    }
    EXPECT_EQ(ierror, 0);
  });
}
