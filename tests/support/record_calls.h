// A caller's side of the routines for records: variables between guards, names as strings, and records that
// are freed at the end of the scope.
#ifndef TESTS_SUPPORT_RECORD_CALLS_H
#define TESTS_SUPPORT_RECORD_CALLS_H

#include "outcome.h"
#include "record_kinds.h"

#include <string>

constexpr int32_t NO_SUCH_NAME = 126;
constexpr int32_t NO_SUCH_HANDLE = 127;
constexpr int32_t CUT = 129;
constexpr int32_t WRONG_INDEX = 125;

// What a routine leaves in IERROR, with what it does to the error state.
inline Outcome refused(int32_t ierror, int error = EINVAL) {
  return {ierror, {error, SENTINEL, {}}};
}
inline Outcome refused_silently(int32_t ierror) {
  return {ierror, untouched()};
}

// A variable between two others; the destructor fails the test when one of those was written.
template <typename T>
class Guarded {
public:
  static constexpr T GUARD = static_cast<T>(0x5A17BEEF5A17BEEF);

  explicit Guarded(T value) : all_{GUARD, value, GUARD} {}
  ~Guarded() {
    EXPECT_EQ(all_[0], GUARD) << "written before a variable";
    EXPECT_EQ(all_[2], GUARD) << "written behind a variable";
  }
  Guarded(const Guarded &) = delete;
  Guarded &operator=(const Guarded &) = delete;

  T *operator&() { return &all_[1]; }
  operator T() const { return all_[1]; }
  T value() const { return all_[1]; }

private:
  T all_[3];
};

inline qxport_charlen length_of_name(const std::string &name) {
  return static_cast<qxport_charlen>(name.size());
}

// Makes the call with an IERROR of its own and answers it with the error state.
template <typename Call>
Outcome reported_by(Call call) {
  Guarded<int32_t> ierror(SENTINEL);
  return outcome_of([&] {
    call(&ierror);
    return ierror.value();
  });
}

inline Outcome create(const std::string &name, int32_t *handle) {
  return reported_by(
      [&](int32_t *ierror) { pxfstructcreate_(name.data(), handle, ierror, length_of_name(name)); });
}
inline Outcome copy(const std::string &name, int32_t source, int32_t destination) {
  return reported_by([&](int32_t *ierror) {
    pxfstructcopy_(name.data(), &source, &destination, ierror, length_of_name(name));
  });
}
inline Outcome release(int32_t *handle) {
  return reported_by([&](int32_t *ierror) { pxfstructfree_(handle, ierror); });
}

inline Outcome intget(int32_t handle, const std::string &name, int32_t *value) {
  return reported_by(
      [&](int32_t *ierror) { pxfintget_(&handle, name.data(), value, ierror, length_of_name(name)); });
}
inline Outcome intset(int32_t handle, const std::string &name, int32_t value) {
  return reported_by(
      [&](int32_t *ierror) { pxfintset_(&handle, name.data(), &value, ierror, length_of_name(name)); });
}
inline Outcome int8get(int32_t handle, const std::string &name, int64_t *value) {
  return reported_by(
      [&](int32_t *ierror) { pxfint8get_(&handle, name.data(), value, ierror, length_of_name(name)); });
}
inline Outcome int8set(int32_t handle, const std::string &name, int64_t value) {
  return reported_by(
      [&](int32_t *ierror) { pxfint8set_(&handle, name.data(), &value, ierror, length_of_name(name)); });
}
inline Outcome aintget(int32_t handle, const std::string &name, int32_t *value, int32_t *ialen) {
  return reported_by([&](int32_t *ierror) {
    pxfaintget_(&handle, name.data(), value, ialen, ierror, length_of_name(name));
  });
}
inline Outcome aintset(int32_t handle, const std::string &name, const int32_t *value, int32_t *ialen) {
  return reported_by([&](int32_t *ierror) {
    pxfaintset_(&handle, name.data(), value, ialen, ierror, length_of_name(name));
  });
}
inline Outcome aint8get(int32_t handle, const std::string &name, int64_t *value, int32_t *ialen) {
  return reported_by([&](int32_t *ierror) {
    pxfaint8get_(&handle, name.data(), value, ialen, ierror, length_of_name(name));
  });
}
inline Outcome aint8set(int32_t handle, const std::string &name, const int64_t *value, int32_t *ialen) {
  return reported_by([&](int32_t *ierror) {
    pxfaint8set_(&handle, name.data(), value, ialen, ierror, length_of_name(name));
  });
}
inline Outcome eintget(int32_t handle, const std::string &name, int32_t index, int32_t *value) {
  return reported_by([&](int32_t *ierror) {
    pxfeintget_(&handle, name.data(), &index, value, ierror, length_of_name(name));
  });
}
inline Outcome eintset(int32_t handle, const std::string &name, int32_t index, int32_t value) {
  return reported_by([&](int32_t *ierror) {
    pxfeintset_(&handle, name.data(), &index, &value, ierror, length_of_name(name));
  });
}
inline Outcome strget(int32_t handle, const std::string &name, Character &value, int32_t *ilen) {
  return reported_by([&](int32_t *ierror) {
    pxfstrget_(&handle, name.data(), value.data(), ilen, ierror, length_of_name(name), value.length());
  });
}
inline Outcome strset(int32_t handle, const std::string &name, const std::string &value, int32_t ilen) {
  return reported_by([&](int32_t *ierror) {
    pxfstrset_(&handle, name.data(), value.data(), &ilen, ierror, length_of_name(name),
               length_of_name(value));
  });
}
inline Outcome strset(int32_t handle, const std::string &name, const std::string &value) {
  return strset(handle, name, value, static_cast<int32_t>(value.size()));
}
inline Outcome estrget(int32_t handle, const std::string &name, int32_t index, Character &value,
                       int32_t *ilen) {
  return reported_by([&](int32_t *ierror) {
    pxfestrget_(&handle, name.data(), &index, value.data(), ilen, ierror, length_of_name(name),
                value.length());
  });
}

// A record of the library, freed at the end of the scope.
class OwnedRecord {
public:
  explicit OwnedRecord(const std::string &kind) { EXPECT_EQ(create(kind, &handle_), succeeded()) << kind; }
  ~OwnedRecord() { EXPECT_EQ(release(&handle_), succeeded()); }
  OwnedRecord(const OwnedRecord &) = delete;
  OwnedRecord &operator=(const OwnedRecord &) = delete;

  operator int32_t() const { return handle_; }

private:
  int32_t handle_ = 0;
};

// Something registered that is no record, as a directory stream is: two words and their handle.
class ForeignObject {
public:
  explicit ForeignObject(uint32_t kind = 1001) : words_{kind, 0x5A17BEEF} {
    handle_ = get_handle_from_alloc_address(words_);
    EXPECT_NE(handle_, 0);
  }
  ~ForeignObject() {
    EXPECT_EQ(words_[1], 0x5A17BEEF);
    EXPECT_EQ(free_alloc_handle(handle_), 0);
  }
  ForeignObject(const ForeignObject &) = delete;
  ForeignObject &operator=(const ForeignObject &) = delete;

  operator int32_t() const { return handle_; }
  const void *address() const { return words_; }

private:
  uint32_t words_[2];
  int32_t handle_;
};

#endif
