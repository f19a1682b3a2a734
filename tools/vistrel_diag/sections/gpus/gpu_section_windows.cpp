#include <dxgi.h>
#include <wrl/client.h>

#include <utility>

#include "platform/com.h"
#include "platform/dxgi_walk.h"
#include "platform/utf8.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/gpus/gpu_section.h"

using Microsoft::WRL::ComPtr;

namespace {

std::vector<std::string> DisplayNames(IDXGIAdapter1* adapter) {
    std::vector<std::string> names;
    for (UINT i = 0; const ComPtr<IDXGIOutput> output = OutputAt(adapter, i); ++i) {
        DXGI_OUTPUT_DESC description = {};
        if (SUCCEEDED(output->GetDesc(&description))) {
            names.push_back(Utf8FromWideArray(description.DeviceName));
        }
    }
    return names;
}

GpuInfo Describe(UINT index, const ComPtr<IDXGIAdapter1>& adapter, const DXGI_ADAPTER_DESC1& description) {
    GpuInfo gpu;
    gpu.index = index;
    gpu.name = Utf8FromWideArray(description.Description);
    gpu.luid = LuidOf(description.AdapterLuid);
    gpu.dedicated_video_memory = description.DedicatedVideoMemory;
    gpu.shared_system_memory = description.SharedSystemMemory;
    gpu.vendor_id = description.VendorId;
    gpu.software = (description.Flags & DXGI_ADAPTER_FLAG_SOFTWARE) != 0;
    gpu.displays = DisplayNames(adapter.Get());
    gpu.adapter = ShareCom(adapter);
    return gpu;
}

/// Passes the adapter to the visitor before its driver is queried for the memory.
ProbedGpu ProbeGpu(GpuInfo gpu, const GpuVisitor& visitor) {
    if (visitor.described) {
        visitor.described(gpu);
    }
    ProbedGpu probed = {std::move(gpu), {}};
    probed.memory = QueryLocalVideoMemory(probed.gpu.adapter.get());
    if (probed.memory && visitor.memory_found) {
        visitor.memory_found(*probed.memory);
    }
    return probed;
}

}  // namespace

GpuInventory ProbeGpus(const GpuVisitor& visitor) {
    GpuInventory inventory;
    ComPtr<IDXGIFactory1> factory;
    if (FAILED(CreateDXGIFactory1(IID_PPV_ARGS(&factory))) || !factory) {
        return inventory;
    }
    inventory.factory_created = true;
    for (UINT i = 0; const ComPtr<IDXGIAdapter1> adapter = AdapterAt(factory.Get(), i); ++i) {
        DXGI_ADAPTER_DESC1 description = {};
        if (SUCCEEDED(adapter->GetDesc1(&description))) {
            inventory.gpus.push_back(ProbeGpu(Describe(i, adapter, description), visitor));
        }
    }
    return inventory;
}

void ReportGpuSection() {
    Report::Section("GPUs");
    const GpuInventory inventory = ProbeGpus({PrintGpu, PrintGpuMemory});
    PrintGpuSectionEnd(inventory);
    std::vector<GpuInfo> gpus;
    for (const ProbedGpu& probed : inventory.gpus) {
        gpus.push_back(probed.gpu);
    }
    SetGpuList(std::move(gpus));
}

std::vector<ProbedGpu> ProbeVram() {
    std::vector<ProbedGpu> probed;
    for (const GpuInfo& gpu : GpuList()) {
        probed.push_back({gpu, gpu.software ? std::nullopt : QueryLocalVideoMemory(gpu.adapter.get())});
    }
    return probed;
}

void ReportVramLines(const char* label) {
    PrintVramLines(label, ProbeVram());
}
