#include "tools/vistrel_diag/sections/gpus/gpu_section.h"

#include <algorithm>
#include <utility>

#include "tools/vistrel_diag/report/report.h"

namespace {

std::vector<GpuInfo>& MutableGpuList() {
    static std::vector<GpuInfo> gpus;
    return gpus;
}

double Megabytes(std::uint64_t bytes) {
    return static_cast<double>(bytes) / kBytesPerMegabyte;
}

std::string Joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += &name == &names.front() ? name : ", " + name;
    }
    return text;
}

}  // namespace

double BudgetPercent(const VideoMemoryUse& memory) {
    if (memory.budget == 0) {
        return 0.0;
    }
    return static_cast<double>(memory.usage) * 100.0 / static_cast<double>(memory.budget);
}

const char* VendorName(std::uint32_t vendor_id) {
    switch (vendor_id) {
        case 0x1002:
            return "AMD";
        case 0x10DE:
            return "NVIDIA";
        case 0x1414:
            return "Microsoft";
        case 0x8086:
            return "Intel";
        default:
            return "?";
    }
}

const std::vector<GpuInfo>& GpuList() {
    return MutableGpuList();
}

void SetGpuList(std::vector<GpuInfo> gpus) {
    MutableGpuList() = std::move(gpus);
}

void PrintGpu(const GpuInfo& gpu) {
    Report::Line("GPU %u           : %s [%s]%s", gpu.index, gpu.name.c_str(), VendorName(gpu.vendor_id),
                 gpu.software ? " (software)" : "");
    Report::Line("  VRAM          : %.0f MB dedicated, %.0f MB shared system",
                 Megabytes(gpu.dedicated_video_memory), Megabytes(gpu.shared_system_memory));
    Report::Line("  LUID          : %s", FormatLuid(gpu.luid).c_str());
    if (gpu.displays.empty()) {
        Report::Line("  Displays      : NONE attached to this GPU");
    } else {
        Report::Line("  Displays      : %s", Joined(gpu.displays).c_str());
    }
}

void PrintGpuMemory(const VideoMemoryUse& memory) {
    Report::Line("  VRAM in use   : %.0f MB of %.0f MB budget (%.0f%%)", Megabytes(memory.usage),
                 Megabytes(memory.budget), BudgetPercent(memory));
    if (memory.reservation != 0) {
        Report::Line("  VRAM reserved : %.0f MB", Megabytes(memory.reservation));
    }
}

void PrintGpuSectionEnd(const GpuInventory& inventory) {
    if (!inventory.factory_created) {
        Report::Line("!! CreateDXGIFactory1 failed - cannot enumerate GPUs.");
        return;
    }
    const auto hardware_gpus = std::count_if(inventory.gpus.begin(), inventory.gpus.end(),
                                             [](const ProbedGpu& probed) { return !probed.gpu.software; });
    if (hardware_gpus >= 2) {
        Report::Line("");
        Report::Line(
            "NOTE: more than one hardware GPU is present. Which one drives the monitor decides whether "
            "capture is a local copy or a bus transfer.");
    }
}

void PrintVramLines(const char* label, const std::vector<ProbedGpu>& gpus) {
    Report::Line("VRAM %s:", label);
    for (const auto& [gpu, memory] : gpus) {
        if (gpu.software || !memory) {
            continue;
        }
        const double percent = BudgetPercent(*memory);
        Report::Line("  GPU %u %-34s %.0f MB of %.0f MB  (%.0f%%)%s", gpu.index, gpu.name.c_str(),
                     Megabytes(memory->usage), Megabytes(memory->budget), percent,
                     percent > kHeadroomPercent ? "   <<< OUT OF HEADROOM" : "");
    }
}
