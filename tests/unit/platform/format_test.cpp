#include "platform/format.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstring>
#include <limits>
#include <string>

namespace {

std::string FormatBounded(std::size_t limit, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::string text = FormatBoundedV(limit, format, arguments);
    va_end(arguments);
    return text;
}

TEST(FormatBounded, TruncatesAtTheLimit) {
    const std::string hundred(100, 'x');
    for (const std::size_t limit :
         {std::size_t{0}, std::size_t{1}, std::size_t{15}, std::size_t{16}, std::size_t{99}}) {
        const std::string text = FormatBounded(limit, "%s", hundred.c_str());
        EXPECT_EQ(text, hundred.substr(0, limit));
        EXPECT_EQ(std::strlen(text.c_str()), limit) << "nothing is written behind its end";
    }
}

TEST(FormatBounded, KeepsTextThatFits) {
    EXPECT_EQ(FormatBounded(3, "%s", "abc"), "abc");
    EXPECT_EQ(FormatBounded(100, "%s %d", "abc", 7), "abc 7");
    EXPECT_EQ(FormatBounded(100, "%s", ""), "");
}

TEST(FormatText, RoundsExactTiesToEven) {
    EXPECT_EQ(FormatText("%.0f %.0f %.0f %.0f", 0.5, 1.5, 2.5, 3.5), "0 2 2 4");
    EXPECT_EQ(FormatText("%.1f %.1f", 0.25, 0.75), "0.2 0.8");
    EXPECT_EQ(FormatText("%.2f %.2f", 0.125, 2.675), "0.12 2.67");
}

TEST(FormatText, PrintsEveryDigitOfAnExactValue) {
    EXPECT_EQ(FormatText("%.0f", 1e22), "10000000000000000000000");
    EXPECT_EQ(FormatText("%.20f", 0.1), "0.10000000000000000555");
}

TEST(FormatText, PrintsInfinityAndNotANumber) {
    EXPECT_EQ(FormatText("%.2f", std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(FormatText("%.2f", -std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(FormatText("%.2f", std::numeric_limits<double>::quiet_NaN()), "nan");
}

TEST(FormatText, PadsToTheFieldWidth) {
    EXPECT_EQ(FormatText("[%-10s][%10.2f][%5d]", "ab", 1.0, 7), "[ab        ][      1.00][    7]");
}

}  // namespace
