// How much of a GPU's own memory this process may use, and uses.
#pragma once

#include <cstdint>
#include <optional>

struct IDXGIAdapter1;

/// Bytes of the memory that is local to the GPU, as Windows accounts it to this process.
struct VideoMemoryUse {
    std::uint64_t usage = 0;
    std::uint64_t budget = 0;
    std::uint64_t reservation = 0;
};

/// Empty when `adapter` is null, the system is older than the accounting, or the query fails.
std::optional<VideoMemoryUse> QueryLocalVideoMemory(IDXGIAdapter1* adapter);
