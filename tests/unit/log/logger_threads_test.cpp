// Many threads log at once. Natively this is also built under ThreadSanitizer.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "log/logger.h"

namespace {

constexpr int kThreads = 8;
constexpr int kLinesEach = 120;  // All together fewer than the history holds.

void LogFromManyThreads(Logger& logger) {
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&logger, thread] {
            for (int i = 0; i < kLinesEach; ++i) {
                logger.Log(LogLevel::Info, std::to_string(thread) + "/" + std::to_string(i));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(LoggerThreads, NeitherLoseNorMixLines) {
    Logger logger;
    LogFromManyThreads(logger);
    std::set<std::string> messages;
    for (const std::string& line : logger.History()) {
        messages.insert(line.substr(21));
    }
    std::set<std::string> expected;
    for (int thread = 0; thread < kThreads; ++thread) {
        for (int i = 0; i < kLinesEach; ++i) {
            expected.insert(std::to_string(thread) + "/" + std::to_string(i));
        }
    }
    EXPECT_EQ(messages, expected);
}

TEST(LoggerThreads, TheHistoryNeverExceedsItsLength) {
    Logger logger;
    LogFromManyThreads(logger);
    LogFromManyThreads(logger);
    EXPECT_EQ(logger.History().size(), Logger::kLongestHistory);
}

/// A reader that follows the count, as one in another process does, finds whole lines below it.
TEST(LoggerThreads, TheRingsCountIsPublishedAfterTheData) {
    std::vector<std::uint64_t> memory((LogRing::kHeaderBytes + LogRing::kDataBytes) / sizeof(std::uint64_t));
    auto* const ring = reinterpret_cast<std::byte*>(memory.data());
    const auto* const data = reinterpret_cast<const char*>(ring + LogRing::kHeaderBytes);
    const std::atomic_ref<std::uint64_t> count(memory[LogRing::kCountOffset / sizeof(std::uint64_t)]);

    Logger logger;
    logger.AttachRing(ring);
    std::atomic<bool> finished = false;
    std::string torn;
    std::thread reader([&] {
        while (!finished) {
            // Everything fits into the ring, so data before the count is never overwritten.
            const std::uint64_t written = count.load();
            if (written > 0 && data[written - 1] != '\n') {
                torn.assign(data, written);
            }
            std::this_thread::yield();
        }
    });
    LogFromManyThreads(logger);
    finished = true;
    reader.join();
    EXPECT_EQ(torn, "");

    std::string joined;
    for (const std::string& line : logger.History()) {
        joined += line + "\r\n";
    }
    EXPECT_EQ(std::string(data, count.load()), joined);
}

TEST(LoggerThreads, TheHistoryIsReadAndTheRingSwappedWhileOthersLog) {
    std::vector<std::uint64_t> memory((LogRing::kHeaderBytes + LogRing::kDataBytes) / sizeof(std::uint64_t));
    Logger logger;
    std::atomic<bool> finished = false;
    std::thread other([&] {
        while (!finished) {
            logger.AttachRing(reinterpret_cast<std::byte*>(memory.data()));
            EXPECT_LE(logger.History().size(), Logger::kLongestHistory);
            logger.AttachRing(nullptr);
            EXPECT_TRUE(logger.PendingLines().empty());
            std::this_thread::yield();
        }
    });
    LogFromManyThreads(logger);
    finished = true;
    other.join();
    EXPECT_EQ(logger.History().size(), static_cast<std::size_t>(kThreads * kLinesEach));
}

}  // namespace
