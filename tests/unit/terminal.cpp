// ISATTY and TTYNAM on terminals, files and what is neither.
#include "contract/services.h"
#include "outcome.h"
#include "pseudo_terminal.h"

#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

// One of the standard streams, replaced for the scope.
class Redirected {
public:
  Redirected(int stream, int descriptor) : stream_(stream), former_(dup(stream)) {
    fflush(nullptr);
    EXPECT_EQ(dup2(descriptor, stream), stream);
  }
  ~Redirected() {
    dup2(former_, stream_);
    close(former_);
  }
  Redirected(const Redirected &) = delete;
  Redirected &operator=(const Redirected &) = delete;

private:
  int stream_;
  int former_;
};

// What a routine answers, and what it stored.
struct Name {
  std::string text;
  ErrorState state;
  bool operator==(const Name &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Name &name) {
  return out << "'" << name.text << "', " << name.state;
}

// As a subroutine is called.
Name ttynam_of(int32_t unit, size_t length) {
  Character name(length);
  const ErrorState state = state_after([&] { ttynam_(name.data(), &unit, name.length()); });
  return {name.text(), state};
}

// As a CHARACTER function is called: the result's length comes second, the unit third.
Name ttynam_function_of(int32_t unit, size_t length) {
  using Function = void (*)(char *, qxport_charlen, const int32_t *);
  const Function function = reinterpret_cast<Function>(reinterpret_cast<void *>(ttynam_));
  Character name(length);
  const ErrorState state = state_after([&] { function(name.data(), name.length(), &unit); });
  return {name.text(), state};
}

void expect_ttynam(int32_t unit, const Name &expected) {
  EXPECT_EQ(ttynam_of(unit, expected.text.size()), expected) << unit;
  EXPECT_EQ(ttynam_function_of(unit, expected.text.size()), expected) << unit;
}

Outcome isatty_of(int32_t unit) {
  return outcome_of([&] { return isatty_(&unit); });
}

// In errno and the run-time's status; the library's cell is none of these routines' business.
ErrorState status_only(int32_t error) {
  return {error, SENTINEL, {error}};
}

// What the host's isatty leaves in errno, and nothing else.
Outcome no_terminal(int host_error) {
  return {0, {host_error, SENTINEL, {}}};
}

constexpr int32_t TERMINAL_UNIT = 20, FILE_UNIT = 21, UNCONNECTED = 22, CLOSED = 23, PIPE = 24;

void connect(int descriptor, int32_t unit) {
  ASSERT_EQ(for_fdopen(descriptor, unit, "", 0), 0);
}

void connect_file() {
  static const int descriptor = open("/dev/null", O_RDWR | O_CLOEXEC);
  connect(descriptor, FILE_UNIT);
}

void connect_closed() {
  const int descriptor = open("/dev/null", O_RDWR);
  connect(descriptor, CLOSED);
  close(descriptor);
  close(__msportlib_d_gethandle(CLOSED, nullptr, nullptr));
}

TEST(Isatty, TerminalIs1) {
  const PseudoTerminal terminal;
  connect(terminal.descriptor(), TERMINAL_UNIT);
  EXPECT_EQ(isatty_of(TERMINAL_UNIT), (Outcome{1, untouched()}));
}

TEST(Isatty, FileAndPipeAreNone) {
  connect_file();
  EXPECT_EQ(isatty_of(FILE_UNIT), no_terminal(ENOTTY));
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  connect(ends[0], PIPE);
  EXPECT_EQ(isatty_of(PIPE), no_terminal(ENOTTY));
  close(ends[0]);
  close(ends[1]);
}

TEST(Isatty, UnconnectedUnitIsEbadfNotInTheLibrarysCell) {
  for (const int32_t unit : {UNCONNECTED, -1, INT32_MAX, INT32_MIN})
    EXPECT_EQ(isatty_of(unit), (Outcome{0, status_only(EBADF)})) << unit;
}

TEST(Isatty, ClosedDescriptorIsNoneAndNotRecorded) {
  connect_closed();
  EXPECT_EQ(isatty_of(CLOSED), no_terminal(EBADF));
}

TEST(Isatty, Units5And6And0AreTheStandardStreams) {
  const PseudoTerminal terminal;
  const int streams[][2] = {{5, STDIN_FILENO}, {6, STDOUT_FILENO}, {0, STDERR_FILENO}};
  const int null = open("/dev/null", O_RDWR);
  for (const auto &[unit, stream] : streams) {
    Outcome with_terminal, with_file;
    {
      const Redirected redirected(stream, terminal.descriptor());
      with_terminal = isatty_of(unit);
    }
    {
      const Redirected redirected(stream, null);
      with_file = isatty_of(unit);
    }
    EXPECT_EQ(with_terminal, (Outcome{1, untouched()})) << unit;
    EXPECT_EQ(with_file, no_terminal(ENOTTY)) << unit;
  }
  close(null);
}

TEST(Ttynam, NameIsBlankPadded) {
  const PseudoTerminal terminal;
  connect(terminal.descriptor(), TERMINAL_UNIT);
  expect_ttynam(TERMINAL_UNIT, {padded(terminal.name(), 64), untouched()});
  expect_ttynam(TERMINAL_UNIT, {padded(terminal.name(), 1000), untouched()});
}

TEST(Ttynam, ExactLengthIsEnough) {
  const PseudoTerminal terminal;
  connect(terminal.descriptor(), TERMINAL_UNIT);
  expect_ttynam(TERMINAL_UNIT, {terminal.name(), untouched()});
}

TEST(Ttynam, LongerNameIsCutWithEinval) {
  const PseudoTerminal terminal;
  connect(terminal.descriptor(), TERMINAL_UNIT);
  expect_ttynam(TERMINAL_UNIT, {terminal.name().substr(0, terminal.name().size() - 1), status_only(EINVAL)});
  expect_ttynam(TERMINAL_UNIT, {"/", status_only(EINVAL)});
  expect_ttynam(TERMINAL_UNIT, {"", status_only(EINVAL)});
}

TEST(Ttynam, FileIsEnottyAndBlank) {
  connect_file();
  expect_ttynam(FILE_UNIT, {padded("", 64), status_only(ENOTTY)});
  expect_ttynam(FILE_UNIT, {"", status_only(ENOTTY)});
}

TEST(Ttynam, UnconnectedUnitIsEbadfAndBlank) {
  for (const int32_t unit : {UNCONNECTED, -1, INT32_MAX, INT32_MIN})
    expect_ttynam(unit, {padded("", 64), status_only(EBADF)});
  expect_ttynam(UNCONNECTED, {"", status_only(EBADF)});
}

TEST(Ttynam, ClosedDescriptorIsEnottyAndBlank) {
  connect_closed();
  expect_ttynam(CLOSED, {padded("", 64), status_only(ENOTTY)});
}

TEST(Ttynam, NegativeLengthStoresNothing) {
  Character name(8);
  const int32_t unit = UNCONNECTED;
  EXPECT_EQ(state_after([&] { ttynam_(name.data(), &unit, -1); }), status_only(EBADF));
  EXPECT_EQ(name.text(), "########");
}

TEST(Ttynam, LongestResultOfAFunctionIsServed) {
  connect_file();
  for (const size_t length : {65535, 65536, 1'000'000, 4'194'303})
    expect_ttynam(FILE_UNIT, {padded("", length), status_only(ENOTTY)});
}

TEST(Ttynam, Units5And6And0AreTheStandardStreams) {
  const PseudoTerminal terminal;
  const int streams[][2] = {{5, STDIN_FILENO}, {6, STDOUT_FILENO}, {0, STDERR_FILENO}};
  for (const auto &[unit, stream] : streams) {
    Name name;
    {
      const Redirected redirected(stream, terminal.descriptor());
      name = ttynam_of(unit, 64);
    }
    EXPECT_EQ(name, (Name{padded(terminal.name(), 64), untouched()})) << unit;
  }
}

}  // namespace
