// Ratios against a baseline that was measured alternately with the subject, in the form that bench/run prints
// as a table. bench/pairs.py applies the same rule to the times that bench/run measures.
#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// The bounds of a ratio; an empty bound does not apply.
struct Wanted {
    std::optional<double> at_least;
    std::optional<double> at_most;
};

/// The required accuracy of a ratio, relative to itself, and the number of pairs measured for it.
struct Closeness {
    double precision = 0.02;
    std::size_t least = 9;  ///< at least six: fewer have no interval
    std::size_t most = 45;
};

/// The middle one of several pairs' ratios.
struct MiddleRatio {
    double ratio = 0.0;
    double give = 0.0;  ///< half of the interval that holds the true middle, at 95 %, as a part of the ratio
    std::size_t pairs = 0;
    bool steady = false;  ///< as accurate as requested
};

/// From the ratios of at least one pair. The interval is between two of the sorted ratios, so no distribution
/// is assumed.
inline MiddleRatio MiddleOf(std::vector<double> ratios, double precision) {
    std::sort(ratios.begin(), ratios.end());
    const std::size_t count = ratios.size();
    const double reach = 0.98 * std::sqrt(static_cast<double>(count));
    const double outer = std::floor(static_cast<double>(count) / 2 - reach);
    const std::size_t first = outer > 0 ? static_cast<std::size_t>(outer) : 0;
    const double ratio = (ratios[(count - 1) / 2] + ratios[count / 2]) / 2;
    const double give = (ratios[count - 1 - first] - ratios[first]) / 2 / ratio;
    return {ratio, give, count, give <= precision};
}

/// Measures pairs, each of which returns its ratio, until the middle one is accurate enough or the maximum is
/// reached. When to stop depends on their spread, never on the ratio itself.
template <typename Pair>
MiddleRatio TakePairs(const Closeness& wanted, Pair&& pair) {
    std::vector<double> ratios;
    MiddleRatio middle;
    while (ratios.size() < wanted.least || (!middle.steady && ratios.size() < wanted.most)) {
        ratios.push_back(pair());
        middle = MiddleOf(ratios, wanted.precision);
    }
    return middle;
}

/// One line of the table. Neither text contains a tab. A figure that is not the middle of pairs has none.
inline void PrintRatio(const std::string& what, const std::string& baseline, const MiddleRatio& middle,
                       const Wanted& wanted) {
    const auto bound = [](const std::optional<double>& value) {
        return value ? std::to_string(*value) : std::string();
    };
    std::printf("ratio\t%s\t%s\t%.6f\t%s\t%s\t%.6f\t%zu\t%s\n", what.c_str(), baseline.c_str(), middle.ratio,
                bound(wanted.at_least).c_str(), bound(wanted.at_most).c_str(), middle.give, middle.pairs,
                middle.steady ? "steady" : "unsteady");
    std::fflush(stdout);
}

/// For a figure that is counted, or measured by a single run.
inline void PrintRatio(const std::string& what, const std::string& baseline, double ratio,
                       const Wanted& wanted) {
    PrintRatio(what, baseline, MiddleRatio{ratio, 0.0, 0, true}, wanted);
}

template <typename Work>
double SecondsOf(Work&& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The middle ratio of subject to baseline, and the best seconds of each for information.
struct Comparison {
    MiddleRatio middle;
    double subject = 0.0;
    double baseline = 0.0;
};

/// Runs both alternately, so that both of a pair run under the same conditions. The order changes from pair
/// to pair.
template <typename Subject, typename Baseline>
Comparison TurnAbout(const Closeness& wanted, Subject&& subject, Baseline&& baseline) {
    std::vector<double> subjects;
    std::vector<double> baselines;
    const MiddleRatio middle = TakePairs(wanted, [&] {
        if (subjects.size() % 2 == 0) {
            baselines.push_back(SecondsOf(baseline));
            subjects.push_back(SecondsOf(subject));
        } else {
            subjects.push_back(SecondsOf(subject));
            baselines.push_back(SecondsOf(baseline));
        }
        return subjects.back() / baselines.back();
    });
    return {middle, *std::min_element(subjects.begin(), subjects.end()),
            *std::min_element(baselines.begin(), baselines.end())};
}
