#include <cstring>

#include "tools/vistrel_diag/sections/capture/capture_measurement.h"

std::vector<std::uint8_t> PackRows(const void* rows, std::size_t row_pitch, std::size_t row_bytes,
                                   std::size_t height) {
    std::vector<std::uint8_t> packed(row_bytes * height);
    const auto* source = static_cast<const std::uint8_t*>(rows);
    for (std::size_t row = 0; row < height; ++row) {
        std::memcpy(packed.data() + row * row_bytes, source + row * row_pitch, row_bytes);
    }
    return packed;
}
