// How many frames are timed, and which time counts.
#pragma once

#include <functional>
#include <optional>

/// How many frames make a batch of about 200 ms, when one takes `frame_ms`: 1 to 40.
int FramesPerBatch(double frame_ms);

/// The time of one frame in milliseconds: the median of three batches, each timed by `time_frames`, which is
/// given a number of frames and returns the mean milliseconds of one, or a value not above 0 when it cannot
/// tell. One frame is timed first to size the batches; its time stands in when no batch could be timed, and
/// without it the result is empty.
std::optional<double> SampleFrameTime(const std::function<double(int)>& time_frames);
