// Timing of frames by the GPU's own clock.
#pragma once

#include <cstdint>

/// The clock of a batch's time stamps, as the GPU reports it after the batch.
struct GpuClock {
    std::uint64_t frequency = 0;  ///< ticks per second
    bool disjoint = false;        ///< the clock changed during the batch, so the stamps are not comparable
};

/// Mean milliseconds of one of the `frames` frames between two stamps, or -1 when the stamps are unusable.
double MeanFrameMs(const GpuClock& clock, std::uint64_t start, std::uint64_t end, int frames);

/// Draws `frames` frames by calling `draw_frame` and returns the mean milliseconds that the GPU spent on one,
/// or -1 when that is unknown.
///
/// `Queries` is a GPU's time-stamp queries (d3d11_timestamp_queries.h):
///     bool Create()             makes those of one batch; false when any is missing
///     void BeginBatch(), StampStart(), StampEnd(), EndBatch()
///     bool ReadClock(GpuClock&), ReadStart(std::uint64_t&), ReadEnd(std::uint64_t&)   false: not there yet
///     void Pause()              before asking again
///
/// Data that is not available yet is polled without any limit, even after an error: there is no other way to
/// know that the GPU has finished a batch.
template <typename Queries, typename DrawFrame>
double GpuTimeFrames(Queries& queries, int frames, DrawFrame&& draw_frame) {
    if (!queries.Create()) {
        return -1.0;
    }
    queries.BeginBatch();
    queries.StampStart();
    for (int frame = 0; frame < frames; ++frame) {
        draw_frame();
    }
    queries.StampEnd();
    queries.EndBatch();

    GpuClock clock;
    std::uint64_t start = 0;
    std::uint64_t end = 0;
    while (!queries.ReadClock(clock)) {
        queries.Pause();
    }
    while (!queries.ReadStart(start)) {
        queries.Pause();
    }
    while (!queries.ReadEnd(end)) {
        queries.Pause();
    }
    return MeanFrameMs(clock, start, end, frames);
}
