// The numbered messages and the report of a mathematical error.
#include "frame/messages.h"

#include "captured_child.h"
#include "recorder.h"

#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace {

constexpr int32_t FIRST_CODE = 1000;
constexpr const char *TEXTS[10] = {
    " ",
    "Input parameters contain invalid parameter address",
    "Logical unit number is invalid or not open.",
    "An intermediate value exceeds the available range",
    "Only signal KILL (9) is supported on Windows* OS",
    "Invalid seek was performed. Check errno",
    "Output was truncated, buffer provided was too small",
    "Input value was invalid",
    "Portability function 'ALARM' can't work without 'lpthread' library",
    " ",
};
constexpr const char *MATH_TEXTS[7] = {
    "Unknown error",
    "Domain error",
    "Singularity error",
    "Overflow error",
    "Underflow error",
    "Total loss of precision",
    "Partial loss of precision",
};

std::string line(char kind, int32_t code) {
  return std::string("*** ") + kind + " - " + std::to_string(code) + " - " + TEXTS[code - FIRST_CODE] + "\n";
}

void standard_error_to_a_full_device() {
  dup2(open("/dev/full", O_WRONLY), STDERR_FILENO);
}

// One call of MATHERRQQ: its arguments behind the call and the line it printed.
struct MathReport {
  int32_t type;
  int16_t answer;
  std::string printed;
};

MathReport report(const char *name, int16_t length, int32_t type, qxport_charlen hidden_length) {
  const int16_t given_length = length;
  int32_t types[3] = {SENTINEL, type, SENTINEL};
  int16_t answers[3] = {0x1234, 0x1234, 0x1234};
  reset_error_state();
  testing::internal::CaptureStdout();
  matherrqq_(name, &length, &types[1], &answers[1], hidden_length);
  const int error = errno;
  const std::string printed = testing::internal::GetCapturedStdout();
  errno = error;
  EXPECT_EQ(length, given_length);
  for (const int i : {0, 2}) {
    EXPECT_EQ(types[i], SENTINEL);
    EXPECT_EQ(answers[i], 0x1234) << "RETVAL has 16 bits";
  }
  return {types[1], answers[1], printed};
}

MathReport report(const std::string &name, int32_t type) {
  return report(name.data(), static_cast<int16_t>(name.size()), type,
                static_cast<qxport_charlen>(name.size()));
}

}  // namespace

TEST(ErrArray, TextsOfTheCodes) {
  static_assert(sizeof(err_array) == 12 * sizeof(char *));
  for (int i = 0; i < 10; ++i)
    EXPECT_STREQ(err_array[i], TEXTS[i]) << FIRST_CODE + i;
}

TEST(ErrArray, LastTwoEntriesAreNull) {
  EXPECT_EQ(err_array[10], nullptr);
  EXPECT_EQ(err_array[11], nullptr);
}

TEST(ErrMesArr, TextsOfTheTypes) {
  static_assert(sizeof(ErrMesArr) == 8 * sizeof(char *));
  for (int i = 0; i < 7; ++i)
    EXPECT_STREQ(ErrMesArr[i], MATH_TEXTS[i]) << i;
}

TEST(ErrMesArr, NullEndsIt) {
  EXPECT_EQ(ErrMesArr[7], nullptr);
}

TEST(ZeltaLibWarn, LineCountAndErrno) {
  for (int32_t code = FIRST_CODE; code < FIRST_CODE + 10; ++code) {
    reset_error_state();
    testing::internal::CaptureStderr();
    const int32_t count = _zelta_lib_warn(code);
    const ErrorState state = error_state();
    const std::string written = testing::internal::GetCapturedStderr();
    EXPECT_EQ(written, line('W', code));
    EXPECT_EQ(count, static_cast<int32_t>(line('W', code).size()));
    EXPECT_EQ(state, (ErrorState{code, SENTINEL, {}}));
  }
}

TEST(ZeltaLibWarn, NothingOnStandardOutput) {
  const ChildReport child = run_in_child([] {
    _zelta_lib_warn(1008);
    fflush(stdout);
  });
  EXPECT_EQ(child.exit_code(), CAME_BACK);
  EXPECT_EQ(child.out, "");
  EXPECT_EQ(child.err, line('W', 1008));
}

TEST(ZeltaLibWarn, FailedWriteIsANegativeCount) {
  const ChildReport child = run_in_child([] {
    standard_error_to_a_full_device();
    _exit(_zelta_lib_warn(1005) < 0 ? 1 : 2);
  });
  EXPECT_EQ(child.exit_code(), 1);
}

TEST(ZeltaLibErr, Code1008EndsWithStatus240) {
  const ChildReport child = run_in_child([] { _zelta_lib_err(1008); });
  EXPECT_EQ(child.exit_code(), 240);
  EXPECT_EQ(child.err, "*** E - 1008 - Portability function 'ALARM' can't work without 'lpthread' library\n");
  EXPECT_EQ(child.out, "");
}

TEST(ZeltaLibErr, StatusIsTheLowEightBitsOfTheCode) {
  for (int32_t code = FIRST_CODE; code < FIRST_CODE + 10; ++code) {
    const ChildReport child = run_in_child([code] { _zelta_lib_err(code); });
    EXPECT_EQ(child.exit_code(), code & 0xff);
    EXPECT_EQ(child.err, line('E', code));
  }
}

TEST(ZeltaLibErr, EndsTheProcessInTheOrdinaryWay) {
  const ChildReport child = run_in_child([] {
    atexit([] { printf("errno %d\n", errno); });
    printf("buffered\n");
    _zelta_lib_err(1002);
  });
  EXPECT_EQ(child.exit_code(), 234);
  EXPECT_EQ(child.out, "buffered\nerrno 1002\n");
}

TEST(ZeltaLibErr, StatusStaysWhereTheLineCannotBeWritten) {
  const ChildReport child = run_in_child([] {
    standard_error_to_a_full_device();
    _zelta_lib_err(1008);
  });
  EXPECT_EQ(child.exit_code(), 240);
}

TEST(Matherrqq, TypesOneToSix) {
  for (int32_t type = 1; type <= 6; ++type) {
    const MathReport answer = report("EXP", type);
    EXPECT_EQ(answer.printed, std::string("EXP: ") + MATH_TEXTS[type] + "\n");
    EXPECT_EQ(answer.type, type);
    EXPECT_EQ(answer.answer, 0);
  }
}

TEST(Matherrqq, Type3IsOverflow) {
  EXPECT_EQ(report("EXP", 3).printed, "EXP: Overflow error\n");
}

TEST(Matherrqq, OtherTypesAreUnknownAndBecome0) {
  for (const int32_t type : {7, 0, -1, 8, 256 + 3, INT_MAX, INT_MIN}) {
    const MathReport answer = report("SQRT", type);
    EXPECT_EQ(answer.printed, "SQRT: Unknown error\n") << type;
    EXPECT_EQ(answer.type, 0) << type;
    EXPECT_EQ(answer.answer, 0) << type;
  }
}

TEST(Matherrqq, TrailingBlanksOfTheNameGo) {
  EXPECT_EQ(report("LOG   ", 1).printed, "LOG: Domain error\n");
  EXPECT_EQ(report(" LOG 10 ", 1).printed, " LOG 10: Domain error\n");
}

TEST(Matherrqq, NamelenCountsNotTheHiddenLength) {
  EXPECT_EQ(report("COSINE", 3, 1, 6).printed, "COS: Domain error\n");
  EXPECT_EQ(report("COSINE", 6, 1, 3).printed, "COSINE: Domain error\n");
  EXPECT_EQ(report("COSINE", 3, 1, 0).printed, "COS: Domain error\n");
  EXPECT_EQ(report("COSINE", 3, 1, -1).printed, "COS: Domain error\n");
}

TEST(Matherrqq, NamelenOfZeroOrLessIsAnEmptyName) {
  for (const int16_t length : {int16_t{0}, int16_t{-1}, int16_t{INT16_MIN}})
    EXPECT_EQ(report("COS", length, 1, 3).printed, ": Domain error\n") << length;
}

TEST(Matherrqq, LongestName) {
  const std::string name(INT16_MAX, 'x');
  EXPECT_EQ(report(name, 5).printed, name + ": Total loss of precision\n");
}

TEST(Matherrqq, NulEndsTheName) {
  EXPECT_EQ(report(std::string("A\0B", 3), 4).printed, "A: Underflow error\n");
}

TEST(Matherrqq, NameIsNoFormat) {
  EXPECT_EQ(report("%s%n%d%%", 2).printed, "%s%n%d%%: Singularity error\n");
}

TEST(Matherrqq, NullNamePrintsNothing) {
  const MathReport answer = report(nullptr, 3, 7, 3);
  EXPECT_EQ(error_state(), (ErrorState{EINVAL, SENTINEL, {EINVAL}}));
  EXPECT_EQ(answer.printed, "");
  EXPECT_EQ(answer.type, 7) << "a type that was not looked at";
  EXPECT_EQ(answer.answer, 0);
}

TEST(Matherrqq, NothingIsRecorded) {
  report("EXP", 3);
  report("EXP", 7);
  EXPECT_TRUE(recorded_statuses.empty());
  EXPECT_EQ(portlib_local_errno, SENTINEL);
}

TEST(Matherrqq, NameStays) {
  Character name("EXP  ");
  report(name.data(), 5, 6, name.length());
  EXPECT_EQ(name.text(), "EXP  ");
}

TEST(Matherrqq, LineIsWrittenAtOnceOnStandardOutput) {
  const ChildReport child = run_in_child([] {
    const int16_t length = 3;
    int32_t type = 6;
    int16_t answer;
    matherrqq_("EXP", &length, &type, &answer, 3);
    _exit(0);
  });
  EXPECT_EQ(child.out, "EXP: Partial loss of precision\n");
  EXPECT_EQ(child.err, "");
}
