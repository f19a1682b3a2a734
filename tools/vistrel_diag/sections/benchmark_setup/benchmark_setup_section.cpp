#include "tools/vistrel_diag/sections/benchmark_setup/benchmark_setup_section.h"

#include <cstddef>

#include "tools/vistrel_diag/report/report.h"

BenchmarkGpu LargestHardwareGpu(const std::vector<GpuInfo>& gpus) {
    BenchmarkGpu largest;
    std::uint64_t most_memory = 0;
    for (const GpuInfo& gpu : gpus) {
        if (!gpu.software && gpu.dedicated_video_memory > most_memory) {
            most_memory = gpu.dedicated_video_memory;
            largest = {static_cast<std::int32_t>(gpu.index), gpu.adapter};
        }
    }
    return largest;
}

void PrintBenchmarkGpu(const std::vector<GpuInfo>& gpus, std::int32_t index, bool runtime_named_adapter) {
    const bool listed = index >= 0 && static_cast<std::size_t>(index) < gpus.size();
    Report::Line("Benchmark GPU   : GPU %d (%s)", index, listed ? gpus[index].name.c_str() : "default");
    if (runtime_named_adapter) {
        Report::Line("  chosen the way Vistrel chooses it: the adapter the OpenXR runtime requires.");
    } else {
        Report::Line(
            "  chosen as the largest hardware GPU. The runtime did not name a required adapter (no headset "
            "awake), so Vistrel's real choice could not be read - turn the headset on and re-run to check "
            "for the cross-adapter case.");
    }
}

void PrintNoBenchmarkDevice(std::uint32_t error) {
    Report::Line("!! D3D11CreateDevice failed (0x%08X). Cannot benchmark.", static_cast<unsigned>(error));
}
