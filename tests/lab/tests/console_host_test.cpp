#include "tests/lab/console/console_host.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Kind = lab::ConsoleStep::Kind;
using End = lab::ConsoleRead::End;

class ConsoleHostTest : public testing::Test {
  protected:
    lab::ConsoleHost Console(std::vector<lab::ConsoleStep> steps) {
        script_.steps = std::move(steps);
        return lab::ConsoleHost(script_, {[this](const std::string& line) { record_.push_back(line); },
                                          [this](lab::ControlEvent event) { raised_.push_back(event); },
                                          [] { return std::int64_t{1'500'000}; }});
    }

    lab::ConsoleScript script_;
    std::vector<std::string> record_;
    std::vector<lab::ControlEvent> raised_;
};

TEST_F(ConsoleHostTest, ThePersonAnswersThePrompts) {
    lab::ConsoleHost console =
        Console({{Kind::kSees, "Ready?"}, {Kind::kReads, ""}, {Kind::kTypes, "yes\r"}});
    console.Write("Ready");
    EXPECT_EQ(console.Keys(), "");
    console.Write("?");
    EXPECT_EQ(console.Keys(), "") << "nobody reads yet";
    const lab::ConsoleRead read = console.Read(100);
    EXPECT_EQ(read.end, End::kText);
    EXPECT_EQ(read.text, "yes\r\n");
    EXPECT_EQ(record_, (std::vector<std::string>{"write \"Ready\"", "write \"?\"", "echo \"yes\\r\\n\"",
                                                 "read \"yes\\r\\n\""}));
    EXPECT_EQ(console.Read(100).end, End::kScriptEnded);
}

TEST_F(ConsoleHostTest, ALineIsReadInPieces) {
    lab::ConsoleHost console = Console({{Kind::kTypes, "abc\rd\r"}});
    EXPECT_EQ(console.Read(2).text, "ab");
    EXPECT_EQ(console.Read(2).text, "c\r");
    EXPECT_EQ(console.Read(2).text, "\n");
    EXPECT_EQ(console.Read(9).text, "d\r\n");
}

TEST_F(ConsoleHostTest, InputTypedAheadIsKeptUntilItIsFlushed) {
    lab::ConsoleHost console =
        Console({{Kind::kSees, "a"}, {Kind::kTypes, "\r\r"}, {Kind::kSees, "b"}, {Kind::kTypes, "x\r"}});
    console.Write("a");
    EXPECT_EQ(console.Keys(), "\r\r");
    EXPECT_EQ(console.Read(9).text, "\r\n");
    console.FlushKeys();
    console.Write("b");
    EXPECT_EQ(console.Read(9).text, "x\r\n");
    EXPECT_EQ(record_[3], "flush 1");
}

TEST_F(ConsoleHostTest, WithoutLineModeEveryKeyIsRead) {
    script_.input_mode = 0x1;
    lab::ConsoleHost console = Console({{Kind::kReads, ""}, {Kind::kTypes, "s"}});
    EXPECT_EQ(console.Read(9).text, "s");
}

TEST_F(ConsoleHostTest, CtrlCEndsAReadThatWaits) {
    lab::ConsoleHost console = Console({{Kind::kReads, ""}, {Kind::kCtrlC, ""}});
    const lab::ConsoleRead read = console.Read(9);
    EXPECT_EQ(read.end, End::kInterrupted);
    EXPECT_EQ(read.text, "");
    EXPECT_EQ(raised_, (std::vector<lab::ControlEvent>{lab::ControlEvent::kCtrlC}));
}

TEST_F(ConsoleHostTest, CtrlCOutsideAReadDoesNotEndTheNextOne) {
    lab::ConsoleHost console = Console({{Kind::kSees, "a"}, {Kind::kCtrlC, ""}, {Kind::kTypes, "x\r"}});
    console.Write("a");
    EXPECT_EQ(raised_.size(), 1U);
    EXPECT_EQ(console.Read(9).text, "x\r\n");
}

TEST_F(ConsoleHostTest, CtrlCIsAKeyWhereInputIsNotProcessed) {
    script_.input_mode = 0x0;
    lab::ConsoleHost console = Console({{Kind::kCtrlC, ""}});
    EXPECT_EQ(console.Keys(), "\x03");
    EXPECT_TRUE(raised_.empty());
}

TEST_F(ConsoleHostTest, AClickFreezesTheOutputOnlyWithQuickEdit) {
    lab::ConsoleHost console =
        Console({{Kind::kSees, "a"}, {Kind::kClicks, ""}, {Kind::kSees, "b"}, {Kind::kClicks, ""}});
    console.Write("a");
    EXPECT_EQ(record_.back(), "frozen");
    ASSERT_TRUE(console.SetInputMode(0x1B7));
    console.Write("b");
    EXPECT_EQ(record_.back(), "write \"b\"");
}

TEST_F(ConsoleHostTest, AModeWithoutExtendedFlagsDoesNotChangeQuickEdit) {
    lab::ConsoleHost console = Console({{Kind::kSees, "a"}, {Kind::kClicks, ""}});
    ASSERT_TRUE(console.SetInputMode(0x7));
    EXPECT_EQ(console.InputMode(), 0x7U) << "and tells nothing of it";
    console.Write("a");
    EXPECT_EQ(record_.back(), "frozen");
    ASSERT_TRUE(console.SetInputMode(0x47));
    EXPECT_EQ(console.InputMode(), 0xC7U) << "it is read back with the flag that Windows adds";
}

TEST_F(ConsoleHostTest, RejectsModesThatWindowsRejects) {
    script_.virtual_terminal = false;
    lab::ConsoleHost console = Console({});
    EXPECT_FALSE(console.SetInputMode(0x4)) << "echo without lines";
    EXPECT_FALSE(console.SetInputMode(0x800));
    EXPECT_FALSE(console.SetOutputMode(0x7));
    EXPECT_FALSE(console.SetOutputMode(0x20));
    EXPECT_EQ(console.InputMode(), 0x1F7U);
    EXPECT_EQ(console.OutputMode(), 0x3U);
    EXPECT_TRUE(record_.empty());
}

TEST_F(ConsoleHostTest, RecordsWhatTheProgramChanges) {
    lab::ConsoleHost console = Console({});
    EXPECT_TRUE(console.SetOutputMode(0x7));
    console.SetCodePage(65001);
    console.SetTitle("a \"b\"");
    console.Write("\x1b\\\n");
    EXPECT_EQ(record_, (std::vector<std::string>{"output mode 0x7", "code page 65001",
                                                 "title \"a \\\"b\\\"\"", "write \"\\x1B\\\\\\n\""}));
    EXPECT_EQ(console.Title(), "a \"b\"");
    EXPECT_EQ(console.CodePage(), 65001U);
}

TEST_F(ConsoleHostTest, RecordsTimesOnRequest) {
    script_.clock_is_shown = true;
    lab::ConsoleHost console = Console({{Kind::kCloses, ""}});
    console.Write("a");
    EXPECT_EQ(record_, (std::vector<std::string>{"at 1.500000 s write \"a\"", "at 1.500000 s close"}));
    EXPECT_EQ(raised_, (std::vector<lab::ControlEvent>{lab::ControlEvent::kClose}));
}

}  // namespace
