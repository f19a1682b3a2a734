// When a scripted desktop changes. Touches no Windows header.
#pragma once

#include <cstdint>

#include "tests/lab/machine/scenario.h"

namespace lab {

/// Images that a desktop has shown `elapsed_microseconds` after its duplication began. The first is there at
/// once, as duplication on Windows begins with the whole desktop; a still one has no other.
std::int64_t ImagesShown(const Frames& frames, std::int64_t elapsed_microseconds);

/// When the image with this number (1 is the first) is shown, in microseconds after the duplication began,
/// rounded up so that ImagesShown counts it then. Empty when it never is.
std::optional<std::int64_t> ImageTime(const Frames& frames, std::int64_t number);

/// Moves of the pointer until `elapsed_microseconds` after the duplication began.
std::int64_t PointerMoves(const Frames& frames, std::int64_t elapsed_microseconds);

/// When the move with this number (1 is the first) happens, as ImageTime. Empty when it never does.
std::optional<std::int64_t> PointerMoveTime(const Frames& frames, std::int64_t number);

/// Whether a loss is due after so many delivered frames and so much time.
bool LossIsDue(const Loss& loss, std::int64_t delivered_frames, std::int64_t elapsed_microseconds);

/// Whether a desktop that began to refuse `elapsed_microseconds` ago, and has refused `refused` times since,
/// goes on.
bool StillRefuses(const Refusal& refusal, int refused, std::int64_t elapsed_microseconds);

}  // namespace lab
