// Tests of permissions, which do not bind the superuser.
#ifndef TESTS_SUPPORT_ORDINARY_USER_H
#define TESTS_SUPPORT_ORDINARY_USER_H

#include "in_child.h"

#include <grp.h>
#include <sys/types.h>
#include <unistd.h>

// Gives up the superuser's rights for good, in the real ids too, by which access(2) judges.
inline bool become_ordinary_user() {
  constexpr uid_t NOBODY = 65534;
  if (geteuid() != 0)
    return true;
  return setgroups(0, nullptr) == 0 && setresgid(NOBODY, NOBODY, NOBODY) == 0 &&
         setresuid(NOBODY, NOBODY, NOBODY) == 0;
}

// Runs the check in a child process without privileges; its failures are the test's.
template <typename Check>
void as_ordinary_user(Check check) {
  in_child([&] {
    if (become_ordinary_user())
      check();
    else
      ADD_FAILURE() << "the superuser's rights stay";
  });
}

#endif
