// The memory that the tool shares with its worker process: what is asked, and what the worker notes while it
// dies, when a pipe may be out of reach.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

struct WorkerBlock {
    /// So that a number on the command line which is no such memory is taken for none.
    static constexpr std::uint32_t kMagic = 0x57524B31;

    std::uint32_t magic;
    std::array<char, 128> task;         ///< zero-terminated
    std::array<char, 8192> request;     ///< a message's line, zero-terminated
    std::array<char, 64> fault_module;  ///< zero-terminated, UTF-8
    std::atomic<std::uint32_t> exception_code;
    std::atomic<std::uint32_t> aborted;
};

static_assert(std::atomic<std::uint32_t>::is_always_lock_free);
