#include "tests/lab/machine/frame_schedule.h"

#include <cmath>

namespace lab {
namespace {

constexpr double kMicrosecondsPerSecond = 1'000'000;
constexpr std::int64_t kMicrosecondsPerMillisecond = 1'000;
// Allows for the rounding of the division, so that a time from ImageTime counts.
constexpr double kRoundingAllowance = 1e-6;

}  // namespace

std::int64_t ImagesShown(const Frames& frames, std::int64_t elapsed_microseconds) {
    if (frames.never || elapsed_microseconds < 0) {
        return 0;
    }
    const double changes = static_cast<double>(elapsed_microseconds) * frames.rate / kMicrosecondsPerSecond;
    return 1 + static_cast<std::int64_t>(std::floor(changes + kRoundingAllowance));
}

std::optional<std::int64_t> ImageTime(const Frames& frames, std::int64_t number) {
    if (frames.never || (frames.rate <= 0 && number > 1)) {
        return {};
    }
    if (number <= 1) {
        return 0;
    }
    const double seconds = static_cast<double>(number - 1) / frames.rate;
    return static_cast<std::int64_t>(std::ceil(seconds * kMicrosecondsPerSecond));
}

std::int64_t PointerMoves(const Frames& frames, std::int64_t elapsed_microseconds) {
    const double moves =
        static_cast<double>(elapsed_microseconds) * frames.pointer_rate / kMicrosecondsPerSecond;
    return elapsed_microseconds < 0 ? 0 : static_cast<std::int64_t>(std::floor(moves + kRoundingAllowance));
}

std::optional<std::int64_t> PointerMoveTime(const Frames& frames, std::int64_t number) {
    if (frames.pointer_rate <= 0) {
        return {};
    }
    return static_cast<std::int64_t>(
        std::ceil(static_cast<double>(number) / frames.pointer_rate * kMicrosecondsPerSecond));
}

bool LossIsDue(const Loss& loss, std::int64_t delivered_frames, std::int64_t elapsed_microseconds) {
    if (loss.after_frames) {
        return delivered_frames >= *loss.after_frames;
    }
    return loss.after_milliseconds &&
           elapsed_microseconds >= *loss.after_milliseconds * kMicrosecondsPerMillisecond;
}

bool StillRefuses(const Refusal& refusal, int refused, std::int64_t elapsed_microseconds) {
    if (refusal.times) {
        return refused < *refusal.times;
    }
    if (refusal.milliseconds) {
        return elapsed_microseconds < *refusal.milliseconds * kMicrosecondsPerMillisecond;
    }
    return true;
}

}  // namespace lab
