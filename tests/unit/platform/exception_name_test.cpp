#include "platform/exception_name.h"

#include <gtest/gtest.h>

namespace {

TEST(ExceptionName, OfACode) {
    EXPECT_STREQ(ExceptionName(0xC0000005), "access violation");
    EXPECT_STREQ(ExceptionName(0xC0000409), "fail-fast");
    EXPECT_STREQ(ExceptionName(0xE06D7363), "C++ exception");
    EXPECT_EQ(ExceptionName(0), nullptr);
    EXPECT_EQ(ExceptionName(0xC0001234), nullptr);
}

}  // namespace
