// What runs when a program that holds the library starts and ends: the handle tables are prepared and given
// back, nothing else.
#include "captured_child.h"
#include "recorder.h"
#include "records/handles.h"

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <string>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int WORDS = 256;
constexpr int RESERVED = 15;

// Before any constructor: marks that only the library's constructor takes away. No instrumentation: a
// sanitizer may not be ready yet.
__attribute__((no_sanitize("address", "thread", "undefined"))) void spoil_tables() {
  for (const int word : {0, 14, 15, 254, 255}) {
    AllocatableHandles[word] = 1;
    StaticHandles[word] = 2;
  }
}
__attribute__((section(".preinit_array"), used)) void (*const before_constructors)() = spoil_tables;

struct Tables {
  uintptr_t allocatable[WORDS];
  uintptr_t statics[WORDS];
};

// A program's own constructor of the earliest priority behind the library's.
Tables seen_by_a_constructor;
__attribute__((constructor(102))) void look_at_tables() {
  std::copy_n(AllocatableHandles, WORDS, seen_by_a_constructor.allocatable);
  std::copy_n(StaticHandles, WORDS, seen_by_a_constructor.statics);
}

void expect_prepared(const Tables &tables) {
  for (int word = 0; word < WORDS; ++word) {
    EXPECT_EQ(tables.allocatable[word], 0U) << "word " << word;
    EXPECT_EQ(tables.statics[word], word < RESERVED ? UINTPTR_MAX : 0U) << "word " << word;
  }
}

Tables tables_now() {
  Tables tables;
  std::copy_n(AllocatableHandles, WORDS, tables.allocatable);
  std::copy_n(StaticHandles, WORDS, tables.statics);
  return tables;
}

// From now on every system call but write and exit kills the process.
void forbid_system_calls() {
  sock_filter rules[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_write, 2, 0),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_exit_group, 1, 0),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog program = {static_cast<unsigned short>(std::size(rules)), rules};
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
      prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0)
    _exit(1);
}

// The child's last record, looked up by the program's own destructors.
int32_t last_handle = 0;
char record;

void tell_whether_entered(const char *moment) {
  if (last_handle == 0)
    return;
  const bool entered = get_address_from_handle(last_handle, AllocatableHandles) == &record;
  const std::string line = std::string(moment) + (entered ? ": entered\n" : ": given back\n");
  [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, line.data(), line.size());
}

// Runs before the library's destructor.
__attribute__((destructor)) void at_the_programs_end() {
  tell_whether_entered("program");
}

#pragma GCC diagnostic push
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wprio-ctor-dtor"
#endif
// Runs behind the library's destructor; no program may do so but this one.
__attribute__((destructor(100))) void behind_the_library() {
  tell_whether_entered("library");
}
#pragma GCC diagnostic pop

}  // namespace

TEST(Load, TablesArePreparedBeforeMain) {
  expect_prepared(tables_now());
}

TEST(Load, TablesArePreparedBeforeTheProgramsConstructors) {
  expect_prepared(seen_by_a_constructor);
}

TEST(Load, NothingIsRecorded) {
  EXPECT_TRUE(recorded_statuses.empty());
  EXPECT_EQ(portlib_local_errno, 0);
}

// As many records as one block has slots, and one more, so that the last is in a block of its own.
TEST(Unload, BlocksAreGivenBackBehindTheProgramsDestructors) {
  const ChildReport child = run_in_child([] {
    for (int i = 0; i <= qxport::SLOTS_PER_BLOCK; ++i)
      last_handle = get_handle_from_alloc_address(&record);
    exit(0);
  });
  EXPECT_EQ(child.exit_code(), 0);
  EXPECT_EQ(child.out, "program: entered\nlibrary: given back\n");
}

TEST(InitHandleTable, PreparesBothTables) {
  AllocatableHandles[3] = 1;
  StaticHandles[3] = 0;
  StaticHandles[20] = 1;
  reset_error_state();
  EXPECT_EQ(init_handle_table(), 0);
  EXPECT_EQ(error_state(), untouched());
  expect_prepared(tables_now());
}

TEST(InitHandleTable, MakesNoSystemCall) {
  const ChildReport child = run_in_child([] {
    forbid_system_calls();
    const int32_t answer = init_handle_table();
    syscall(SYS_exit_group, answer == 0 ? 42 : 1);
  });
  EXPECT_EQ(child.exit_code(), 42) << "signal " << child.signal();
}

// The filter itself: a test that could not fail would prove nothing.
TEST(InitHandleTable, SystemCallsAreSeen) {
  const ChildReport child = run_in_child([] {
    forbid_system_calls();
    syscall(SYS_getppid);
  });
  EXPECT_EQ(child.signal(), SIGSYS);
}
