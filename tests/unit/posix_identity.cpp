// Who and where a process is: ids, groups, sessions, the names of login and terminals.
#include "captured_child.h"
#include "in_child.h"
#include "ordinary_user.h"
#include "outcome.h"
#include "pseudo_terminal.h"
#include "record_calls.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <grp.h>
#include <unistd.h>

namespace {

// What the host's getlogin answers: a name, or null with this error.
const char *login;
int login_error;

}  // namespace

// Takes the C library's place.
char *getlogin() {
  errno = login == nullptr ? login_error : errno;
  return const_cast<char *>(login);
}

namespace {

using Query = void (*)(int32_t *, int32_t *);

int32_t answer_of(Query query) {
  Guarded<int32_t> id(SENTINEL);
  EXPECT_EQ(reported_by([&](int32_t *ierror) { query(&id, ierror); }), succeeded());
  return id;
}

Outcome call_with_id(void (*routine)(const int32_t *, int32_t *), int32_t id) {
  return reported_by([&](int32_t *ierror) { routine(&id, ierror); });
}

void expect_ids_of_the_host() {
  EXPECT_EQ(answer_of(pxfgetpid_), getpid());
  EXPECT_EQ(answer_of(pxfgetppid_), getppid());
  EXPECT_EQ(answer_of(pxfgetuid_), static_cast<int32_t>(getuid()));
  EXPECT_EQ(answer_of(pxfgeteuid_), static_cast<int32_t>(geteuid()));
  EXPECT_EQ(answer_of(pxfgetgid_), static_cast<int32_t>(getgid()));
  EXPECT_EQ(answer_of(pxfgetegid_), static_cast<int32_t>(getegid()));
  EXPECT_EQ(answer_of(pxfgetpgrp_), getpgrp());
}

TEST(Ids, AreTheHosts) {
  expect_ids_of_the_host();
}

TEST(Ids, OfAChildAreItsOwn) {
  const int32_t parent = answer_of(pxfgetpid_);
  in_child([parent] {
    expect_ids_of_the_host();
    EXPECT_NE(answer_of(pxfgetpid_), parent);
    EXPECT_EQ(answer_of(pxfgetppid_), parent);
  });
}

// Four different ids tell the routines apart; an ordinary user's are all that he may have.
TEST(Ids, RealAndEffectiveOnesAreToldApart) {
  in_child([] {
    if (geteuid() == 0) {
      ASSERT_EQ(setresgid(65531, 65532, 0), 0);
      ASSERT_EQ(setresuid(65533, 65534, 0), 0);
      EXPECT_EQ(answer_of(pxfgetgid_), 65531);
      EXPECT_EQ(answer_of(pxfgetegid_), 65532);
      EXPECT_EQ(answer_of(pxfgetuid_), 65533);
      EXPECT_EQ(answer_of(pxfgeteuid_), 65534);
    }
    expect_ids_of_the_host();
  });
}

TEST(Ids, LargeNumberReadsAsANegativeOne) {
  in_child([] {
    if (geteuid() == 0) {
      ASSERT_EQ(setresuid(4294967294U, 4294967293U, 0), 0);
    }
    expect_ids_of_the_host();
  });
}

TEST(Setuid, SuperuserGivesAllRightsUp) {
  in_child([] {
    const bool superuser = geteuid() == 0;
    const int32_t group = superuser ? 65532 : static_cast<int32_t>(getgid());
    const int32_t user = superuser ? 65533 : static_cast<int32_t>(getuid());
    EXPECT_EQ(call_with_id(pxfsetgid_, group), succeeded());
    EXPECT_EQ(call_with_id(pxfsetuid_, user), succeeded());
    uid_t real, effective, saved;
    ASSERT_EQ(getresuid(&real, &effective, &saved), 0);
    EXPECT_EQ(std::vector<uid_t>({real, effective, saved}), std::vector<uid_t>(3, static_cast<uid_t>(user)));
    ASSERT_EQ(getresgid(&real, &effective, &saved), 0);
    EXPECT_EQ(std::vector<gid_t>({real, effective, saved}), std::vector<gid_t>(3, static_cast<gid_t>(group)));
    expect_ids_of_the_host();
  });
}

TEST(Setuid, OrdinaryUserMayNotBecomeAnother) {
  as_ordinary_user([] {
    EXPECT_EQ(call_with_id(pxfsetuid_, 0), refused(EPERM, EPERM));
    EXPECT_EQ(call_with_id(pxfsetgid_, 0), refused(EPERM, EPERM));
    EXPECT_EQ(call_with_id(pxfsetuid_, static_cast<int32_t>(getuid())), succeeded());
    EXPECT_EQ(call_with_id(pxfsetgid_, static_cast<int32_t>(getgid())), succeeded());
    EXPECT_NE(geteuid(), 0u);
  });
}

TEST(Setuid, Minus1IsNoId) {
  in_child([] {
    EXPECT_EQ(call_with_id(pxfsetuid_, -1), refused(EINVAL, EINVAL));
    EXPECT_EQ(call_with_id(pxfsetgid_, -1), refused(EINVAL, EINVAL));
  });
}

struct Groups {
  std::vector<int32_t> list;
  int32_t ngroups;
  Outcome outcome;
};

Groups groups_with_room(int32_t size, size_t elements) {
  Groups groups{std::vector<int32_t>(elements + 1, SENTINEL), 0, {}};
  Guarded<int32_t> ngroups(SENTINEL);
  groups.outcome =
      reported_by([&](int32_t *ierror) { pxfgetgroups_(&size, groups.list.data(), &ngroups, ierror); });
  groups.ngroups = ngroups;
  EXPECT_EQ(groups.list[elements], SENTINEL) << "written behind the array";
  return groups;
}

void expect_groups(const std::vector<gid_t> &expected) {
  const auto count = static_cast<int32_t>(expected.size());
  std::vector<int32_t> list(expected.begin(), expected.end());
  for (int32_t size = count; size < count + 3; ++size) {
    if (size == 0)
      continue;
    const Groups groups = groups_with_room(size, static_cast<size_t>(size));
    std::vector<int32_t> full = list;
    full.resize(static_cast<size_t>(size) + 1, SENTINEL);
    EXPECT_EQ(groups.list, full) << "elements behind the last group stay";
    EXPECT_EQ(groups.ngroups, count);
    EXPECT_EQ(groups.outcome, succeeded());
  }
  const Groups asked = groups_with_room(0, 4);
  EXPECT_EQ(asked.ngroups, count);
  EXPECT_EQ(asked.list, std::vector<int32_t>(5, SENTINEL)) << "0 only asks";
  EXPECT_EQ(asked.outcome, succeeded());
}

void expect_too_small(int32_t size) {
  const Groups groups = groups_with_room(size, 100);
  EXPECT_EQ(groups.outcome, refused(EINVAL, EINVAL)) << size;
  EXPECT_EQ(groups.ngroups, -1) << size;
  EXPECT_EQ(groups.list, std::vector<int32_t>(101, SENTINEL)) << size;
}

std::vector<gid_t> groups_of_the_host() {
  std::vector<gid_t> groups(65536);
  groups.resize(static_cast<size_t>(getgroups(65536, groups.data())));
  return groups;
}

TEST(Getgroups, AreTheHosts) {
  expect_groups(groups_of_the_host());
}

TEST(Getgroups, NegativeSizeIs22) {
  expect_too_small(-1);
  expect_too_small(INT32_MIN);
}

TEST(Getgroups, TooSmallAnArrayIs22) {
  in_child([] {
    if (geteuid() == 0) {
      const gid_t three[] = {7, 65532, 4294967290U};
      ASSERT_EQ(setgroups(3, three), 0);
      EXPECT_EQ(groups_with_room(3, 3).list, (std::vector<int32_t>{7, 65532, -6, SENTINEL}));
    }
    const std::vector<gid_t> groups = groups_of_the_host();
    expect_groups(groups);
    for (int32_t size = 1; size < static_cast<int32_t>(groups.size()) && size < 100; ++size)
      expect_too_small(size);
  });
}

TEST(Getgroups, NoneAreNone) {
  in_child([] {
    if (geteuid() == 0) {
      ASSERT_EQ(setgroups(0, nullptr), 0);
    }
    expect_groups(groups_of_the_host());
  });
}

TEST(Setsid, BeginsASessionAndAGroup) {
  in_child([] {
    EXPECT_EQ(answer_of(pxfsetsid_), getpid());
    EXPECT_EQ(getsid(0), getpid());
    EXPECT_EQ(answer_of(pxfgetpgrp_), getpid());
  });
}

TEST(Setsid, LeaderOfAGroupIsRefused) {
  in_child([] {
    ASSERT_EQ(setpgid(0, 0), 0);
    Guarded<int32_t> isid(SENTINEL);
    EXPECT_EQ(reported_by([&](int32_t *ierror) { pxfsetsid_(&isid, ierror); }), refused(EPERM, EPERM));
    EXPECT_EQ(isid, -1);
  });
}

Outcome put_into_group(int32_t ipid, int32_t ipgid) {
  return reported_by([&](int32_t *ierror) { pxfsetpgid_(&ipid, &ipgid, ierror); });
}

TEST(Setpgid, MakesAGroup) {
  in_child([] {
    EXPECT_NE(answer_of(pxfgetpgrp_), getpid());
    EXPECT_EQ(put_into_group(0, 0), succeeded());
    EXPECT_EQ(answer_of(pxfgetpgrp_), getpid());
  });
}

TEST(Setpgid, PutsAChildIntoAGroup) {
  in_child([] {
    const auto sleeper = [] {
      const pid_t child = fork();
      if (child == 0)
        for (;;)
          pause();
      return child;
    };
    const pid_t first = sleeper(), second = sleeper();
    EXPECT_EQ(put_into_group(first, 0), succeeded());
    EXPECT_EQ(put_into_group(second, first), succeeded());
    EXPECT_EQ(getpgid(first), first);
    EXPECT_EQ(getpgid(second), first);
    EXPECT_EQ(put_into_group(second, getpgrp()), succeeded());
    EXPECT_EQ(getpgid(second), getpgrp());
    kill(first, SIGKILL);
    kill(second, SIGKILL);
  });
}

TEST(Setpgid, FailureIsTheHostsError) {
  in_child([] {
    const pid_t parent = getppid();
    EXPECT_EQ(put_into_group(0, -1), refused(EINVAL, EINVAL));
    EXPECT_EQ(put_into_group(parent, 0), refused(ESRCH, ESRCH));
    ASSERT_EQ(setsid(), getpid());
    EXPECT_EQ(put_into_group(0, 0), refused(EPERM, EPERM));
  });
}

// A text routine's call: what it stored, in a variable of one length.
struct Text {
  std::string value;
  int32_t ilen;
  Outcome outcome;
  bool operator==(const Text &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Text &text) {
  return out << '"' << text.value << "\" " << text.ilen << ", " << text.outcome;
}

template <typename Routine>
Text text_of(Routine routine, size_t length) {
  Character value(length);
  Guarded<int32_t> ilen(SENTINEL);
  const Outcome outcome =
      reported_by([&](int32_t *ierror) { routine(value.data(), &ilen, ierror, value.length()); });
  return {value.text(), ilen, outcome};
}

// A name in variables that it fits, with what the routine leaves in errno, and in shorter ones.
template <typename Routine>
void expect_name(Routine routine, const std::string &name, const Outcome &fits, const Outcome &cut) {
  const auto n = static_cast<int32_t>(name.size());
  for (const size_t length : {name.size(), name.size() + 1, name.size() + 1000})
    EXPECT_EQ(text_of(routine, length), (Text{padded(name, length), n, fits}));
  for (size_t length = 0; length < name.size() && length < 20; ++length)
    EXPECT_EQ(text_of(routine, length), (Text{name.substr(0, length), n, cut}));
}

// errno is set in both cases, to 0 and to 129.
void expect_login() {
  expect_name(&pxfgetlogin_, login, refused(0, 0), refused(CUT, CUT));
}

TEST(Getlogin, NameThatFits) {
  for (const char *name : {"user", "u", "", " a name with blanks ", "\xff\xfe"}) {
    login = name;
    expect_login();
  }
}

TEST(Getlogin, VariableShorterThanTheNameIs129AndTheFullLength) {
  login = "username";
  EXPECT_EQ(text_of(pxfgetlogin_, 4), (Text{"user", 8, refused(CUT, CUT)}));
}

TEST(Getlogin, HundredThousandCharacters) {
  const std::string name(100000, 'n');
  login = name.c_str();
  expect_login();
}

TEST(Getlogin, NoLoginNameIsTheHostsErrorAndBlank) {
  login = nullptr;
  for (const int error : {ENOTTY, ENXIO, ENOENT, ENOMEM}) {
    login_error = error;
    for (const size_t length : {0u, 1u, 100u})
      EXPECT_EQ(text_of(pxfgetlogin_, length), (Text{padded("", length), SENTINEL, refused(error, error)}));
  }
}

TEST(Getlogin, NegativeHiddenLengthStoresNothing) {
  login = "user";
  Character value(4);
  Guarded<int32_t> ilen(SENTINEL);
  EXPECT_EQ(reported_by([&](int32_t *ierror) { pxfgetlogin_(value.data(), &ilen, ierror, -1); }),
            refused(CUT, CUT));
  EXPECT_EQ(value.text(), "####");
  EXPECT_EQ(ilen, 4);
}

TEST(Ctermid, IsTheHosts) {
  const std::string name = ctermid(nullptr);
  EXPECT_EQ(name, "/dev/tty");
  expect_name(&pxfctermid_, name, succeeded(), refused(CUT, ERANGE));
}

class Terminal : public testing::Test {
protected:
  const PseudoTerminal terminal_;
};

auto name_of_terminal(int32_t fd) {
  return [fd](char *s, int32_t *ilen, int32_t *ierror, qxport_charlen length) {
    pxfttyname_(&fd, s, ilen, ierror, length);
  };
}

TEST_F(Terminal, NameIsTheDevices) {
  expect_name(name_of_terminal(terminal_.descriptor()), terminal_.name(), succeeded(), refused(CUT, ERANGE));
}

TEST_F(Terminal, NoTerminalHasNoNameAndTheVariablesStay) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  EXPECT_EQ(text_of(name_of_terminal(ends[0]), 20),
            (Text{std::string(20, '#'), SENTINEL, refused(ENOTTY, ENOTTY)}));
  close(ends[0]);
  close(ends[1]);
  for (const int32_t fd : {ends[0], -1, INT32_MAX, INT32_MIN})
    EXPECT_EQ(text_of(name_of_terminal(fd), 20),
              (Text{std::string(20, '#'), SENTINEL, refused(EBADF, EBADF)}));
}

struct Answer {
  int32_t isatty;
  int32_t ierror;
  bool operator==(const Answer &) const = default;
};

Answer is_terminal(int32_t fd) {
  Guarded<int32_t> isatty(SENTINEL), ierror(SENTINEL);
  pxfisatty_(&fd, &isatty, &ierror);
  return {isatty, ierror};
}

TEST_F(Terminal, IsattyAnswers1) {
  EXPECT_EQ(is_terminal(terminal_.descriptor()), (Answer{1, 0}));
  EXPECT_EQ(is_terminal(terminal_.master()), (Answer{1, 0}));
}

TEST_F(Terminal, IsattyOfAnythingElseIs0WithoutAnError) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  EXPECT_EQ(is_terminal(ends[0]), (Answer{0, 0}));
  const int null = open("/dev/null", O_RDWR);
  EXPECT_EQ(is_terminal(null), (Answer{0, 0}));
  close(null);
  close(ends[0]);
  close(ends[1]);
  for (const int32_t fd : {ends[0], -1, INT32_MAX})
    EXPECT_EQ(is_terminal(fd), (Answer{0, 0}));
}

}  // namespace
