// What the reference says of threads and records: one thread makes and frees, others use theirs meanwhile.
#include "record_calls.h"
#include "together.h"

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace {

// Enough for the table's index to grow four times.
constexpr int MANY = 255 * 64 * 9;
constexpr int USERS = 3;

// What a thread does with records of its own until the work of another is done.
class User {
public:
  explicit User(int seed) : seed_(seed) {
    create("stat", &stat_);
    create("stat", &twin_);
    create("passwd", &passwd_);
    create("termios", &termios_);
  }
  ~User() {
    for (int32_t *handle : {&stat_, &twin_, &passwd_, &termios_})
      release(handle);
  }
  User(const User &) = delete;
  User &operator=(const User &) = delete;

  // How many of the calls did not do what they should.
  int use(int round) {
    const int32_t number = seed_ * 1'000'000 + round % 1'000'000;
    const std::string text = std::to_string(number);
    const int32_t length = static_cast<int32_t>(text.size());
    int32_t ierror = SENTINEL, got = SENTINEL, got_length = 0, index = 20;
    int failures = 0;
    const auto check = [&](bool right) { failures += ierror != 0 || !right; };
    pxfintset_(&stat_, "st_size", &number, &ierror, 7);
    check(true);
    pxfstructcopy_("stat", &stat_, &twin_, &ierror, 4);
    check(true);
    pxfintget_(&twin_, "st_size", &got, &ierror, 7);
    check(got == number);
    pxfstrset_(&passwd_, "pw_dir", text.data(), &length, &ierror, 6, length);
    check(true);
    char held[32];
    pxfstrget_(&passwd_, "pw_dir", held, &got_length, &ierror, 6, sizeof(held));
    check(text == std::string(held, static_cast<size_t>(got_length)));
    pxfeintset_(&termios_, "c_cc", &index, &number, &ierror, 4);
    check(true);
    pxfeintget_(&termios_, "c_cc", &index, &got, &ierror, 4);
    check(got == number);
    return failures;
  }

private:
  int seed_;
  int32_t stat_ = 0, twin_ = 0, passwd_ = 0, termios_ = 0;
};

// Makes records far beyond every growth and frees them all, while others use theirs.
void make_and_free(int count) {
  std::vector<int32_t> handles(static_cast<size_t>(count), 0);
  int32_t ierror = SENTINEL;
  int failures = 0;
  for (int32_t &handle : handles) {
    pxfstructcreate_("sigset", &handle, &ierror, 6);
    failures += ierror != 0;
  }
  for (int32_t &handle : handles) {
    pxfstructfree_(&handle, &ierror);
    failures += ierror != 0;
  }
  EXPECT_EQ(failures, 0);
}

// The work of users, behind which the makers' flag stands.
void use_until(const std::atomic<bool> &done, User &user) {
  int failures = 0;
  int rounds = 0;
  do
    failures += user.use(rounds++);
  while (!done);
  EXPECT_EQ(failures, 0) << "in " << rounds << " rounds";
}

}  // namespace

class ThreadsAndRecords : public testing::Test {
protected:
  void SetUp() override { init_handle_table(); }
  void TearDown() override { init_handle_table(); }
};

TEST_F(ThreadsAndRecords, RecordsAreUsedWhileAnotherThreadMakesAndFreesRecords) {
  std::array<User, USERS> users{User(1), User(2), User(3)};
  std::atomic<bool> done = false;
  std::vector<std::function<void()>> work = {[&] {
    make_and_free(MANY);
    done = true;
  }};
  for (User &user : users)
    work.push_back([&] { use_until(done, user); });
  do_together(work);
}

// A handle that leads nowhere yet, or no longer, is refused or found, and never followed into the wild.
TEST_F(ThreadsAndRecords, UnknownHandlesAreRefusedWhileAnotherThreadMakesRecords) {
  User user(1);
  std::atomic<bool> done = false;
  const auto ask = [&] {
    void *address = nullptr;
    for (int32_t handle = 1; !done; handle = handle * 7 % 1'000'003)
      address = get_address_from_handle(handle, AllocatableHandles);
    EXPECT_EQ(get_address_from_handle(-256, AllocatableHandles), nullptr) << address;
  };
  do_together({[&] {
                 make_and_free(MANY);
                 done = true;
               },
               ask, [&] { use_until(done, user); }});
}

// A procedure's handle is used while another thread enters more; and while records are made.
TEST_F(ThreadsAndRecords, ProceduresAreCalledWhileAnotherThreadEntersProcedures) {
  static char others[5000];
  const auto doubled = +[](int32_t *value) { return 2 * *value; };
  int32_t handle = 0, ierror = SENTINEL;
  pxfgetsubhandle_(reinterpret_cast<void (*)()>(doubled), &handle, &ierror);
  ASSERT_EQ(ierror, 0);
  std::atomic<bool> done = false;
  const auto call = [&] {
    int failures = 0;
    int32_t error = SENTINEL;
    for (int32_t value = 0; !done || value == 0; value = (value + 1) % 1'000'000)
      failures += pxfcallsubhandle_(&handle, &value, &error) != 2 * value || error != 0;
    EXPECT_EQ(failures, 0);
  };
  do_together({[&] {
                 for (char &other : others) {
                   int32_t entered = 0, error = SENTINEL;
                   pxfgetsubhandle_(reinterpret_cast<void (*)()>(&other), &entered, &error);
                   EXPECT_EQ(error, 0);
                 }
                 done = true;
               },
               [&] { make_and_free(MANY / 9); }, call, call});
}

// Threads that make and free take turns.
TEST_F(ThreadsAndRecords, RecordsAreMadeByAnyThreadInItsTurn) {
  std::mutex turn;
  do_together(4, [&](int number) {
    for (int round = 0; round < 200; ++round) {
      std::unique_ptr<User> user;
      {
        const std::lock_guard mine(turn);
        user = std::make_unique<User>(number);
      }
      EXPECT_EQ(user->use(round), 0);
      const std::lock_guard mine(turn);
      user.reset();
    }
  });
}

// Constants are a table that nobody changes.
TEST_F(ThreadsAndRecords, ConstantsAreLookedUpByAllThreads) {
  do_together(4, [](int) {
    for (int round = 0; round < 1000; ++round) {
      int32_t value = SENTINEL, ierror = SENTINEL;
      pxfconst_("SIGINT", &value, &ierror, 6);
      EXPECT_EQ(value, 2);
      EXPECT_EQ(ipxfconst_("SIGTERM", 7), 15);
      EXPECT_EQ(pxfisconst_("SIGNONE", 7), 0);
    }
  });
}
