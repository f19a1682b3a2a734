// What the machine counts during a run, for tests to compare.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <string>

namespace lab {

inline constexpr std::size_t kCountedAdapters = 8;

/// Counts since the program began. Atomic, because the program may have terminated other threads at any
/// moment before the counts are written.
struct Statistics {
    std::atomic<long> live_factories;
    std::atomic<long> live_adapters;
    std::atomic<long> live_outputs;
    std::atomic<long> live_duplications;
    std::atomic<long> live_devices;
    std::atomic<long> made_factories;
    std::atomic<long> enumerations;  ///< calls of EnumAdapters1 and EnumOutputs
    std::atomic<long> made_duplications;
    std::atomic<long> duplications_refused;
    std::atomic<long> frames_shown;      ///< images of the desktop while it was duplicated
    std::atomic<long> frames_delivered;  ///< of these, acquired by the program
    std::atomic<long>
        frames_merged;  ///< shown, but merged into a later one because they were not acquired in between
    std::atomic<long> pointer_updates;     ///< acquired while no image was new
    std::atomic<long> slept_milliseconds;  ///< by the scripted clock
    std::atomic<long> acquire_calls;
    std::atomic<long> acquire_timeouts;
    std::atomic<long> access_losses;
    std::atomic<long> releases;
    std::atomic<long> releases_without_frame;
    // Errors of the program.
    std::atomic<long> acquires_without_release;
    std::atomic<long> uses_after_release;
    std::atomic<long> copies_across_devices;
    std::atomic<long> copies_of_other_size;
    std::atomic<long> frames_never_released;
    std::atomic<long> duplications_by_other_adapter;  ///< with a device of another adapter
    std::atomic<long> duplications_of_duplicated;     ///< of an output that the program duplicates already
    std::array<std::atomic<long>, kCountedAdapters> devices_made_on;  ///< by the adapter's position

    long LiveObjects() const {
        return live_factories + live_adapters + live_outputs + live_duplications + live_devices;
    }
    long Violations() const {
        return acquires_without_release + uses_after_release + copies_across_devices + copies_of_other_size +
               frames_never_released + duplications_by_other_adapter + duplications_of_duplicated;
    }
};

Statistics& Counts();

/// Sets every count to 0, except those of objects alive.
void RestartCounts();

/// All counts, one "name value" per line.
std::string StatisticsText();

}  // namespace lab
