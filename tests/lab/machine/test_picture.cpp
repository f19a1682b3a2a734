#include <cstring>

#include "tests/lab/machine/desktop_picture.h"

namespace lab {
namespace {

constexpr std::uint32_t kBytesPerHalfTexel = 8;
constexpr std::uint32_t kBytesPerByteTexel = 4;

/// value / 255 as a 16-bit float, truncated; `value` is at most 255.
std::uint16_t HalfOfByte(std::uint8_t value) {
    constexpr int kMantissaShift = 23 - 10;
    constexpr int kExponentBias = 127 - 15;
    const float fraction = static_cast<float>(value) / 255.0F;
    std::uint32_t bits = 0;
    std::memcpy(&bits, &fraction, sizeof(bits));
    if (bits == 0) {
        return 0;
    }
    return static_cast<std::uint16_t>((bits >> kMantissaShift) - (kExponentBias << 10));
}

bool RedFirst(PixelFormat format) {
    return format == PixelFormat::kRgba || format == PixelFormat::kRgbaTypeless ||
           format == PixelFormat::kHalfFloat;
}

}  // namespace

std::uint32_t BytesPerTexel(PixelFormat format) {
    return format == PixelFormat::kHalfFloat ? kBytesPerHalfTexel : kBytesPerByteTexel;
}

std::vector<std::uint8_t> TestPicture(Size size, PixelFormat format, bool odd) {
    const std::uint32_t texel_size = BytesPerTexel(format);
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size.width) * size.height * texel_size);
    std::uint8_t* texel = bytes.data();
    for (std::uint32_t y = 0; y < size.height; ++y) {
        for (std::uint32_t x = 0; x < size.width; ++x, texel += texel_size) {
            const auto red = static_cast<std::uint8_t>(x);
            const auto green = static_cast<std::uint8_t>(y);
            const auto sum = static_cast<std::uint8_t>(x + y);
            const auto blue = static_cast<std::uint8_t>(odd ? 255 - sum : sum);
            const bool red_first = RedFirst(format);
            const std::uint8_t channels[] = {red_first ? red : blue, green, red_first ? blue : red, 255};
            if (format != PixelFormat::kHalfFloat) {
                std::memcpy(texel, channels, sizeof(channels));
                continue;
            }
            const std::uint16_t halves[] = {HalfOfByte(channels[0]), HalfOfByte(channels[1]),
                                            HalfOfByte(channels[2]), HalfOfByte(channels[3])};
            std::memcpy(texel, halves, sizeof(halves));
        }
    }
    return bytes;
}

}  // namespace lab
