#include <gtest/gtest.h>

#include <array>
#include <string>

#include "tools/vistrel_diag/report/rescue.h"

namespace {

std::string CutShortLine(RunEnd end, unsigned exception_code, const char* section) {
    std::array<char, 256> buffer = {};
    const std::size_t length = FormatCutShortLine(buffer.data(), buffer.size(), end, exception_code, section);
    return {buffer.data(), length};
}

TEST(CutShortLine, NamesTheSectionAndTheCrash) {
    EXPECT_EQ(CutShortLine(RunEnd::Crash, 0xC0000005, "HEADSET / OPENXR"),
              "!! THIS RUN WAS CUT SHORT in the section \"HEADSET / OPENXR\": the program crashed (exception "
              "0xC0000005). "
              "Whatever would follow is missing.");
}

TEST(CutShortLine, NamesEveryOtherEnd) {
    const std::string start = "!! THIS RUN WAS CUT SHORT in the section \"GPUs\": ";
    const std::string end = ". Whatever would follow is missing.";
    EXPECT_EQ(CutShortLine(RunEnd::Abort, 0, "GPUs"), start + "the program aborted" + end);
    EXPECT_EQ(CutShortLine(RunEnd::ControlC, 0, "GPUs"), start + "the user stopped it with Ctrl-C" + end);
    EXPECT_EQ(CutShortLine(RunEnd::ConsoleClosed, 0, "GPUs"), start + "the console window was closed" + end);
    EXPECT_EQ(CutShortLine(RunEnd::SessionEnded, 0, "GPUs"),
              start + "the user logged off or the system shut down" + end);
    EXPECT_EQ(CutShortLine(RunEnd::ClosedByInstaller, 0, "GPUs"),
              start + "an installer or an update closed the program" + end);
    EXPECT_EQ(CutShortLine(static_cast<RunEnd>(99), 0, "GPUs"), start + "unknown" + end);
}

TEST(CutShortLine, SaysSoBeforeTheFirstSection) {
    EXPECT_EQ(
        CutShortLine(RunEnd::ControlC, 0, ""),
        "!! THIS RUN WAS CUT SHORT before its first section: the user stopped it with Ctrl-C. Whatever would "
        "follow is missing.");
}

TEST(CutShortLine, TakesNoFormatFromTheSection) {
    EXPECT_NE(CutShortLine(RunEnd::Abort, 0, "%s%n").find("\"%s%n\""), std::string::npos);
}

TEST(CutShortLine, StaysWithinItsBuffer) {
    std::array<char, 16> buffer = {};
    EXPECT_EQ(FormatCutShortLine(buffer.data(), buffer.size(), RunEnd::Abort, 0, "GPUs"), 15U);
    EXPECT_STREQ(buffer.data(), "!! THIS RUN WAS");
}

}  // namespace
