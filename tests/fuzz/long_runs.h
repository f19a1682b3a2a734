// Short fuzz inputs that stand for long files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// The input as text in which each of the first few bytes 0x02 has become a long run of 'x': five of them on
/// one line are more than any buffer of the program holds.
inline std::string WithLongRuns(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kRun = 65'535;  // Four of them end just before the buffer of TextLines does.
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
