// Ratios against a baseline that was measured turn about with the subject, in the form that bench/run makes
// its table of.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>

/// Where a ratio has to lie; an empty bound is none.
struct Wanted {
    std::optional<double> at_least;
    std::optional<double> at_most;
};

/// One line of the table. Neither text holds a tab.
inline void PrintRatio(const std::string& what, const std::string& baseline, double ratio,
                       const Wanted& wanted) {
    const auto bound = [](const std::optional<double>& value) {
        return value ? std::to_string(*value) : std::string();
    };
    std::printf("ratio\t%s\t%s\t%.6f\t%s\t%s\n", what.c_str(), baseline.c_str(), ratio,
                bound(wanted.at_least).c_str(), bound(wanted.at_most).c_str());
    std::fflush(stdout);
}

template <typename Work>
double SecondsOf(Work&& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The best times of two works, in seconds.
struct BestTimes {
    double subject = std::numeric_limits<double>::infinity();
    double baseline = std::numeric_limits<double>::infinity();

    double Ratio() const { return subject / baseline; }
};

/// Does both turn about, so that both meet the same machine, and takes the best of each, so that other work
/// on the machine counts as little as possible.
template <typename Subject, typename Baseline>
BestTimes TurnAbout(int rounds, Subject&& subject, Baseline&& baseline) {
    BestTimes best;
    for (int round = 0; round < rounds; ++round) {
        best.baseline = std::min(best.baseline, SecondsOf(baseline));
        best.subject = std::min(best.subject, SecondsOf(subject));
    }
    return best;
}
