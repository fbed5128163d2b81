// The routines of control and status words over services of the test's own: which of them are called, with
// what, and how the words are translated. On a 32-bit target none is called.
#include "fp_units.h"
#include "outcome.h"

#include <qxport/qxport.h>

#include <vector>

namespace {

struct Change {
  uint32_t value, mask;
  bool operator==(const Change &) const = default;
};

std::vector<Change> changes;
int status_reads, clears;
uint32_t service_control, service_status;

void forget_calls() {
  changes.clear();
  status_reads = clears = 0;
}

// The tables, written down once more: a bit of the service's word and the bit that callers see.
struct Pair {
  uint32_t service;
  uint16_t caller;
};
constexpr Pair EXCEPTION_PAIRS[] = {{0x10, 0x01}, {0x80000, 0x02}, {0x8, 0x04},
                                    {0x4, 0x08},  {0x2, 0x10},     {0x1, 0x20}};
constexpr Pair OTHER_PAIRS[] = {{0x100, 0x400}, {0x200, 0x800}, {0x40000, 0x1000}};
// By bits 8 and 9 of the caller's word, and by bits 16 and 17 of the service's.
[[maybe_unused]] constexpr uint32_t PRECISION_SET[] = {0x20000, 0, 0, 0};
[[maybe_unused]] constexpr uint16_t PRECISION_SHOWN[] = {0x300, 0x200, 0x000, 0x200};

using Getter = void (*)(int16_t *);
using Setter = void (*)(const int16_t *);
constexpr Getter CONTROL_GETTERS[] = {getcontrolfpqq_, scwrqq_};
constexpr Setter CONTROL_SETTERS[] = {setcontrolfpqq_, lcwrqq_};
constexpr Getter STATUS_GETTERS[] = {getstatusfpqq_, sswrqq_};

uint16_t shown_by(Getter getter) {
  int16_t words[3] = {0x5A5A, 0x5A5A, 0x5A5A};
  getter(&words[1]);
  EXPECT_EQ(words[0], 0x5A5A);
  EXPECT_EQ(words[2], 0x5A5A);
  return static_cast<uint16_t>(words[1]);
}

void set_by(Setter setter, uint16_t word) {
  const auto control = static_cast<int16_t>(word);
  setter(&control);
  EXPECT_EQ(static_cast<uint16_t>(control), word);
}

}  // namespace

uint32_t controlfp(uint32_t value, uint32_t mask) {
  changes.push_back({value, mask});
  return service_control;
}

uint32_t statusfp() {
  ++status_reads;
  return service_status;
}

uint32_t clearfp() {
  ++clears;
  return service_status;
}

class Words : public FreshUnits {
protected:
  Words() { forget_calls(); }
};

#if UINTPTR_MAX > UINT32_MAX

TEST_F(Words, EveryServiceWordIsShown) {
  for (uint32_t bits = 0; bits < 1U << 20; ++bits) {
    service_control = bits;
    uint16_t expected = PRECISION_SHOWN[bits >> 16 & 3];
    for (const Pair &pair : EXCEPTION_PAIRS)
      expected |= (bits & pair.service) != 0 ? pair.caller : 0;
    for (const Pair &pair : OTHER_PAIRS)
      expected |= (bits & pair.service) != 0 ? pair.caller : 0;
    ASSERT_EQ(shown_by(getcontrolfpqq_), expected) << std::hex << bits;
  }
}

TEST_F(Words, ExampleOfAServiceWord) {
  service_control = 0x10 | 0x8 | 0x200 | 0x10000;
  for (const Getter getter : CONTROL_GETTERS) {
    forget_calls();
    EXPECT_EQ(shown_by(getter), 0x0A05);
    EXPECT_EQ(changes, std::vector<Change>({{0, 0}}));
  }
  service_control |= 0xFFF00000;
  EXPECT_EQ(shown_by(getcontrolfpqq_), 0x0A05) << "bits that the word does not have";
}

TEST_F(Words, EveryCallersWordIsSet) {
  for (uint32_t word = 0; word <= 0xFFFF; ++word) {
    uint32_t expected = PRECISION_SET[word >> 8 & 3];
    for (const Pair &pair : EXCEPTION_PAIRS)
      expected |= (word & pair.caller) != 0 ? pair.service : 0;
    for (const Pair &pair : OTHER_PAIRS)
      expected |= (word & pair.caller) != 0 ? pair.service : 0;
    for (const Setter setter : CONTROL_SETTERS) {
      forget_calls();
      set_by(setter, static_cast<uint16_t>(word));
      ASSERT_EQ(changes.size(), 1U);
      ASSERT_EQ(changes[0].value, expected) << std::hex << word;
      ASSERT_EQ(changes[0].mask, 0xF031FU) << std::hex << word;
    }
  }
}

TEST_F(Words, PrecisionOf53BitsCannotBeSet) {
  set_by(setcontrolfpqq_, 0x0200);
  set_by(setcontrolfpqq_, 0x0000);
  EXPECT_EQ(changes, std::vector<Change>({{0, 0xF031F}, {0x20000, 0xF031F}}));
}

TEST_F(Words, EveryServiceStatusIsShown) {
  for (uint32_t bits = 0; bits < 1U << 20; ++bits) {
    service_status = bits | 0xFFF00000;
    uint16_t expected = 0;
    for (const Pair &pair : EXCEPTION_PAIRS)
      expected |= (bits & pair.service) != 0 ? pair.caller : 0;
    ASSERT_EQ(shown_by(getstatusfpqq_), expected) << std::hex << bits;
  }
  service_status = 0x80008;
  for (const Getter getter : STATUS_GETTERS) {
    forget_calls();
    EXPECT_EQ(shown_by(getter), 0x06);
    EXPECT_EQ(status_reads, 1);
    EXPECT_EQ(clears, 0);
    EXPECT_TRUE(changes.empty());
  }
}

TEST_F(Words, ClearingIsTheServices) {
  clearstatusfpqq_();
  EXPECT_EQ(clears, 1);
  EXPECT_EQ(status_reads, 0);
  EXPECT_TRUE(changes.empty());
}

// What the routines do goes through the services alone.
TEST_F(Words, UnitsStay) {
  set_by(setcontrolfpqq_, 0x0C00);
  clearstatusfpqq_();
  EXPECT_EQ(sse_word(), FRESH_SSE);
  EXPECT_EQ(x87_control_word(), FRESH_X87);
}

#else

// The bits that the processor does not keep, and the one that it always shows as set.
constexpr uint16_t KEPT_BY_X87 = 0x1F3F;
constexpr uint16_t SET_BY_X87 = 0x0040;

TEST_F(Words, EveryCallersWordIsLoadedAsItStands) {
  for (const Setter setter : CONTROL_SETTERS) {
    for (uint32_t word = 0; word <= 0xFFFF; ++word) {
      set_by(setter, static_cast<uint16_t>(word));
      const uint16_t loaded = x87_control_word();
      const uint32_t sse = sse_word();
      fresh_units();
      ASSERT_EQ(loaded, (word & KEPT_BY_X87) | SET_BY_X87) << std::hex << word;
      ASSERT_EQ(sse, (word & 0x3F) << 7 | (word & 0xC00) << 3) << std::hex << word;
    }
  }
}

TEST_F(Words, ControlWordIsShownAsItStands) {
  for (const Getter getter : CONTROL_GETTERS) {
    for (uint32_t word = 0; word <= 0xFFFF; ++word) {
      load_x87_control_word(static_cast<uint16_t>(word));
      const uint16_t shown = shown_by(getter);
      fresh_units();
      ASSERT_EQ(shown, (word & KEPT_BY_X87) | SET_BY_X87) << std::hex << word;
    }
  }
}

TEST_F(Words, NoServiceIsCalled) {
  set_by(setcontrolfpqq_, 0x027F);
  shown_by(getcontrolfpqq_);
  shown_by(getstatusfpqq_);
  clearstatusfpqq_();
  _control87(0x10, 0x10);
  _status87();
  _clear87();
  EXPECT_TRUE(changes.empty());
  EXPECT_EQ(status_reads, 0);
  EXPECT_EQ(clears, 0);
}

#endif

TEST_F(Words, ErrorStateStays) {
  EXPECT_EQ(state_after([] {
              set_by(setcontrolfpqq_, FRESH_X87);
              set_by(lcwrqq_, FRESH_X87);
              shown_by(getcontrolfpqq_);
              shown_by(scwrqq_);
              shown_by(getstatusfpqq_);
              shown_by(sswrqq_);
              clearstatusfpqq_();
            }),
            untouched());
}
