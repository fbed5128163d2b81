// How a record's components are described: by name, type and place. The descriptions themselves are data,
// made from the catalogue.
#ifndef QXPORT_RECORDS_COMPONENT_H
#define QXPORT_RECORDS_COMPONENT_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace qxport {

// The name of a structure, a component or a constant, as a Fortran program writes it: up to its first blank
// (or NUL), without regard to case. Folded to lower case into three words, it is compared and hashed without
// a loop.
class FoldedName {
public:
  static constexpr size_t CAPACITY = 24;

  constexpr FoldedName(const char *text, size_t length) {
    size_t i = 0;
    for (uint64_t &word : words_) {
      for (unsigned shift = 0; shift < 64; shift += 8, ++i) {
        if (ends(text, length, i))
          return;
        word |= uint64_t{fold(text[i])} << shift;
      }
    }
    fits_ = ends(text, length, i);
  }

  template <size_t N>
  consteval explicit FoldedName(const char (&text)[N]) : FoldedName(text, N - 1) {}

  // A name that is too long equals none.
  constexpr bool operator==(const FoldedName &other) const {
    return words_[0] == other.words_[0] && words_[1] == other.words_[1] && words_[2] == other.words_[2] &&
           fits_ && other.fits_;
  }

  constexpr uint64_t hash() const {
    return words_[0] * 0x9E3779B97F4A7C15U ^ words_[1] * 0xC2B2AE3D27D4EB4FU ^
           words_[2] * 0x165667B19E3779F9U;
  }

private:
  static constexpr bool ends(const char *text, size_t length, size_t i) {
    return i == length || text[i] == ' ' || text[i] == '\0';
  }
  static constexpr unsigned char fold(char c) {
    return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  }

  uint64_t words_[CAPACITY / sizeof(uint64_t)] = {};
  bool fits_ = true;
};

enum class ComponentType : uint8_t {
  Int32,
  Int64,
  Count,       // of 32 bits: the number of the strings in another component
  Int32Array,  // capacity elements
  Text,        // held in the record, NUL-terminated; a set stores at most capacity characters
  String,      // owned; its length stands at length_offset
  Strings,     // owned array of owned NUL-terminated strings; their number stands at length_offset
};

struct Component {
  FoldedName name;
  ComponentType type;
  uint32_t offset;
  uint32_t capacity;
  uint32_t length_offset;
  bool settable;
  bool checked;  // does an INTEGER(4) get refuse a value that it cannot hold?
};

enum class Kind : uint32_t;

struct RecordKind {
  FoldedName name;
  Kind kind;
  uint32_t size;
  std::span<const Component> components;
};

}  // namespace qxport

#endif
