#include "tools/vistrel_diag/sections/benchmark_setup/benchmark_device.h"

#include <cstdint>

#include "platform/com.h"
#include "platform/dxgi_walk.h"
#include "tools/vistrel_diag/report/report.h"

using Microsoft::WRL::ComPtr;

namespace {

BenchmarkGpu FindAdapter(IDXGIFactory1* factory, const AdapterLuid& luid) {
    for (UINT i = 0; const ComPtr<IDXGIAdapter1> adapter = AdapterAt(factory, i); ++i) {
        DXGI_ADAPTER_DESC1 description = {};
        if (SUCCEEDED(adapter->GetDesc1(&description)) && luid == LuidOf(description.AdapterLuid)) {
            return {static_cast<std::int32_t>(i), ShareCom(adapter)};
        }
    }
    return {};
}

HRESULT CreateDevice(BenchmarkDevice& benchmark) {
    IDXGIAdapter* adapter = benchmark.gpu.adapter.get();
    D3D_FEATURE_LEVEL obtained_level = {};
    return D3D11CreateDevice(adapter, adapter != nullptr ? D3D_DRIVER_TYPE_UNKNOWN : D3D_DRIVER_TYPE_HARDWARE,
                             nullptr, 0, nullptr, 0, D3D11_SDK_VERSION, &benchmark.device, &obtained_level,
                             &benchmark.context);
}

}  // namespace

BenchmarkDevice ReportBenchmarkSetup(const std::optional<AdapterLuid>& required_adapter) {
    Report::Section("BENCHMARK SETUP");
    BenchmarkDevice benchmark;
    if (required_adapter && SUCCEEDED(CreateDXGIFactory1(IID_PPV_ARGS(&benchmark.factory)))) {
        benchmark.gpu = FindAdapter(benchmark.factory.Get(), *required_adapter);
    }
    if (!benchmark.gpu.adapter) {
        benchmark.gpu = LargestHardwareGpu(GpuList());
    }
    PrintBenchmarkGpu(GpuList(), benchmark.gpu.index, required_adapter.has_value());

    const HRESULT result = CreateDevice(benchmark);
    if (FAILED(result)) {
        PrintNoBenchmarkDevice(static_cast<std::uint32_t>(result));
        benchmark.device.Reset();
        benchmark.context.Reset();
    }
    return benchmark;
}
