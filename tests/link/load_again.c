/* Does what the library's constructor does, between the marks. */
#include "load_marks.h"

#include <stdint.h>
#include <unistd.h>

int32_t init_handle_table(void);

int main(void) {
  mark(BEFORE_LOAD);
  const int32_t answer = init_handle_table();
  mark(AFTER_LOAD);
  return answer;
}
