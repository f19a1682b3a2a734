// The calls that a quick run without models and without capture time cannot avoid: the factories of the
// inventory and of the capture, the device, the shaders and the batches of the warp. bench/run compares them
// with a whole run of the tool. Run it in the same folder.
#include <d3d11.h>
#include <dxgi1_2.h>
#include <wrl/client.h>

#include <cstdint>
#include <cstdio>

#include "platform/dxgi_walk.h"
#include "render/stereo_warp_shader.h"
#include "tools/vistrel_diag/sections/warp/warp_timing.h"

using Microsoft::WRL::ComPtr;

namespace {

struct Size {
    std::int32_t width;
    std::int32_t height;
};

ComPtr<IDXGIAdapter1> FirstAdapter() {
    ComPtr<IDXGIFactory1> factory;
    return SUCCEEDED(CreateDXGIFactory1(IID_PPV_ARGS(&factory))) ? AdapterAt(factory.Get(), 0) : nullptr;
}

void TryToDuplicate(IDXGIAdapter1* adapter, ID3D11Device* device) {
    const ComPtr<IDXGIOutput> output = OutputAt(adapter, 0);
    ComPtr<IDXGIOutput1> output1;
    ComPtr<IDXGIOutputDuplication> duplication;
    if (output && SUCCEEDED(output.As(&output1))) {
        output1->DuplicateOutput(device, &duplication);
    }
}

}  // namespace

int main() {
    const ComPtr<IDXGIAdapter1> adapter = FirstAdapter();
    ComPtr<ID3D11Device> device;
    ComPtr<ID3D11DeviceContext> context;
    if (FAILED(D3D11CreateDevice(adapter.Get(), D3D_DRIVER_TYPE_UNKNOWN, nullptr, 0, nullptr, 0,
                                 D3D11_SDK_VERSION, &device, nullptr, &context))) {
        return 1;
    }
    TryToDuplicate(FirstAdapter().Get(), device.Get());
    StereoWarpShader shader;
    if (!shader.Load(device.Get())) {
        return 1;
    }
    for (const Size& size :
         {Size{1280, 720}, Size{2560, 1440}, Size{1920, 1080}}) {  // The lab's display first.
        const WarpTiming timing =
            TimeStereoWarp(device.Get(), context.Get(), adapter.Get(), shader, size.width, size.height, {});
        std::printf("%dx%d: %.2f ms\n", size.width, size.height, timing.gpu_ms);
    }
    return 0;
}
