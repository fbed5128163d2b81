// The routines for processes, environment and signals with each of their allocations failing, and what they
// keep.
#include "failing_allocations.h"

#include "environment.h"
#include "posix/signals.h"
#include "record_calls.h"

#include <csignal>
#include <unistd.h>

namespace {

const Outcome NO_MEMORY = refused(ENOMEM, ENOMEM);
const Outcome NO_FILE = refused(ENOENT, ENOENT);

// No program, so each call comes back.
constexpr const char PATH[] = "/nowhere/at/all";
constexpr qxport_charlen PATH_LENGTH = sizeof(PATH) - 1;

struct Vectors {
  int32_t zero = 0, three = 3, two = 2;
  int32_t lengths[3] = {0, 8, 1};
  char argv[25] = "first   second  third   ";
  char env[17] = "A=1     B=2     ";
};

Outcome execv_of(const Vectors &v) {
  return reported_by([&](int32_t *ierror) {
    pxfexecv_(PATH, &v.zero, v.argv, v.lengths, &v.three, ierror, PATH_LENGTH, 8);
  });
}
Outcome execvp_of(const Vectors &v) {
  return reported_by([&](int32_t *ierror) {
    pxfexecvp_(PATH, &v.zero, v.argv, v.lengths, &v.three, ierror, PATH_LENGTH, 8);
  });
}
Outcome execve_of(const Vectors &v) {
  return reported_by([&](int32_t *ierror) {
    pxfexecve_(PATH, &v.zero, v.argv, v.lengths, &v.three, v.env, v.lengths, &v.two, ierror, PATH_LENGTH, 8,
               8);
  });
}

// Every failure is ENOMEM and gives back all that was allocated before it.
void expect_exec(Outcome (*exec)(const Vectors &), size_t allocations) {
  const Vectors vectors;
  Outcome outcome;
  const size_t failed = fail_each_allocation([&] { outcome = exec(vectors); },
                                             [&](size_t n) { EXPECT_EQ(outcome, NO_MEMORY) << n; });
  EXPECT_EQ(failed, allocations);
  EXPECT_EQ(outcome, NO_FILE);
  for (size_t n = 0; n <= allocations; ++n)
    EXPECT_EQ(heap_growth([&] {
                const FailingAllocation failing(n);
                exec(vectors);
              }),
              0u)
        << n;
}

TEST(Exec, FailureMidwayIs12AndGivesAllBack) {
  expect_exec(execv_of, 5);
  expect_exec(execvp_of, 5);
  expect_exec(execve_of, 8);
}

TEST(Exec, AsksForWhatTheStringsNeed) {
  const Vectors vectors;
  const FailingAllocation counting(0);
  execve_of(vectors);
  const size_t expected[] = {PATH_LENGTH + 1, 4 * sizeof(char *), 6, 9, 2, 3 * sizeof(char *), 4, 9};
  for (size_t n = 0; n < std::size(expected); ++n)
    EXPECT_EQ(counting.requested(n + 1), expected[n]) << n + 1;
}

TEST(Exec, RefusedLengthsNeedNoHeap) {
  Vectors vectors;
  vectors.lengths[1] = 9;
  const FailingAllocation counting(1);
  EXPECT_EQ(execv_of(vectors), refused(EINVAL));
  EXPECT_EQ(execve_of(vectors), refused_silently(-1));
  EXPECT_EQ(counting.allocations(), 0u);
}

TEST(Getenv, NoMemoryIs12AndABlankValue) {
  const Environment environment({"NAME=value"});
  const int32_t lenname = 0;
  Outcome outcome;
  Character value(8);
  Guarded<int32_t> lenval(SENTINEL);
  const auto get = [&] {
    outcome = reported_by(
        [&](int32_t *ierror) { pxfgetenv_("NAME", &lenname, value.data(), &lenval, ierror, 4, 8); });
  };
  EXPECT_EQ(fail_each_allocation(get,
                                 [&](size_t) {
                                   EXPECT_EQ(outcome, NO_MEMORY);
                                   EXPECT_EQ(value.text(), "        ");
                                   EXPECT_EQ(lenval, SENTINEL);
                                 }),
            1u);
  EXPECT_EQ(outcome, refused(0, 0));
  EXPECT_EQ(value.text(), "value   ");
  EXPECT_EQ(heap_growth(get), 0u);
}

TEST(Setenv, NoMemoryIs12AndSetsNothing) {
  clearenv();
  const int32_t zero = 0, one = 1;
  Outcome outcome;
  const auto set = [&] {
    outcome =
        reported_by([&](int32_t *ierror) { pxfsetenv_("NAME", &zero, "value", &zero, &one, ierror, 4, 5); });
  };
  EXPECT_EQ(fail_each_allocation(set,
                                 [&](size_t) {
                                   EXPECT_EQ(outcome, NO_MEMORY);
                                   EXPECT_EQ(getenv("NAME"), nullptr);
                                 }),
            2u);
  EXPECT_EQ(outcome, succeeded());
  EXPECT_STREQ(getenv("NAME"), "value");
  for (const size_t n : {0u, 1u, 2u})
    EXPECT_EQ(heap_growth([&] {
                const FailingAllocation failing(n);
                set();
              }),
              0u)
        << n;
  clearenv();
}

Outcome clear() {
  return reported_by([](int32_t *ierror) { pxfclearenv_(ierror); });
}

TEST(Clearenv, NoMemoryIs12AndStopsThere) {
  const std::string long_name(200, 'N');
  Environment environment({});
  Outcome outcome;
  std::vector<int> left;
  const auto clear_three = [&] {
    environment.set({"A=1", long_name + "=2", "C=3"});
    outcome = clear();
    left.push_back((getenv("A") != nullptr) + (getenv(long_name.c_str()) != nullptr) +
                   (getenv("C") != nullptr));
  };
  EXPECT_EQ(fail_each_allocation(clear_three, [&](size_t n) { EXPECT_EQ(outcome, NO_MEMORY) << n; }), 2u);
  EXPECT_EQ(outcome, succeeded());
  EXPECT_EQ(left, (std::vector<int>{3, 2, 0}));
}

TEST(Clearenv, AsksFor101BytesAndThenForLongerNames) {
  const Environment environment({std::string(100, 'N') + "=1", std::string(101, 'N') + "=2",
                                 std::string(100, 'M') + "=3", std::string(300, 'N')});
  const FailingAllocation counting(0);
  clear();
  EXPECT_EQ(counting.allocations(), 3u);
  EXPECT_EQ(counting.requested(1), 101u);
  EXPECT_EQ(counting.requested(2), 102u);
  EXPECT_EQ(counting.requested(3), 301u);
}

TEST(Clearenv, GivesItsBuffersBack) {
  for (const size_t n : {0u, 1u, 2u}) {
    EXPECT_EQ(heap_growth([&] {
                char short_entry[] = "A=1";
                std::string long_entry(200, 'N');
                char *entries[] = {short_entry, long_entry.data(), nullptr};
                char **former = std::exchange(environ, entries);
                {
                  const FailingAllocation failing(n);
                  int32_t ierror;
                  pxfclearenv_(&ierror);
                }
                environ = former;
              }),
              0u)
        << n;
  }
}

// Signals whose old handler needs a handle for which there is no memory.
class OldHandler : public testing::Test {
protected:
  ~OldHandler() override {
    signal(SIGUSR1, SIG_DFL);
    init_handle_table();
  }

  // Enters procedures that are none until the next needs memory.
  static void fill_table() {
    for (uintptr_t address = 1; address <= 10000; ++address) {
      const FailingAllocation failing(1);
      if (get_handle_from_static_address(reinterpret_cast<void *>(address * 4096)) == 0)
        return;
    }
    FAIL() << "the table never fills";
  }

  // What the call for SIGUSR1 leaves without memory, with a reason that is no usual one.
  static Outcome without_memory(int32_t jsigact, int32_t josigact) {
    const int32_t isig = SIGUSR1;
    const FailingAllocation failing(1, ERRNO_SENTINEL - 1);
    return reported_by([&](int32_t *ierror) { pxfsigaction_(&isig, &jsigact, &josigact, ierror); });
  }
};

void native_handler(int) {}
void procedure(int32_t *) {}

TEST_F(OldHandler, NativeOneIs127WithErrnoAsTheHeapLeftIt) {
  init_handle_table();
  signal(SIGUSR1, native_handler);
  OwnedRecord record("sigaction");
  record_as<qxport::SigactionRecord>(record).sa_handler_ = 77;
  fill_table();
  EXPECT_EQ(without_memory(0, record), refused(NO_SUCH_HANDLE, ERRNO_SENTINEL - 1));
  EXPECT_EQ(record_as<qxport::SigactionRecord>(record).sa_handler_, 77);
}

TEST_F(OldHandler, FortranOneIs127WithEnomem) {
  init_handle_table();
  int32_t action = 0, isig = SIGUSR1, none = 0, ierror = -1;
  {
    const OwnedRecord record("sigaction");
    action = record;
    record_as<qxport::SigactionRecord>(action).sa_handler_ =
        static_cast<uint32_t>(get_handle_from_static_address(reinterpret_cast<void *>(procedure)));
    pxfsigaction_(&isig, &action, &none, &ierror);
    ASSERT_EQ(ierror, 0);
  }
  init_handle_table();  // which forgets the procedure
  const OwnedRecord record("sigaction");
  record_as<qxport::SigactionRecord>(record).sa_handler_ = 77;
  fill_table();
  EXPECT_EQ(without_memory(0, record), refused(NO_SUCH_HANDLE, ENOMEM));
  EXPECT_EQ(record_as<qxport::SigactionRecord>(record).sa_handler_, 77);
}

// The new action is in force by then, and the old one's flags and mask are stored.
TEST_F(OldHandler, NewActionStaysInstalled) {
  init_handle_table();
  struct sigaction former = {};
  former.sa_handler = native_handler;
  former.sa_flags = SA_NODEFER;
  sigaddset(&former.sa_mask, SIGHUP);
  ASSERT_EQ(sigaction(SIGUSR1, &former, nullptr), 0);
  const OwnedRecord action("sigaction"), old("sigaction"), mask("sigset");
  record_as<qxport::SigactionRecord>(action).sa_handler_ = 1;
  auto &fields = record_as<qxport::SigactionRecord>(old);
  fields.sa_handler_ = 77;
  fields.sa_mask = mask;
  fill_table();
  EXPECT_EQ(without_memory(action, old), refused(NO_SUCH_HANDLE, ERRNO_SENTINEL - 1));
  EXPECT_EQ(fields.sa_handler_, 77);
  EXPECT_EQ(fields.sa_flags, SA_NODEFER);
  EXPECT_EQ(record_as<qxport::SigsetRecord>(mask).mask, 1U << (SIGHUP - 1));
  struct sigaction now;
  ASSERT_EQ(sigaction(SIGUSR1, nullptr, &now), 0);
  EXPECT_EQ(now.sa_handler, SIG_IGN);
}

TEST(Signals, AllElseNeedsNoHeap) {
  const OwnedRecord action("sigaction"), set("sigset"), used("tms"), names("utsname");
  get_handle_from_static_address(reinterpret_cast<void *>(posixlib_fortran_wrapper));
  const int32_t isig = SIGUSR1, zero = 0, jaction = action, jset = set, jtms = used, jnames = names;
  const int32_t block = SIG_BLOCK, pid = getpid();
  int32_t a, b, ierror, groups[1];
  signal(SIGUSR1, native_handler);
  const FailingAllocation failing(1);
  pxfsigaction_(&isig, &jaction, &jaction, &ierror);
  EXPECT_EQ(ierror, 0);
  pxfsigaction_(&isig, &jaction, &zero, &ierror);
  EXPECT_EQ(ierror, 0);
  pxfsigaddset_(&jset, &zero, &ierror);
  pxfsigemptyset_(&jset, &ierror);
  pxfsigprocmask_(&block, &jset, &jset, &ierror);
  pxfsigpending_(&jset, &ierror);
  pxfkill_(&pid, &zero, &ierror);
  pxftimes_(&jtms, &a, &ierror);
  pxfuname_(&jnames, &ierror);
  pxfgetpid_(&a, &ierror);
  pxfgetgroups_(&zero, groups, &b, &ierror);
  pxftime_(&a, &ierror);
  EXPECT_EQ(failing.allocations(), 0u);
  signal(SIGUSR1, SIG_DFL);
}

}  // namespace
