// The generator behind the random numbers: xoshiro256++ 1.0 of Blackman and Vigna (2019), whose 256 bits of
// state go through all their 2^256 - 1 values that are not zero. Its arithmetic is that of 64-bit integers
// alone, so the sequence is the same on every machine.
#ifndef QXPORT_CORE_RANDOM_GENERATOR_H
#define QXPORT_CORE_RANDOM_GENERATOR_H

#include <bit>
#include <cstdint>

namespace qxcore {

struct RandomState {
  uint64_t words[4];
};

// The state that a seed stands for: four values of Steele's SplitMix64, started at the seed. They differ from
// one another, so not all are zero; and neighbouring seeds have nothing in common.
constexpr RandomState seeded(int32_t seed) {
  RandomState state = {};
  uint64_t position = static_cast<uint32_t>(seed);
  for (uint64_t &word : state.words) {
    position += 0x9e3779b97f4a7c15;
    uint64_t mixed = position;
    mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9;
    mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111eb;
    word = mixed ^ (mixed >> 31);
  }
  return state;
}

// The next 64 random bits.
constexpr uint64_t next(RandomState &state) {
  auto &[a, b, c, d] = state.words;
  const uint64_t drawn = std::rotl(a + d, 23) + a;
  const uint64_t shifted = b << 17;
  c ^= a;
  d ^= b;
  b ^= c;
  a ^= d;
  c ^= shifted;
  d = std::rotl(d, 45);
  return drawn;
}

// The upper bits of a draw as the types that Fortran programs ask for. Each real is a multiple of its spacing
// below 1, so the conversion is exact and never rounds up to 1.
constexpr double real8_of(uint64_t drawn) {
  return static_cast<double>(static_cast<int64_t>(drawn >> 11)) * 0x1p-53;
}

constexpr float real4_of(uint64_t drawn) {
  return static_cast<float>(static_cast<int32_t>(drawn >> 40)) * 0x1p-24F;
}

constexpr int32_t integer4_of(uint64_t drawn) {
  return static_cast<int32_t>(drawn >> 33);
}

}  // namespace qxcore

#endif
