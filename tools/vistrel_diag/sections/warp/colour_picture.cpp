#include "tools/vistrel_diag/sections/warp/colour_picture.h"

#include <bit>
#include <cstring>
#include <vector>

static_assert(std::endian::native == std::endian::little, "pixels are put together as one 32-bit value");

namespace {

constexpr std::size_t kPixelBytes = sizeof(std::uint32_t);

void DrawSyntheticPattern(ColourPicture& picture) {
    const auto width = static_cast<std::uint32_t>(picture.width);
    const auto height = static_cast<std::uint32_t>(picture.height);
    // Only the low 8 bits of each value are used, so the sums may wrap in the wider type.
    for (std::uint32_t y = 0; y < height; ++y) {
        std::uint32_t* const row = picture.pixels.get() + static_cast<std::size_t>(y) * width;
        const std::uint32_t band = y / 13;
        for (std::uint32_t x = 0; x < width; ++x) {
            const std::uint32_t value = ((x / 17) ^ band) * 37 + x * y / 512;
            const std::uint32_t blue = value & 0xFF;
            const std::uint32_t green = (value * 3 + 40) & 0xFF;
            const std::uint32_t red = 255 - blue;
            row[x] = blue | green << 8 | red << 16 | 0xFF000000;
        }
    }
}

/// For each of `count` positions along an axis, the source position among `source_count`.
std::vector<std::uint32_t> NearestPositions(std::int32_t source_count, std::int32_t count) {
    std::vector<std::uint32_t> positions(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < positions.size(); ++i) {
        positions[i] =
            static_cast<std::uint32_t>(static_cast<std::uint64_t>(source_count) * i / positions.size());
    }
    return positions;
}

void CopyRow(const std::uint8_t* source, const std::vector<std::uint32_t>& columns, std::uint32_t* row) {
    for (std::size_t x = 0; x < columns.size(); ++x) {
        std::memcpy(&row[x], source + columns[x] * kPixelBytes, kPixelBytes);
    }
}

void ScaleFrame(const FrameView& frame, ColourPicture& picture) {
    const std::size_t source_row_bytes = static_cast<std::size_t>(frame.width) * kPixelBytes;
    const auto width = static_cast<std::size_t>(picture.width);
    if (frame.width == picture.width && frame.height == picture.height) {
        std::memcpy(picture.pixels.get(), frame.pixels.data(),
                    picture.RowBytes() * static_cast<std::size_t>(picture.height));
        return;
    }
    const auto columns = NearestPositions(frame.width, picture.width);
    const auto rows = NearestPositions(frame.height, picture.height);
    for (std::size_t y = 0; y < rows.size(); ++y) {
        std::uint32_t* const row = picture.pixels.get() + y * width;
        if (y > 0 && rows[y] == rows[y - 1]) {
            std::memcpy(row, row - width, picture.RowBytes());
            continue;
        }
        const std::uint8_t* const source = frame.pixels.data() + rows[y] * source_row_bytes;
        if (frame.width == picture.width) {
            std::memcpy(row, source, picture.RowBytes());
        } else {
            CopyRow(source, columns, row);
        }
    }
}

}  // namespace

bool FrameView::HasPicture() const {
    return width >= 1 && height >= 1 &&
           pixels.size() / kPixelBytes / static_cast<std::size_t>(width) >= static_cast<std::size_t>(height);
}

ColourPicture BuildColourPicture(const FrameView& frame, std::int32_t width, std::int32_t height) {
    ColourPicture picture;
    picture.width = width;
    picture.height = height;
    if (width < 1 || height < 1) {
        return picture;
    }
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    picture.pixels = std::make_unique_for_overwrite<std::uint32_t[]>(count);
    if (frame.HasPicture()) {
        ScaleFrame(frame, picture);
    } else {
        DrawSyntheticPattern(picture);
    }
    return picture;
}
