#include "capture/output_enumeration.h"

#include "platform/dxgi_walk.h"
#include "platform/utf8.h"

using Microsoft::WRL::ComPtr;

namespace {

void AppendOutputs(const ComPtr<IDXGIAdapter1>& adapter, AttachedOutputs& attached) {
    DXGI_ADAPTER_DESC1 adapter_description = {};
    if (FAILED(adapter->GetDesc1(&adapter_description))) {
        return;
    }
    for (UINT index = 0; const ComPtr<IDXGIOutput> output = OutputAt(adapter.Get(), index); ++index) {
        DXGI_OUTPUT_DESC description = {};
        if (FAILED(output->GetDesc(&description))) {
            continue;
        }
        attached.records.push_back({.adapter_luid = LuidOf(adapter_description.AdapterLuid),
                                    .adapter_name = Utf8FromWideArray(adapter_description.Description),
                                    .device_name = Utf8FromWideArray(description.DeviceName),
                                    .left = description.DesktopCoordinates.left,
                                    .top = description.DesktopCoordinates.top});
        attached.interfaces.push_back({adapter, output});
    }
}

}  // namespace

AttachedOutputs EnumerateOutputs(IDXGIFactory1* factory) {
    AttachedOutputs attached;
    for (UINT index = 0; const ComPtr<IDXGIAdapter1> adapter = AdapterAt(factory, index); ++index) {
        AppendOutputs(adapter, attached);
    }
    return attached;
}
