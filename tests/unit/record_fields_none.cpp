// The 29 routines for types that no component has: each stores ENONAME where its IERROR stands and touches
// nothing else.
#include "record_calls.h"

#include <functional>
#include <ostream>

namespace {

constexpr size_t SIZE = 64;

// What a caller hands over, all of it, between guards; with one member for every type that occurs.
struct Arguments {
  int32_t handle;
  Character compnam{"st_size"};
  Character value{SIZE};
  Guarded<int32_t> ialen{3};
  Guarded<int32_t> index{2};
  Guarded<int32_t> ilen{5};

  template <typename T>
  T *as() {
    return reinterpret_cast<T *>(value.data());
  }
};

struct Refusal {
  const char *name;
  std::function<void(Arguments &, int32_t *ierror)> call;
};

std::ostream &operator<<(std::ostream &out, const Refusal &refusal) {
  return out << refusal.name;
}

// IERROR stands 4th, behind VALUE.
template <typename Value>
auto scalar(void (*routine)(const int32_t *, const char *, Value *, int32_t *, qxport_charlen)) {
  return [routine](Arguments &a, int32_t *ierror) {
    routine(&a.handle, a.compnam.data(), a.as<Value>(), ierror, a.compnam.length());
  };
}
auto scalar(void (*routine)(const int32_t *, const char *, char *, int32_t *, qxport_charlen,
                            qxport_charlen)) {
  return [routine](Arguments &a, int32_t *ierror) {
    routine(&a.handle, a.compnam.data(), a.value.data(), ierror, a.compnam.length(), a.value.length());
  };
}
auto scalar(void (*routine)(const int32_t *, const char *, const char *, int32_t *, qxport_charlen,
                            qxport_charlen)) {
  return [routine](Arguments &a, int32_t *ierror) {
    routine(&a.handle, a.compnam.data(), a.value.data(), ierror, a.compnam.length(), a.value.length());
  };
}

// 5th, behind VALUE and IALEN.
template <typename Value>
auto array(void (*routine)(const int32_t *, const char *, Value *, const int32_t *, int32_t *,
                           qxport_charlen)) {
  return [routine](Arguments &a, int32_t *ierror) {
    routine(&a.handle, a.compnam.data(), a.as<Value>(), &a.ialen, ierror, a.compnam.length());
  };
}
template <typename Value>
auto array(void (*routine)(const int32_t *, const char *, Value *, const int32_t *, int32_t *, qxport_charlen,
                           qxport_charlen)) {
  return [routine](Arguments &a, int32_t *ierror) {
    routine(&a.handle, a.compnam.data(), a.as<Value>(), &a.ialen, ierror, a.compnam.length(), 8);
  };
}

// 5th, behind INDEX and VALUE.
template <typename Value>
auto element(void (*routine)(const int32_t *, const char *, const int32_t *, Value *, int32_t *,
                             qxport_charlen)) {
  return [routine](Arguments &a, int32_t *ierror) {
    routine(&a.handle, a.compnam.data(), &a.index, a.as<Value>(), ierror, a.compnam.length());
  };
}
template <typename Value>
auto element(void (*routine)(const int32_t *, const char *, const int32_t *, Value *, int32_t *,
                             qxport_charlen, qxport_charlen)) {
  return [routine](Arguments &a, int32_t *ierror) {
    routine(&a.handle, a.compnam.data(), &a.index, a.as<Value>(), ierror, a.compnam.length(), 8);
  };
}

// 6th, behind all that a text needs.
void call_astrget(Arguments &a, int32_t *ierror) {
  pxfastrget_(&a.handle, a.compnam.data(), a.value.data(), &a.ialen, &a.ilen, ierror, a.compnam.length(), 8);
}
void call_astrset(Arguments &a, int32_t *ierror) {
  pxfastrset_(&a.handle, a.compnam.data(), a.value.data(), &a.ialen, &a.ilen, ierror, a.compnam.length(), 8);
}
void call_estrset(Arguments &a, int32_t *ierror) {
  pxfestrset_(&a.handle, a.compnam.data(), &a.index, a.value.data(), &a.ilen, ierror, a.compnam.length(), 8);
}
#define REFUSAL(form, routine)                                                                               \
  { #routine, form(routine##_) }

const Refusal REFUSALS[] = {
    REFUSAL(scalar, pxfrealget),   REFUSAL(scalar, pxfrealset),   REFUSAL(scalar, pxflgclget),
    REFUSAL(scalar, pxflgclset),   REFUSAL(scalar, pxfcharget),   REFUSAL(scalar, pxfcharset),
    REFUSAL(scalar, pxfdblget),    REFUSAL(scalar, pxfdblset),    REFUSAL(array, pxfarealget),
    REFUSAL(array, pxfarealset),   REFUSAL(element, pxferealget), REFUSAL(element, pxferealset),
    REFUSAL(element, pxfeint8get), REFUSAL(element, pxfeint8set), REFUSAL(array, pxfalgclget),
    REFUSAL(array, pxfalgclset),   REFUSAL(element, pxfelgclget), REFUSAL(element, pxfelgclset),
    REFUSAL(array, pxfacharget),   REFUSAL(array, pxfacharset),   REFUSAL(element, pxfecharget),
    REFUSAL(element, pxfecharset), REFUSAL(array, pxfadblget),    REFUSAL(array, pxfadblset),
    REFUSAL(element, pxfedblget),  REFUSAL(element, pxfedblset),  {"pxfastrget", call_astrget},
    {"pxfastrset", call_astrset},  {"pxfestrset", call_estrset},
};
static_assert(std::size(REFUSALS) == 29);

class NoComponent : public testing::TestWithParam<Refusal> {
protected:
  static void expect_refusal(int32_t handle) {
    Arguments arguments{handle};
    EXPECT_EQ(reported_by([&](int32_t *ierror) { GetParam().call(arguments, ierror); }),
              refused(NO_SUCH_NAME));
    EXPECT_EQ(arguments.handle, handle);
    EXPECT_EQ(arguments.compnam.text(), "st_size");
    EXPECT_EQ(arguments.value.text(), std::string(SIZE, '#'));
    EXPECT_EQ(arguments.ialen, 3);
    EXPECT_EQ(arguments.index, 2);
    EXPECT_EQ(arguments.ilen, 5);
  }
};
INSTANTIATE_TEST_SUITE_P(Fields, NoComponent, testing::ValuesIn(REFUSALS),
                         [](const auto &info) { return info.param.name; });

}  // namespace

TEST_P(NoComponent, EveryKind) {
  for (const KnownKind &kind : known_kinds()) {
    const OwnedRecord record(kind.name);
    fill_record(record);
    const Contents before = contents_of(record);
    expect_refusal(record);
    EXPECT_EQ(contents_of(record), before);
  }
}

TEST_P(NoComponent, HandleIsNotLookedAt) {
  const ForeignObject object;
  for (const int32_t handle : {0, 256, -1, INT32_MAX, INT32_MIN, int32_t{object}})
    expect_refusal(handle);
}

// Nothing but IERROR is looked at at all.
TEST_P(NoComponent, EveryComponentName) {
  const OwnedRecord record("termios");
  for (const KnownKind &kind : known_kinds()) {
    for (const KnownComponent &component : kind.components) {
      Arguments arguments{record, Character(component.name)};
      EXPECT_EQ(reported_by([&](int32_t *ierror) { GetParam().call(arguments, ierror); }),
                refused(NO_SUCH_NAME));
    }
  }
}
