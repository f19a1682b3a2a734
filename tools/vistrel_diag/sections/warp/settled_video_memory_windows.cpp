#include "tools/vistrel_diag/sections/warp/settled_video_memory.h"

#include <d3d11.h>
#include <wrl/client.h>

#include <functional>

#include "platform/stopwatch.h"
#include "platform/video_memory.h"
#include "tools/vistrel_diag/sections/warp/settled_reading.h"

namespace {

/// Waits until the GPU has finished its work, but not beyond kLongestSettlingMs on `elapsed_ms`.
void WaitForGpu(ID3D11Device& device, ID3D11DeviceContext& context,
                const std::function<double()>& elapsed_ms) {
    const D3D11_QUERY_DESC description = {D3D11_QUERY_EVENT, 0};
    Microsoft::WRL::ComPtr<ID3D11Query> done;
    if (FAILED(device.CreateQuery(&description, &done))) {
        context.Flush();
        return;
    }
    context.End(done.Get());
    context.Flush();
    BOOL answer = FALSE;
    // S_FALSE means not ready; an error, such as a lost device, will never become a result.
    while (context.GetData(done.Get(), &answer, sizeof(answer), 0) == S_FALSE &&
           elapsed_ms() < kLongestSettlingMs) {
        Sleep(1);
    }
}

}  // namespace

std::uint64_t SettledVideoMemory(ID3D11Device& device, ID3D11DeviceContext& context, IDXGIAdapter1* adapter) {
    if (!QueryLocalVideoMemory(adapter)) {
        return 0;
    }
    const Stopwatch stopwatch;
    ReadingSteps steps;
    steps.read = [adapter] { return QueryLocalVideoMemory(adapter).value_or(VideoMemoryUse{}).usage; };
    steps.sleep = [](int milliseconds) { Sleep(static_cast<DWORD>(milliseconds)); };
    steps.elapsed_ms = [&stopwatch] { return stopwatch.Seconds() * 1000.0; };
    context.ClearState();
    WaitForGpu(device, context, steps.elapsed_ms);
    return ReadSettled(steps);
}
