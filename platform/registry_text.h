// Registry data as text. The registry stores any bytes that a program writes, under any type that the program
// names.
#pragma once

#include <cstdint>
#include <span>
#include <string>

/// The UTF-16 text (little-endian) at the start of `data`, as UTF-8. It ends at the first zero unit or where
/// the data ends: a stored string need not be terminated. Half a unit at the end is ignored. An
/// unpaired surrogate becomes U+FFFD.
std::string TextFromRegistryData(std::span<const std::uint8_t> data);
