// Registry data as text. The registry keeps whatever bytes a program wrote, under whatever type it named.
#pragma once

#include <cstdint>
#include <span>
#include <string>

/// The UTF-16 text (little-endian) at the start of `data`, as UTF-8. It ends at the first zero unit or where
/// the data ends: a stored string need not be terminated. Half a unit at the end is left out. Empty when the
/// text is not well formed.
std::string TextFromRegistryData(std::span<const std::uint8_t> data);
