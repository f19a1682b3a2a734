#include "tools/vistrel_diag/sections/headset/headset_section.h"

#include <cstddef>
#include <optional>

#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/displays/display_section.h"
#include "tools/vistrel_diag/sections/gpus/gpu_section.h"

namespace {

const char* StopText(HeadsetStop stop) {
    switch (stop) {
        case HeadsetStop::NoLoader:
            return "openxr_loader.dll not found next to this exe - OpenXR skipped.";
        case HeadsetStop::NoEntryPoints:
            return "openxr_loader.dll is missing its entry points - OpenXR skipped.";
        case HeadsetStop::NoInstance:
            return "No OpenXR runtime accepted an instance (SteamVR not running?) - OpenXR skipped.";
        case HeadsetStop::NoHeadset:
            break;
    }
    return "A runtime is installed but reports no headset right now. Eye resolution and required GPU "
           "unavailable.";
}

struct RequiredGpu {
    std::int32_t number = -1;  ///< in DXGI's enumeration; -1 when no listed GPU is the required one
    std::string name = "NOT FOUND";
};

RequiredGpu FindRequiredGpu(const AdapterLuid& luid, const std::vector<GpuInfo>& gpus) {
    RequiredGpu required;
    for (const GpuInfo& gpu : gpus) {
        if (gpu.luid == luid) {
            required.number = static_cast<std::int32_t>(gpu.index);
        }
    }
    // The name at that position of the list. It belongs to another GPU, or does not exist, if an adapter
    // before it could not be described.
    if (required.number >= 0 && static_cast<std::size_t>(required.number) < gpus.size()) {
        required.name = gpus[required.number].name;
    }
    return required;
}

void PrintCrossGpuNote(const RequiredGpu& required, std::int32_t display_gpu) {
    Report::Line("");
    Report::Line("!! NOTE: the headset requires GPU %d while the primary display is driven by GPU %d.",
                 required.number, display_gpu);
    Report::Line(
        "!! Every captured frame therefore crosses between the two through system memory. Vistrel does this "
        "and the picture is correct; it costs time that a single-GPU machine does not pay.");
    Report::Line(
        "!! Capturing the game's WINDOW instead skips the trip. On a laptop with a MUX switch, forcing the "
        "panel onto %s does too.",
        required.name.c_str());
}

}  // namespace

void PrintHeadsetSection(const HeadsetQuery& query, const std::vector<GpuInfo>& gpus,
                         const std::vector<DisplayInfo>& displays) {
    if (query.worker_end) {
        Report::Line("!! The OpenXR query %s.", WorkerEndText(*query.worker_end).c_str());
    }
    if (!query.runtime.empty()) {
        Report::Line("Runtime         : %s", query.runtime.c_str());
    }
    if (query.stop) {
        Report::Line("%s", StopText(*query.stop));
    }
    if (query.eye_width != 0) {
        Report::Line("Eye resolution  : %dx%d per eye (runtime recommendation)",
                     static_cast<std::int32_t>(query.eye_width), static_cast<std::int32_t>(query.eye_height));
    }
    if (!query.luid_known) {
        return;
    }
    const RequiredGpu required = FindRequiredGpu(query.adapter_luid, gpus);
    Report::Line("Required GPU    : LUID %s -> GPU %d (%s)", FormatLuid(query.adapter_luid).c_str(),
                 required.number, required.name.c_str());
    for (const DisplayInfo& display : displays) {
        const bool drives_desktop = display.primary && display.gpu >= 0;
        if (drives_desktop && required.number >= 0 && required.number != display.gpu) {
            PrintCrossGpuNote(required, display.gpu);
        }
    }
}

void ReportHeadsetSection(const HeadsetQuery& query) {
    Report::Section(kHeadsetTitle);
    PrintHeadsetSection(query, GpuList(), DisplayList());
}
