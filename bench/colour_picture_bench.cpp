// How long the picture of the warp measurement takes to build, against a plain copy of as many bytes.
//
//     colour_picture_bench
//
// Each figure is the best of several, so that other work on the machine counts as little as possible.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "tools/vistrel_diag/colour_picture.h"

namespace {

constexpr int kRounds = 7;

template <typename Work>
double BestMilliseconds(Work&& work) {
    double best = std::numeric_limits<double>::infinity();
    for (int round = 0; round < kRounds; ++round) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
        best = std::min(best, taken.count());
    }
    return best;
}

struct Size {
    std::int32_t width;
    std::int32_t height;
};

/// A copy into memory that is as new as the picture's.
double PlainCopyMs(const Size& size) {
    const std::size_t count = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    const std::vector<std::uint32_t> source(count, 0x55AA55AA);
    return BestMilliseconds([&] {
        const auto copy = std::make_unique_for_overwrite<std::uint32_t[]>(count);
        std::memcpy(copy.get(), source.data(), count * sizeof(std::uint32_t));
    });
}

void Measure(const char* name, const Size& frame_size, const Size& size, double copy_ms) {
    const std::vector<std::uint8_t> pixels(
        static_cast<std::size_t>(frame_size.width) * static_cast<std::size_t>(frame_size.height) * 4, 0x55);
    const FrameView frame = {pixels, frame_size.width, frame_size.height};
    const double ms = BestMilliseconds([&] { BuildColourPicture(frame, size.width, size.height); });
    std::printf("%dx%-6d %-22s %8.2f %8.2f %8.2f\n", size.width, size.height, name, ms, copy_ms,
                ms / copy_ms);
}

}  // namespace

int main() {
    std::printf("%-11s %-22s %8s %8s %8s\n", "PICTURE", "FROM", "ms", "copy ms", "ratio");
    for (const Size& size : {Size{1920, 1080}, Size{2560, 1440}, Size{3840, 2160}, Size{7680, 4320}}) {
        const double copy_ms = PlainCopyMs(size);
        Measure("frame of its size", size, size, copy_ms);
        Measure("frame of 1920x1080", {1920, 1080}, size, copy_ms);
        Measure("frame of 3440x1440", {3440, 1440}, size, copy_ms);
        Measure("frame of 7680x4320", {7680, 4320}, size, copy_ms);
        Measure("synthetic pattern", {}, size, copy_ms);
    }
    return 0;
}
