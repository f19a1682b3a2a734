// Short fuzz inputs that stand for long files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/text_lines.h"

/// The input as text in which each of the first few bytes 0x02 has become a long run of 'x': one is more than
/// the buffer of TextLines holds here, and five on one line are more than a report line takes.
inline std::string WithLongRuns(const std::uint8_t* data, std::size_t size) {
    static_assert(TextLines::kBufferBytes == 256, "build this with -DVISTREL_TEXT_BUFFER_BYTES=256");
    constexpr std::size_t kRun = 1'023;  // Four of them end just before the buffer and the report line do.
    constexpr int kMostRuns = 6;
    std::string text;
    int runs = 0;
    for (std::size_t i = 0; i < size; ++i) {
        if (data[i] == 2 && runs < kMostRuns) {
            text.append(kRun, 'x');
            ++runs;
        } else {
            text += static_cast<char>(data[i]);
        }
    }
    return text;
}

/// The text as Windows' text mode delivers it.
inline std::string AsTextMode(std::string text) {
    text = text.substr(0, text.find('\x1A'));
    for (std::size_t i = text.find("\r\n"); i != std::string::npos; i = text.find("\r\n", i)) {
        text.erase(i, 1);
    }
    return text;
}
