// A scope in which what is allocated may stay allocated: the leak checker does not report it.
#ifndef TESTS_SUPPORT_KEPT_ON_PURPOSE_H
#define TESTS_SUPPORT_KEPT_ON_PURPOSE_H

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

class KeptOnPurpose {
public:
#ifdef __SANITIZE_ADDRESS__
  KeptOnPurpose() {
    __lsan_disable();
  }
  ~KeptOnPurpose() {
    __lsan_enable();
  }
#else
  KeptOnPurpose() {}
  ~KeptOnPurpose() {}
#endif
  KeptOnPurpose(const KeptOnPurpose &) = delete;
  KeptOnPurpose &operator=(const KeptOnPurpose &) = delete;
};

#endif
