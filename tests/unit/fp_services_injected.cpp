// The keys of threads behind precision and infinity control, on a host that makes them as a test wants.
#include "fp_units.h"
#include "in_child.h"

#include <qxport/qxport.h>

#include <cerrno>
#include <dlfcn.h>
#include <pthread.h>
#include <sched.h>

namespace {

constexpr uint32_t START = 0x8001F, LEAST_PRECISION = 0x20000, MIDDLE_PRECISION = 0x10000,
                   PRECISION = 0x30000;

// A key is made only while this is 0; what a call that fails leaves behind is this key.
int creation_error;
pthread_key_t left_behind;
// Called behind the making of the first key, before the library knows of it.
void (*behind_the_first)();
int keys_made, keys_deleted;

template <typename Function>
Function original(const char *name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

int pthread_key_create(pthread_key_t *key, void (*destroy)(void *)) noexcept {
  static const auto hosts = original<int (*)(pthread_key_t *, void (*)(void *))>("pthread_key_create");
  if (creation_error != 0) {
    *key = left_behind;
    return creation_error;
  }
  const int answer = hosts(key, destroy);
  if (++keys_made == 1 && behind_the_first != nullptr)
    behind_the_first();
  return answer;
}

int pthread_key_delete(pthread_key_t key) noexcept {
  static const auto hosts = original<int (*)(pthread_key_t)>("pthread_key_delete");
  ++keys_deleted;
  return hosts(key);
}

namespace {

// A key is the process's, so each test has a process of its own.
template <typename Check>
void in_new_process(Check check) {
  in_child([&] {
    keys_made = keys_deleted = 0;
    fresh_units();
    check();
    fresh_units();
  });
}

TEST(FpServicesInjected, KeysAreMadeWhereTheUnitsDoNotKeepTheState) {
  in_new_process([] {
    EXPECT_EQ(controlfp(0x300, 0x300), START | 0x300);
    EXPECT_EQ(controlfp(0, PRECISION), START | 0x300);
    EXPECT_EQ(keys_made, 0) << "for the initial state";
    EXPECT_EQ(controlfp(LEAST_PRECISION, PRECISION), START | 0x300 | LEAST_PRECISION);
    EXPECT_EQ(controlfp(MIDDLE_PRECISION, PRECISION), START | 0x300 | MIDDLE_PRECISION);
    EXPECT_EQ(keys_made, IS_64_BIT ? 1 : 0);
    EXPECT_EQ(keys_deleted, 0);
  });
}

#if UINTPTR_MAX > UINT32_MAX

// Of two threads that each make the key, one gives its own back.
TEST(FpServicesInjected, ThreadsThatMakeTheKeyAtOnceShareOne) {
  in_new_process([] {
    static pthread_t other;
    static bool kept;
    static bool ends;
    behind_the_first = [] {
      static bool set;
      pthread_create(
          &other, nullptr,
          [](void *) -> void * {
            controlfp(MIDDLE_PRECISION, PRECISION);
            __atomic_store_n(&set, true, __ATOMIC_RELEASE);
            while (!__atomic_load_n(&ends, __ATOMIC_ACQUIRE))
              sched_yield();
            kept = controlfp(0, 0) == (START | MIDDLE_PRECISION);
            return nullptr;
          },
          nullptr);
      while (!__atomic_load_n(&set, __ATOMIC_ACQUIRE))
        sched_yield();
    };
    EXPECT_EQ(controlfp(LEAST_PRECISION, PRECISION), START | LEAST_PRECISION);
    __atomic_store_n(&ends, true, __ATOMIC_RELEASE);
    pthread_join(other, nullptr);
    EXPECT_TRUE(kept);
    EXPECT_EQ(controlfp(0, 0), START | LEAST_PRECISION);
    EXPECT_EQ(keys_made, 2);
    EXPECT_EQ(keys_deleted, 1);
  });
}

TEST(FpServicesInjected, KeyThatIsNotMadeIsNotUsed) {
  in_new_process([] {
    int own = 0;
    EXPECT_EQ(pthread_key_create(&left_behind, nullptr), 0);
    pthread_setspecific(left_behind, &own);
    creation_error = EAGAIN;
    EXPECT_EQ(controlfp(LEAST_PRECISION, PRECISION), START);
    EXPECT_EQ(pthread_getspecific(left_behind), &own);
    EXPECT_EQ(keys_deleted, 0);
    creation_error = 0;
    EXPECT_EQ(controlfp(LEAST_PRECISION, PRECISION), START | LEAST_PRECISION) << "the next call tries again";
  });
}

#endif

}  // namespace
