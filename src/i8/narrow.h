// Arguments of 8 bytes for routines that take 4: what goes in is looked at first, and what comes out goes
// back.
#ifndef QXPORT_I8_NARROW_H
#define QXPORT_I8_NARROW_H

#include "frame/errors.h"
#include "frame/fortran.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace qxport::i8 {

// The kinds: what the routine takes and what the caller has. `narrowed` is meant for what fits; ABSENT is a
// value that no routine stores, by which an output is recognised as left alone where the caller's value does
// not fit.
struct Integer {
  using Narrow = int32_t;
  using Wide = int64_t;
  static constexpr Narrow ABSENT = -2023406815;
  static constexpr bool IS_REFUSABLE = true;
  static Narrow narrowed(Wide value) { return static_cast<Narrow>(value); }
};

// A truth is never refused: of one that does not fit the bit counts by which the compiler tells it.
struct Logical {
  using Narrow = int32_t;
  using Wide = int64_t;
  static constexpr Narrow ABSENT = Integer::ABSENT;
  static constexpr bool IS_REFUSABLE = false;
  static Narrow narrowed(Wide value) {
    const auto low = static_cast<Narrow>(value);
    return low == value ? low : low & 1;
  }
};

// Rounded, and infinite beyond the range, as an assignment does it.
struct Real {
  using Narrow = float;
  using Wide = double;
  static constexpr Narrow ABSENT = -1.9876543e-37F;
  static constexpr bool IS_REFUSABLE = false;
  static Narrow narrowed(Wide value) { return static_cast<Narrow>(value); }
};

template <typename Kind>
bool fits(typename Kind::Wide value) {
  return static_cast<typename Kind::Wide>(Kind::narrowed(value)) == value;
}

// What an output variable holds before the call. Where it holds something else behind it the routine has
// stored that.
template <typename Kind>
typename Kind::Narrow before(typename Kind::Wide value) {
  return fits<Kind>(value) ? Kind::narrowed(value) : Kind::ABSENT;
}

template <typename Narrow>
bool is_same(Narrow a, Narrow b) {
  return std::bit_cast<uint32_t>(a) == std::bit_cast<uint32_t>(b);
}

// An input. One that is absent stays absent.
template <typename Kind>
class In {
public:
  explicit In(const typename Kind::Wide *value)
      : narrow_(value == nullptr ? typename Kind::Narrow{} : Kind::narrowed(*value)),
        is_there_(value != nullptr),
        problem_(Kind::IS_REFUSABLE && is_there_ && !fits<Kind>(*value) ? EOVERFLOW : 0) {}

  operator const typename Kind::Narrow *() const { return is_there_ ? &narrow_ : nullptr; }
  int32_t problem() const { return problem_; }

private:
  typename Kind::Narrow narrow_;
  bool is_there_;
  int32_t problem_;
};

// An output, which keeps all 8 bytes where the routine leaves it alone.
template <typename Kind>
class Out {
public:
  explicit Out(typename Kind::Wide *value)
      : value_(value), before_(value == nullptr ? Kind::ABSENT : before<Kind>(*value)), narrow_(before_) {}
  Out(const Out &) = delete;
  ~Out() {
    if (value_ != nullptr && !is_same(narrow_, before_))
      *value_ = narrow_;
  }

  operator typename Kind::Narrow *() { return value_ == nullptr ? nullptr : &narrow_; }

private:
  typename Kind::Wide *value_;
  typename Kind::Narrow before_;
  typename Kind::Narrow narrow_;
};

// Both.
template <typename Kind>
class InOut : public Out<Kind> {
public:
  explicit InOut(typename Kind::Wide *value)
      : Out<Kind>(value),
        problem_(Kind::IS_REFUSABLE && value != nullptr && !fits<Kind>(*value) ? EOVERFLOW : 0) {}
  int32_t problem() const { return problem_; }

private:
  int32_t problem_;
};

// The elements of an array as the routine takes them, few of them without an allocation.
template <typename Kind>
class Elements {
public:
  explicit Elements(int64_t count)
      : count_(count > 0 ? static_cast<size_t>(count) : 0),
        elements_(count_ <= FEW
                      ? few_
                      : static_cast<typename Kind::Narrow *>(reallocarray(nullptr, count_, sizeof(*few_)))) {}
  Elements(const Elements &) = delete;
  ~Elements() {
    if (elements_ != few_)
      free(elements_);
  }

  int32_t problem() const { return elements_ == nullptr ? ENOMEM : 0; }

protected:
  static constexpr size_t FEW = 32;
  size_t count_;
  typename Kind::Narrow few_[FEW];
  typename Kind::Narrow *elements_;
};

template <typename Kind>
class InElements : public Elements<Kind> {
public:
  InElements(const typename Kind::Wide *values, int64_t count)
      : Elements<Kind>(count), problem_(Elements<Kind>::problem()) {
    for (size_t i = 0; i < this->count_ && problem_ == 0; ++i) {
      this->elements_[i] = Kind::narrowed(values[i]);
      if (Kind::IS_REFUSABLE && !fits<Kind>(values[i]))
        problem_ = EOVERFLOW;
    }
  }

  operator const typename Kind::Narrow *() const { return this->elements_; }
  int32_t problem() const { return problem_; }

private:
  int32_t problem_;
};

template <typename Kind>
class OutElements : public Elements<Kind> {
public:
  OutElements(typename Kind::Wide *values, int64_t count) : Elements<Kind>(count), values_(values) {
    if (this->elements_ != nullptr)
      std::transform(values, values + this->count_, this->elements_, before<Kind>);
  }
  ~OutElements() {
    for (size_t i = 0; i < this->count_ && this->elements_ != nullptr; ++i)
      if (!is_same(this->elements_[i], before<Kind>(values_[i])))
        values_[i] = this->elements_[i];
  }

  operator typename Kind::Narrow *() { return this->elements_; }

private:
  typename Kind::Wide *values_;
};

// For a procedure that takes 8 bytes: an input of 4.
class Widened {
public:
  explicit Widened(const int32_t *value) : wide_(*value) {}
  operator const int64_t *() const { return &wide_; }

private:
  int64_t wide_;
};

// How many elements a count that the caller gives stands for, where no more than `most` of them matter; none
// where the count itself is refused.
template <typename Count>
int64_t counted(const Count *count, int64_t most) {
  return *count > 0 && *count <= INT32_MAX ? std::min<int64_t>(*count, most) : 0;
}

// The first reason for which the routine is not called, or 0.
template <typename... Arguments>
int32_t problem_of(const Arguments &...arguments) {
  int32_t problem = 0;
  ((problem = problem != 0 ? problem : arguments.problem()), ...);
  return problem;
}

// The refusal of a routine that has an IERROR: errno is the number too.
inline int32_t refused(int32_t problem) {
  return errno = problem;
}

}  // namespace qxport::i8

#endif
