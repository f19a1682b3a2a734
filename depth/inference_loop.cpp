#include "depth/inference_loop.h"

#include <algorithm>

bool IsUsableInputSize(std::int64_t width, std::int64_t height) {
    // A division, because the product of two declared dimensions can overflow.
    return width >= 1 && height >= 1 && width <= kMostInputPixels / height;
}

std::vector<float> MakeInputPattern(std::size_t count) {
    constexpr std::uint64_t kMultiplier = 2654435761;
    std::vector<float> pattern(count);
    for (std::uint64_t i = 0; i < count; ++i) {
        pattern[i] = static_cast<float>(i * kMultiplier % 1000) / 1000.0F;
    }
    return pattern;
}

bool IsHalfPrecisionModel(std::wstring_view model_path) {
    return model_path.find(L"fp16") != std::wstring_view::npos;
}

std::vector<double> TimeIterations(int runs, const TickClock& clock, const InferenceSteps& steps) {
    std::vector<double> milliseconds;
    for (int iteration = 0; iteration < runs + kWarmUpRuns; ++iteration) {
        steps.wrap_input();
        const std::int64_t start = clock.now();
        steps.run();
        const std::int64_t end = clock.now();
        steps.release_input();
        if (iteration >= kWarmUpRuns) {
            milliseconds.push_back(static_cast<double>(end - start) * 1000.0 /
                                   static_cast<double>(clock.frequency));
        }
    }
    return milliseconds;
}

std::optional<TimingFigures> FiguresOf(std::vector<double> values) {
    if (values.empty()) {
        return std::nullopt;
    }
    std::sort(values.begin(), values.end());
    return TimingFigures{values[values.size() / 2], values.front(), values.back()};
}
