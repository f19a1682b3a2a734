#include "settings/diag_settings.h"

namespace {

constexpr float kDefaultEyeDistanceMm = 63.0F;
constexpr float kSmallestEyeDistanceMm = 45.0F;
constexpr float kLargestEyeDistanceMm = 85.0F;

}  // namespace

DiagSettings& DiagSettings::Instance() {
    static DiagSettings settings;
    return settings;
}

float DiagSettings::SeparationMm() const {
    // Written so that a NaN fails the test.
    const bool plausible =
        eye_distance_mm >= kSmallestEyeDistanceMm && eye_distance_mm <= kLargestEyeDistanceMm;
    return (plausible ? eye_distance_mm : kDefaultEyeDistanceMm) * f3d_separation_pct * 0.01F;
}
