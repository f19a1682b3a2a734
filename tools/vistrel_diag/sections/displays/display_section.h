// The monitors of the desktop: the report's section about them, and the list that the rest of the run uses.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/vistrel_diag/sections/gpus/gpu_section.h"

/// One monitor that is part of the desktop, in its current mode.
struct DisplayInfo {
    std::string name;         ///< UTF-8 device name, such as \\.\DISPLAY1
    std::int32_t width = 0;   ///< pixels
    std::int32_t height = 0;  ///< pixels
    std::int32_t refresh_hz = 0;
    bool primary = false;
    std::int32_t gpu = -1;  ///< position in GpuList() of the GPU that drives it; -1 when none claims it
};

/// The monitors in the order in which Windows lists them. Empty before ReportDisplaySection.
const std::vector<DisplayInfo>& DisplayList();

/// Sets the list; for the section and for tests.
void SetDisplayList(std::vector<DisplayInfo> displays);

/// Lists the monitors of the desktop whose mode can be read. Their GPUs are not set yet.
std::vector<DisplayInfo> ProbeDisplays();

/// Sets each display's GPU to the position in `gpus` of the last GPU that has an output of exactly that name,
/// or to -1.
void MatchDisplaysWithGpus(std::vector<DisplayInfo>& displays, const std::vector<GpuInfo>& gpus);

/// Prints the section's lines. `gpus` is the list that the displays were matched with.
void PrintDisplaySection(const std::vector<DisplayInfo>& displays, const std::vector<GpuInfo>& gpus);

/// Reports the monitors with the GPUs of GpuList and fills DisplayList. Called once, after ReportGpuSection.
void ReportDisplaySection();
