#include "failing_allocations.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

bool active = false;
size_t failing_number = 0;
size_t count = 0;

bool fails() {
  if (!active || ++count != failing_number)
    return false;
  errno = ENOMEM;
  return true;
}

}  // namespace

extern "C" {

void *__real_malloc(size_t size);
void *__real_calloc(size_t number, size_t size);
void *__real_realloc(void *block, size_t size);
void *__real_reallocarray(void *block, size_t number, size_t size);

void *__wrap_malloc(size_t size) {
  return fails() ? nullptr : __real_malloc(size);
}
void *__wrap_calloc(size_t number, size_t size) {
  return fails() ? nullptr : __real_calloc(number, size);
}
void *__wrap_realloc(void *block, size_t size) {
  return fails() ? nullptr : __real_realloc(block, size);
}

void *__wrap_reallocarray(void *block, size_t number, size_t size) {
  return fails() ? nullptr : __real_reallocarray(block, number, size);
}

char *__wrap_strndup(const char *text, size_t limit) {
  if (fails())
    return nullptr;
  const size_t length = strnlen(text, limit);
  char *copy = static_cast<char *>(__real_malloc(length + 1));
  memcpy(copy, text, length);
  copy[length] = '\0';
  return copy;
}

char *__wrap_strdup(const char *text) {
  return __wrap_strndup(text, strlen(text));
}

}  // extern "C"

FailingAllocation::FailingAllocation(size_t n) {
  failing_number = n;
  count = 0;
  active = true;
}

FailingAllocation::~FailingAllocation() {
  active = false;
}

bool FailingAllocation::failed() const {
  return failing_number != 0 && count >= failing_number;
}

size_t FailingAllocation::allocations() const {
  return count;
}
