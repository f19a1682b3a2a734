#include "tools/vistrel_diag/report/console.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/unit/tools/vistrel_diag/report/console_input.h"

namespace {

bool ContinuesAfter(std::string_view typed) {
    const ConsoleInput input(typed);
    testing::internal::CaptureStdout();
    const bool continues = AskContinue("Ready?");
    testing::internal::GetCapturedStdout();
    return continues;
}

TEST(Console, PromptIsExact) {
    const ConsoleInput input("\n");
    testing::internal::CaptureStdout();
    AskContinue("Headset on and game running?");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "\nHeadset on and game running?\n  [Enter] continue     [s] then Enter to skip\n> ");
}

TEST(Console, AQuestionIsNotUsedAsAFormat) {
    const ConsoleInput input("\n");
    testing::internal::CaptureStdout();
    AskContinue("100%s sure?");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "\n100%s sure?\n  [Enter] continue     [s] then Enter to skip\n> ");
}

TEST(Console, AnAnswerThatBeginsWithSSkips) {
    for (const char* typed : {"s\n", "S\n", "skip\n", "s please\n", "s\r\n", "s"}) {
        EXPECT_FALSE(ContinuesAfter(typed)) << typed;
    }
}

TEST(Console, AnyOtherAnswerContinues) {
    for (const char* typed : {"\n", "\r\n", "yes\n", " s\n", "\ts\n", "xs\n", "\xC3\x9F\n", "y"}) {
        EXPECT_TRUE(ContinuesAfter(typed)) << typed;
    }
}

TEST(Console, TheEndOfTheInputContinues) {
    EXPECT_TRUE(ContinuesAfter(""));
}

TEST(Console, EveryPromptAfterTheEndOfTheInputContinues) {
    const ConsoleInput input("s\n");
    testing::internal::CaptureStdout();
    EXPECT_FALSE(AskContinue("One?"));
    EXPECT_TRUE(AskContinue("Two?"));
    EXPECT_TRUE(AskContinue("Three?"));
    WaitForEnter("\nPress Enter to close.\n");
    testing::internal::GetCapturedStdout();
}

TEST(Console, AZeroOrAControlCharacterIsAnAnswerLikeAnyOther) {
    using std::string_view_literals::operator""sv;
    const ConsoleInput input("\0s\ns\0y\n\x01\ns\n"sv);
    testing::internal::CaptureStdout();
    EXPECT_TRUE(AskContinue("Zero first?"));
    EXPECT_FALSE(AskContinue("Zero second?"));
    EXPECT_TRUE(AskContinue("Control?"));
    EXPECT_FALSE(AskContinue("Then s?"));
    testing::internal::GetCapturedStdout();
}

TEST(Console, ALongAnswerCannotAnswerTheNextPrompt) {
    for (const std::size_t length : {62U, 63U, 64U, 127U, 100000U}) {
        // After the 63rd character there is only "skip".
        const std::string answer = std::string(62, 'y') + std::string(length - 62, 's');
        const ConsoleInput input(answer + "\nyes\ns\n");
        testing::internal::CaptureStdout();
        EXPECT_TRUE(AskContinue("One?")) << length;
        EXPECT_TRUE(AskContinue("Two?")) << length;
        EXPECT_FALSE(AskContinue("Three?")) << length;
        testing::internal::GetCapturedStdout();
    }
}

TEST(Console, ALongAnswerWithAZeroInItEndsWithItsLineToo) {
    const ConsoleInput input("y" + std::string(1, '\0') + std::string(200, 's') + "\nyes\ns\n");
    testing::internal::CaptureStdout();
    EXPECT_TRUE(AskContinue("One?"));
    EXPECT_TRUE(AskContinue("Two?"));
    EXPECT_FALSE(AskContinue("Three?"));
    testing::internal::GetCapturedStdout();
}

std::string& Taken() {
    static std::string text;
    return text;
}

TEST(Console, TextGoesToTheWriterThatWasSet) {
    SetConsoleWriter([](std::string_view text) { Taken() += text; });
    testing::internal::CaptureStdout();
    ConsolePrint("%d %s\n", 1, "one");
    SetConsoleWriter(nullptr);
    ConsolePrint("back");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "back");
    EXPECT_EQ(Taken(), "1 one\n");
}

/// A person at a console, and a record of the calls, in order.
std::vector<std::string>& Done() {
    static std::vector<std::string> done;
    return done;
}

std::optional<std::string>& Typed() {
    static std::optional<std::string> typed;
    return typed;
}

constexpr ConsoleReader kPerson = {
    [] { Done().emplace_back("forgotten"); },
    [] {
        Done().emplace_back("read");
        return Typed();
    },
    [] { return Typed().has_value(); },
};

class ConsoleWithAPerson : public testing::Test {
  protected:
    void SetUp() override {
        SetConsoleWriter([](std::string_view text) { Done().emplace_back(text); });
        SetConsoleReader(&kPerson);
        Done().clear();
    }
    void TearDown() override {
        SetConsoleReader(nullptr);
        SetConsoleWriter(nullptr);
    }
};

TEST_F(ConsoleWithAPerson, InputTypedBeforeAPromptIsDiscardedBeforeItIsShown) {
    Typed() = "";
    EXPECT_TRUE(AskContinue("Ready?"));
    const std::string prompt = "\nReady?\n  [Enter] continue     [s] then Enter to skip\n> ";
    EXPECT_EQ(Done(), (std::vector<std::string>{"forgotten", prompt, "read"}));
    Done().clear();
    WaitForEnter("\nPress Enter to close.\n");
    EXPECT_EQ(Done(), (std::vector<std::string>{"forgotten", "\nPress Enter to close.\n", "read"}));
}

TEST_F(ConsoleWithAPerson, AnswersAsAFileDoes) {
    for (const char* typed : {"s", "S", "skip", "s please"}) {
        Typed() = typed;
        EXPECT_FALSE(AskContinue("Ready?")) << typed;
    }
    for (const char* typed : {"", "yes", " s", "\x1A"}) {
        Typed() = typed;
        EXPECT_TRUE(AskContinue("Ready?")) << typed;
    }
    Typed() = std::nullopt;
    EXPECT_TRUE(AskContinue("Ready?")) << "the end of the input";
}

TEST_F(ConsoleWithAPerson, EndsAWatchOnEnter) {
    EXPECT_TRUE(BeginToWatchForEnter());
    EXPECT_EQ(Done(), (std::vector<std::string>{"forgotten"}));
    Typed() = std::nullopt;
    EXPECT_FALSE(EnterWasPressed());
    Typed() = "";
    EXPECT_TRUE(EnterWasPressed());
}

TEST_F(ConsoleWithAPerson, EndsNoWatchWhenOutputOrInputIsAPipe) {
    Typed() = "";
    SetConsoleWriter(nullptr);
    EXPECT_FALSE(BeginToWatchForEnter());
    EXPECT_FALSE(EnterWasPressed());
    SetConsoleWriter([](std::string_view text) { Done().emplace_back(text); });
    SetConsoleReader(nullptr);
    EXPECT_FALSE(BeginToWatchForEnter());
    EXPECT_FALSE(EnterWasPressed());
}

#ifdef _WIN32
TEST(Console, ControlZInAFileIsTheEndOfTheInput) {
    const ConsoleInput input("\x1As\ns\n");
    testing::internal::CaptureStdout();
    EXPECT_TRUE(AskContinue("One?"));
    EXPECT_TRUE(AskContinue("Two?"));
    testing::internal::GetCapturedStdout();
}
#endif

}  // namespace
