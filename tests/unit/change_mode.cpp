// CHMOD on real files: octal modes and symbolic clauses.
#include "kept_on_purpose.h"
#include "ordinary_user.h"
#include "outcome.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

Outcome chmod_of(const std::string &name, const std::string &mode) {
  Character name_argument(name);
  Character mode_argument(mode);
  // A symbolic call keeps the copies of its two arguments.
  const KeptOnPurpose kept;
  const Outcome outcome = outcome_of([&] {
    return chmod_(name_argument.data(), mode_argument.data(), name_argument.length(), mode_argument.length());
  });
  EXPECT_EQ(name_argument.text(), name);
  EXPECT_EQ(mode_argument.text(), mode);
  return outcome;
}

unsigned mode_of(const std::string &path) {
  struct stat status = {};
  EXPECT_EQ(stat(path.c_str(), &status), 0);
  return status.st_mode & 07777;
}

std::string octal(unsigned value) {
  char text[16];
  snprintf(text, sizeof(text), "%04o", value);
  return text;
}

struct Change {
  unsigned before;
  const char *mode;
  unsigned after;
};

class Chmod : public testing::Test {
protected:
  void expect(const Change &change) const {
    ASSERT_EQ(chmod(file_.c_str(), change.before), 0);
    EXPECT_EQ(chmod_of(file_, change.mode), succeeded()) << change.mode;
    EXPECT_EQ(octal(mode_of(file_)), octal(change.after))
        << "'" << change.mode << "' on " << octal(change.before);
  }

  void expect_refused(const std::string &mode) const {
    ASSERT_EQ(chmod(file_.c_str(), 0640), 0);
    EXPECT_EQ(chmod_of(file_, mode), reported(EINVAL)) << "'" << mode << "'";
    EXPECT_EQ(octal(mode_of(file_)), octal(0640)) << "'" << mode << "'";
  }

  const TemporaryDirectory directory_;
  const std::string file_ = directory_.file("file");
};

TEST_F(Chmod, OctalReplacesAllBits) {
  expect({0777, "644", 0644});
  expect({0000, "0644", 0644});
  expect({0777, "1", 0001});
  expect({0777, "00000000000000000400", 0400});
  expect({0644, "4755", 04755});
  expect({0644, "7777", 07777});
  expect({07777, "100644", 0644});  // as a status shows it, with the file type
}

TEST_F(Chmod, LowTwelveBitsOfAnOctalNumberCount) {
  expect({0777, "10000", 0000});
  expect({0777, "17777", 07777});
  expect({0777, "10000000640", 0640});   // 2**30 and more
  expect({0777, "17777777777", 07777});  // 2**31 - 1
}

TEST_F(Chmod, OctalNumberThatNoIntegerHoldsSetsAllBits) {
  std::vector<std::string> modes = {"1000000000000000000000" /* 2**63 */, "1000000000000000000000640",
                                    std::string(1000, '7')};
  if (sizeof(long) == 4)
    modes.push_back("20000000640");  // 2**31 and more
  for (const std::string &mode : modes) {
    ASSERT_EQ(chmod(file_.c_str(), 0600), 0);
    EXPECT_EQ(chmod_of(file_, mode), (Outcome{0, {ERANGE, SENTINEL, {}}})) << mode;
    EXPECT_EQ(octal(mode_of(file_)), octal(07777)) << mode;
  }
}

TEST_F(Chmod, OctalNumberIsReadAsTheMachinesInteger) {
  if (sizeof(long) == 8) {
    expect({0777, "20000000640", 0640});            // 2**31 and more
    expect({0777, "777777777777777770640", 0640});  // below 2**63
  } else {
    expect({0777, "17777770640", 0640});  // below 2**31
  }
}

TEST_F(Chmod, TrailingBlanksOfAnOctalModeDoNotCount) {
  expect({0777, "644 ", 0644});
  expect({0777, "644                    ", 0644});
}

TEST_F(Chmod, Mode0IsRefused) {
  expect_refused("0");
  expect_refused("0000");
  expect_refused("0   ");
}

TEST_F(Chmod, Mode7aIsRefused) {
  expect_refused("7a");
}

TEST_F(Chmod, OctalModeWithAnythingElseInItIsRefused) {
  for (const char *mode :
       {"8", "9", "08", "648", "6 44", "0x1ff", "0o644", "644u+x", "644,", "644\t", "7.0", "1e2"})
    expect_refused(mode);
}

TEST_F(Chmod, EnormousOctalModeIsNoError) {
  ASSERT_EQ(chmod(file_.c_str(), 0640), 0);
  EXPECT_EQ(chmod_of(file_, std::string(100000, '7')).answer, 0);
  EXPECT_EQ(octal(mode_of(file_)), "7777");
}

TEST_F(Chmod, UPlusXAddsUserExecuteKeepingTheRest) {
  expect({0644, "u+x", 0744});
  expect({07033, "u+x", 07133});
}

TEST_F(Chmod, PlusXAdds0111) {
  expect({0644, "+x", 0755});
}

TEST_F(Chmod, AEqualsRSets0444) {
  expect({0777, "a=r", 0444});
}

TEST_F(Chmod, UPlusSSetsBothSetIdBits) {
  expect({0755, "u+s", 06755});
  expect({0000, "u+s", 06000});
}

TEST_F(Chmod, PlusSChangesNothing) {
  expect({0755, "+s", 0755});
  expect({06755, "+s", 06755});
}

TEST_F(Chmod, GoMinusNothingLeavesTheBits) {
  expect({0765, "go-", 0765});
  expect({07777, "go-", 07777});
}

TEST_F(Chmod, EachWhoLetterNamesItsOwnBits) {
  expect({0000, "u+rwx", 0700});
  expect({0000, "g+rwx", 0070});
  expect({0000, "o+rwx", 0007});
  expect({0000, "a+rwx", 0777});
  expect({0777, "u-rwx", 0077});
  expect({0777, "g-rwx", 0707});
  expect({0777, "o-rwx", 0770});
  expect({0777, "a-rwx", 0000});
}

TEST_F(Chmod, WhoLettersAddUpInAnyNumberAndOrder) {
  expect({0000, "ug+r", 0440});
  expect({0000, "gu+r", 0440});
  expect({0000, "ou+w", 0202});
  expect({0000, "ogu+x", 0111});
  expect({0000, "uuuu+r", 0400});
  expect({0000, "ua+r", 0444});
  expect({0000, "au+r", 0444});
  expect({0000, "aoaoa+x", 0111});
}

TEST_F(Chmod, EachPermissionLetterNamesItsOwnBits) {
  expect({0000, "+r", 0444});
  expect({0000, "+w", 0222});
  expect({0000, "+x", 0111});
  expect({0000, "+rrr", 0444});
  expect({0000, "+xwr", 0777});
  expect({0000, "u+wr", 0600});
}

TEST_F(Chmod, MinusRemovesKeepingTheRest) {
  expect({0666, "-w", 0444});
  expect({07777, "g-wx", 07747});
  expect({0444, "-x", 0444});
  expect({01777, "o-w", 01775});
}

TEST_F(Chmod, EqualsClearsWhatItDoesNotName) {
  expect({0777, "u=r", 0400});
  expect({07777, "=rx", 0555});
  expect({0777, "go=w", 0022});
  expect({0777, "=", 0000});
  expect({0777, "a=", 0000});
}

TEST_F(Chmod, EmptyListAddsNothing) {
  expect({0640, "+", 0640});
  expect({0640, "-", 0640});
  expect({0640, "u+", 0640});
}

TEST_F(Chmod, SetIdBitsComeAndGoTogetherWhoeverIsNamed) {
  expect({0755, "o+s", 06755});
  expect({0755, "a+s", 06755});
  expect({06755, "u-s", 0755});
  expect({06755, "g-s", 0755});
  expect({04755, "g-s", 0755});
  expect({0755, "u=s", 06000});
  expect({0644, "u+sx", 06744});
  expect({0644, "u+xs", 06744});
  expect({0644, "g+rxs", 06654});
}

TEST_F(Chmod, SetIdBitsStayWithoutAWhoLetter) {
  expect({06755, "-s", 06755});
  expect({0755, "+sx", 0755});
  expect({0600, "+sr", 0644});
  expect({0755, "=s", 0000});
  expect({06644, "+x", 06755});
}

TEST_F(Chmod, TAndCapitalXAreWithoutEffect) {
  expect({0644, "u+t", 0644});
  expect({0644, "+X", 0644});
  expect({0755, "a+X", 0755});
  expect({01644, "a-t", 01644});
  expect({0644, "a+tXx", 0755});
  expect({0644, "u=tX", 0000});
}

TEST_F(Chmod, UmaskPlaysNoRole) {
  const mode_t former = umask(077);
  expect({0600, "+r", 0644});
  expect({0600, "644", 0644});
  umask(former);
}

TEST_F(Chmod, TrailingBlanksOfAClauseDoNotCount) {
  expect({0644, "u+x      ", 0744});
}

TEST_F(Chmod, ClauseEndsAtANul) {
  ASSERT_EQ(chmod(file_.c_str(), 0644), 0);
  EXPECT_EQ(chmod_of(file_, std::string("u+x\0g+w", 7)), succeeded());
  EXPECT_EQ(octal(mode_of(file_)), "0744");
  expect_refused(std::string("u\0+x", 4));
}

TEST_F(Chmod, ClauseMayBeLong) {
  ASSERT_EQ(chmod(file_.c_str(), 0600), 0);
  EXPECT_EQ(chmod_of(file_, std::string(100000, 'g') + "+" + std::string(100000, 'r')), succeeded());
  EXPECT_EQ(octal(mode_of(file_)), "0640");
}

TEST_F(Chmod, WhoWithoutAnOperatorIsRefused) {
  for (const char *mode : {"u", "g", "o", "a", "ugo", "u  "})
    expect_refused(mode);
}

TEST_F(Chmod, SecondClauseIsRefused) {
  for (const char *mode : {"u+r,g+w", "u+r,", ",u+r", "u+r+w", "u+r-w", "u+=r", "u++r", "u+rg+w"})
    expect_refused(mode);
}

TEST_F(Chmod, CopiedPermissionIsRefused) {
  for (const char *mode : {"u+u", "g=u", "u+v", "u+g", "u+o", "u+a"})
    expect_refused(mode);
}

TEST_F(Chmod, UnknownLettersAreRefused) {
  for (const char *mode : {"r", "x+r", "U+r", "G+r", "A=r", "u+R", "u+W", "u+S", "u+T", "u+4", "u~r", "u*r",
                           "u644", "+644", "-644", "u+\xff", "\xff+r"})
    expect_refused(mode);
}

TEST_F(Chmod, BlanksAndTabsInAClauseAreRefused) {
  for (const char *mode : {" u+r", "u +r", "u+ r", "u+r w", "\tu+r", "u+r\t", " 644"})
    expect_refused(mode);
}

TEST_F(Chmod, BlankModeIsRefused) {
  expect_refused("");
  expect_refused("   ");
}

TEST_F(Chmod, NegativeLengthOfTheModeIsABlankMode) {
  const qxport_charlen length = static_cast<qxport_charlen>(file_.size());
  EXPECT_EQ(outcome_of([&] { return chmod_(file_.c_str(), "644", length, -1); }), reported(EINVAL));
}

TEST_F(Chmod, WrongModeIsReportedBeforeAMissingFile) {
  EXPECT_EQ(chmod_of(directory_ / "missing", "0"), reported(EINVAL));
  EXPECT_EQ(chmod_of(directory_ / "missing", "u"), reported(EINVAL));
}

TEST_F(Chmod, MissingFileIsEnoent) {
  for (const char *mode : {"644", "u+x", "u-x", "u=x"})
    EXPECT_EQ(chmod_of(directory_ / "missing", mode), reported(ENOENT)) << mode;
}

TEST_F(Chmod, HostFailuresAreReported) {
  for (const char *mode : {"644", "+x"}) {
    EXPECT_EQ(chmod_of(file_ + "/below", mode), reported(ENOTDIR)) << mode;
    EXPECT_EQ(chmod_of(std::string(100000, 'n'), mode), reported(ENAMETOOLONG)) << mode;
    EXPECT_EQ(chmod_of("", mode), reported(ENOENT)) << mode;
    EXPECT_EQ(chmod_of("    ", mode), reported(ENOENT)) << mode;
  }
}

TEST_F(Chmod, FileOfSomebodyElseIsEperm) {
  as_ordinary_user([] {
    EXPECT_EQ(chmod_of("/", "755"), reported(EPERM));
    EXPECT_EQ(chmod_of("/", "u+x"), reported(EPERM));
  });
}

TEST_F(Chmod, NullNameReportsWhatTheConversionFound) {
  EXPECT_EQ(outcome_of([] { return chmod_(nullptr, "644", 4, 3); }), reported(EINVAL));
}

TEST_F(Chmod, NullModeReportsWhatTheConversionFound) {
  const qxport_charlen length = static_cast<qxport_charlen>(file_.size());
  EXPECT_EQ(outcome_of([&] { return chmod_(file_.c_str(), nullptr, length, 3); }), reported(EINVAL));
}

TEST_F(Chmod, NameIsTakenAsItIsButForTrailingBlanks) {
  const std::string blank = directory_.file(" a b");
  const std::string foreign = directory_.file("\xff\xfe");
  EXPECT_EQ(chmod_of(padded(blank, 500), "600"), succeeded());
  EXPECT_EQ(octal(mode_of(blank)), "0600");
  EXPECT_EQ(chmod_of(foreign + std::string("\0x", 2), "u=x"), succeeded());
  EXPECT_EQ(octal(mode_of(foreign)), "0100");
}

TEST_F(Chmod, LinkIsFollowed) {
  ASSERT_EQ(symlink("file", (directory_ / "link").c_str()), 0);
  ASSERT_EQ(chmod(file_.c_str(), 0600), 0);
  EXPECT_EQ(chmod_of(directory_ / "link", "g+r"), succeeded());
  EXPECT_EQ(octal(mode_of(file_)), "0640");
  EXPECT_EQ(chmod_of(directory_ / "link", "o=x"), succeeded());
  EXPECT_EQ(octal(mode_of(file_)), "0001");
}

}  // namespace
