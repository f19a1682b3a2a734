#include "tests/lab/launcher/command_line_text.h"

#include <gtest/gtest.h>

namespace lab {
namespace {

TEST(QuotedArgument, KeepsBlanksBackslashesAndQuotes) {
    EXPECT_EQ(QuotedArgument(L""), L"\"\"");
    EXPECT_EQ(QuotedArgument(L"a b"), L"\"a b\"");
    EXPECT_EQ(QuotedArgument(L"C:\\folder\\x"), L"\"C:\\folder\\x\"");
    EXPECT_EQ(QuotedArgument(L"C:\\folder\\"), L"\"C:\\folder\\\\\"");
    EXPECT_EQ(QuotedArgument(L"a\"b"), L"\"a\\\"b\"");
    EXPECT_EQ(QuotedArgument(L"a\\\"b"), L"\"a\\\\\\\"b\"");
}

}  // namespace
}  // namespace lab
