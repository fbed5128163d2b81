// The word in which controlfp, statusfp and clearfp speak of the floating-point environment.
#ifndef QXPORT_CONTRACT_FLOATING_POINT_H
#define QXPORT_CONTRACT_FLOATING_POINT_H

#include <array>
#include <cstdint>

namespace qxport {

// Exceptions: masked, in a control word; raised, in a status word.
constexpr uint32_t FP_INEXACT = 0x1;
constexpr uint32_t FP_UNDERFLOW = 0x2;
constexpr uint32_t FP_OVERFLOW = 0x4;
constexpr uint32_t FP_ZERO_DIVIDE = 0x8;
constexpr uint32_t FP_INVALID = 0x10;
constexpr uint32_t FP_DENORMAL = 0x80000;
constexpr uint32_t FP_ALL_EXCEPTIONS =
    FP_INEXACT | FP_UNDERFLOW | FP_OVERFLOW | FP_ZERO_DIVIDE | FP_INVALID | FP_DENORMAL;
constexpr uint32_t FP_COMMON_EXCEPTIONS = FP_UNDERFLOW | FP_OVERFLOW | FP_ZERO_DIVIDE | FP_INVALID;

constexpr uint32_t FP_ROUNDING = 0x300;
constexpr uint32_t FP_NEAREST = 0x000;
constexpr uint32_t FP_DOWN = 0x100;
constexpr uint32_t FP_UP = 0x200;
constexpr uint32_t FP_TOWARD_ZERO = 0x300;

constexpr uint32_t FP_PRECISION = 0x30000;
constexpr uint32_t FP_64_BITS = 0x00000;
constexpr uint32_t FP_53_BITS = 0x10000;
constexpr uint32_t FP_24_BITS = 0x20000;

constexpr uint32_t FP_INFINITY = 0x40000;

constexpr uint32_t FP_CONTROL = FP_ALL_EXCEPTIONS | FP_ROUNDING | FP_PRECISION | FP_INFINITY;

// The processor numbers the exceptions from bit 0 in this order, in the masks and flags of both of its units.
constexpr unsigned UNIT_EXCEPTIONS = 0x3F;
constexpr std::array<uint32_t, 6> EXCEPTIONS_BY_BIT = {FP_INVALID,  FP_DENORMAL,  FP_ZERO_DIVIDE,
                                                       FP_OVERFLOW, FP_UNDERFLOW, FP_INEXACT};

constexpr std::array<uint32_t, UNIT_EXCEPTIONS + 1> EXCEPTIONS_OF_UNIT = [] {
  std::array<uint32_t, UNIT_EXCEPTIONS + 1> table = {};
  for (unsigned bits = 0; bits < table.size(); ++bits)
    for (unsigned bit = 0; bit < EXCEPTIONS_BY_BIT.size(); ++bit)
      table[bits] |= (bits >> bit & 1) != 0 ? EXCEPTIONS_BY_BIT[bit] : 0;
  return table;
}();

constexpr uint32_t exceptions_of_unit(unsigned bits) {
  return EXCEPTIONS_OF_UNIT[bits & UNIT_EXCEPTIONS];
}

// The six bits of a word side by side: the denormal's next to the other five.
constexpr unsigned gathered(uint32_t exceptions) {
  return (exceptions & 0x1F) | (exceptions >> 14 & 0x20);
}

constexpr std::array<uint8_t, UNIT_EXCEPTIONS + 1> UNIT_OF_GATHERED = [] {
  std::array<uint8_t, UNIT_EXCEPTIONS + 1> table = {};
  for (unsigned bits = 0; bits < table.size(); ++bits)
    table[gathered(EXCEPTIONS_OF_UNIT[bits])] = static_cast<uint8_t>(bits);
  return table;
}();

constexpr unsigned unit_exceptions(uint32_t exceptions) {
  return UNIT_OF_GATHERED[gathered(exceptions)];
}

}  // namespace qxport

#endif
