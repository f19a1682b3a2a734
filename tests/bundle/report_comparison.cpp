#include "tests/bundle/report_comparison.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array kOfThisMachine = {
    std::string_view("WHAT ELSE WAS RUNNING DURING THIS TEST"),
    std::string_view("MACHINE"),
    std::string_view("PER-APP GPU OVERRIDES"),
    std::string_view("WHAT VISTREL ITSELF LOGGED LAST RUN"),
};

// The sections of a run with --quick in order, on any machine; those that need a device are between the last
// two.
constexpr std::array kTitles = {
    std::string_view("PART 1 - BASELINE, NOTHING ELSE RUNNING"),
    std::string_view("WHAT ELSE WAS RUNNING DURING THIS TEST"),
    std::string_view("MACHINE"),
    std::string_view("GPUs"),
    std::string_view("DISPLAYS  (this is what the warp resolution comes from)"),
    std::string_view("PER-APP GPU OVERRIDES"),
    std::string_view("INJECTED INTO VISTREL'S OWN FOLDER"),
    std::string_view("VISTREL SETTINGS IN EFFECT"),
    std::string_view("VISTREL SETTINGS, VERBATIM"),
    std::string_view("HEADSET / OPENXR"),
    std::string_view("BENCHMARK SETUP"),
    std::string_view("DEPTH MODEL INFERENCE"),
    std::string_view("VERDICT"),
};

/// "== TITLE =====" without what surrounds the title; empty for another line.
std::string_view TitleIn(std::string_view line) {
    if (!line.starts_with("== ")) {
        return {};
    }
    line.remove_prefix(3);
    const std::size_t end = line.find_last_not_of('=');
    return end == std::string_view::npos || end == 0 ? std::string_view() : line.substr(0, end);
}

std::vector<std::string> LinesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        lines.emplace_back(line);
    }
    return lines;
}

void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (std::size_t at = 0; !from.empty() && (at = text.find(from, at)) != std::string::npos;
         at += to.size()) {
        text.replace(at, from.size(), to);
    }
}

/// The lines that can be compared.
std::vector<std::string> Comparable(std::string_view report, std::string_view install_folder) {
    std::vector<std::string> lines;
    bool left_out = false;
    for (std::string& line : LinesOf(report)) {
        if (const std::string_view title = TitleIn(line); !title.empty()) {
            left_out = IsOfThisMachine(title);
        } else if (left_out) {
            continue;
        }
        ReplaceAll(line, install_folder, "<install>");
        lines.push_back(std::move(line));
    }
    return lines;
}

}  // namespace

bool IsOfThisMachine(std::string_view title) {
    return std::find(kOfThisMachine.begin(), kOfThisMachine.end(), title) != kOfThisMachine.end();
}

std::vector<std::string> ReportDifferences(std::string_view expected, std::string_view actual,
                                           std::string_view install_folder) {
    const std::vector<std::string> wanted = Comparable(expected, {});
    const std::vector<std::string> found = Comparable(actual, install_folder);
    std::vector<std::string> differences;
    for (std::size_t i = 0; i < std::max(wanted.size(), found.size()); ++i) {
        if (i < wanted.size() && i < found.size() && wanted[i] == found[i]) {
            continue;
        }
        if (i < wanted.size()) {
            differences.push_back("- " + wanted[i]);
        }
        if (i < found.size()) {
            differences.push_back("+ " + found[i]);
        }
    }
    return differences;
}

std::vector<std::string> WhatIsMissing(std::string_view report) {
    std::vector<std::string> missing;
    const std::vector<std::string> lines = LinesOf(report);
    auto from = lines.begin();
    for (const std::string_view title : kTitles) {
        const auto at =
            std::find_if(from, lines.end(), [&](const std::string& line) { return TitleIn(line) == title; });
        if (at == lines.end()) {
            missing.push_back("no section \"" + std::string(title) + "\" at its place");
        } else {
            from = at + 1;
        }
    }
    for (const std::string& line : lines) {
        if (line.find("THIS RUN WAS CUT SHORT") != std::string::npos) {
            missing.push_back(line);
        }
    }
    return missing;
}
