// When a scripted desktop changes. Includes no Windows header.
#pragma once

#include <cstdint>

#include "tests/lab/machine/scenario.h"

namespace lab {

/// The number of images that a desktop has shown `elapsed_microseconds` after its duplication began. The
/// first exists at once, because duplication on Windows begins with the whole desktop; a still desktop has no
/// other.
std::int64_t ImagesShown(const Frames& frames, std::int64_t elapsed_microseconds);

/// When the image with this number (1 is the first) is shown, in microseconds after the duplication began,
/// rounded up so that ImagesShown counts it then. Empty if it never is.
std::optional<std::int64_t> ImageTime(const Frames& frames, std::int64_t number);

/// The number of pointer moves until `elapsed_microseconds` after the duplication began.
std::int64_t PointerMoves(const Frames& frames, std::int64_t elapsed_microseconds);

/// When the move with this number (1 is the first) happens, like ImageTime. Empty if it never does.
std::optional<std::int64_t> PointerMoveTime(const Frames& frames, std::int64_t number);

/// Whether a loss is due after this many delivered frames and this much time.
bool LossIsDue(const Loss& loss, std::int64_t delivered_frames, std::int64_t elapsed_microseconds);

/// Whether a desktop that started to fail `elapsed_microseconds` ago, and has failed `refused` times since,
/// still fails.
bool StillRefuses(const Refusal& refusal, int refused, std::int64_t elapsed_microseconds);

}  // namespace lab
