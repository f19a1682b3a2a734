#include "log/logger.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <utility>

#include "settings/diag_settings.h"

namespace {

const char* TagOf(LogLevel level) {
    switch (level) {
        case LogLevel::Debug:
            return "[DEBUG]";
        case LogLevel::Info:
            return "[INFO ]";
        case LogLevel::Warn:
            return "[WARN ]";
        case LogLevel::Error:
            return "[ERROR]";
    }
    return "";
}

/// All zero when the local time is not available.
std::tm LocalTime(std::time_t time) {
    std::tm local = {};
#ifdef _WIN32
    if (localtime_s(&local, &time) != 0) {
        return {};
    }
#else
    if (localtime_r(&time, &local) == nullptr) {
        return {};
    }
#endif
    return local;
}

void WriteToRing(std::byte* ring, std::string_view line) {
    std::string written(line);
    written += "\r\n";
    std::string_view kept = written;
    kept.remove_prefix(kept.size() - std::min(kept.size(), LogRing::kDataBytes));

    const std::atomic_ref<std::uint64_t> count(
        *reinterpret_cast<std::uint64_t*>(ring + LogRing::kCountOffset));
    const std::uint64_t written_before = count.load();
    const std::size_t start = written_before % LogRing::kDataBytes;
    const std::size_t before_wrap = std::min(kept.size(), LogRing::kDataBytes - start);
    std::byte* const data = ring + LogRing::kHeaderBytes;
    std::memcpy(data + start, kept.data(), before_wrap);
    std::memcpy(data, kept.data() + before_wrap, kept.size() - before_wrap);

    // A reader in another process must never see the count before the data.
    std::atomic_thread_fence(std::memory_order_seq_cst);
    count.exchange(written_before + kept.size());
}

}  // namespace

std::string FormatLogLine(std::chrono::system_clock::time_point time, LogLevel level,
                          std::string_view message) {
    const auto second = std::chrono::floor<std::chrono::seconds>(time);
    const auto millisecond = std::chrono::floor<std::chrono::milliseconds>(time) - second;
    const std::tm local = LocalTime(std::chrono::system_clock::to_time_t(second));
    std::array<char, 32> prefix = {};
    std::size_t length = std::strftime(prefix.data(), prefix.size(), "%H:%M:%S", &local);
    std::snprintf(prefix.data() + length, prefix.size() - length, ".%03d ",
                  static_cast<int>(millisecond.count()));
    std::string line = prefix.data();
    line += TagOf(level);
    line += ' ';
    line += message;
    return line;
}

Logger::Logger(Clock clock) : clock_(std::move(clock)) {}

void Logger::Log(LogLevel level, std::string_view message) {
    const std::string line = FormatLogLine(clock_(), level, message);
    const bool echo = DiagSettings::Instance().log_to_console;
    {
        const std::scoped_lock lock(mutex_);
        history_.push_back(line);
        if (history_.size() > kLongestHistory) {
            history_.pop_front();
        }
        if (echo) {
            pending_.push_back(line);
        }
        if (ring_ != nullptr) {
            WriteToRing(ring_, line);
        }
    }
    if (echo) {
        const std::string printed = line + "\n";
        std::fwrite(printed.data(), 1, printed.size(), stdout);
        std::fflush(stdout);
    }
}

void Logger::Error(std::string_view message) {
    Log(LogLevel::Error, message);
}

void Logger::AttachRing(std::byte* ring) {
    const std::scoped_lock lock(mutex_);
    ring_ = ring;
}

std::vector<std::string> Logger::History() const {
    const std::scoped_lock lock(mutex_);
    return {history_.begin(), history_.end()};
}

std::vector<std::string> Logger::PendingLines() const {
    const std::scoped_lock lock(mutex_);
    return pending_;
}
