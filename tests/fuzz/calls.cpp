#include "fuzz/calls.h"

#include "failing_allocations.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cfenv>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <pty.h>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <system_error>
#include <unistd.h>
#include <vector>

#if defined __SANITIZE_ADDRESS__
#define HAS_ADDRESS_SANITIZER 1
#elif defined __has_feature
#if __has_feature(address_sanitizer)
#define HAS_ADDRESS_SANITIZER 1
#endif
#endif
#ifdef HAS_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#include <sanitizer/common_interface_defs.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size)
#define ASAN_UNPOISON_MEMORY_REGION(address, size)
#endif

extern "C" int fuzz_guards_are_up;
extern "C" int fuzz_reports;

namespace fuzz {
namespace {

constexpr int32_t IERROR_SENTINEL = 0x5EA15EA1;
constexpr size_t ADDRESSED = 1 << 16;  // bytes of an array that comes by its address

// The routines whose work is to end the process.
constexpr std::string_view ENDING[] = {"exit_", "abort_", "pxfexit_", "pxffastexit_"};

// Arguments between guard bytes. Under the address sanitizer the guards may not even be read.
class Arena {
public:
  void clear() {
    ASAN_UNPOISON_MEMORY_REGION(bytes_.data(), bytes_.size());
    blocks_.clear();
    used_ = 0;
  }

  // `slack` more bytes may be read, for a length beside a text that counts beyond the text, but not written.
  char *take(size_t size, size_t slack, bool is_input) {
    const size_t start = used_ + GUARD;
    const size_t end = start + size;
    if (end + slack + GUARD > bytes_.size())
      std::abort();
    std::fill_n(bytes_.data() + used_, end + slack + GUARD - used_, GUARD_BYTE);
    blocks_.push_back({used_, start, end, end + slack, is_input, {}});
    used_ = (end + slack + GUARD + 15) / 16 * 16;
    return bytes_.data() + start;
  }

  void close() {
    for (Block &block : blocks_) {
      if (block.is_input)
        block.before.assign(bytes_.data() + block.start, bytes_.data() + block.end);
      ASAN_POISON_MEMORY_REGION(bytes_.data() + block.guard, block.start - block.guard);
      ASAN_POISON_MEMORY_REGION(bytes_.data() + block.readable, GUARD);
    }
  }

  // What was written that must not be, or null.
  const char *written() {
    ASAN_UNPOISON_MEMORY_REGION(bytes_.data(), bytes_.size());
    for (const Block &block : blocks_) {
      const auto is_guard = [](char byte) { return byte == GUARD_BYTE; };
      const char *bytes = bytes_.data();
      if (!std::all_of(bytes + block.guard, bytes + block.start, is_guard))
        return "bytes before an argument";
      if (!std::all_of(bytes + block.end, bytes + block.readable + GUARD, is_guard))
        return "bytes behind an argument";
      if (block.is_input && !std::equal(block.before.begin(), block.before.end(), bytes + block.start))
        return "an argument of intent in";
    }
    return nullptr;
  }

private:
  static constexpr size_t GUARD = 64;
  static constexpr char GUARD_BYTE = '\x5a';

  struct Block {
    size_t guard, start, end, readable;
    bool is_input;
    std::vector<char> before;
  };

  std::vector<char> bytes_ = std::vector<char>(4U << 20);
  std::vector<Block> blocks_;
  size_t used_ = 0;
};

// Values that calls handed out, and some that nobody did.
class Pool {
public:
  explicit Pool(std::vector<int64_t> values) : values_(std::move(values)) {}
  void add(int64_t value) {
    if (values_.size() < 64)
      values_.push_back(value);
    else
      values_[next_++ % 64] = value;
  }
  int64_t choose(Choices &choices) const { return choices.of(values_); }

private:
  std::vector<int64_t> values_;
  size_t next_ = 0;
};

Arena arena;
Pool handles({0, 1, 2, -1, 256, 300, INT_MIN, INT_MAX});
Pool descriptors({-1, 0, 1, 3, 99, INT_MAX, INT_MIN});
Pool units({0, 5, 6, 77, -1, -10, -11, -12, INT_MAX, INT_MIN, 1000});
Pool searches({-1, -2, -3, 0, 1, 4096});

// What a driver that watches this process reads when it is gone.
struct Watched {
  char report[2048];
  uint32_t calls;
  bool is_ending;
};
Watched *const watched = static_cast<Watched *>(
    mmap(nullptr, sizeof(Watched), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
char (&report)[sizeof(Watched::report)] = watched->report;

// What a Fortran procedure handed to a routine does: it answers anything, and looks at nothing.
int32_t any_procedure() {
  static uint32_t answer = 0;
  return static_cast<int32_t>(answer = answer * 5 + 3);
}
int32_t other_procedure() {
  return 0;
}

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != text.npos;
}

bool is_handle(const Argument &argument) {
  return argument.name.starts_with('j') || argument.name == "idirid";
}
bool is_descriptor(const Argument &argument) {
  return contains(argument.name, "fildes") || contains(argument.name, "fd");
}
bool is_unit(const Argument &argument) {
  return contains(argument.name, "unit");
}
bool is_length(const Argument &argument) {
  return contains(argument.name, "len") || contains(argument.name, "count") ||
         contains(argument.name, "byte");
}
// A code of an element's type stays what it is, an element's length leaves room for many of them.
int64_t code_or_length(int64_t number) {
  return number > 200 && number <= static_cast<int64_t>(ADDRESSED) ? 200 : number;
}
// Of an array that comes by its address, as an integer.
bool is_address(const Argument &argument) {
  return argument.base == Base::Integer && argument.size == sizeof(intptr_t) &&
         argument.name.starts_with("adr");
}

Pool *pool_of(const Argument &argument) {
  if (argument.base != Base::Integer || argument.count != 1 || argument.name.empty())
    return nullptr;
  if (argument.size == sizeof(intptr_t) && argument.name == "handle")
    return &searches;
  if (argument.size != sizeof(int32_t))
    return nullptr;
  return is_handle(argument)       ? &handles
         : is_descriptor(argument) ? &descriptors
         : is_unit(argument)       ? &units
                                   : nullptr;
}

int64_t integer_at(const char *address, size_t size) {
  int64_t value = 0;
  switch (size) {
  case 1:
    return *reinterpret_cast<const int8_t *>(address);
  case 2:
    memcpy(&value, address, 2);
    return static_cast<int16_t>(value);
  case 4:
    memcpy(&value, address, 4);
    return static_cast<int32_t>(value);
  default:
    memcpy(&value, address, 8);
    return value;
  }
}

int64_t any_integer(Choices &choices) {
  constexpr int64_t EXTREMES[] = {INT_MIN,   INT_MAX,   INT16_MIN,  INT16_MAX,        INT8_MIN, UINT8_MAX,
                                  INT64_MIN, INT64_MAX, UINT32_MAX, INT64_C(1) << 32, 100'000,  8192};
  switch (choices.below(4)) {
  case 0:
    return choices.of(EXTREMES);
  case 1:
    return static_cast<int64_t>(choices.bits());
  default:
    return static_cast<int64_t>(choices.below(80)) - 8;
  }
}

double any_real(Choices &choices) {
  const double special[] = {
      0.0, -0.0, 1.0, -1.5, 1e300, 5e-324, __builtin_inf(), -__builtin_inf(), __builtin_nan("")};
  if (choices.one_in(2))
    return choices.of(special);
  const uint64_t bits = choices.bits();
  double value;
  memcpy(&value, &bits, sizeof(value));
  return value;
}

// Nothing leads out of the working directory: no path from the root, none upwards.
std::string tamed(std::string text) {
  const size_t start = text.find_first_not_of(std::string(" \t\n\v\f\r\0", 7));
  if (start != std::string::npos && (text[start] == '/' || text[start] == '\\' || text[start] == '~'))
    text[start] = 'x';
  for (size_t at; (at = text.find("..")) != std::string::npos;)
    text[at] = 'x';
  std::replace(text.begin(), text.end(), ':', 'c');
  return text;
}

constexpr const char *NAMES[] = {"file",
                                 "directory",
                                 "directory/file",
                                 "link",
                                 "fifo",
                                 "loop",
                                 "new",
                                 "name with blanks",
                                 "*",
                                 "f*",
                                 "?ile",
                                 "directory/*",
                                 "closed",
                                 "absent/x",
                                 "PATH",
                                 "HOME",
                                 "r",
                                 "rwx",
                                 "600",
                                 "a",
                                 "w",
                                 "SEQUENTIAL",
                                 ""};

std::string any_text(Choices &choices) {
  std::string text;
  switch (choices.below(8)) {
  case 0:
    return "";
  case 1:
    return std::string(choices.below(300), ' ');
  case 2:
    return std::string(1, static_cast<char>(choices.below(256)));
  case 3:
    text = std::string(5000, 'x');
    break;
  case 4:
    for (uint32_t length = choices.below(60); length > 0; --length)
      text += static_cast<char>(choices.below(256));
    break;
  case 5:
  case 6:
    text = choices.of(NAMES);
    break;
  default:
    text = choices.of(WORDS);
  }
  if (choices.one_in(2))
    text += std::string(choices.below(40), ' ');
  if (choices.one_in(8))
    text[choices.below(static_cast<uint32_t>(text.size()) + 1)] = '\0';
  return tamed(text);
}

struct Call {
  const Routine &routine;
  std::vector<char *> addresses;
  std::vector<size_t> elements;
  std::vector<qxport_charlen> lengths;
  bool has_buffer;
  bool has_address;
  bool has_length;
};

void describe(const char *format, long long value) {
  const size_t used = strlen(report);
  snprintf(report + used, sizeof(report) - used, format, value);
}

// JMOD leaves a division by zero to the processor, which ends the process.
bool is_divisor(const Routine &routine, const Argument &argument) {
  return routine.symbol.ends_with("jmod_") && argument.name == "j";
}

// The host's functions go through all orders below the one that is asked for.
bool is_order(const Routine &routine, const Argument &argument) {
  return (routine.symbol.ends_with("besjn_") || routine.symbol.ends_with("besyn_")) && argument.name == "n";
}

void make_integer(Call &call, size_t index, Choices &choices) {
  const Argument &argument = call.routine.arguments[index];
  const Pool *pool = pool_of(argument);
  const bool counts = std::any_of(call.routine.arguments.begin(), call.routine.arguments.end(),
                                  [&](const Argument &a) { return a.counted_by == static_cast<int>(index); });
  for (size_t i = 0; i < call.elements[index]; ++i) {
    int64_t value;
    if (argument.name == "ierror")
      value = IERROR_SENTINEL;
    else if (is_address(argument))
      value = choices.one_in(16) ? 0 : reinterpret_cast<intptr_t>(arena.take(ADDRESSED, 0, false));
    else if (call.has_address && !is_length(argument) && choices.one_in(2))
      value = code_or_length(choices.of(NUMBERS));
    else if (pool != nullptr && !choices.one_in(8))
      value = pool->choose(choices);
    else if (counts || is_length(argument) || ((call.has_buffer || call.has_address) && argument.size != 1))
      value = choices.one_in(8) ? -static_cast<int64_t>(choices.bits() & 0x7FFFFFFF) : choices.below(200);
    else
      value = any_integer(choices);
    if (is_divisor(call.routine, argument) && static_cast<int16_t>(value) == 0)
      value = 1;
    if (is_order(call.routine, argument))
      value %= 1000;
    memcpy(call.addresses[index] + i * argument.size, &value, argument.size);
    if (i == 0)
      describe(" %lld", integer_at(call.addresses[index], argument.size));
  }
}

void make_value(Call &call, size_t index, Choices &choices) {
  const Argument &argument = call.routine.arguments[index];
  char *address = call.addresses[index];
  switch (argument.base) {
  case Base::Integer:
    return make_integer(call, index, choices);
  case Base::Logical:
    for (size_t i = 0; i < call.elements[index]; ++i) {
      const int32_t value = static_cast<int32_t>(choices.below(3)) - 1;
      memcpy(address + i * sizeof(value), &value, sizeof(value));
    }
    return describe(" %lld", integer_at(address, sizeof(int32_t)));
  case Base::Real:
    for (size_t i = 0; i < call.elements[index]; ++i) {
      const double value = any_real(choices);
      const float single = static_cast<float>(value);
      memcpy(address + i * argument.size,
             argument.size == sizeof(float) ? static_cast<const void *>(&single) : &value,
             std::min(argument.size, sizeof(value)));
    }
    return describe(" real", 0);
  case Base::Buffer:
    for (size_t i = 0; i < std::min<size_t>(argument.size, 64); ++i)
      address[i] = static_cast<char>(choices.below(256));
    return describe(" buffer", 0);
  case Base::Character:
  case Base::Procedure:
    return;
  }
}

// The sizes come first: an array's number of elements may be the value of an argument behind it.
void make_arguments(Call &call, Choices &choices) {
  const std::span<const Argument> arguments = call.routine.arguments;
  const size_t slack = call.has_length ? 40'000 : 0;
  arena.clear();
  for (const bool arrays : {false, true}) {
    for (size_t i = 0; i < arguments.size(); ++i) {
      const Argument &argument = arguments[i];
      if ((argument.count != 1) != arrays)
        continue;
      size_t count = static_cast<size_t>(std::max(argument.count, 1));
      if (argument.counted_by >= 0 && call.addresses[argument.counted_by] != nullptr)
        count = static_cast<size_t>(std::max<int64_t>(
            integer_at(call.addresses[argument.counted_by], arguments[argument.counted_by].size), 0));
      else if (argument.count < 0)
        count = 200;
      call.elements[i] = count;
      if (argument.optional && choices.one_in(4)) {
        describe(" absent", 0);
        continue;
      }
      const bool is_input = argument.intent == Intent::In && argument.base != Base::Procedure;
      if (argument.base == Base::Procedure) {
        call.addresses[i] = reinterpret_cast<char *>(choices.one_in(2) ? any_procedure : other_procedure);
      } else if (argument.base == Base::Character) {
        std::string text = any_text(choices);
        if (argument.size != 0)
          text.resize(argument.size, ' ');
        call.lengths[i] = static_cast<qxport_charlen>(text.size());
        call.addresses[i] = arena.take(count * text.size(), slack, is_input);
        for (size_t element = 0; element < count; ++element)
          memcpy(call.addresses[i] + element * text.size(), text.data(), text.size());
        describe(" '", 0);
        strncat(report, text.c_str(), 60);
        describe("'(%lld)", static_cast<long long>(text.size()));
      } else {
        call.addresses[i] = arena.take(count * argument.size, 0, is_input);
        make_value(call, i, choices);
      }
    }
  }
  arena.close();
}

[[noreturn]] void complain(const char *what) {
  dprintf(fuzz_reports, "fuzz: %s: %s\n", what, watched->report);
  _exit(98);
}

void look_at(const Call &call) {
  if (const char *what = arena.written())
    complain(what);
  for (size_t i = 0; i < call.addresses.size(); ++i) {
    const Argument &argument = call.routine.arguments[i];
    if (argument.intent == Intent::In || call.addresses[i] == nullptr)
      continue;
    if (Pool *pool = pool_of(argument))
      pool->add(integer_at(call.addresses[i], argument.size));
    if (argument.name == "ierror" && argument.intent == Intent::Out && !call.routine.arguments.empty() &&
        integer_at(call.addresses[i], sizeof(int32_t)) == IERROR_SENTINEL)
      complain("IERROR was not set");
  }
}

std::string own_directory;

void on_signal(int) {}

void make_file(const char *name, mode_t mode) {
  const int fd = open(name, O_CREAT | O_WRONLY, 0600);
  if (fd < 0 || write(fd, "one\ntwo\n\nfour\n", 14) != 14 || fchmod(fd, mode) != 0)
    abort();
  close(fd);
}

}  // namespace

void enter_own_directory(const char *directory, bool may_be_root) {
  umask(0);
  // The process may become another user's, who needs it still.
  if (chdir(directory) != 0 || chmod(".", 0777) != 0 || mkdir("directory", 0700) != 0 ||
      symlink("file", "link") != 0 || symlink("loop", "loop") != 0 || mkfifo("fifo", 0600) != 0)
    abort();
  make_file("file", 0600);
  make_file("name with blanks", 0600);
  make_file("directory/file", 0600);
  make_file("closed", 0);
  watched->calls = 0;
  own_directory = may_be_root && geteuid() == 0 && chroot(".") == 0 ? "/" : directory;

  int ends[2];
  int terminal;
  int its_other_end;
  if (pipe(ends) == 0)
    for (const int end : ends)
      descriptors.add(end);
  if (openpty(&its_other_end, &terminal, nullptr, nullptr, nullptr) == 0)
    descriptors.add(terminal);
  descriptors.add(open("file", O_RDWR));
  descriptors.add(open(".", O_RDONLY | O_DIRECTORY));

  std::array<int32_t, 32> numbers;
  const int32_t opened = fuzz_open_units(numbers.data(), static_cast<int32_t>(numbers.size()));
  for (int32_t i = 0; i < opened; ++i)
    units.add(numbers[static_cast<size_t>(i)]);
}

void remove_own_directory(const std::string &directory) {
  std::error_code ignored;
  std::filesystem::permissions(directory, std::filesystem::perms::owner_all, ignored);
  for (const auto &entry : std::filesystem::directory_iterator(directory, ignored))
    if (entry.symlink_status(ignored).type() == std::filesystem::file_type::directory)
      remove_own_directory(entry.path());
  std::filesystem::remove_all(directory, ignored);
}

void keep_reports_apart() {
  constexpr int OUT_OF_THE_WAY = 250;
  fuzz_reports = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, OUT_OF_THE_WAY);
#ifdef HAS_ADDRESS_SANITIZER
  __sanitizer_set_report_fd(reinterpret_cast<void *>(static_cast<intptr_t>(fuzz_reports)));
#endif
  if (freopen("file", "r", stdin) == nullptr || freopen("output", "w", stdout) == nullptr ||
      freopen("errors", "w", stderr) == nullptr)
    complain("no standard streams");
}

void raise_guards() {
  // Those that tell of a defect, that a child ended, or that are the driver's timer stay as they are.
  for (int signal = 1; signal < NSIG; ++signal) {
    constexpr int KEPT[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGCHLD, SIGALRM};
    if (std::find(std::begin(KEPT), std::end(KEPT), signal) == std::end(KEPT))
      std::signal(signal, SIG_IGN);
  }
  fuzz_guards_are_up = 1;
}

void start_signals() {
  struct sigaction action = {};
  action.sa_handler = on_signal;
  sigaction(SIGALRM, &action, nullptr);
  const itimerval every_millisecond = {{0, 1000}, {0, 1000}};
  setitimer(ITIMER_REAL, &every_millisecond, nullptr);
}

void make_call(Choices &choices, bool with_ends) {
  ++watched->calls;  // by which call the process ended
  watched->is_ending = false;
  if (choices.one_in(16)) {
    const int32_t unit = static_cast<int32_t>(units.choose(choices));
    const int32_t what = static_cast<int32_t>(choices.below(16));
    snprintf(report, sizeof(report), "input or output %d of unit %d", what, unit);
    fuzz_use_unit(&unit, &what);
    return;
  }
  const Routine &routine = ROUTINES[choices.below(static_cast<uint32_t>(ROUTINES.size()))];
  const std::string_view plain = routine.symbol.substr(routine.symbol.starts_with("qxport_") ? 7 : 0);
  const bool ends = std::find(std::begin(ENDING), std::end(ENDING), plain) != std::end(ENDING);
  if (ends && !(with_ends && choices.one_in(64)))
    return;
  watched->is_ending = ends;

  const size_t count = routine.arguments.size();
  const auto any = [&](auto what) {
    return std::any_of(routine.arguments.begin(), routine.arguments.end(), what);
  };
  Call call = {routine,
               std::vector<char *>(count),
               std::vector<size_t>(count),
               std::vector<qxport_charlen>(count),
               any([](const Argument &a) { return a.base == Base::Buffer; }),
               any(is_address),
               any(is_length)};
  snprintf(report, sizeof(report), "%s:", routine.call.data());
  make_arguments(call, choices);

  std::vector<void *> addresses(call.addresses.begin(), call.addresses.end());
  std::vector<qxport_charlen> lengths;
  for (size_t i = 0; i < count; ++i)
    if (routine.arguments[i].base == Base::Character)
      lengths.push_back(call.lengths[i]);
  uint64_t result;
  {
    const FailingAllocation failing(choices.one_in(4) ? 1 + choices.below(4) : 0);
    routine.thunk(addresses.data(), lengths.data(), &result);
  }
  look_at(call);
  // A routine may have moved the process, or set traps for the driver's own arithmetic.
  if (chdir(own_directory.c_str()) != 0)
    complain("there is no way back to the directory");
  fesetenv(FE_DFL_ENV);
}

bool may_end() {
  return watched->is_ending;
}

uint32_t calls_made() {
  return watched->calls;
}

void tell(const char *line) {
  dprintf(fuzz_reports, "%s\n", line);
}

const char *last_call() {
  return report;
}

}  // namespace fuzz
