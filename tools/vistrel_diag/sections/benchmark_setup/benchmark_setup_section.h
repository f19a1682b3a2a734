// Which GPU the measurements run on: the part of the choice that needs only plain records.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "tools/vistrel_diag/sections/gpus/gpu_section.h"

/// The GPU to measure on.
struct BenchmarkGpu {
    std::int32_t index = -1;                 ///< in DXGI's enumeration; -1 when none was chosen
    std::shared_ptr<IDXGIAdapter1> adapter;  ///< empty when none was chosen
};

/// The hardware GPU with the most dedicated memory, the first of equals. One without any is never chosen.
BenchmarkGpu LargestHardwareGpu(const std::vector<GpuInfo>& gpus);

/// Prints which GPU is measured and why. `runtime_named_adapter` is true when the OpenXR runtime named the
/// adapter that it requires, whether or not that adapter was found. The name printed is that of the entry at
/// position `index` of `gpus`.
void PrintBenchmarkGpu(const std::vector<GpuInfo>& gpus, std::int32_t index, bool runtime_named_adapter);

/// Prints that there is no device to measure on; `error` is the HRESULT of its creation.
void PrintNoBenchmarkDevice(std::uint32_t error);
