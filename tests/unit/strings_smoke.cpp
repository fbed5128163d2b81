#include "frame/strings.h"
#include "recorder.h"
TEST(AllocCstr, TrimsTrailingBlanks) {
  qxport::CString s("ab  ", 4);
  EXPECT_STREQ(s.get(), "ab");
}
