// The golden reports of the system tests, as they were before what depends on the machine was masked.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

struct GoldenReport {
    std::string name;
    std::string text;
};

/// `text` with each `mask` replaced.
inline void Unmask(std::string& text, const std::string& mask, const std::string& value) {
    for (std::size_t at = text.find(mask); at != std::string::npos; at = text.find(mask, at + value.size())) {
        text.replace(at, mask.size(), value);
    }
}

/// All golden files, with plausible values in place of the masks.
inline std::vector<GoldenReport> GoldenReports() {
    const std::filesystem::path folder = std::filesystem::path(VISTREL_SOURCE_DIR) / "tests/system/golden";
    std::vector<GoldenReport> reports;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream file(entry.path(), std::ios::binary);
        std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        Unmask(text, "<os>", "Windows 10 Pro");
        Unmask(text, "<cpu>", "Some Processor");
        Unmask(text, "<user>", "someone");
        Unmask(text, "<install>", "C:\\Program Files\\Vistrel");
        Unmask(text, "<rate> ", "60.3 fps (181 frames in 3.00 s ");
        Unmask(text, "<n>", "19");
        if (text.find("\n== ") == std::string::npos) {
            continue;  // No report.
        }
        reports.push_back({entry.path().filename().string(), std::move(text)});
    }
    std::sort(reports.begin(), reports.end(),
              [](const GoldenReport& left, const GoldenReport& right) { return left.name < right.name; });
    return reports;
}
