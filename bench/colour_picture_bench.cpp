// The time to build the warp measurement's picture, compared with a plain copy of the same size.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "bench/ratio.h"
#include "tools/vistrel_diag/sections/warp/colour_picture.h"

namespace {

constexpr Closeness kCloseness = {0.1, 9, 45};

struct Size {
    std::int32_t width;
    std::int32_t height;

    std::size_t Pixels() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
    std::string Text() const { return std::to_string(width) + "x" + std::to_string(height); }
};

/// A copy into newly allocated memory, like the picture's.
void CopyPlainly(const std::vector<std::uint32_t>& source) {
    const auto copy = std::make_unique_for_overwrite<std::uint32_t[]>(source.size());
    std::memcpy(copy.get(), source.data(), source.size() * sizeof(std::uint32_t));
    // Makes the copy observable; otherwise the compiler would omit it.
    asm volatile("" : : "r"(copy.get()) : "memory");
}

void Measure(const Size& frame_size, const Size& size) {
    const std::vector<std::uint8_t> pixels(frame_size.Pixels() * 4, 0x55);
    const std::vector<std::uint32_t> plain(size.Pixels(), 0x55AA55AA);
    const FrameView frame = {pixels, frame_size.width, frame_size.height};
    const Comparison times = TurnAbout(
        kCloseness, [&] { BuildColourPicture(frame, size.width, size.height); }, [&] { CopyPlainly(plain); });
    const std::string from = pixels.empty() ? "the pattern" : "a frame of " + frame_size.Text();
    std::printf("%s from %s: %.2f ms, copy %.2f ms\n", size.Text().c_str(), from.c_str(),
                times.subject * 1000, times.baseline * 1000);
    PrintRatio("picture " + size.Text() + " from " + from, "plain copy", times.middle, {{}, 3.0});
}

}  // namespace

int main() {
    for (const Size& size : {Size{3840, 2160}, Size{7680, 4320}}) {
        for (const Size& frame : {size, Size{1920, 1080}, Size{3440, 1440}, Size{}}) {
            Measure(frame, size);
        }
    }
    Measure({7680, 4320}, {3840, 2160});
    return 0;
}
