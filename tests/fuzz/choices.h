// Where the choices of a made-up call come from: a generator with a seed, or the bytes of a fuzzer.
#ifndef TESTS_FUZZ_CHOICES_H
#define TESTS_FUZZ_CHOICES_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace fuzz {

class Choices {
public:
  explicit Choices(uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15U + 1) {}
  explicit Choices(std::span<const uint8_t> bytes) : bytes_(bytes), from_bytes_(true) {}

  // No more bytes; a generator never ends.
  bool ended() const { return from_bytes_ && next_ >= bytes_.size(); }

  // One of 0 to n - 1. Small numbers take one byte, so that a fuzzer's change of a byte changes one choice.
  uint32_t below(uint32_t n) {
    uint32_t number = byte();
    for (uint32_t reach = 256; reach < n && reach != 0; reach <<= 8)
      number = number << 8 | byte();
    return n == 0 ? 0 : number % n;
  }

  bool one_in(uint32_t n) { return below(n) == 0; }

  uint64_t bits() {
    uint64_t word = 0;
    for (int i = 0; i < 8; ++i)
      word = word << 8 | byte();
    return word;
  }

  template <typename List>
  auto of(const List &list) {
    return *(std::begin(list) + below(static_cast<uint32_t>(std::size(list))));
  }

private:
  uint8_t byte() {
    if (from_bytes_)
      return next_ < bytes_.size() ? bytes_[next_++] : 0;
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return static_cast<uint8_t>(state_ >> 32);
  }

  uint64_t state_ = 0;
  std::span<const uint8_t> bytes_;
  size_t next_ = 0;
  bool from_bytes_ = false;
};

}  // namespace fuzz

#endif
