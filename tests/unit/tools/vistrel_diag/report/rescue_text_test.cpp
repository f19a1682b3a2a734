#include <gtest/gtest.h>

#include <array>
#include <string>

#include "tools/vistrel_diag/report/rescue.h"

namespace {

std::string CutShortLine(RunEnd end, const CrashSite& site, const char* section) {
    std::array<char, 512> buffer = {};
    const std::size_t length = FormatCutShortLine(buffer.data(), buffer.size(), end, site, section);
    return {buffer.data(), length};
}

std::string InHeadset(const std::string& cause) {
    return "!! THIS RUN WAS CUT SHORT in the section \"HEADSET / OPENXR\": " + cause +
           ". Whatever would follow is missing.";
}

TEST(CutShortLine, NamesTheSectionTheModuleAndTheException) {
    constexpr const char* kSection = "HEADSET / OPENXR";
    EXPECT_EQ(CutShortLine(RunEnd::Crash, {0xC0000005, "vrclient_x64.dll"}, kSection),
              InHeadset("the program crashed in vrclient_x64.dll (access violation, 0xC0000005)"));
    EXPECT_EQ(CutShortLine(RunEnd::Crash, {0xC0000005, "vrclient_x64.dll", 0x1A2B}, kSection),
              InHeadset("the program crashed in vrclient_x64.dll (access violation, 0xC0000005 at +0x1A2B)"));
    EXPECT_EQ(CutShortLine(RunEnd::Crash, {0xC00000FD, ""}, kSection),
              InHeadset("the program crashed (stack overflow, 0xC00000FD)"));
    EXPECT_EQ(CutShortLine(RunEnd::Crash, {0xC0001234, ""}, kSection),
              InHeadset("the program crashed (exception 0xC0001234)"));
}

TEST(CutShortLine, NamesEveryOtherCause) {
    const std::string start = "!! THIS RUN WAS CUT SHORT in the section \"GPUs\": ";
    const std::string end = ". Whatever would follow is missing.";
    EXPECT_EQ(CutShortLine(RunEnd::Abort, {}, "GPUs"), start + "the program aborted" + end);
    EXPECT_EQ(CutShortLine(RunEnd::ControlC, {}, "GPUs"), start + "the user stopped it with Ctrl-C" + end);
    EXPECT_EQ(CutShortLine(RunEnd::ConsoleClosed, {}, "GPUs"), start + "the console window was closed" + end);
    EXPECT_EQ(CutShortLine(RunEnd::SessionEnded, {}, "GPUs"),
              start + "the user logged off or the system shut down" + end);
    EXPECT_EQ(CutShortLine(RunEnd::ClosedByInstaller, {}, "GPUs"),
              start + "an installer or an update closed the program" + end);
    EXPECT_EQ(CutShortLine(static_cast<RunEnd>(99), {}, "GPUs"), start + "unknown" + end);
}

TEST(CutShortLine, ReportsAnEndBeforeTheFirstSection) {
    EXPECT_EQ(
        CutShortLine(RunEnd::ControlC, {}, ""),
        "!! THIS RUN WAS CUT SHORT before its first section: the user stopped it with Ctrl-C. Whatever would "
        "follow is missing.");
}

TEST(CutShortLine, DoesNotUseTheSectionAsAFormat) {
    EXPECT_NE(CutShortLine(RunEnd::Abort, {}, "%s%n").find("\"%s%n\""), std::string::npos);
}

TEST(CutShortLine, StaysWithinItsBuffer) {
    std::array<char, 16> buffer = {};
    EXPECT_EQ(FormatCutShortLine(buffer.data(), buffer.size(), RunEnd::Abort, {}, "GPUs"), 15U);
    EXPECT_STREQ(buffer.data(), "!! THIS RUN WAS");
}

}  // namespace
