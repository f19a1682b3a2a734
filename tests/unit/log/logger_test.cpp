#include "log/logger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <numeric>
#include <string>
#include <vector>

#include "settings/diag_settings.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::system_clock;
using testing::ElementsAre;

/// The moment at which the local clock shows the given time of 15 June 2024.
system_clock::time_point LocalMoment(int hour, int minute, int second, int millisecond) {
    std::tm local = {};
    local.tm_year = 124;
    local.tm_mon = 5;
    local.tm_mday = 15;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_sec = second;
    local.tm_isdst = -1;
    return system_clock::from_time_t(std::mktime(&local)) + milliseconds(millisecond);
}

Logger::Clock Always(system_clock::time_point moment) {
    return [moment] { return moment; };
}

/// Switches the console echo of the settings record on and off again.
class ConsoleEcho {
  public:
    ConsoleEcho() { DiagSettings::Instance().log_to_console = true; }
    ~ConsoleEcho() { DiagSettings::Instance().log_to_console = false; }
    ConsoleEcho(const ConsoleEcho&) = delete;
    ConsoleEcho& operator=(const ConsoleEcho&) = delete;
};

/// The shared memory of a ring, with guard bytes before and behind that nothing may touch.
class RingMemory {
  public:
    std::byte* Ring() { return reinterpret_cast<std::byte*>(words_.data() + kGuardWords); }

    std::uint64_t Count() { return words_[kGuardWords + 2]; }
    void SetCount(std::uint64_t count) { words_[kGuardWords + 2] = count; }

    std::string Data(std::size_t start, std::size_t length) {
        return {reinterpret_cast<const char*>(Ring()) + LogRing::kHeaderBytes + start, length};
    }

    void ExpectNothingElseTouched() {
        EXPECT_EQ(words_[kGuardWords], kFill);
        EXPECT_EQ(words_[kGuardWords + 1], kFill);
        for (std::size_t i = 0; i < kGuardWords; ++i) {
            EXPECT_EQ(words_[i], kFill);
            EXPECT_EQ(words_[words_.size() - 1 - i], kFill);
        }
    }

  private:
    static constexpr std::uint64_t kFill = 0x2E2E2E2E2E2E2E2EU;  // "........"
    static constexpr std::size_t kGuardWords = 8;
    std::vector<std::uint64_t> words_ = std::vector<std::uint64_t>(
        2 * kGuardWords + (LogRing::kHeaderBytes + LogRing::kDataBytes) / sizeof(std::uint64_t), kFill);
};

TEST(FormatLogLine, HasTimeTagAndMessage) {
    EXPECT_EQ(FormatLogLine(LocalMoment(9, 5, 7, 42), LogLevel::Info, "[Vistrel 3D] shader compiled"),
              "09:05:07.042 [INFO ] [Vistrel 3D] shader compiled");
    EXPECT_EQ(FormatLogLine(LocalMoment(23, 59, 59, 999), LogLevel::Error, ""), "23:59:59.999 [ERROR] ");
    EXPECT_EQ(FormatLogLine(LocalMoment(0, 0, 0, 0), LogLevel::Warn, "x"), "00:00:00.000 [WARN ] x");
    EXPECT_EQ(FormatLogLine(LocalMoment(12, 0, 0, 7), LogLevel::Debug, "100% {} %s"),
              "12:00:00.007 [DEBUG] 100% {} %s");
}

TEST(FormatLogLine, AnUnknownLevelHasAnEmptyTag) {
    EXPECT_EQ(FormatLogLine(LocalMoment(1, 2, 3, 4), static_cast<LogLevel>(7), "text"), "01:02:03.004  text");
    EXPECT_EQ(FormatLogLine(LocalMoment(1, 2, 3, 4), static_cast<LogLevel>(-1), "text"),
              "01:02:03.004  text");
}

TEST(FormatLogLine, TruncatesFractionsOfAMillisecond) {
    const auto almost = LocalMoment(8, 0, 0, 0) + std::chrono::microseconds(999);
    EXPECT_EQ(FormatLogLine(almost, LogLevel::Info, "x"), "08:00:00.000 [INFO ] x");
}

TEST(Logger, KeepsLinesInOrder) {
    Logger logger(Always(LocalMoment(10, 11, 12, 13)));
    logger.Log(LogLevel::Info, "first");
    logger.Error("second");
    EXPECT_THAT(logger.History(), ElementsAre("10:11:12.013 [INFO ] first", "10:11:12.013 [ERROR] second"));
}

TEST(Logger, TheThousandAndFirstLineEvictsTheFirst) {
    Logger logger(Always(LocalMoment(0, 0, 0, 0)));
    for (int i = 1; i <= 1000; ++i) {
        logger.Log(LogLevel::Info, std::to_string(i));
    }
    ASSERT_EQ(logger.History().size(), 1000U);
    EXPECT_EQ(logger.History().front(), "00:00:00.000 [INFO ] 1");
    logger.Log(LogLevel::Info, "1001");
    ASSERT_EQ(logger.History().size(), 1000U);
    EXPECT_EQ(logger.History().front(), "00:00:00.000 [INFO ] 2");
    EXPECT_EQ(logger.History().back(), "00:00:00.000 [INFO ] 1001");
}

TEST(Logger, PrintsNothingWhileTheEchoIsOff) {
    Logger logger;
    testing::internal::CaptureStdout();
    logger.Error("unseen");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_TRUE(logger.PendingLines().empty());
}

TEST(Logger, TheEchoPrintsAndKeepsAllPendingLines) {
    Logger logger(Always(LocalMoment(1, 1, 1, 1)));
    logger.Log(LogLevel::Info, "before");
    testing::internal::CaptureStdout();
    {
        const ConsoleEcho echo;
        logger.Log(LogLevel::Warn, "100% \x01 seen");
        for (int i = 0; i < 1500; ++i) {
            logger.Log(LogLevel::Debug, "more");
        }
    }
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(printed.substr(0, printed.find('\n') + 1), "01:01:01.001 [WARN ] 100% \x01 seen\n");
    logger.Log(LogLevel::Info, "after");
    ASSERT_EQ(logger.PendingLines().size(), 1501U);
    EXPECT_EQ(logger.PendingLines().front(), "01:01:01.001 [WARN ] 100% \x01 seen");
}

TEST(LoggerRing, ReceivesLinesWithTheirLineEnds) {
    RingMemory memory;
    memory.SetCount(0);
    Logger logger(Always(LocalMoment(1, 1, 1, 1)));
    logger.Log(LogLevel::Info, "not yet attached");
    logger.AttachRing(memory.Ring());
    logger.Log(LogLevel::Info, "one");
    logger.Log(LogLevel::Error, "two");
    logger.AttachRing(nullptr);
    logger.Log(LogLevel::Info, "no longer attached");

    const std::string expected = "01:01:01.001 [INFO ] one\r\n01:01:01.001 [ERROR] two\r\n";
    EXPECT_EQ(memory.Count(), expected.size());
    EXPECT_EQ(memory.Data(0, expected.size() + 3), expected + "...");
    memory.ExpectNothingElseTouched();
}

TEST(LoggerRing, AWriteAcrossTheEndContinuesAtTheStart) {
    for (std::uint64_t before_end = 0; before_end <= 27; ++before_end) {
        RingMemory memory;
        const std::uint64_t start = 5 * LogRing::kDataBytes - before_end;
        memory.SetCount(start);
        Logger logger(Always(LocalMoment(1, 1, 1, 1)));
        logger.AttachRing(memory.Ring());
        logger.Log(LogLevel::Info, "wrap");

        const std::string expected = "01:01:01.001 [INFO ] wrap\r\n";
        ASSERT_EQ(expected.size(), 27U);
        EXPECT_EQ(memory.Count(), start + 27);
        EXPECT_EQ(memory.Data(LogRing::kDataBytes - before_end, before_end) + memory.Data(0, 27 - before_end),
                  expected)
            << before_end;
        memory.ExpectNothingElseTouched();
    }
}

TEST(LoggerRing, AnOverlongLineKeepsItsEnd) {
    RingMemory memory;
    memory.SetCount(100);
    Logger logger(Always(LocalMoment(1, 1, 1, 1)));
    logger.AttachRing(memory.Ring());
    std::string message(LogRing::kDataBytes + 1000, '\0');
    for (std::size_t i = 0; i < message.size(); ++i) {
        message[i] = static_cast<char>('a' + i % 23);
    }
    logger.Log(LogLevel::Info, message);

    std::string kept = message + "\r\n";
    kept = kept.substr(kept.size() - LogRing::kDataBytes);
    EXPECT_EQ(memory.Count(), 100 + LogRing::kDataBytes);
    EXPECT_EQ(memory.Data(100, LogRing::kDataBytes - 100), kept.substr(0, LogRing::kDataBytes - 100));
    EXPECT_EQ(memory.Data(0, 100), kept.substr(LogRing::kDataBytes - 100));
    EXPECT_EQ(logger.History().front().size(), message.size() + 21) << "the history keeps it whole";
    memory.ExpectNothingElseTouched();
}

TEST(LoggerRing, ALineThatJustFitsFillsTheRing) {
    RingMemory memory;
    memory.SetCount(0);
    Logger logger(Always(LocalMoment(1, 1, 1, 1)));
    logger.AttachRing(memory.Ring());
    logger.Log(LogLevel::Info, std::string(LogRing::kDataBytes - 21 - 2, 'x'));
    EXPECT_EQ(memory.Count(), LogRing::kDataBytes);
    EXPECT_EQ(memory.Data(0, 22), "01:01:01.001 [INFO ] x");
    EXPECT_EQ(memory.Data(LogRing::kDataBytes - 3, 3), "x\r\n");
    memory.ExpectNothingElseTouched();
}

}  // namespace
