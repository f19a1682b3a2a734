// The picture that the warp is timed on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

/// Pixels of four bytes each, in memory order blue, green, red, alpha; rows packed.
struct ColourPicture {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::unique_ptr<std::uint32_t[]> pixels;  ///< width x height; null when either is below 1

    std::size_t RowBytes() const { return static_cast<std::size_t>(width) * sizeof(std::uint32_t); }
};

/// A captured desktop frame: `width` x `height` pixels of four bytes, rows packed. Borrowed.
struct FrameView {
    std::span<const std::uint8_t> pixels;  ///< empty when no frame could be read back
    std::int32_t width = 0;
    std::int32_t height = 0;

    /// Whether there is a frame with all of its pixels.
    bool HasPicture() const;
};

/// Scales `frame` to `width` x `height` pixels by nearest neighbour, with unchanged pixel values. Without a
/// frame, makes the synthetic pattern. Throws std::bad_alloc when memory runs out.
ColourPicture BuildColourPicture(const FrameView& frame, std::int32_t width, std::int32_t height);
