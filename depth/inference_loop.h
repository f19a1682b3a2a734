// The parts of timing a model that need no runtime: the input picture, the loop of iterations, and the
// figures computed from them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

/// Iterations before the recorded ones. They include what a runtime does only once: compiling, allocating,
/// filling caches.
inline constexpr int kWarmUpRuns = 3;

/// The most pixels an input picture may have: 8192 x 8192, some 140 times what the largest model of the
/// product takes. A damaged model file may declare any size, and its picture is allocated.
inline constexpr std::int64_t kMostInputPixels = std::int64_t{8192} * 8192;

/// Whether a picture of `width` x `height` can be made: both at least 1, their product at most
/// kMostInputPixels.
bool IsUsableInputSize(std::int64_t width, std::int64_t height);

/// `count` values in [0, 0.999], the same in every run of the program: element i is ((i * 2654435761) mod
/// 1000) / 1000.
std::vector<float> MakeInputPattern(std::size_t count);

/// Whether the product treats a model as half-precision: it does when its path contains "fp16".
bool IsHalfPrecisionModel(std::wstring_view model_path);

/// A counter and its ticks per second.
struct TickClock {
    std::function<std::int64_t()> now;
    std::int64_t frequency = 1;
};

/// One iteration in three steps, of which only `run` is timed.
struct InferenceSteps {
    std::function<void()> wrap_input;
    std::function<void()> run;  ///< includes releasing the output
    std::function<void()> release_input;
};

/// Milliseconds of each of `runs` iterations, in the order they ran, after kWarmUpRuns unrecorded ones. An
/// exception from a step ends the loop and is passed on.
std::vector<double> TimeIterations(int runs, const TickClock& clock, const InferenceSteps& steps);

struct TimingFigures {
    double median = 0.0;  ///< of an even number of values the upper of the middle two
    double min = 0.0;
    double max = 0.0;
};

/// Nothing when there are no values.
std::optional<TimingFigures> FiguresOf(std::vector<double> values);
