// The GPU of the measurements with the Direct3D 11 device that all of them share.
#pragma once

#include <d3d11.h>
#include <dxgi.h>
#include <wrl/client.h>

#include <optional>

#include "platform/luid.h"
#include "tools/vistrel_diag/sections/benchmark_setup/benchmark_setup_section.h"

/// Lives until the report is written.
struct BenchmarkDevice {
    Microsoft::WRL::ComPtr<IDXGIFactory1> factory;  ///< only when the runtime named an adapter
    BenchmarkGpu gpu;
    Microsoft::WRL::ComPtr<ID3D11Device> device;          ///< null when none could be made
    Microsoft::WRL::ComPtr<ID3D11DeviceContext> context;  ///< the immediate context; null without a device
};

/// Reports BENCHMARK SETUP: chooses the GPU and makes the device. `required_adapter` is what the OpenXR
/// runtime named, if it did; when no adapter carries it, and without it, the largest hardware GPU of GpuList
/// is taken, and failing that the system's default adapter.
BenchmarkDevice ReportBenchmarkSetup(const std::optional<AdapterLuid>& required_adapter);
