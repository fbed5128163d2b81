// Every get and set routine on every kind of record with every name: what each answers, what it writes and
// what it leaves alone. What fits is decided by the tests' own table.
#include "record_calls.h"

#include <functional>
#include <set>
#include <sstream>

namespace {

constexpr int64_t MARK_IN_THE_UPPER_HALF = 0x5EA15EA100000000;
constexpr int32_t INDEX = 7;

// What a caller's variables hold, in words.
struct Variables {
  std::string text;
  bool operator==(const Variables &) const = default;
};
std::ostream &operator<<(std::ostream &out, const Variables &variables) {
  return out << variables.text;
}

template <typename... Values>
Variables hold(const Values &...values) {
  std::ostringstream out;
  ((out << values << '|'), ...);
  return {out.str()};
}

template <typename Integer>
std::string in_words(const Integer (&elements)[20]) {
  std::ostringstream out;
  for (const Integer element : elements)
    out << element << ' ';
  return out.str();
}

struct Answer {
  Outcome outcome;
  Variables variables;
};

// One routine: on which forms of component it works, and what it then does to the caller's variables and to
// the component, given what the component held.
struct Routine {
  std::string name;
  std::set<Form> fits;
  std::function<Answer(int32_t handle, const std::string &compnam)> call;
  Variables untouched;
  std::function<Variables(const std::string &content)> gives;
  std::function<std::string(const std::string &content)> stores;
};

std::ostream &operator<<(std::ostream &out, const Routine &routine) {
  return out << routine.name;
}

std::string keep(const std::string &content) {
  return content;
}

const std::set<Form> NUMBERS = {Form::Number32, Form::Number64, Form::Handler, Form::Count};
const std::set<Form> SETTABLE_NUMBERS = {Form::Number32, Form::Number64, Form::Handler};
const std::set<Form> ARRAYS = {Form::Array};
const std::set<Form> TEXTS = {Form::Text, Form::String};
const std::set<Form> MEMBERS = {Form::Members};

template <typename Integer>
Routine array_get(const char *name, Outcome (*get)(int32_t, const std::string &, Integer *, int32_t *)) {
  const auto call = [get](int32_t handle, const std::string &compnam) {
    Integer value[20];
    std::fill_n(value, 20, SENTINEL);
    int32_t ialen = 20;
    const Outcome outcome = get(handle, compnam, value, &ialen);
    return Answer{outcome, hold(in_words(value), ialen)};
  };
  Integer former[20];
  std::fill_n(former, 20, SENTINEL);
  return {name,
          ARRAYS,
          call,
          hold(in_words(former), 20),
          [](const std::string &content) { return hold(content, 20); },
          keep};
}

template <typename Integer>
Routine array_set(const char *name,
                  Outcome (*set)(int32_t, const std::string &, const Integer *, int32_t *)) {
  const auto call = [set](int32_t handle, const std::string &compnam) {
    Integer value[20];
    std::fill_n(value, 20, -5);
    int32_t ialen = 20;
    const Outcome outcome = set(handle, compnam, value, &ialen);
    return Answer{outcome, hold(in_words(value), ialen)};
  };
  Integer elements[20];
  std::fill_n(elements, 20, -5);
  const Variables inputs = hold(in_words(elements), 20);
  return {name,
          ARRAYS,
          call,
          inputs,
          [inputs](const std::string &) { return inputs; },
          [](const std::string &) {
            std::string content;
            for (int i = 0; i < 20; ++i)
              content += "-5 ";
            return content;
          }};
}

// A text as PXFSTRGET hands it out: up to its NUL.
Variables text_in_40(const std::string &content) {
  const std::string text = content == "(none)" ? "" : content.c_str();
  return hold(padded(text, 40), text.size());
}

std::string second_member(const std::string &content) {
  const size_t first = content.find(';');
  return content.substr(first + 1, content.find(';', first + 1) - first - 1);
}

std::string with_element(const std::string &content, int32_t index, int32_t value) {
  std::istringstream in(content);
  std::string element;
  std::string result;
  for (int32_t i = 1; in >> element; ++i)
    result += (i == index ? std::to_string(value) : element) + ' ';
  return result;
}

std::string element_of(const std::string &content, int32_t index) {
  std::istringstream in(content);
  std::string element;
  for (int32_t i = 1; i <= index; ++i)
    in >> element;
  return element;
}

std::vector<Routine> routines() {
  return {
      {"pxfintget", NUMBERS,
       [](int32_t handle, const std::string &compnam) {
         Guarded<int32_t> value(SENTINEL);
         const Outcome outcome = intget(handle, compnam, &value);
         return Answer{outcome, hold(value)};
       },
       hold(SENTINEL), [](const std::string &content) { return hold(content); }, keep},
      {"pxfintset",
       SETTABLE_NUMBERS,
       [](int32_t handle, const std::string &compnam) {
         return Answer{intset(handle, compnam, -4711), {}};
       },
       {},
       [](const std::string &) { return Variables(); },
       [](const std::string &) { return "-4711"; }},
      {"pxfint8get", NUMBERS,
       [](int32_t handle, const std::string &compnam) {
         Guarded<int64_t> value(MARK_IN_THE_UPPER_HALF);
         const Outcome outcome = int8get(handle, compnam, &value);
         return Answer{outcome, hold(value)};
       },
       hold(MARK_IN_THE_UPPER_HALF),
       [](const std::string &content) {
         return hold(MARK_IN_THE_UPPER_HALF | static_cast<uint32_t>(std::stoll(content)));
       },
       keep},
      {"pxfint8set",
       SETTABLE_NUMBERS,
       [](int32_t handle, const std::string &compnam) {
         return Answer{int8set(handle, compnam, -4712), {}};
       },
       {},
       [](const std::string &) { return Variables(); },
       [](const std::string &) { return "-4712"; }},
      array_get<int32_t>("pxfaintget", aintget),
      array_set<int32_t>("pxfaintset", aintset),
      array_get<int64_t>("pxfaint8get", aint8get),
      array_set<int64_t>("pxfaint8set", aint8set),
      {"pxfeintget", ARRAYS,
       [](int32_t handle, const std::string &compnam) {
         Guarded<int32_t> value(SENTINEL);
         const Outcome outcome = eintget(handle, compnam, INDEX, &value);
         return Answer{outcome, hold(value)};
       },
       hold(SENTINEL), [](const std::string &content) { return hold(element_of(content, INDEX)); }, keep},
      {"pxfeintset",
       ARRAYS,
       [](int32_t handle, const std::string &compnam) {
         return Answer{eintset(handle, compnam, INDEX, -4713), {}};
       },
       {},
       [](const std::string &) { return Variables(); },
       [](const std::string &content) { return with_element(content, INDEX, -4713); }},
      {"pxfstrget", TEXTS,
       [](int32_t handle, const std::string &compnam) {
         Character value(40);
         Guarded<int32_t> ilen(SENTINEL);
         const Outcome outcome = strget(handle, compnam, value, &ilen);
         return Answer{outcome, hold(value.text(), ilen)};
       },
       hold(std::string(40, '#'), SENTINEL), text_in_40, keep},
      {"pxfstrset",
       TEXTS,
       [](int32_t handle, const std::string &compnam) {
         return Answer{strset(handle, compnam, "new text  "), {}};
       },
       {},
       [](const std::string &) { return Variables(); },
       [](const std::string &content) {
         // In the record the former bytes behind the NUL stay.
         std::string text = "new text";
         return content.size() == 256 ? text + '\0' + content.substr(text.size() + 1) : text;
       }},
      {"pxfestrget", MEMBERS,
       [](int32_t handle, const std::string &compnam) {
         Character value(40);
         Guarded<int32_t> ilen(SENTINEL);
         const Outcome outcome = estrget(handle, compnam, 2, value, &ilen);
         return Answer{outcome, hold(value.text(), ilen)};
       },
       hold(std::string(40, '#'), SENTINEL),
       [](const std::string &content) { return text_in_40(second_member(content)); }, keep},
  };
}

// The names of all components of all structures, of the structures themselves, and others.
std::vector<std::string> all_names() {
  std::vector<std::string> names = {"", " ", "nothing", "mask", "(mask)", "kind", "c_cc(1)", "st_atime_"};
  for (const KnownKind &kind : known_kinds()) {
    names.push_back(kind.name);
    for (const KnownComponent &component : kind.components)
      names.push_back(component.name);
  }
  return names;
}

// Only a group has members, and this routine says so before it looks at the name.
Outcome refusal(const Routine &routine, const std::string &kind) {
  return routine.name == "pxfestrget" && kind != "group" ? refused(EINVAL) : refused(NO_SUCH_NAME);
}

const KnownComponent *find(const KnownKind &kind, const std::string &name) {
  for (const KnownComponent &component : kind.components)
    if (component.name == name)
      return &component;
  return nullptr;
}

class FieldRoutine : public testing::TestWithParam<Routine> {};
INSTANTIATE_TEST_SUITE_P(Fields, FieldRoutine, testing::ValuesIn(routines()),
                         [](const auto &info) { return info.param.name; });

}  // namespace

TEST_P(FieldRoutine, EveryNameOfEveryKind) {
  const Routine &routine = GetParam();
  size_t fitting = 0;
  for (const KnownKind &kind : known_kinds()) {
    for (const std::string &name : all_names()) {
      SCOPED_TRACE(kind.name + ' ' + name);
      const OwnedRecord record(kind.name);
      fill_record(record);
      Contents expected = contents_of(record);
      const Answer answer = routine.call(record, name);
      const KnownComponent *component = find(kind, name);
      if (component != nullptr && routine.fits.contains(component->form)) {
        ++fitting;
        std::string &content = expected.at(name);
        EXPECT_EQ(answer.outcome, succeeded());
        EXPECT_EQ(answer.variables, routine.gives(content));
        content = routine.stores(content);
      } else {
        EXPECT_EQ(answer.outcome, refusal(routine, kind.name));
        EXPECT_EQ(answer.variables, routine.untouched);
      }
      EXPECT_EQ(contents_of(record), expected);
    }
  }
  EXPECT_GT(fitting, 0u);
}

// A fresh record reads as zeros and empty texts.
TEST_P(FieldRoutine, EveryComponentOfAFreshRecord) {
  const Routine &routine = GetParam();
  for (const KnownKind &kind : known_kinds()) {
    for (const KnownComponent &component : kind.components) {
      if (!routine.fits.contains(component.form) || component.form == Form::Members)
        continue;
      SCOPED_TRACE(component.name);
      const OwnedRecord record(kind.name);
      Contents expected = contents_of(record);
      std::string &content = expected.at(component.name);
      const Answer answer = routine.call(record, component.name);
      EXPECT_EQ(answer.outcome, succeeded());
      EXPECT_EQ(answer.variables, routine.gives(content));
      content = routine.stores(content);
      EXPECT_EQ(contents_of(record), expected);
    }
  }
}

TEST_P(FieldRoutine, UnknownHandles) {
  const Routine &routine = GetParam();
  const OwnedRecord record("tms");
  for (const int32_t handle : {0, 256, 512, -256, INT32_MIN, INT32_MAX, 254, 0x10001}) {
    for (const std::string name : {"tms_utime", "c_cc", "sysname", "gr_mem", "nothing", ""}) {
      const Answer answer = routine.call(handle, name);
      EXPECT_EQ(answer.outcome, refused(NO_SUCH_HANDLE)) << handle << ' ' << name;
      EXPECT_EQ(answer.variables, routine.untouched) << handle << ' ' << name;
    }
  }
}

TEST_P(FieldRoutine, StaleHandle) {
  const Routine &routine = GetParam();
  for (const KnownKind &kind : known_kinds()) {
    int32_t handle = 0;
    EXPECT_EQ(create(kind.name, &handle), succeeded());
    const int32_t stale = handle;
    EXPECT_EQ(release(&handle), succeeded());
    for (const KnownComponent &component : kind.components) {
      const Answer answer = routine.call(stale, component.name);
      EXPECT_EQ(answer.outcome, refused(NO_SUCH_HANDLE)) << component.name;
      EXPECT_EQ(answer.variables, routine.untouched) << component.name;
    }
  }
}

TEST_P(FieldRoutine, ForeignObjectHasNoComponents) {
  const Routine &routine = GetParam();
  for (const uint32_t kind : {0u, 12u, 1001u, 0xFFFFFFFFu}) {
    const ForeignObject object(kind);
    for (const std::string &name : all_names()) {
      const Answer answer = routine.call(object, name);
      EXPECT_EQ(answer.outcome, refusal(routine, "none")) << kind << ' ' << name;
      EXPECT_EQ(answer.variables, routine.untouched) << kind << ' ' << name;
    }
  }
}
