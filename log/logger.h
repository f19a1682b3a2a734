// The product's leveled log. Its lines never go into the report.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

enum class LogLevel { Debug = 0, Info = 1, Warn = 2, Error = 3 };

/// The shared memory of an attached ring: 24 bytes of header, of which the last 8 hold the number of all
/// bytes ever written, followed by the data.
struct LogRing {
    static constexpr std::size_t kCountOffset = 16;
    static constexpr std::size_t kHeaderBytes = 24;
    static constexpr std::size_t kDataBytes = 524288;
};

/// "hours:minutes:seconds.milliseconds [LEVEL] message" in local time. A level without a name has an empty
/// tag.
std::string FormatLogLine(std::chrono::system_clock::time_point time, LogLevel level,
                          std::string_view message);

/// Any thread may call any function.
class Logger {
  public:
    using Clock = std::function<std::chrono::system_clock::time_point()>;

    static constexpr std::size_t kLongestHistory = 1000;  // Lines.

    /// The logger of the process. The first call creates it, and also switches off the console's quick-edit
    /// mode (console_mode.h).
    static Logger& instance();

    explicit Logger(Clock clock = std::chrono::system_clock::now);

    /// Keeps one line, passes it to the attached ring and, when DiagSettings::log_to_console is on, prints
    /// it.
    void Log(LogLevel level, std::string_view message);

    /// Log at level Error.
    void Error(std::string_view message);

    /// Lines from now on are also written into `ring`: memory of LogRing::kHeaderBytes + LogRing::kDataBytes,
    /// aligned to 8 bytes, which must stay valid until another ring, or null, is attached.
    void AttachRing(std::byte* ring);

    /// A copy of the kept lines, oldest first.
    std::vector<std::string> History() const;

    /// A copy of all lines logged while the console echo was on.
    std::vector<std::string> PendingLines() const;

  private:
    Clock clock_;
    mutable std::mutex mutex_;  // Guards everything below.
    std::deque<std::string> history_;
    std::vector<std::string> pending_;
    std::byte* ring_ = nullptr;
};
