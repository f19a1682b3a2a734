#include "tools/vistrel_diag/command_line.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace {

using Arguments = std::vector<std::string>;

RunOptions OptionsFrom(const Arguments& arguments) {
    return ParseCommandLine(arguments).options;
}

TEST(CommandLine, WithoutArgumentsIsTheFullGuidedRun) {
    const CommandLine command_line = ParseCommandLine({});
    EXPECT_FALSE(command_line.help);
    EXPECT_FALSE(command_line.options.quick);
    EXPECT_TRUE(command_line.options.run_models);
    EXPECT_EQ(command_line.options.refresh_hz, 0);
    EXPECT_EQ(command_line.options.capture_seconds, 3.0);
}

TEST(CommandLine, TakesEveryOption) {
    const Arguments arguments = {"--quick", "--no-models", "--refresh", "100", "--capture-seconds", "0.5"};
    const RunOptions options = OptionsFrom(arguments);
    EXPECT_TRUE(options.quick);
    EXPECT_FALSE(options.run_models);
    EXPECT_EQ(options.refresh_hz, 100);
    EXPECT_EQ(options.capture_seconds, 0.5);
}

TEST(CommandLine, TheLastOfTwoValuesWins) {
    EXPECT_EQ(OptionsFrom({"--refresh", "80", "--refresh", "144"}).refresh_hz, 144);
}

TEST(CommandLine, IgnoresUnknownArguments) {
    const Arguments arguments = {"",       "quick",        "--Quick",     "--quick=1", "-quick",
                                 "/quick", "--refresh=90", "--NO-MODELS", " --quick",  "%s%n"};
    const CommandLine command_line = ParseCommandLine(arguments);
    EXPECT_FALSE(command_line.help);
    EXPECT_FALSE(command_line.options.quick);
    EXPECT_TRUE(command_line.options.run_models);
    EXPECT_EQ(command_line.options.refresh_hz, 0);
}

TEST(CommandLine, AnOptionWithoutItsValueIsIgnored) {
    EXPECT_EQ(OptionsFrom({"--refresh"}).refresh_hz, 0);
    EXPECT_EQ(OptionsFrom({"--refresh", "90", "--refresh"}).refresh_hz, 90);
    EXPECT_EQ(OptionsFrom({"--capture-seconds"}).capture_seconds, 3.0);
}

TEST(CommandLine, AValueIsConsumedWhateverItIs) {
    const CommandLine command_line = ParseCommandLine(Arguments{"--refresh", "--help", "--quick"});
    EXPECT_FALSE(command_line.help);
    EXPECT_EQ(command_line.options.refresh_hz, 0);
    EXPECT_TRUE(command_line.options.quick);
    EXPECT_FALSE(OptionsFrom({"--capture-seconds", "--quick"}).quick);
    EXPECT_EQ(OptionsFrom({"--refresh", "--refresh", "90"}).refresh_hz, 0);
}

TEST(CommandLine, HelpIsRecognisedAnywhere) {
    EXPECT_TRUE(ParseCommandLine(Arguments{"--help"}).help);
    EXPECT_TRUE(ParseCommandLine(Arguments{"--quick", "--help", "--no-models"}).help);
    EXPECT_TRUE(ParseCommandLine(Arguments{"--refresh", "90", "nonsense", "--help"}).help);
    EXPECT_FALSE(ParseCommandLine(Arguments{"--HELP"}).help);
    EXPECT_FALSE(ParseCommandLine(Arguments{"-h", "help", "/?"}).help);
}

TEST(CommandLine, UsageIsTwoLines) {
    testing::internal::CaptureStdout();
    PrintUsage();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "vistrel_diag [--quick] [--no-models] [--refresh HZ] [--capture-seconds N]\n"
              "  No arguments: full guided run. That is the intended use.\n");
}

struct RefreshCase {
    const char* text;
    std::int32_t refresh_hz;
};

class RefreshValue : public testing::TestWithParam<RefreshCase> {};

TEST_P(RefreshValue, IsParsedLeniently) {
    EXPECT_EQ(OptionsFrom({"--refresh", GetParam().text}).refresh_hz, GetParam().refresh_hz)
        << '"' << GetParam().text << '"';
}

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();

INSTANTIATE_TEST_SUITE_P(
    Texts, RefreshValue,
    testing::Values(RefreshCase{"90", 90}, RefreshCase{"090", 90}, RefreshCase{"+90", 90},
                    RefreshCase{" 90", 90}, RefreshCase{"90Hz", 90}, RefreshCase{"12abc", 12},
                    RefreshCase{"89.9", 89}, RefreshCase{"1e3", 1}, RefreshCase{"0x5A", 0},
                    RefreshCase{"abc", 0}, RefreshCase{"", 0}, RefreshCase{"-", 0}, RefreshCase{"--90", 0},
                    RefreshCase{"nan", 0}, RefreshCase{"inf", 0}, RefreshCase{"-5", -5}, RefreshCase{"0", 0},
                    RefreshCase{"2147483647", kLargest}, RefreshCase{"2147483648", kLargest},
                    RefreshCase{"99999999999999999999999", kLargest}, RefreshCase{"-2147483649", kSmallest},
                    RefreshCase{"-99999999999999999999999", kSmallest},
                    RefreshCase{"\xEF\xBC\x99\xEF\xBC\x90", 0}));

struct SecondsCase {
    const char* text;
    double seconds;
};

/// A number with too many digits for a double.
TEST(CommandLine, SecondsBeyondADoubleAreInvalid) {
    EXPECT_EQ(OptionsFrom({"--capture-seconds", std::string(400, '9')}).capture_seconds, 0.0);
    EXPECT_EQ(OptionsFrom({"--capture-seconds", std::string(300, '9')}).capture_seconds, 3600.0);
}

class CaptureSeconds : public testing::TestWithParam<SecondsCase> {};

TEST_P(CaptureSeconds, AreParsedLenientlyAndBounded) {
    EXPECT_EQ(OptionsFrom({"--capture-seconds", GetParam().text}).capture_seconds, GetParam().seconds)
        << '"' << GetParam().text << '"';
}

INSTANTIATE_TEST_SUITE_P(
    Texts, CaptureSeconds,
    testing::Values(SecondsCase{"0.5", 0.5}, SecondsCase{".5", 0.5}, SecondsCase{"5.", 5.0},
                    SecondsCase{"+2", 2.0}, SecondsCase{" 2", 2.0}, SecondsCase{"2s", 2.0},
                    SecondsCase{"12abc", 12.0}, SecondsCase{"1e1", 10.0}, SecondsCase{"1E-1x", 0.1},
                    SecondsCase{"3e", 3.0}, SecondsCase{"1,5", 1.0}, SecondsCase{"abc", 0.0},
                    SecondsCase{"", 0.0}, SecondsCase{".", 0.0}, SecondsCase{"e5", 0.0},
                    SecondsCase{"0x10", 0.0}, SecondsCase{"nan", 0.0}, SecondsCase{"NAN", 0.0},
                    SecondsCase{"-nan", 0.0}, SecondsCase{"inf", 0.0}, SecondsCase{"-inf", 0.0},
                    SecondsCase{"Infinity", 0.0}, SecondsCase{"-2", -2.0}, SecondsCase{"3600", 3600.0},
                    SecondsCase{"3600.1", 3600.0}, SecondsCase{"1e308", 3600.0}, SecondsCase{"1e999", 0.0},
                    SecondsCase{"-1e999", 0.0}, SecondsCase{"1e999s", 0.0}, SecondsCase{"1e-999", 0.0},
                    SecondsCase{"0000000000000000000000000000000000000000000000.25", 0.25}));

}  // namespace
