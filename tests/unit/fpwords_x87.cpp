// The routines over the words of the x87 unit that 32-bit programs have, and 64-bit programs do not.
#include "fp_arithmetic.h"
#include "fp_units.h"
#include "outcome.h"

#include <qxport/qxport.h>

#include <dlfcn.h>

#if UINTPTR_MAX > UINT32_MAX

TEST(X87Words, AreNotThere) {
  for (const char *name : {"_control87", "_status87", "_clear87", "save_fp_state", "restore_fp_state"})
    EXPECT_EQ(dlsym(RTLD_DEFAULT, name), nullptr) << name;
  EXPECT_NE(dlsym(RTLD_DEFAULT, "getcontrolfpqq_"), nullptr);
}

#else

namespace {

// The tables, written down once more.
constexpr struct {
  uint32_t word;
  uint16_t x87;
} MASKS[] = {{0x1, 0x20}, {0x2, 0x10}, {0x4, 0x08}, {0x8, 0x04}, {0x10, 0x01}, {0x80000, 0x02}};
constexpr uint16_t PRECISION_SET[] = {0x300, 0x200, 0x000, 0x000};
constexpr uint32_t PRECISION_SHOWN[] = {0x20000, 0, 0x10000, 0};

uint16_t expected_control(uint16_t before, uint32_t value, uint32_t mask) {
  uint32_t control = before;
  for (const auto &[word, x87] : MASKS)
    if ((mask & word) != 0)
      control = (value & word) != 0 ? control | x87 : control & ~x87;
  if ((mask & 0x300) == 0x300)
    control = (control & ~0xC00U) | ((value & 0x200) != 0 ? 0x800 : 0) | ((value & 0x100) != 0 ? 0x400 : 0);
  if ((mask & 0x30000) == 0x30000)
    control = (control & ~0x300U) | PRECISION_SET[value >> 16 & 3];
  return static_cast<uint16_t>(control);
}

uint32_t expected_word(uint16_t control) {
  uint32_t word = PRECISION_SHOWN[control >> 8 & 3];
  for (const auto &[bit, x87] : MASKS)
    word |= (control & x87) != 0 ? bit : 0;
  word |= (control & 0x400) != 0 ? 0x100 : 0;
  word |= (control & 0x800) != 0 ? 0x200 : 0;
  word |= (control & 0x1000) != 0 ? 0x40000 : 0;
  return word;
}

uint32_t sse_of(uint16_t control) {
  return (control & 0x3FU) << 7 | (control & 0xC00U) << 3;
}

// Eleven bits spread over the word.
uint32_t spread(uint32_t number) {
  return (number & 0x1F) | (number & 0x60) << 3 | (number & 0x780) << 9;
}
constexpr uint32_t COMBINATIONS = 1 << 11;

}  // namespace

class X87Words : public FreshUnits {};

TEST_F(X87Words, EveryChange) {
  for (const uint16_t before : {uint16_t{0x037F}, uint16_t{0x1C40}, uint16_t{0x0640}}) {
    for (uint32_t i = 0; i < COMBINATIONS; ++i) {
      const uint32_t mask = spread(i);
      for (const uint32_t value : {0U, ~0U, 0x55555U, 0xAAAAAU, 0x10200U, 0x20100U, spread(i * 7)}) {
        load_x87_control_word(before);
        load_sse_word(sse_of(before));
        const auto answer =
            static_cast<uint32_t>(_control87(static_cast<int32_t>(value), static_cast<int32_t>(mask)));
        const uint16_t control = x87_control_word();
        const uint32_t sse = sse_word();
        fresh_units();
        const uint16_t expected = expected_control(before, value, mask);
        ASSERT_EQ(control, expected) << std::hex << value << ' ' << mask;
        ASSERT_EQ(answer, expected_word(expected)) << std::hex << value << ' ' << mask;
        ASSERT_EQ(sse, sse_of(expected)) << std::hex << value << ' ' << mask;
      }
    }
  }
}

TEST_F(X87Words, MaskOfZeroOnlyReads) {
  load_x87_control_word(0x1F40);
  load_sse_word(FRESH_SSE);
  const auto answer = static_cast<uint32_t>(_control87(-1, 0));
  const uint16_t control = x87_control_word();
  fresh_units();
  EXPECT_EQ(answer, 0x40300U);
  EXPECT_EQ(control, 0x1F40);
  EXPECT_EQ(sse_word(), FRESH_SSE);
}

TEST_F(X87Words, RoundingHoldsInBothUnits) {
  _control87(0x200, 0x300);
  EXPECT_TRUE(direction_of<float>() == Direction::Up);
  EXPECT_TRUE(direction_of<double>() == Direction::Up);
  EXPECT_TRUE(direction_of<long double>() == Direction::Up);
  _control87(0x100, 0x100);
  EXPECT_TRUE(direction_of<double>() == Direction::Up) << "half of the field selects nothing";
}

TEST_F(X87Words, FlagsAreReadAndCleared) {
  EXPECT_EQ(_status87(), 0);
  x87_divide(1, 0);
  sse_divide(0, 0);
  EXPECT_EQ(_status87(), 0x18);
  EXPECT_EQ(_status87(), 0x18);
  EXPECT_EQ(_clear87(), 0x18);
  EXPECT_EQ(_clear87(), 0);
  EXPECT_EQ(x87_status_word() & 0xFF, 0);
  EXPECT_EQ(sse_word(), FRESH_SSE);
  sum<long double>(std::numeric_limits<long double>::denorm_min(), 1);
  EXPECT_EQ(_clear87(), 0x80001);
}

TEST_F(X87Words, StateIsSavedAndRestored) {
  constexpr size_t STATE = 108;
  constexpr unsigned char GUARD = 0x7E;
  unsigned char area[1 + STATE + 8];  // at an odd address
  memset(area, GUARD, sizeof(area));
  load_sse_word(FRESH_SSE | 0x6000);
  load_x87_control_word(0x0E7F);
  x87_divide(1, 0);
  asm volatile("fldpi\n\tfld1");
  save_fp_state(area + 1);
  EXPECT_EQ(x87_control_word(), FRESH_X87) << "initialised";
  EXPECT_EQ(x87_status_word(), 0);
  EXPECT_EQ(sse_word(), FRESH_SSE | 0x6000);
  EXPECT_EQ(area[0], GUARD);
  for (size_t i = 1 + STATE; i < sizeof(area); ++i)
    EXPECT_EQ(area[i], GUARD);
  uint16_t control;
  memcpy(&control, area + 1, sizeof(control));
  EXPECT_EQ(control, 0x0E7F);

  unsigned char kept[sizeof(area)];
  memcpy(kept, area, sizeof(area));
  for (int i = 0; i < 2; ++i) {
    // An initialised unit still holds its registers' old values.
    asm volatile("fninit\n\tfldz\n\tfldz\n\tfldz\n\tfldz\n\tfldz\n\tfldz\n\tfldz\n\tfldz\n\tfninit");
    restore_fp_state(area + 1);
    long double one, pi;
    asm volatile("fstpt %0\n\tfstpt %1" : "=m"(one), "=m"(pi));
    const uint16_t restored = x87_control_word();
    const uint16_t status = x87_status_word();
    fresh_units();
    EXPECT_EQ(one, 1);
    EXPECT_EQ(static_cast<float>(pi), 3.14159265F);
    EXPECT_EQ(restored, 0x0E7F);
    EXPECT_EQ(status & 0x04, 0x04);
  }
  EXPECT_EQ(memcmp(kept, area, sizeof(area)), 0) << "only read";
}

TEST_F(X87Words, ErrorStateStays) {
  EXPECT_EQ(state_after([] {
              char area[108];
              _control87(0, 0);
              _status87();
              _clear87();
              save_fp_state(area);
              restore_fp_state(area);
            }),
            untouched());
}

#endif
