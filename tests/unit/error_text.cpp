// What error numbers say.
#include "recorder.h"

#include <cstring>
#include <thread>

namespace {

std::string text_of(int32_t number, size_t length = 80) {
  Character text(length);
  error_text_(text.data(), text.length(), &number);
  return text.text();
}

// A text that no table in the library is likely to hold.
std::string host_text(int number) {
  const char *text = strerrordesc_np(number);
  return text != nullptr ? text : "Unknown error " + std::to_string(number);
}

struct Row {
  int32_t number;
  const char *text;
};

void PrintTo(const Row &row, std::ostream *out) {
  *out << row.number;
}

}  // namespace

class ErrorText : public testing::TestWithParam<Row> {};

INSTANTIATE_TEST_SUITE_P(
    Rows, ErrorText,
    testing::Values(
        Row{EPIPE, "Broken pipe"}, Row{ENOENT, "No such file or directory"}, Row{EINVAL, "Invalid argument"},
        Row{0, "Success"}, Row{124, "Wrong medium type"}, Row{125, "Array length or index out of range"},
        Row{126, "Unknown structure, component or constant name"}, Row{127, "Invalid structure handle"},
        Row{128, "Key has been revoked"}, Row{129, "Text was cut to the length of the variable"},
        Row{130, "Owner died"}, Row{-1, "End of file"}, Row{-2, "No such file or directory"},
        Row{-9, "Bad file descriptor"}, Row{999, "Unknown error 999"}, Row{1000, "Unknown error 1000"},
        Row{1001, "Input parameters contain invalid parameter address"}, Row{1007, "Input value was invalid"},
        Row{1008, "Portability function 'ALARM' can't work without 'lpthread' library"},
        Row{1009, "Unknown error 1009"}, Row{INT32_MAX, "Unknown error 2147483647"},
        Row{-INT32_MAX, "Unknown error 2147483647"}, Row{INT32_MIN, "Unknown error -2147483648"}));

TEST_P(ErrorText, IsThatOfTheNumber) {
  const std::string expected = padded(GetParam().text, 80);
  EXPECT_EQ(text_of(GetParam().number), expected);
  Character text(80);
  get_error_text_(&GetParam().number, text.data(), text.length());
  EXPECT_EQ(text.text(), expected);
}

TEST(ErrorTexts, OfTheHostAreTheHosts) {
  for (int number = 0; number < 200; ++number)
    if (number < 125 || number == 128 || number > 129) {
      EXPECT_EQ(text_of(number), padded(host_text(number), 80)) << number;
    }
}

TEST(ErrorTexts, AreCutAndPadded) {
  EXPECT_EQ(text_of(EPIPE, 0), "");
  EXPECT_EQ(text_of(EPIPE, 1), "B");
  EXPECT_EQ(text_of(EPIPE, 11), "Broken pipe");
  EXPECT_EQ(text_of(EPIPE, 12), "Broken pipe ");
  EXPECT_EQ(text_of(EPIPE, 5000), padded("Broken pipe", 5000));
  char byte = '#';
  const int32_t number = EPIPE;
  error_text_(&byte, -1, &number);
  get_error_text_(&number, &byte, -1);
  EXPECT_EQ(byte, '#');
}

TEST(ErrorTexts, RecordNothing) {
  for (const int32_t number : {0, EPIPE, 126, -1, 999, INT32_MIN}) {
    reset_error_state();
    text_of(number);
    EXPECT_EQ(error_state(), untouched()) << number;
  }
}

TEST(ErrorTexts, AreOneThreadsOwn) {
  const auto ask = [](int32_t first) {
    for (int32_t i = 0; i < 20000; ++i)
      if (text_of(first + i, 40) != padded("Unknown error " + std::to_string(first + i), 40))
        return ADD_FAILURE() << "the text of another number", void();
  };
  std::thread other(ask, 100000);
  ask(200000);
  other.join();
}

TEST(ErrorTexts, HaveAModuleName) {
  expect_same_routine(&error_text_, &qxport_error_text_);
  expect_same_routine(&get_error_text_, &qxport_get_error_text_);
}
