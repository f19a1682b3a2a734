// How much of a GPU's own memory this process uses and may use.
#pragma once

#include <cstdint>
#include <optional>

struct IDXGIAdapter1;

/// Bytes of the memory that is local to the GPU, as Windows counts it for this process.
struct VideoMemoryUse {
    std::uint64_t usage = 0;
    std::uint64_t budget = 0;
    std::uint64_t reservation = 0;
};

/// Empty when `adapter` is null, the Windows version has no such query, or the query fails.
std::optional<VideoMemoryUse> QueryLocalVideoMemory(IDXGIAdapter1* adapter);
