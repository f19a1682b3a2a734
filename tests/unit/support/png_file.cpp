#include "tests/unit/support/png_file.h"

#include <algorithm>

namespace {

constexpr std::size_t kLongestStoredBlock = 65'535;

void AppendBigEndian(std::string& bytes, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<char>(value >> shift & 0xFF));
    }
}

std::uint32_t Crc32(std::string_view bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<std::uint8_t>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
        }
    }
    return ~crc;
}

std::uint32_t Adler32(std::string_view bytes) {
    constexpr std::uint32_t kModulus = 65'521;
    std::uint32_t low = 1;
    std::uint32_t high = 0;
    for (const char byte : bytes) {
        low = (low + static_cast<std::uint8_t>(byte)) % kModulus;
        high = (high + low) % kModulus;
    }
    return high << 16 | low;
}

void AppendChunk(std::string& png, std::string_view type, std::string_view content) {
    AppendBigEndian(png, static_cast<std::uint32_t>(content.size()));
    const std::string checked = std::string(type).append(content);
    png += checked;
    AppendBigEndian(png, Crc32(checked));
}

/// `bytes` as a zlib stream of stored blocks.
std::string Stored(std::string_view bytes) {
    std::string stream = "\x78\x01";
    do {
        const std::string_view block = bytes.substr(0, kLongestStoredBlock);
        bytes.remove_prefix(block.size());
        const auto size = static_cast<std::uint16_t>(block.size());
        stream.push_back(bytes.empty() ? 1 : 0);
        for (const auto half : {size, static_cast<std::uint16_t>(~size)}) {
            stream.push_back(static_cast<char>(half & 0xFF));
            stream.push_back(static_cast<char>(half >> 8));
        }
        stream += block;
    } while (!bytes.empty());
    return stream;
}

}  // namespace

std::string PngOf(std::span<const std::uint8_t> pixels, std::uint32_t width, std::uint32_t height) {
    std::string rows;
    rows.reserve((std::size_t{width} * 3 + 1) * height);
    for (std::size_t pixel = 0; pixel < std::size_t{width} * height; ++pixel) {
        if (pixel % width == 0) {
            rows.push_back(0);  // This row is not filtered.
        }
        for (const std::size_t channel : {2, 1, 0}) {
            rows.push_back(static_cast<char>(pixels[pixel * 4 + channel]));
        }
    }
    std::string header;
    AppendBigEndian(header, width);
    AppendBigEndian(header, height);
    header += std::string_view("\x08\x02\0\0\0", 5);  // 8 bits a channel, red green blue
    std::string image = Stored(rows);
    AppendBigEndian(image, Adler32(rows));

    std::string png = "\x89PNG\r\n\x1A\n";
    AppendChunk(png, "IHDR", header);
    AppendChunk(png, "IDAT", image);
    AppendChunk(png, "IEND", "");
    return png;
}
