// Characters that end, or begin, exactly at a page that must not be touched: a read past either end is a
// crash.
#ifndef TESTS_SUPPORT_FENCED_TEXT_H
#define TESTS_SUPPORT_FENCED_TEXT_H

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

class FencedText {
public:
  enum class Fence { Behind, Before };

  explicit FencedText(const std::string &text, Fence fence = Fence::Behind)
      : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))), inner_((text.size() / page_ + 1) * page_),
        length_(text.size()) {
    void *area = mmap(nullptr, inner_ + 2 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    EXPECT_NE(area, MAP_FAILED);
    area_ = static_cast<char *>(area);
    EXPECT_EQ(mprotect(area_ + page_, inner_, PROT_READ | PROT_WRITE), 0);
    text_ = fence == Fence::Before ? area_ + page_ : area_ + page_ + inner_ - length_;
    memcpy(text_, text.data(), length_);
  }
  ~FencedText() { munmap(area_, inner_ + 2 * page_); }
  FencedText(const FencedText &) = delete;
  FencedText &operator=(const FencedText &) = delete;

  const char *data() const { return text_; }
  intptr_t length() const { return static_cast<intptr_t>(length_); }

private:
  size_t page_;
  size_t inner_;
  size_t length_;
  char *area_;
  char *text_;
};

#endif
