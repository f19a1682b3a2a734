#include "platform/format.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(FormatText, RoundsExactTiesToEven) {
    EXPECT_EQ(FormatText("%.0f %.0f %.0f %.0f", 0.5, 1.5, 2.5, 3.5), "0 2 2 4");
    EXPECT_EQ(FormatText("%.1f %.1f", 0.25, 0.75), "0.2 0.8");
    EXPECT_EQ(FormatText("%.2f %.2f", 0.125, 2.675), "0.12 2.67");
}

TEST(FormatText, PrintsEveryDigitOfAnExactValue) {
    EXPECT_EQ(FormatText("%.0f", 1e22), "10000000000000000000000");
    EXPECT_EQ(FormatText("%.20f", 0.1), "0.10000000000000000555");
}

TEST(FormatText, NamesWhatIsNoNumber) {
    EXPECT_EQ(FormatText("%.2f", std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(FormatText("%.2f", -std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(FormatText("%.2f", std::numeric_limits<double>::quiet_NaN()), "nan");
}

TEST(FormatText, PadsAsAsked) {
    EXPECT_EQ(FormatText("[%-10s][%10.2f][%5d]", "ab", 1.0, 7), "[ab        ][      1.00][    7]");
}

}  // namespace
