/* A constructor of the program's own uses the library, and what it began goes on in main: nothing of ours is
   prepared after it and wipes it. */
#include <qxport/qxport.h>

#include <stdio.h>
#include <string.h>

int32_t get_handle_from_alloc_address(void *address);
void *get_address_from_handle(int32_t handle, const uintptr_t *table);

static const char every_file[] = "/usr/*";
static struct qxport_file_info_i8 info;
static intptr_t search = QXPORT_FILE_SEARCH_BEGIN;
static char record[16];
static int32_t handle;

__attribute__((constructor(102))) static void use_the_library(void) {
  handle = get_handle_from_alloc_address(record);
  getfileinfoqqi8_(every_file, &info, &search, strlen(every_file));
}

int main(void) {
  if (get_address_from_handle(handle, AllocatableHandles) != record)
    return puts("the record is not known any more"), 1;
  if (getfileinfoqqi8_(every_file, &info, &search, strlen(every_file)) <= 0)
    return puts("the search is not known any more"), 1;
  return 0;
}
