// How the routines take a component's name.
#include "fenced_text.h"
#include "record_calls.h"

#include <algorithm>
#include <cctype>
#include <strings.h>

namespace {

struct NameOfKind {
  std::string kind;
  KnownComponent component;
};
std::ostream &operator<<(std::ostream &out, const NameOfKind &name) {
  return out << name.kind << ' ' << name.component.name;
}

std::vector<NameOfKind> names() {
  std::vector<NameOfKind> names;
  for (const KnownKind &kind : known_kinds())
    for (const KnownComponent &component : kind.components)
      names.push_back({kind.name, component});
  return names;
}

// Reads the component by the routine that fits its form; all of them take names alike.
class ComponentName : public testing::TestWithParam<NameOfKind> {
protected:
  void SetUp() override { fill_record(record); }

  const std::string &name() const { return GetParam().component.name; }

  Outcome get(const char *text, qxport_charlen length) {
    const int32_t handle = record;
    return reported_by([&](int32_t *ierror) {
      int32_t number = 0;
      int32_t elements[20];
      char value[40];
      const int32_t index = 1;
      int32_t ialen = 20;
      switch (GetParam().component.form) {
      case Form::Array:
        return pxfaint8set_(&handle, text, std::vector<int64_t>(20).data(), &ialen, ierror, length);
      case Form::Text:
      case Form::String:
        return pxfstrget_(&handle, text, value, &number, ierror, length, sizeof(value));
      case Form::Members:
        return pxfestrget_(&handle, text, &index, value, &number, ierror, length, sizeof(value));
      default:
        return pxfintget_(&handle, text, elements, ierror, length);
      }
    });
  }
  Outcome get(const std::string &text) { return get(text.data(), length_of_name(text)); }

  static bool names_a_component(const std::string &text) {
    static const std::vector<NameOfKind> known = names();
    return std::any_of(known.begin(), known.end(), [&](const NameOfKind &another) {
      return another.kind == GetParam().kind && strcasecmp(text.c_str(), another.component.name.c_str()) == 0;
    });
  }

  const OwnedRecord record{GetParam().kind};
};

INSTANTIATE_TEST_SUITE_P(Fields, ComponentName, testing::ValuesIn(names()),
                         [](const auto &info) { return info.param.component.name; });

}  // namespace

TEST_P(ComponentName, EveryCase) {
  for (unsigned mask = 0; mask < 1u << name().size(); ++mask) {
    std::string mixed = name();
    for (size_t i = 0; i < mixed.size(); ++i)
      if (mask >> i & 1)
        mixed[i] = static_cast<char>(toupper(mixed[i]));
    ASSERT_EQ(get(mixed), succeeded()) << mixed;
  }
}

TEST_P(ComponentName, EndsAtItsFirstBlank) {
  for (const char *behind : {" ", "    ", " x", "  st_mode", " \t"})
    EXPECT_EQ(get(name() + behind), succeeded()) << behind;
  EXPECT_EQ(get(name() + std::string(10'000, ' ')), succeeded());
  EXPECT_EQ(get(name() + ' ' + std::string(10'000, 'x')), succeeded());
}

TEST_P(ComponentName, EndsAtANul) {
  EXPECT_EQ(get(name() + std::string("\0x", 2)), succeeded());
  EXPECT_EQ(get(name() + std::string(1, '\0')), succeeded());
  EXPECT_EQ(get(name().substr(0, 2) + std::string(1, '\0') + name().substr(2)), refused(NO_SUCH_NAME));
  EXPECT_EQ(get(std::string(1, '\0') + name()), refused(NO_SUCH_NAME));
}

TEST_P(ComponentName, LeadingBlankIsTheEmptyName) {
  EXPECT_EQ(get(' ' + name()), refused(NO_SUCH_NAME));
  EXPECT_EQ(get(""), refused(NO_SUCH_NAME));
  EXPECT_EQ(get("   "), refused(NO_SUCH_NAME));
  EXPECT_EQ(get(nullptr, 0), refused(NO_SUCH_NAME));
}

TEST_P(ComponentName, NegativeHiddenLengthIsTheEmptyName) {
  EXPECT_EQ(get(name().data(), -1), refused(NO_SUCH_NAME));
  EXPECT_EQ(get(name().data(), INTPTR_MIN), refused(NO_SUCH_NAME));
}

TEST_P(ComponentName, OtherWhiteSpaceIsPartOfIt) {
  for (const char space : {'\t', '\n', '\v', '\f', '\r', '\xa0'}) {
    EXPECT_EQ(get(name() + space), refused(NO_SUCH_NAME)) << int{space};
    EXPECT_EQ(get(space + name()), refused(NO_SUCH_NAME)) << int{space};
    EXPECT_EQ(get(name() + space + "  "), refused(NO_SUCH_NAME)) << int{space};
  }
}

TEST_P(ComponentName, PartsAndExtensionsAreOtherNames) {
  EXPECT_EQ(get(name().substr(0, name().size() - 1)), refused(NO_SUCH_NAME));
  EXPECT_EQ(get(name().substr(1)), refused(NO_SUCH_NAME));
  for (size_t length = 1; length <= 70; ++length)
    EXPECT_EQ(get(name() + std::string(length, 'x')), refused(NO_SUCH_NAME)) << length;
  EXPECT_EQ(get(name() + std::string(10'000, 'x')), refused(NO_SUCH_NAME));
  EXPECT_EQ(get(std::string(10'000, 'x')), refused(NO_SUCH_NAME));
}

// Names that differ in one bit of one character are told apart.
TEST_P(ComponentName, OneOtherCharacterMakesAnotherName) {
  for (size_t i = 0; i < name().size(); ++i) {
    for (int byte = 1; byte < 256; ++byte) {
      std::string other = name();
      other[i] = static_cast<char>(byte);
      if (!names_a_component(other)) {
        ASSERT_EQ(get(other), refused(NO_SUCH_NAME)) << other;
      }
    }
  }
}

TEST_P(ComponentName, NothingBehindItIsRead) {
  const FencedText fenced(name());
  EXPECT_EQ(get(fenced.data(), fenced.length()), succeeded());
}

#if UINTPTR_MAX > UINT32_MAX

namespace {

constexpr qxport_charlen FOUR_GIGABYTES = qxport_charlen{1} << 32;

// Calls every routine that works on c_cc with a name and its hidden length; the IERRORs.
struct ArrayErrors {
  int32_t aintget, aintset, aint8get, aint8set, eintget, eintset;
  bool operator==(const ArrayErrors &) const = default;
};

ArrayErrors array_errors(int32_t handle, const char *name, qxport_charlen length) {
  int32_t value[20] = {};
  int64_t wide[20] = {};
  int32_t ialen = 20;
  const int32_t index = 1;
  ArrayErrors errors;
  pxfaintget_(&handle, name, value, &ialen, &errors.aintget, length);
  pxfaintset_(&handle, name, value, &ialen, &errors.aintset, length);
  pxfaint8get_(&handle, name, wide, &ialen, &errors.aint8get, length);
  pxfaint8set_(&handle, name, wide, &ialen, &errors.aint8set, length);
  pxfeintget_(&handle, name, &index, value, &errors.eintget, length);
  pxfeintset_(&handle, name, &index, value, &errors.eintset, length);
  return errors;
}

}  // namespace

TEST(HiddenLengthOfAName, OneRoutineReadsItsLowHalf) {
  const OwnedRecord record("termios");
  EXPECT_EQ(array_errors(record, "c_ccx ", FOUR_GIGABYTES + 4), (ArrayErrors{0, 126, 126, 126, 126, 126}));
  EXPECT_EQ(array_errors(record, "c_cc ", FOUR_GIGABYTES), (ArrayErrors{126, 0, 0, 0, 0, 0}));
  EXPECT_EQ(array_errors(record, "c_cc ", FOUR_GIGABYTES + 3), (ArrayErrors{126, 0, 0, 0, 0, 0}));
  EXPECT_EQ(array_errors(record, "c_cc ", 7 * FOUR_GIGABYTES + 100), (ArrayErrors{}));
}

TEST(HiddenLengthOfAName, AllOtherFieldsReadTheWholeWord) {
  const OwnedRecord stat("stat");
  const OwnedRecord group("group");
  fill_record(group);
  const int32_t jstat = stat;
  const int32_t jgroup = group;
  const int32_t index = 1;
  int32_t number = 0;
  int64_t wide = 0;
  char value[40] = "";
  int32_t ierror = SENTINEL;
  const auto expect_done = [&ierror](const char *routine) {
    EXPECT_EQ(ierror, 0) << routine;
    ierror = SENTINEL;
  };
  const qxport_charlen length = FOUR_GIGABYTES + 1;
  pxfintget_(&jstat, "st_size ", &number, &ierror, length);
  expect_done("pxfintget");
  pxfintset_(&jstat, "st_size ", &number, &ierror, length);
  expect_done("pxfintset");
  pxfint8get_(&jstat, "st_size ", &wide, &ierror, length);
  expect_done("pxfint8get");
  pxfint8set_(&jstat, "st_size ", &wide, &ierror, length);
  expect_done("pxfint8set");
  pxfstrget_(&jgroup, "gr_name ", value, &number, &ierror, length, sizeof(value));
  expect_done("pxfstrget");
  number = 3;
  pxfstrset_(&jgroup, "gr_name ", value, &number, &ierror, length, sizeof(value));
  expect_done("pxfstrset");
  pxfestrget_(&jgroup, "gr_mem ", &index, value, &number, &ierror, length, sizeof(value));
  expect_done("pxfestrget");
}

TEST(HiddenLengthOfAName, OfAStructureItsLowHalfCounts) {
  const OwnedRecord stat("stat");
  const int32_t jstat = stat;
  int32_t made = 0;
  const auto create_with = [&made](const char *name, qxport_charlen length) {
    return reported_by([&](int32_t *ierror) { pxfstructcreate_(name, &made, ierror, length); });
  };
  const auto copy_with = [&jstat](const char *name, qxport_charlen length) {
    return reported_by([&](int32_t *ierror) { pxfstructcopy_(name, &jstat, &jstat, ierror, length); });
  };
  EXPECT_EQ(create_with("statx", FOUR_GIGABYTES + 4), succeeded());
  EXPECT_EQ(copy_with("statx", FOUR_GIGABYTES + 4), succeeded());
  EXPECT_EQ(release(&made), succeeded());
  for (const qxport_charlen length : {FOUR_GIGABYTES, FOUR_GIGABYTES + 3, FOUR_GIGABYTES - 1}) {
    EXPECT_EQ(create_with("stat ", length), refused_silently(NO_SUCH_NAME)) << length;
    EXPECT_EQ(copy_with("stat ", length), refused_silently(NO_SUCH_NAME)) << length;
  }
}

#endif
