// The GPU that is measured, and the Direct3D 11 device that all measurements share.
#pragma once

#include <d3d11.h>
#include <dxgi.h>
#include <wrl/client.h>

#include <optional>

#include "platform/luid.h"
#include "tools/vistrel_diag/sections/benchmark_setup/benchmark_setup_section.h"

/// Kept until the report is written.
struct BenchmarkDevice {
    Microsoft::WRL::ComPtr<IDXGIFactory1> factory;  ///< only when the runtime named an adapter
    BenchmarkGpu gpu;
    Microsoft::WRL::ComPtr<ID3D11Device> device;          ///< null when it could not be created
    Microsoft::WRL::ComPtr<ID3D11DeviceContext> context;  ///< the immediate context; null without a device
};

/// Reports BENCHMARK SETUP: chooses the GPU and makes the device. `required_adapter` is the adapter that the
/// OpenXR runtime named, if it named one. Without it, or when no adapter has that LUID, the hardware GPU of
/// GpuList with the most dedicated memory is chosen; without one, the system's default adapter.
BenchmarkDevice ReportBenchmarkSetup(const std::optional<AdapterLuid>& required_adapter);
