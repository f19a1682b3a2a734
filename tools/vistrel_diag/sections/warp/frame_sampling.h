// How many frames are timed, and which of the times is reported.
#pragma once

#include <functional>
#include <optional>

/// How many frames make a batch of about 200 ms when one frame takes `frame_ms`: 1 to 40.
int FramesPerBatch(double frame_ms);

/// The time of one frame in milliseconds: the median of three batches, each timed by `time_frames`, which is
/// given a number of frames and returns the mean milliseconds of one, or a value of 0 or less when the time
/// is unknown. One frame is timed first, to size the batches. Its time is the result when no batch could be
/// timed; the result is empty when that is unknown as well.
std::optional<double> SampleFrameTime(const std::function<double(int)>& time_frames);
