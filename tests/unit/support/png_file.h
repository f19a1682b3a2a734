// Pictures that a test writes for a person to look at.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// A PNG of `width` x `height` pixels given as blue, green, red, alpha bytes, rows packed. Alpha is omitted,
/// and nothing is compressed.
std::string PngOf(std::span<const std::uint8_t> pixels, std::uint32_t width, std::uint32_t height);
