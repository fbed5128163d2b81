// The entry for a fuzzer that is guided by what its bytes reach. It starts in a directory that holds nothing
// else.
#include "fuzz/calls.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

extern "C" int fuzz_users_change;

extern "C" const char *__asan_default_options() {
  return "detect_leaks=0:allocator_may_return_null=1";
}

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
  const rlimit most = {1 << 20, 1 << 20};
  setrlimit(RLIMIT_FSIZE, &most);
  static std::string directory;
  directory = std::filesystem::temp_directory_path() / "fuzz.XXXXXX";
  if (mkdtemp(directory.data()) == nullptr)
    abort();
  atexit([] { fuzz::remove_own_directory(directory); });
  // The fuzzer reads and writes its corpus as it goes, so it keeps its root and its user.
  fuzz::enter_own_directory(directory.c_str(), false);
  fuzz_users_change = 0;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
  // The fuzzer's own handlers, its timer's among them, stand by now.
  static const bool guarded = (fuzz::raise_guards(), true);
  fuzz::Choices choices({bytes, size});
  while (guarded && !choices.ended())
    fuzz::make_call(choices, false);
  return 0;
}
