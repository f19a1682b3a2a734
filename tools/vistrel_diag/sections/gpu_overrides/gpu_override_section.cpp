#include "tools/vistrel_diag/sections/gpu_overrides/gpu_override_section.h"

#include <algorithm>
#include <array>

#include "platform/letter_case.h"
#include "tools/vistrel_diag/report/report.h"

namespace {

constexpr std::array<std::string_view, 4> kRelevantWords = {"vistrel", "vrserver", "vrcompositor", "steamvr"};

}  // namespace

bool ConcernsVistrelOrSteamVr(std::string_view application) {
    const std::string lowered = AsciiLowered(application);
    return std::any_of(kRelevantWords.begin(), kRelevantWords.end(),
                       [&lowered](std::string_view word) { return lowered.find(word) != std::string::npos; });
}

void PrintGpuOverrideSection(const std::optional<std::vector<GpuPreference>>& preferences) {
    if (!preferences) {
        Report::Line("None set.");
        return;
    }
    bool any = false;
    for (const GpuPreference& preference : *preferences) {
        if (ConcernsVistrelOrSteamVr(preference.application)) {
            Report::Line("%s = %s", preference.application.c_str(), preference.choice.c_str());
            any = true;
        }
    }
    if (!any) {
        Report::Line("Nothing set for Vistrel or SteamVR (this is the normal case).");
    }
    Report::Line("(GpuPreference=1 means integrated, =2 means high performance.)");
}
