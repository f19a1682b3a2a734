// The memory that the tool shares with its worker process: the request, and what the worker records while it
// dies, when it may be unable to use a pipe.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

struct WorkerBlock {
    /// Identifies the block, so that a handle on the command line to any other memory is rejected.
    static constexpr std::uint32_t kMagic = 0x57524B31;

    std::uint32_t magic;
    std::array<char, 128> task;         ///< zero-terminated
    std::array<char, 8192> request;     ///< a message's line, zero-terminated
    std::array<char, 64> fault_module;  ///< zero-terminated, UTF-8
    std::atomic<std::uint32_t> exception_code;
    std::atomic<std::uint32_t> aborted;
};

static_assert(std::atomic<std::uint32_t>::is_always_lock_free);
