#include "tests/lab/openxr/openxr_script.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

OpenXrScript Read(const std::string& text) {
    std::istringstream stream(text);
    return ReadOpenXrScript(stream);
}

TEST(OpenXrScript, AnEmptyScriptIsAWorkingRuntime) {
    const OpenXrScript script = Read("");
    EXPECT_EQ(script.extensions.size(), 3U);
    EXPECT_EQ(script.system, 1U);
    EXPECT_EQ(script.HandCondition(0, 5), "away");
    EXPECT_TRUE(script.mistakes.empty());
}

TEST(OpenXrScript, ReadsEveryStatement) {
    const OpenXrScript script = Read(
        "runtime A Name # of two words\r\nversion 1.2.3\nextensions A B\nmissing xrGetSystem\n"
        "result xrCreateSession -38\nnull xrCreateInstance\nsystem 7\nview 10 20\nluid 00000000:00000001\n"
        "claim views 9\ngrow views 2\nunterminated runtime\nevent 4 stopping\nendless_events\n"
        "frame_milliseconds 11\ncrash xrGetSystem\nhang xrEndFrame\nhand right 3 bare\n\n# nothing\n");
    EXPECT_TRUE(script.mistakes.empty());
    EXPECT_EQ(script.runtime, "A Name");
    EXPECT_EQ(script.patch, 3U);
    EXPECT_EQ(script.extensions, (std::vector<std::string>{"A", "B"}));
    EXPECT_TRUE(script.Lacks("xrGetSystem"));
    EXPECT_EQ(script.Result("xrCreateSession"), -38);
    EXPECT_EQ(script.Result("xrGetSystem"), std::nullopt);
    EXPECT_EQ(script.nulls.count("xrCreateInstance"), 1U);
    EXPECT_EQ(script.fatal_failures.at("xrGetSystem"), "crash");
    EXPECT_EQ(script.fatal_failures.at("xrEndFrame"), "hang");
    EXPECT_EQ(script.views.at(0).height, 20U);
    EXPECT_EQ(script.claims.at("views"), 9U);
    EXPECT_EQ(script.growth.at("views"), 2U);
    EXPECT_EQ(script.events.at(0).state, 6);
    EXPECT_TRUE(script.endless_events);
    EXPECT_EQ(script.frame_milliseconds, 11);
    EXPECT_EQ(script.HandCondition(1, 2), "away");
    EXPECT_EQ(script.HandCondition(1, 3), "bare");
    EXPECT_EQ(script.HandCondition(0, 3), "away");
}

TEST(OpenXrScript, ReportsMistakes) {
    EXPECT_EQ(Read("nonsense\nevent 3 asleep\nhand middle 0 bare\nview 1\nhang\n").mistakes.size(), 5U);
}

}  // namespace
