#include "tools/vistrel_diag/sections/gpu_overrides/gpu_override_reading.h"

#include <utility>

std::optional<GpuOverrideReading> ReadGpuOverrideSection(SourceLines lines, UnreadLines& unread) {
    GpuOverrideReading reading;
    std::vector<GpuPreference> preferences;
    const bool any = ReadEachLine(lines, unread, [&](const SourceLine& line) {
        if (ReadFixedLine(line, "None set.", reading.none_set_line) ||
            ReadFixedLine(line, "Nothing set for Vistrel or SteamVR (this is the normal case).",
                          reading.none_relevant_line) ||
            ReadFixedLine(line, "(GpuPreference=1 means integrated, =2 means high performance.)",
                          reading.explanation_line)) {
            return true;
        }
        GpuPreference preference;
        if (!LineScan(line.text).UpToLast(preference.application, " = ").Rest(preference.choice).Matches() ||
            !ConcernsVistrelOrSteamVr(preference.application)) {
            return false;
        }
        preferences.push_back(std::move(preference));
        reading.lines.push_back(line.number);
        return true;
    });
    if (reading.none_set_line == 0) {
        reading.preferences = std::move(preferences);
    }
    return any ? std::optional(std::move(reading)) : std::nullopt;
}
