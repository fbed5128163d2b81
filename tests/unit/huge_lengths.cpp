// Hidden lengths of 2 to 4 GiB, which the routines read with 32 bits or with all of a machine word: with 32
// bits they are negative, and count as no characters where characters are counted. On targets of 32 bits they
// are negative however they are read.
#include "posix_calls.h"

#include <fcntl.h>
#include <sys/mman.h>

namespace {

constexpr uint32_t CHARACTERS = (uint32_t{1} << 31) + 40;
constexpr qxport_charlen LENGTH = static_cast<qxport_charlen>(CHARACTERS);
constexpr bool WIDE = sizeof(qxport_charlen) == 8;

// A variable of that length that begins with a text and a few blanks; memory is only promised to it.
class HugeText {
public:
  explicit HugeText(const std::string &text)
      : start_(static_cast<char *>(mmap(nullptr, SIZE, PROT_READ | PROT_WRITE,
                                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))) {
    EXPECT_NE(start_, MAP_FAILED);
    memcpy(start_, padded(text, 64).data(), 64);
  }
  ~HugeText() { munmap(start_, SIZE); }
  HugeText(const HugeText &) = delete;
  HugeText &operator=(const HugeText &) = delete;

  char *data() { return start_; }
  std::string beginning() const { return std::string(start_, 8); }

private:
  static constexpr size_t SIZE = WIDE ? size_t{CHARACTERS} : 4096;
  char *start_;
};

// What a routine answers that reads all of the word, and so finds what is there, on 64 bits.
Outcome on_wide(const Outcome &wide, const Outcome &narrow) {
  return WIDE ? wide : narrow;
}

}  // namespace

TEST(HugeLengths, NamesOfStructuresAndConstantsAreEmpty) {
  HugeText stat("stat"), sigint("SIGINT");
  int32_t handle = SENTINEL, value = SENTINEL;
  EXPECT_EQ(reported_by([&](int32_t *ierror) { pxfstructcreate_(stat.data(), &handle, ierror, LENGTH); }),
            refused_silently(NO_SUCH_NAME));
  EXPECT_EQ(handle, SENTINEL);
  const OwnedRecord one("stat"), two("stat");
  const int32_t from = one, to = two;
  EXPECT_EQ(reported_by([&](int32_t *ierror) { pxfstructcopy_(stat.data(), &from, &to, ierror, LENGTH); }),
            refused_silently(NO_SUCH_NAME));
  EXPECT_EQ(reported_by([&](int32_t *ierror) { pxfconst_(sigint.data(), &value, ierror, LENGTH); }),
            refused_silently(NO_SUCH_NAME));
  EXPECT_EQ(value, -1);
  EXPECT_EQ(ipxfconst_(sigint.data(), LENGTH), -1);
  EXPECT_EQ(pxfisconst_(sigint.data(), LENGTH), 0);
}

// Of the routines for components all but one read the whole word.
TEST(HugeLengths, NamesOfComponentsAreFound) {
  HugeText size("st_size"), cc("c_cc"), dir("pw_dir");
  const OwnedRecord stat("stat"), termios("termios"), passwd("passwd");
  const int32_t jstat = stat, jtermios = termios, jpasswd = passwd, index = 3, ilen = 2;
  int32_t value = 7, ialen = 1, length = SENTINEL;
  int64_t wide = 7;
  const Outcome found = on_wide(succeeded(), refused(NO_SUCH_NAME));
  EXPECT_EQ(reported_by([&](int32_t *e) { pxfintset_(&jstat, size.data(), &value, e, LENGTH); }), found);
  EXPECT_EQ(reported_by([&](int32_t *e) { pxfintget_(&jstat, size.data(), &value, e, LENGTH); }), found);
  EXPECT_EQ(reported_by([&](int32_t *e) { pxfint8set_(&jstat, size.data(), &wide, e, LENGTH); }), found);
  EXPECT_EQ(reported_by([&](int32_t *e) { pxfint8get_(&jstat, size.data(), &wide, e, LENGTH); }), found);
  EXPECT_EQ(reported_by([&](int32_t *e) { pxfeintset_(&jtermios, cc.data(), &index, &value, e, LENGTH); }),
            found);
  EXPECT_EQ(reported_by([&](int32_t *e) { pxfeintget_(&jtermios, cc.data(), &index, &value, e, LENGTH); }),
            found);
  EXPECT_EQ(reported_by([&](int32_t *e) { pxfaintset_(&jtermios, cc.data(), &value, &ialen, e, LENGTH); }),
            found);
  EXPECT_EQ(reported_by([&](int32_t *e) { pxfaint8get_(&jtermios, cc.data(), &wide, &ialen, e, LENGTH); }),
            found);
  EXPECT_EQ(reported_by([&](int32_t *e) { pxfaintget_(&jtermios, cc.data(), &value, &ialen, e, LENGTH); }),
            refused(NO_SUCH_NAME));
  EXPECT_EQ(reported_by([&](int32_t *e) { pxfstrset_(&jpasswd, dir.data(), "ab", &ilen, e, LENGTH, 2); }),
            found);
  char text[4];
  EXPECT_EQ(reported_by([&](int32_t *e) {
              pxfstrget_(&jpasswd, dir.data(), text, &length, e, LENGTH, sizeof(text));
            }),
            found);
}

// A length that comes beside a text is compared without signs, so it is within the variable.
TEST(HugeLengths, LengthsBesideATextAreWithinTheVariable) {
  const OwnedRecord passwd("passwd");
  const int32_t handle = passwd;
  HugeText hello("hello");
  const auto set = [&](int32_t ilen) {
    return reported_by(
        [&](int32_t *ierror) { pxfstrset_(&handle, "pw_dir", hello.data(), &ilen, ierror, 6, LENGTH); });
  };
  EXPECT_EQ(set(5), on_wide(succeeded(), refused(EINVAL)));
  EXPECT_EQ(contents_of(passwd).at("pw_dir"), WIDE ? "hello" : "(none)");
  for (const int32_t ilen : {-1, INT32_MIN})
    EXPECT_EQ(set(ilen), refused(EINVAL)) << "counts as huge";

  HugeText root("/");
  int32_t value = SENTINEL;
  const auto ask = [&](int32_t ilen) {
    const int32_t name = _PC_NAME_MAX;
    return reported_by(
        [&](int32_t *ierror) { pxfpathconf_(root.data(), &ilen, &name, &value, ierror, LENGTH); });
  };
  EXPECT_EQ(ask(1), on_wide(succeeded(), refused(EINVAL)));
  EXPECT_EQ(value, WIDE ? pathconf("/", _PC_NAME_MAX) : SENTINEL);
  EXPECT_EQ(ask(-1), refused(EINVAL));

  HugeText name("QXPORT_HUGE"), text("a value");
  const int32_t name_length = 11, text_length = 7, overwrite = 1;
  unsetenv("QXPORT_HUGE");
  EXPECT_EQ(reported_by([&](int32_t *ierror) {
              pxfsetenv_(name.data(), &name_length, text.data(), &text_length, &overwrite, ierror, LENGTH,
                         LENGTH);
            }),
            on_wide(succeeded(), refused(EINVAL)));
  EXPECT_STREQ(getenv("QXPORT_HUGE"), WIDE ? "a value" : nullptr);

  HugeText program("/no such program");
  const int32_t path_length = 16, count = 0;
  EXPECT_EQ(reported_by([&](int32_t *ierror) {
              pxfexecv_(program.data(), &path_length, "x", &count, &count, ierror, LENGTH, 1);
            }),
            on_wide(failed_with(ENOENT), refused(EINVAL)));
}

// Without a length beside it a text has no characters.
TEST(HugeLengths, TextsWithoutALengthAreEmpty) {
  HugeText root("/"), name("HOME"), value("kept");
  const int32_t zero = 0, mode = F_OK, one = 1, overwrite = 1;
  EXPECT_EQ(reported_by([&](int32_t *e) { pxfaccess_(root.data(), &zero, &mode, e, LENGTH); }),
            failed_with(ENOENT));
  EXPECT_EQ(reported_by([&](int32_t *e) { pxfaccess_(root.data(), &one, &mode, e, LENGTH); }), succeeded());
  const OwnedRecord stat("stat");
  const int32_t jstat = stat;
  EXPECT_EQ(reported_by([&](int32_t *e) { pxfstat_(root.data(), &zero, &jstat, e, LENGTH); }),
            failed_with(ENOENT));
  const int32_t now = 0;
  EXPECT_EQ(reported_by([&](int32_t *e) { pxfutime_(root.data(), &zero, &now, e, LENGTH); }),
            failed_with(ENOENT));
  int32_t length = SENTINEL;
  EXPECT_EQ(reported_by([&](int32_t *e) {
              pxfgetenv_(name.data(), &zero, value.data(), &length, e, LENGTH, LENGTH);
            }),
            refused(EINVAL));
  EXPECT_EQ(value.beginning(), "kept    ");
  EXPECT_EQ(reported_by([&](int32_t *e) {
              pxfsetenv_(name.data(), &zero, value.data(), &zero, &overwrite, e, LENGTH, LENGTH);
            }),
            failed_with(EINVAL))
      << "a variable without a name";
  EXPECT_EQ(ipxflentrim_(name.data(), LENGTH), 0);
}

// A variable without room gets nothing of a text.
TEST(HugeLengths, VariablesHaveNoRoom) {
  HugeText value("kept");
  const OwnedRecord passwd("passwd");
  EXPECT_EQ(strset(passwd, "pw_dir", "/home"), succeeded());
  const int32_t handle = passwd;
  int32_t length = SENTINEL;
  EXPECT_EQ(
      reported_by([&](int32_t *e) { pxfstrget_(&handle, "pw_dir", value.data(), &length, e, 6, LENGTH); }),
      refused(CUT, ERANGE));
  EXPECT_EQ(length, 5);
  EXPECT_EQ(value.beginning(), "kept    ");
  EXPECT_EQ(reported_by([&](int32_t *e) { pxfgetcwd_(value.data(), &length, e, LENGTH); }),
            refused(CUT, ERANGE));
  EXPECT_EQ(value.beginning(), "kept    ");
}

// The Unix-style routines read the whole word. The memory behind the text is NULs, which are no blanks.
TEST(HugeLengths, UnixStyleRoutinesReadTheWholeWord) {
  HugeText text("x");
  EXPECT_EQ(lnblnk_(text.data(), LENGTH), WIDE ? static_cast<int32_t>(CHARACTERS) : 0);
  EXPECT_EQ(access_("/", "q", LENGTH, 1), EINVAL);
  EXPECT_EQ(rindex_("ab", text.data(), 2, LENGTH), WIDE ? 0 : 3) << "longer than the text, or empty";
}
