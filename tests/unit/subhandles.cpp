// PXFGETSUBHANDLE and PXFCALLSUBHANDLE: procedures by handle.
#include "record_calls.h"

#include <array>
#include <utility>

namespace {

using Procedure = int32_t (*)(int32_t *);

int32_t calls = 0;
int32_t *last_argument = nullptr;

int32_t twice(int32_t *ival) {
  ++calls;
  last_argument = ival;
  *ival *= 2;
  return *ival + 1000;
}

int32_t negative(int32_t *) {
  return INT32_MIN;
}

int32_t sets_errno(int32_t *) {
  errno = EDOM;
  return 0;
}

// Where the call's IERROR stands, and what a procedure finds there.
int32_t *ierror_of_the_call = nullptr;
int32_t looks_at_ierror(int32_t *) {
  return *ierror_of_the_call;
}

// A procedure that calls another one by the handle it is given.
int32_t calls_another(int32_t *handle) {
  int32_t ival = 21;
  int32_t ierror = SENTINEL;
  const int32_t answer = pxfcallsubhandle_(handle, &ival, &ierror);
  return ierror == 0 ? answer : -1;
}

template <int32_t Number>
int32_t numbered(int32_t *ival) {
  return *ival + Number;
}

template <int32_t... Numbers>
std::array<Procedure, sizeof...(Numbers)> make_many(std::integer_sequence<int32_t, Numbers...>) {
  return {numbered<Numbers>...};
}

Outcome get_handle(Procedure procedure, int32_t *handle) {
  return reported_by(
      [&](int32_t *ierror) { pxfgetsubhandle_(reinterpret_cast<void (*)()>(procedure), handle, ierror); });
}

int32_t handle_of(Procedure procedure) {
  Guarded<int32_t> handle(SENTINEL);
  EXPECT_EQ(get_handle(procedure, &handle), succeeded());
  return handle;
}

int32_t call(int32_t handle, int32_t *ival) {
  int32_t answer = SENTINEL;
  EXPECT_EQ(reported_by([&](int32_t *ierror) { answer = pxfcallsubhandle_(&handle, ival, ierror); }),
            succeeded());
  return answer;
}

class Subhandles : public testing::Test {
protected:
  void SetUp() override {
    init_handle_table();
    calls = 0;
    last_argument = nullptr;
  }
  void TearDown() override { init_handle_table(); }

  void expect_refused(int32_t handle) {
    Guarded<int32_t> ival(SENTINEL);
    const int32_t former = handle;
    EXPECT_EQ(reported_by([&](int32_t *ierror) { pxfcallsubhandle_(&handle, &ival, ierror); }),
              refused(NO_SUCH_HANDLE))
        << former;
    EXPECT_EQ(handle, former);
    EXPECT_EQ(ival, SENTINEL) << former;
    EXPECT_EQ(calls, 0) << former;
  }
};

}  // namespace

TEST_F(Subhandles, ProcedureIsCalledWithTheAddressOfIval) {
  const int32_t handle = handle_of(twice);
  Guarded<int32_t> ival(21);
  EXPECT_EQ(call(handle, &ival), 1042);
  EXPECT_EQ(ival, 42);
  EXPECT_EQ(last_argument, &ival);
  EXPECT_EQ(call(handle, &ival), 1084);
  EXPECT_EQ(calls, 2);
}

TEST_F(Subhandles, AnswerIsTheProcedures) {
  int32_t ival = 0;
  EXPECT_EQ(call(handle_of(negative), &ival), INT32_MIN);
  EXPECT_EQ(call(handle_of(numbered<7>), &ival), 7);
}

TEST_F(Subhandles, WideIntegersArriveAndComeBackWhole) {
  const auto shifted = [](int64_t *ival) -> int64_t { return (*ival)++ << 8; };
  int64_t (*const procedure)(int64_t *) = shifted;
  int32_t handle = handle_of(reinterpret_cast<Procedure>(reinterpret_cast<void (*)()>(procedure)));
  int64_t ival = int64_t{1} << 40, answer = SENTINEL;
  EXPECT_EQ(reported_by([&](int32_t *ierror) { answer = pxfcallsubhandlei8_(&handle, &ival, ierror); }),
            succeeded());
  EXPECT_EQ(answer, int64_t{1} << 48);
  EXPECT_EQ(ival, (int64_t{1} << 40) + 1);
  handle = 0;
  EXPECT_EQ(reported_by([&](int32_t *ierror) { answer = pxfcallsubhandlei8_(&handle, &ival, ierror); }),
            refused(NO_SUCH_HANDLE));
  EXPECT_EQ(answer, 0);
  EXPECT_EQ(ival, (int64_t{1} << 40) + 1);
}

TEST_F(Subhandles, OneProcedureHasOneHandle) {
  const int32_t first = handle_of(twice);
  const int32_t second = handle_of(negative);
  EXPECT_NE(first, second);
  EXPECT_EQ(handle_of(twice), first);
  EXPECT_EQ(handle_of(negative), second);
}

TEST_F(Subhandles, HundredsOfProcedures) {
  const auto procedures = make_many(std::make_integer_sequence<int32_t, 600>());
  std::array<int32_t, 600> handles;
  for (size_t i = 0; i < procedures.size(); ++i)
    handles[i] = handle_of(procedures[i]);
  for (size_t i = 0; i < procedures.size(); ++i) {
    int32_t ival = 1000;
    EXPECT_EQ(call(handles[i], &ival), 1000 + static_cast<int32_t>(i));
    EXPECT_EQ(handle_of(procedures[i]), handles[i]);
  }
  if (sizeof(void *) > sizeof(int32_t)) {
    EXPECT_EQ(handles[0], 16);
    EXPECT_EQ(handles[239], 255);
    EXPECT_EQ(handles[240], 257);
    EXPECT_EQ(handles[495], 513);
  }
}

TEST_F(Subhandles, ProcedureMayCallAnother) {
  const int32_t outer = handle_of(calls_another);
  int32_t inner = handle_of(twice);
  EXPECT_EQ(call(outer, &inner), 1042);
}

TEST_F(Subhandles, IerrorIsSetWhenTheProcedureHasReturned) {
  const int32_t handle = handle_of(looks_at_ierror);
  int32_t ival = 0;
  int32_t ierror = SENTINEL;
  ierror_of_the_call = &ierror;
  EXPECT_EQ(pxfcallsubhandle_(&handle, &ival, &ierror), SENTINEL);
  EXPECT_EQ(ierror, 0);
}

TEST_F(Subhandles, ErrnoIsTheProceduresBusiness) {
  int32_t ival = 0;
  const int32_t handle = handle_of(sets_errno);
  EXPECT_EQ(reported_by([&](int32_t *ierror) { pxfcallsubhandle_(&handle, &ival, ierror); }),
            (Outcome{0, {EDOM, SENTINEL, {}}}));
}

TEST_F(Subhandles, UnknownHandlesAreRefused) {
  handle_of(twice);
  for (const int32_t handle : {0, 17, 255, 256, 257, 512, -1, -256, INT32_MAX, INT32_MIN})
    expect_refused(handle);
}

// They are the dispositions of a signal, not procedures.
TEST_F(Subhandles, ReservedHandlesAreRefused) {
  handle_of(twice);
  for (int32_t handle = 1; handle <= 15; ++handle) {
    expect_refused(handle);
    expect_refused(handle - 256);
  }
}

TEST_F(Subhandles, HandleOfARecordIsRefused) {
  const OwnedRecord record("stat");
  expect_refused(record);
}

TEST_F(Subhandles, ProcedureIsNotARecord) {
  const OwnedRecord record("stat");
  int32_t handle = handle_of(twice);
  int32_t value = SENTINEL;
  EXPECT_EQ(intget(handle, "st_size", &value), refused(NO_SUCH_HANDLE));
  EXPECT_EQ(release(&handle), refused(NO_SUCH_HANDLE));
  EXPECT_EQ(value, SENTINEL);
}

TEST_F(Subhandles, RecordsDoNotUseUpTheHandles) {
  const int32_t procedure = handle_of(twice);
  for (int i = 0; i < 10; ++i) {
    const OwnedRecord record("sigaction");
    EXPECT_EQ(intset(record, "sa_handler", procedure), succeeded());
  }
  int32_t ival = 1;
  EXPECT_EQ(call(procedure, &ival), 1002);
}
