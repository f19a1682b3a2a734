#include "tools/vistrel_diag/sections/displays/display_section.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "tools/vistrel_diag/report/report.h"

namespace {

std::vector<DisplayInfo>& MutableDisplayList() {
    static std::vector<DisplayInfo> displays;
    return displays;
}

std::int32_t PositionOfDrivingGpu(const std::string& display, const std::vector<GpuInfo>& gpus) {
    std::int32_t position = -1;
    for (std::size_t i = 0; i < gpus.size(); ++i) {
        const std::vector<std::string>& driven = gpus[i].displays;
        if (std::find(driven.begin(), driven.end(), display) != driven.end()) {
            position = static_cast<std::int32_t>(i);  // No break: the last GPU that claims it wins.
        }
    }
    return position;
}

const char* GpuName(std::int32_t position, const std::vector<GpuInfo>& gpus) {
    return position < 0 ? "UNKNOWN" : gpus.at(static_cast<std::size_t>(position)).name.c_str();
}

}  // namespace

const std::vector<DisplayInfo>& DisplayList() {
    return MutableDisplayList();
}

void SetDisplayList(std::vector<DisplayInfo> displays) {
    MutableDisplayList() = std::move(displays);
}

void MatchDisplaysWithGpus(std::vector<DisplayInfo>& displays, const std::vector<GpuInfo>& gpus) {
    for (DisplayInfo& display : displays) {
        display.gpu = PositionOfDrivingGpu(display.name, gpus);
    }
}

void PrintDisplaySection(const std::vector<DisplayInfo>& displays, const std::vector<GpuInfo>& gpus) {
    for (const DisplayInfo& display : displays) {
        Report::Line("%s%-14s : %dx%d @ %d Hz  -> driven by GPU %d (%s)", display.primary ? "* " : "  ",
                     display.name.c_str(), display.width, display.height, display.refresh_hz, display.gpu,
                     GpuName(display.gpu, gpus));
    }
    Report::Line("");
    Report::Line(
        "(* = primary. Vistrel captures the primary display unless told otherwise, and warps at exactly "
        "that pixel count.)");
}
