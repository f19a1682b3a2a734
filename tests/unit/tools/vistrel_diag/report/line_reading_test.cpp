#include "tools/vistrel_diag/report/line_reading.h"

#include <cmath>

TEST(LineScan, ReadsNumbersAsTheyArePrinted) {
    double number = 0.0;
    std::int32_t whole = 0;
    EXPECT_TRUE(LineScan("a -12.50 ms").Text("a ").Number(number).Text(" ms").IsWhole());
    EXPECT_EQ(number, -12.5);
    EXPECT_TRUE(LineScan("   7").Whole(whole).IsWhole());
    EXPECT_EQ(whole, 7);
    for (const char* text :
         {"", "-", "x", "inf", "nan", "-inf", "+1", ".5", "1e5", "0x10", "infinity", "nan(1)"}) {
        EXPECT_FALSE(LineScan(text).Number(number).IsWhole()) << text;
    }
    for (const char* text : {"4294967296", "-2147483649", "99999999999999999999"}) {
        EXPECT_FALSE(LineScan(text).Whole(whole).IsWhole()) << text;
    }
    EXPECT_EQ(whole, 7);
}

TEST(LineScan, AcceptsInfinitiesOnlyWhereTheyCanBePrinted) {
    double number = 0.0;
    EXPECT_TRUE(LineScan("-inf mm").AnyNumber(number).Text(" mm").IsWhole());
    EXPECT_TRUE(std::isinf(number) && number < 0.0);
    EXPECT_TRUE(LineScan("nan").AnyNumber(number).IsWhole());
    EXPECT_TRUE(std::isnan(number));
    EXPECT_FALSE(LineScan("infinity").AnyNumber(number).IsWhole());
}

TEST(LineScan, AcceptsShortenedRunsOfBlanks) {
    std::string value;
    EXPECT_TRUE(LineScan("OS : Windows").Text("OS              : ").Rest(value).IsWhole());
    EXPECT_EQ(value, "Windows");
    EXPECT_TRUE(LineScan("VRAM : x").Text("  VRAM          : ").Rest(value).IsWhole());
    EXPECT_FALSE(LineScan("OS: Windows").Text("OS              : ").Matches());
}

TEST(LineScan, KeepsTheBlanksOfAValue) {
    std::string value;
    EXPECT_TRUE(LineScan("A :   two  ").Text("A : ").Rest(value).IsWhole());
    EXPECT_EQ(value, "  two  ");
    EXPECT_TRUE(LineScan("A :  [x]").Text("A : ").UpToLast(value, " [").Matches());
    EXPECT_EQ(value, "");
}

TEST(LineScan, FailsAtTheFirstPartThatDoesNotMatch) {
    std::int32_t number = 5;
    EXPECT_FALSE(LineScan("a 7").Text("b ").Whole(number).Matches());
    EXPECT_EQ(number, 5);
    EXPECT_FALSE(LineScan("a 7 more").Text("a ").Whole(number).IsWhole());
}

TEST(LineScan, ReadsEightHexadecimalDigits) {
    std::uint32_t number = 0;
    EXPECT_TRUE(LineScan("8007000E").Hex(number).IsWhole());
    EXPECT_EQ(number, 0x8007000EU);
    for (const char* text : {"8007000", "8007000g", "-8007000", "+8007000", "0x800700"}) {
        EXPECT_FALSE(LineScan(text).Hex(number).IsWhole()) << text;
    }
}
