#include "tools/vistrel_diag/sections/warp/colour_picture.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <new>
#include <vector>

namespace {

using Pixel = std::array<std::uint8_t, 4>;

Pixel PixelAt(const ColourPicture& picture, std::int32_t x, std::int32_t y) {
    Pixel pixel = {};
    std::memcpy(pixel.data(), &picture.pixels[static_cast<std::size_t>(y) * picture.width + x], 4);
    return pixel;
}

/// A frame in which every pixel encodes its position.
std::vector<std::uint8_t> NumberedFrame(std::int32_t width, std::int32_t height) {
    std::vector<std::uint8_t> bytes;
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            for (const std::int32_t value : {x, x >> 8, y, y >> 8}) {
                bytes.push_back(static_cast<std::uint8_t>(value));
            }
        }
    }
    return bytes;
}

Pixel NumberedPixel(std::int64_t x, std::int64_t y) {
    return {static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(x >> 8), static_cast<std::uint8_t>(y),
            static_cast<std::uint8_t>(y >> 8)};
}

void ExpectScaled(std::int32_t frame_width, std::int32_t frame_height, std::int32_t width,
                  std::int32_t height) {
    SCOPED_TRACE(testing::Message() << frame_width << "x" << frame_height << " to " << width << "x"
                                    << height);
    const std::vector<std::uint8_t> bytes = NumberedFrame(frame_width, frame_height);
    const ColourPicture picture = BuildColourPicture({bytes, frame_width, frame_height}, width, height);
    ASSERT_EQ(picture.width, width);
    ASSERT_EQ(picture.height, height);
    int wrong = 0;
    for (std::int64_t y = 0; y < height; ++y) {
        for (std::int64_t x = 0; x < width; ++x) {
            const Pixel expected = NumberedPixel(frame_width * x / width, frame_height * y / height);
            wrong += PixelAt(picture, static_cast<std::int32_t>(x), static_cast<std::int32_t>(y)) != expected;
        }
    }
    EXPECT_EQ(wrong, 0);
}

TEST(ColourPicture, ScalesByNearestNeighbour) {
    ExpectScaled(1920, 1080, 2560, 1440);
    ExpectScaled(1280, 720, 640, 360);
    ExpectScaled(640, 480, 640, 360);
    ExpectScaled(640, 480, 320, 480);
    ExpectScaled(37, 23, 37, 23);
    ExpectScaled(7, 5, 1000, 3);
    ExpectScaled(3, 1000, 7, 999);
    ExpectScaled(1, 1, 50, 60);
    ExpectScaled(500, 400, 1, 1);
}

TEST(ColourPicture, KeepsEachPixelsBytes) {
    const std::vector<std::uint8_t> bytes = {1, 2, 3, 4, 250, 251, 252, 0};
    const ColourPicture picture = BuildColourPicture({bytes, 2, 1}, 4, 1);
    EXPECT_EQ(PixelAt(picture, 1, 0), (Pixel{1, 2, 3, 4}));
    EXPECT_EQ(PixelAt(picture, 2, 0), (Pixel{250, 251, 252, 0}));
}

/// The pattern's definition, byte by byte in the widest type.
Pixel PatternPixel(std::int64_t x, std::int64_t y) {
    const auto value = static_cast<std::uint8_t>(((x / 17) ^ (y / 13)) * 37 + (x * y) / 512);
    return {value, static_cast<std::uint8_t>(value * 3 + 40), static_cast<std::uint8_t>(255 - value), 255};
}

TEST(ColourPicture, DrawsThePatternWithoutAFrame) {
    const ColourPicture picture = BuildColourPicture({}, 2560, 1440);
    EXPECT_EQ(PixelAt(picture, 0, 0), (Pixel{0, 40, 255, 255}));
    EXPECT_EQ(PixelAt(picture, 17, 0), (Pixel{37, 151, 218, 255}));
    int wrong = 0;
    for (std::int32_t y = 0; y < picture.height; ++y) {
        for (std::int32_t x = 0; x < picture.width; ++x) {
            wrong += PixelAt(picture, x, y) != PatternPixel(x, y);
        }
    }
    EXPECT_EQ(wrong, 0);
}

TEST(ColourPicture, DrawsThePatternAtTheLargestTextureWidth) {
    const ColourPicture picture = BuildColourPicture({}, 16384, 40);
    EXPECT_EQ(PixelAt(picture, 16383, 39), PatternPixel(16383, 39));
}

bool IsPattern(const ColourPicture& picture) {
    return PixelAt(picture, 20, 15) == PatternPixel(20, 15);
}

TEST(ColourPicture, TreatsAFrameWithoutSizeAsMissing) {
    const std::vector<std::uint8_t> bytes(4 * 4 * 4, 9);
    EXPECT_TRUE(IsPattern(BuildColourPicture({bytes, 0, 4}, 32, 16)));
    EXPECT_TRUE(IsPattern(BuildColourPicture({bytes, 4, 0}, 32, 16)));
    EXPECT_TRUE(IsPattern(BuildColourPicture({bytes, -1, 4}, 32, 16)));
    EXPECT_TRUE(IsPattern(BuildColourPicture({{}, 4, 4}, 32, 16)));
}

TEST(ColourPicture, TreatsAFrameWithMissingPixelsAsMissing) {
    const std::vector<std::uint8_t> bytes(4 * 4 * 4, 9);
    EXPECT_FALSE(IsPattern(BuildColourPicture({bytes, 4, 4}, 32, 16)));
    EXPECT_TRUE(IsPattern(BuildColourPicture({std::span(bytes).first(bytes.size() - 1), 4, 4}, 32, 16)));
    EXPECT_TRUE(IsPattern(BuildColourPicture({bytes, 0x7FFFFFFF, 0x7FFFFFFF}, 32, 16)));
}

TEST(ColourPicture, HasNoPixelsWithoutASize) {
    EXPECT_EQ(BuildColourPicture({}, 0, 5).pixels, nullptr);
    EXPECT_EQ(BuildColourPicture({}, 5, -1).pixels, nullptr);
}

}  // namespace
