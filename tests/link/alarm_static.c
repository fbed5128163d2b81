/* Arms an alarm and waits for it: ends with 0 when the procedure was called. */
#include <qxport/qxport.h>

#include <unistd.h>

static volatile int called;

static void procedure(void) { called = 1; }

int main(void) {
  const int32_t seconds = 1;
  if (alarm_(&seconds, procedure) != 0)
    return 1;
  for (int i = 0; i < 100 && !called; ++i)
    usleep(200000);
  return called ? 0 : 2;
}
