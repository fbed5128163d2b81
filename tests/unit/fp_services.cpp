// The floating-point services of the companion library: one setting for both units of the processor.
#include "captured_child.h"
#include "fp_arithmetic.h"
#include "fp_units.h"
#include "outcome.h"

#include <qxport/qxport.h>

#include <atomic>
#include <csignal>
#include <dlfcn.h>
#include <filesystem>
#include <pthread.h>
#include <string>
#include <thread>

namespace {

constexpr uint32_t ALL_MASKS = 0x8001F;
constexpr uint32_t START = ALL_MASKS;

// A bit of the word, and where each unit has it.
struct Place {
  uint32_t word, sse;
  uint16_t x87;
};
constexpr Place PLACES[] = {
    {0x1, 0x1000, 0x20}, {0x2, 0x800, 0x10},     {0x4, 0x400, 0x08},     {0x8, 0x200, 0x04},
    {0x10, 0x80, 0x01},  {0x80000, 0x100, 0x02}, {0x100, 0x2000, 0x400}, {0x200, 0x4000, 0x800},
};

constexpr uint32_t COMMON_BITS = ALL_MASKS | 0x300;

uint32_t in_sse(uint32_t word) {
  uint32_t bits = 0;
  for (const Place &place : PLACES)
    bits |= (word & place.word) != 0 ? place.sse : 0;
  return bits;
}

uint16_t in_x87(uint32_t word) {
  uint16_t bits = 0;
  for (const Place &place : PLACES)
    bits |= (word & place.word) != 0 ? place.x87 : 0;
  return bits;
}

// Masks and rounding by the number of a combination.
uint32_t combination(uint32_t number) {
  return (number & 0x1F) | (number & 0x20) << 14 | (number & 0xC0) << 2;
}
constexpr uint32_t COMBINATIONS = 256;

}  // namespace

class FpServices : public FreshUnits {
protected:
  ~FpServices() override { controlfp(0, 0x70000); }
};

TEST_F(FpServices, BothUnitsAreSet) {
  for (uint32_t number = 0; number < COMBINATIONS; ++number) {
    const uint32_t word = combination(number);
    const uint32_t answer = controlfp(word, COMMON_BITS);
    const uint32_t read = controlfp(0, 0);
    const uint32_t sse = sse_word();
    const uint16_t x87 = x87_control_word();
    fresh_units();
    ASSERT_EQ(answer, word);
    ASSERT_EQ(read, word);
    ASSERT_EQ(sse, in_sse(word));
    ASSERT_EQ(x87, in_x87(word) | 0x0340);
  }
}

// From all set and from all clear.
TEST_F(FpServices, OnlyTheSelectedBitsChange) {
  for (uint32_t number = 0; number < COMBINATIONS; ++number) {
    const uint32_t mask = combination(number);
    for (const uint32_t before : {0U, COMMON_BITS}) {
      fresh_units();
      controlfp(before, COMMON_BITS);
      const uint32_t answer = controlfp(~before, mask);
      const uint32_t sse = sse_word();
      const uint16_t x87 = x87_control_word();
      fresh_units();
      ASSERT_EQ(answer, before ^ mask);
      ASSERT_EQ(sse, in_sse(before ^ mask));
      ASSERT_EQ(x87, in_x87(before ^ mask) | 0x0340);
    }
  }
}

// Where the units differ, as after a program's own instruction, each keeps what is not selected.
TEST_F(FpServices, EachUnitKeepsItsOwn) {
  load_x87_control_word(FRESH_X87 & ~0x20);
  controlfp(0x200, 0x300);
  const uint16_t x87 = x87_control_word();
  const uint32_t sse = sse_word();
  fresh_units();
  EXPECT_EQ(x87, (FRESH_X87 & ~0x20) | 0x800);
  EXPECT_EQ(sse, FRESH_SSE | 0x4000);
}

TEST_F(FpServices, OtherBitsAreIgnored) {
  EXPECT_EQ(controlfp(0xFFFFFFFF, ~0xF031FU), START);
  EXPECT_EQ(sse_word(), FRESH_SSE);
  EXPECT_EQ(x87_control_word(), FRESH_X87);
  EXPECT_EQ(controlfp(0xFFFFFFFF, 0), START);
  load_sse_word(FRESH_SSE | 0x8040);
  EXPECT_EQ(controlfp(0x300, 0x300), START | 0x300);
  EXPECT_EQ(sse_word(), FRESH_SSE | 0x8040 | 0x6000);
}

TEST_F(FpServices, PrecisionAndInfinityAreKept) {
  for (const uint32_t word : {0x00000U, 0x10000U, 0x20000U, 0x40000U, 0x50000U, 0x60000U}) {
    EXPECT_EQ(controlfp(word, 0x70000), START | word);
    EXPECT_EQ(controlfp(0, 0), START | word);
  }
  EXPECT_EQ(controlfp(0, 0x20000), START | 0x40000);
  EXPECT_EQ(controlfp(0x10000, 0x10000), START | 0x50000);
  EXPECT_EQ(controlfp(0, 0x40000), START | 0x10000);
  EXPECT_EQ(sse_word(), FRESH_SSE);
}

#if UINTPTR_MAX > UINT32_MAX

TEST_F(FpServices, PrecisionNeverReachesTheX87Unit) {
  EXPECT_EQ(controlfp(0x70000, 0x70000), START | 0x70000);
  EXPECT_EQ(x87_control_word(), FRESH_X87);
  EXPECT_EQ(controlfp(0x300, 0x300), START | 0x70300);
  EXPECT_EQ(x87_control_word(), FRESH_X87 | 0xC00);
  load_x87_control_word(FRESH_X87 | 0x1000);
  EXPECT_EQ(controlfp(0, 0x40300), START | 0x30000);
  EXPECT_EQ(x87_control_word(), FRESH_X87 | 0x1000) << "nor does infinity control";
}

TEST_F(FpServices, PrecisionIsTheThreads) {
  controlfp(0x60000, 0x70000);
  uint32_t at_first = 0, then = 0;
  std::thread other([&] {
    at_first = controlfp(0, 0);
    then = controlfp(0x10000, 0x70000);
  });
  other.join();
  EXPECT_EQ(at_first, START);
  EXPECT_EQ(then, START | 0x10000);
  EXPECT_EQ(controlfp(0, 0), START | 0x60000);
}

// A second copy of the library, which has kept nothing yet.
class Copy {
public:
  explicit Copy(const std::string &path) : library_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (library_ != nullptr)
      control_ = reinterpret_cast<decltype(&controlfp)>(dlsym(library_, "controlfp"));
  }
  ~Copy() {
    if (library_ != nullptr)
      dlclose(library_);
  }
  Copy(const Copy &) = delete;
  Copy &operator=(const Copy &) = delete;

  bool is_another() const { return control_ != nullptr && control_ != &controlfp; }
  uint32_t control(uint32_t value, uint32_t mask) const { return control_(value, mask); }

private:
  void *library_;
  decltype(&controlfp) control_ = nullptr;
};

class FpServicesLoaded : public FreshUnits {
protected:
  FpServicesLoaded() {
    Dl_info where = {};
    EXPECT_NE(dladdr(reinterpret_cast<void *>(&statusfp), &where), 0);
    std::filesystem::copy_file(where.dli_fname, path_);
  }

  const TemporaryDirectory directory_;
  const std::string path_ = directory_ / "copy.so";
};

// Where the process has used up its keys, the initial state is all there is.
TEST_F(FpServicesLoaded, WithoutAKeyNothingIsKept) {
  const ChildReport report = run_in_child([this] {
    const Copy copy(path_);
    if (!copy.is_another())
      _exit(1);
    pthread_key_t key;
    while (pthread_key_create(&key, nullptr) == 0) {
    }
    if (copy.control(0x20000, 0x30000) != START || copy.control(0, 0) != START ||
        copy.control(0x100, 0x300) != (START | 0x100))
      _exit(2);
  });
  EXPECT_EQ(report.exit_code(), CAME_BACK);
}

// A process has about a thousand keys.
TEST_F(FpServicesLoaded, UnloadedLibraryGivesItsKeyBack) {
  for (int i = 0; i < 1100; ++i) {
    const Copy copy(path_);
    ASSERT_TRUE(copy.is_another());
    ASSERT_EQ(copy.control(0x20000, 0x30000), START | 0x20000) << i;
  }
}

TEST_F(FpServices, ManyThreadsSetAtOnce) {
  std::atomic<int> wrong = 0;
  const auto work = [&wrong](uint32_t own) {
    for (int i = 0; i < 1000; ++i)
      if (controlfp(own, 0x70000) != (START | own) || controlfp(0, 0) != (START | own))
        ++wrong;
  };
  std::thread a(work, 0x10000), b(work, 0x20000), c(work, 0x70000);
  a.join();
  b.join();
  c.join();
  EXPECT_EQ(wrong, 0);
}

#else

TEST_F(FpServices, PrecisionIsTheX87Units) {
  constexpr uint16_t OF_PRECISION[] = {0x0300, 0x0200, 0x0000, 0x0000};
  for (uint32_t i = 0; i < 4; ++i) {
    const uint32_t shown = i == 3 ? 0x20000 : i << 16;
    EXPECT_EQ(controlfp(i << 16, 0x30000), START | shown);
    EXPECT_EQ(x87_control_word(), 0x007F | OF_PRECISION[i]);
  }
  EXPECT_EQ(controlfp(0x40000, 0x40000), START | 0x60000);
  EXPECT_EQ(x87_control_word(), 0x107F);
  // The reserved value reads as 64 bits and stays where precision is not selected.
  load_x87_control_word(0x017F);
  EXPECT_EQ(controlfp(0x40000, 0x40000), START | 0x40000);
  EXPECT_EQ(x87_control_word(), 0x117F);
}

#endif

TEST_F(FpServices, FlagsOfBothUnits) {
  EXPECT_EQ(statusfp(), 0U);
  struct {
    uint16_t bit;
    uint32_t flag;
  } constexpr FLAGS[] = {{0x01, 0x10}, {0x02, 0x80000}, {0x04, 0x8}, {0x08, 0x4}, {0x10, 0x2}, {0x20, 0x1}};
  for (const auto &[bit, flag] : FLAGS) {
    load_sse_word(FRESH_SSE | bit);
    EXPECT_EQ(statusfp(), flag);
    load_sse_word(FRESH_SSE);
  }
  x87_divide(1, 0);
  x87_divide(1, 3);
  EXPECT_EQ(statusfp(), 0x9U);
  sse_divide(0, 0);
  EXPECT_EQ(statusfp(), 0x19U);
  EXPECT_EQ(clearfp(), 0x19U);
  EXPECT_EQ(statusfp(), 0U);
  EXPECT_EQ(clearfp(), 0U);
  EXPECT_EQ(x87_status_word() & 0x3F, 0);
  EXPECT_EQ(sse_word(), FRESH_SSE);
}

TEST_F(FpServices, FlagsOfOtherExceptionsStayInTheirUnit) {
  x87_divide(1, 3);
  controlfp(0, 0x8);
  const uint16_t x87 = x87_status_word();
  const uint32_t sse = sse_word();
  fresh_units();
  EXPECT_EQ(x87 & 0x3F, 0x20);
  EXPECT_EQ(sse, FRESH_SSE & ~0x200U);
}

// The x87 unit would trap, at its next instruction, on a flag of long ago.
TEST_F(FpServices, FlagRaisedBeforeDoesNotTrap) {
  const ChildReport report = run_in_child([] {
    signal(SIGFPE, SIG_DFL);
    fresh_units();
    x87_divide(1, 0);
    x87_divide(1, 3);
    sse_divide(1, 0);
    if (controlfp(0, 0x8) != (ALL_MASKS & ~0x8U))
      _exit(1);
    if (x87_divide(6, 2) != 3 || sse_divide(6, 2) != 3)
      _exit(2);
    if (statusfp() != 0x9)
      _exit(3);
  });
  EXPECT_EQ(report.exit_code(), CAME_BACK);
  EXPECT_EQ(report.signal(), 0);
}

// One that traps only now, but was unmasked when it was raised, is due.
TEST_F(FpServices, TrapThatIsDueComes) {
  for (const bool stale : {false, true}) {
    const ChildReport report = run_in_child([stale] {
      signal(SIGFPE, SIG_DFL);
      fresh_units();
      if (stale)
        x87_divide(1, 3);  // whose flag is of long ago, and does not take the other's trap away
      load_x87_control_word(FRESH_X87 & ~0x04);
      asm volatile("fld1\n\tfldz\n\tfdivrp");
      controlfp(0, 0x1);
    });
    EXPECT_EQ(report.signal(), SIGFPE) << stale;
  }
}

TEST_F(FpServices, ErrorStateStays) {
  EXPECT_EQ(state_after([] {
              controlfp(0x20100, 0x30300);
              statusfp();
              clearfp();
            }),
            untouched());
}
