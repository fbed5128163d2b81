// The Unix-style character and position routines on real descriptors: files, pipes, and what is none of them.
#include "outcome.h"

#include "contract/services.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int32_t UNIT = 40;

// Unit 40 on a descriptor, until the end of the scope.
class Unit {
public:
  Unit(int fd, const std::string &access) {
    EXPECT_EQ(for_fdopen(fd, UNIT, access.data(), static_cast<intptr_t>(access.size())), 0);
    close(fd);
  }
  Unit(const std::string &path, int flags, const std::string &access)
      : Unit(open(path.c_str(), flags | O_CLOEXEC), access) {}
  ~Unit() { close(descriptor()); }

  int descriptor() const { return __msportlib_d_gethandle(UNIT, nullptr, nullptr); }
};

// In the library's own cell only.
ErrorState told(int32_t number) {
  return {ERRNO_SENTINEL, number, {}};
}

std::string next_character() {
  Character ch(1);
  EXPECT_EQ(outcome_of([&] { return fgetc_(&UNIT, ch.data(), 1); }), succeeded());
  return ch.text();
}

Outcome sought(int64_t offset, int32_t origin) {
  return outcome_of([&] { return fseeki8_(&UNIT, &offset, &origin); });
}

Outcome sought_with_32_bits(int32_t offset, int32_t origin) {
  return outcome_of([&] { return fseek_(&UNIT, &offset, &origin); });
}

TEST(UnitFiles, EveryByteComesBack) {
  const TemporaryDirectory directory;
  const Unit unit(directory.file("bytes"), O_RDWR, "r+");
  for (int byte = 0; byte < 256; ++byte) {
    const char ch = static_cast<char>(byte);
    EXPECT_EQ(outcome_of([&] { return fputc_(&UNIT, &ch, 1); }), succeeded());
  }
  EXPECT_EQ(sought_with_32_bits(0, SEEK_SET), (Outcome{0, told(0)}));
  for (int byte = 0; byte < 256; ++byte)
    EXPECT_EQ(next_character(), std::string(1, static_cast<char>(byte)));
  Character ch(1);
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ(outcome_of([&] { return fgetc_(&UNIT, ch.data(), 1); }), (Outcome{-1, untouched()}));
  EXPECT_EQ(ch.text(), "#");
}

TEST(UnitFiles, TheThreeOrigins) {
  const TemporaryDirectory directory;
  const Unit unit(directory.file("digits", "0123456789"), O_RDONLY, "r");
  EXPECT_EQ(sought_with_32_bits(3, SEEK_SET), (Outcome{0, told(0)}));
  EXPECT_EQ(next_character(), "3");
  EXPECT_EQ(sought_with_32_bits(2, SEEK_CUR), (Outcome{0, told(0)}));
  EXPECT_EQ(next_character(), "6");
  EXPECT_EQ(sought_with_32_bits(-1, SEEK_END), (Outcome{0, told(0)}));
  EXPECT_EQ(next_character(), "9");
  EXPECT_EQ(ftell_(&UNIT), 10);
}

TEST(UnitFiles, ARefusedSeekMovesNothingAndASuccessBehindItTellsThat) {
  const TemporaryDirectory directory;
  const Unit unit(directory.file("digits", "0123456789"), O_RDONLY, "r");
  EXPECT_EQ(sought_with_32_bits(4, SEEK_SET).answer, 0);
  for (const auto &[offset, origin] :
       {std::pair{-1, SEEK_SET}, {-5, SEEK_CUR}, {-11, SEEK_END}, {INT32_MIN, SEEK_CUR}, {0, 3}, {0, -1}}) {
    Outcome outcome = sought_with_32_bits(offset, origin);
    EXPECT_EQ(outcome.answer, -EINVAL);
    EXPECT_EQ(outcome.state.local, -EINVAL);
    EXPECT_EQ(outcome.state.recorded, std::vector<int32_t>());
    EXPECT_EQ(getpos_(&UNIT), 4);
  }
  EXPECT_EQ(ierrno_(), -EINVAL);
  EXPECT_EQ(sought(0, SEEK_CUR), (Outcome{0, told(0)}));
  EXPECT_EQ(ierrno_(), 0);
}

// A sparse file: no block of the disk before its last byte.
TEST(UnitFiles, PositionsBeyond4GiB) {
  const TemporaryDirectory directory;
  const Unit unit(directory.file("sparse"), O_RDWR, "r+");
  constexpr int64_t PLACES[] = {0x7FFFFFFF, 0x80000000, 0xFFFFFFF7, 0x100000000, 0x100000005, 0x234567890};
  for (const int64_t place : PLACES) {
    EXPECT_EQ(sought(place, SEEK_SET), (Outcome{0, told(0)}));
    int64_t whole = 0;
    EXPECT_EQ(state_after([&] { whole = ftelli8_(&UNIT); }), untouched());
    EXPECT_EQ(whole, place);
    EXPECT_EQ(getposi8_(&UNIT), place);
    EXPECT_EQ(outcome_of([&] { return ftell_(&UNIT); }), (Outcome{static_cast<int32_t>(place), untouched()}));
    EXPECT_EQ(getpos_(&UNIT), static_cast<int32_t>(place));
    EXPECT_EQ(fputc_(&UNIT, "x", 1), 0);
    EXPECT_EQ(getposi8_(&UNIT), place + 1);
  }
  EXPECT_EQ(sought(-1, SEEK_END), (Outcome{0, told(0)}));
  EXPECT_EQ(next_character(), "x");
  EXPECT_EQ(sought(0x100000005 - 0x234567891, SEEK_CUR), (Outcome{0, told(0)}));
  EXPECT_EQ(next_character(), "x");
  EXPECT_EQ(sought_with_32_bits(INT32_MIN, SEEK_CUR), (Outcome{0, told(0)}));
  EXPECT_EQ(getposi8_(&UNIT), 0x80000006);
}

TEST(UnitFiles, CharactersMoveOneWayWhereTheAccessSaysSo) {
  const TemporaryDirectory directory;
  const std::string path = directory.file("file", "ab");
  Character ch(1);
  {
    const Unit unit(path, O_RDONLY, "r");
    EXPECT_EQ(outcome_of([&] { return fputc_(&UNIT, "x", 1); }), reported(EINVAL));
    EXPECT_EQ(ierrno_(), EINVAL);
    EXPECT_EQ(next_character(), "a");
  }
  const Unit unit(path, O_WRONLY, "w");
  EXPECT_EQ(outcome_of([&] { return fgetc_(&UNIT, ch.data(), 1); }), reported(EINVAL));
  EXPECT_EQ(ch.text(), "#");
  EXPECT_EQ(outcome_of([&] { return fputc_(&UNIT, "A", 1); }), succeeded());
}

TEST(UnitFiles, AFailureOfTheHostIsEinval) {
  const Unit full("/dev/full", O_WRONLY, "w");
  EXPECT_EQ(outcome_of([&] { return fputc_(&UNIT, "x", 1); }), reported(EINVAL));
}

TEST(UnitFiles, APipeHasNoPositions) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  ASSERT_EQ(write(ends[1], "ab", 2), 2);
  const Unit unit(ends[0], "r");
  EXPECT_EQ(next_character(), "a");
  const int32_t offset = 0, origin = SEEK_SET;
  EXPECT_EQ(fseek_(&UNIT, &offset, &origin), -ESPIPE);
  EXPECT_EQ(ierrno_(), -ESPIPE);
  reset_error_state();
  EXPECT_EQ(ftell_(&UNIT), -ESPIPE);
  EXPECT_EQ(error_state().local, ESPIPE);
  EXPECT_EQ(error_state().recorded, std::vector<int32_t>());
  reset_error_state();
  EXPECT_EQ(getpos_(&UNIT), -ESPIPE);
  EXPECT_EQ(getposi8_(&UNIT), -ESPIPE);
  EXPECT_EQ(error_state().local, SENTINEL);
  EXPECT_EQ(ftelli8_(&UNIT), -ESPIPE);
  EXPECT_EQ(error_state().local, ESPIPE);
  EXPECT_EQ(next_character(), "b");
  close(ends[1]);
  Character ch(1);
  EXPECT_EQ(outcome_of([&] { return fgetc_(&UNIT, ch.data(), 1); }), (Outcome{-1, untouched()}));
}

TEST(UnitFiles, UnitsThatAreNotConnected) {
  for (const int32_t unit : {41, 1, -1, INT32_MAX, INT32_MIN}) {
    Character ch(1);
    const int32_t offset = 0, origin = 0;
    const int64_t offset8 = 0;
    EXPECT_EQ(outcome_of([&] { return fgetc_(&unit, ch.data(), 1); }), reported(EINVAL));
    EXPECT_EQ(ch.text(), "#");
    EXPECT_EQ(outcome_of([&] { return fputc_(&unit, "x", 1); }), reported(EINVAL));
    EXPECT_EQ(outcome_of([&] { return fseek_(&unit, &offset, &origin); }), (Outcome{-EBADF, told(-EBADF)}));
    EXPECT_EQ(outcome_of([&] { return fseeki8_(&unit, &offset8, &origin); }),
              (Outcome{-EBADF, told(-EBADF)}));
    EXPECT_EQ(outcome_of([&] { return ftell_(&unit); }), (Outcome{-EBADF, told(EBADF)}));
    EXPECT_EQ(outcome_of([&] { return static_cast<int32_t>(ftelli8_(&unit)); }),
              (Outcome{-EBADF, told(EBADF)}));
    EXPECT_EQ(outcome_of([&] { return getpos_(&unit); }), (Outcome{-EBADF, untouched()}));
    EXPECT_EQ(outcome_of([&] { return static_cast<int32_t>(getposi8_(&unit)); }),
              (Outcome{-EBADF, untouched()}));
    EXPECT_EQ(state_after([&] { flush_(&unit); }), untouched());
  }
}

// The standard units, in a process whose descriptors are the test's.
int standard_units(const std::string &input, const std::string &output) {
  const int in = open(input.c_str(), O_RDONLY), out = open(output.c_str(), O_WRONLY);
  if (dup2(in, STDIN_FILENO) < 0 || dup2(out, STDOUT_FILENO) < 0)
    return 1;
  char ch;
  while (getc_(&ch, 1) == 0)
    if (putc_(&ch, 1) != 0)
      return 2;
  ch = '#';
  reset_error_state();
  if (getc_(&ch, 1) != -1 || ch != '#' || error_state() != untouched())
    return 3;
  close(STDIN_FILENO);
  if (getc_(&ch, 1) != -1 || error_state().local != SENTINEL || !error_state().recorded.empty())
    return 4;
  close(STDOUT_FILENO);
  if (outcome_of([&] { return putc_("x", 1); }) != reported(EINVAL))
    return 5;
  return 0;
}

TEST(UnitFiles, TheStandardUnitsAreCopied) {
  const TemporaryDirectory directory;
  const std::string text("one\ntwo \xff\0 three", 16);
  const std::string input = directory.file("input", text), output = directory.file("output");
  EXPECT_EXIT(_exit(standard_units(input, output)), testing::ExitedWithCode(0), "");
  const int copy = open(output.c_str(), O_RDONLY | O_CLOEXEC);
  std::string found(100, '#');
  found.resize(static_cast<size_t>(read(copy, found.data(), found.size())));
  close(copy);
  EXPECT_EQ(found, text);
}

}  // namespace
