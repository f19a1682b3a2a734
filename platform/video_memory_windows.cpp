#include "platform/video_memory.h"

#include <dxgi1_4.h>
#include <wrl/client.h>

using Microsoft::WRL::ComPtr;

std::optional<VideoMemoryUse> QueryLocalVideoMemory(IDXGIAdapter1* adapter) {
    if (adapter == nullptr) {
        return std::nullopt;
    }
    ComPtr<IDXGIAdapter3> accounting;
    if (FAILED(adapter->QueryInterface(IID_PPV_ARGS(&accounting))) || !accounting) {
        return std::nullopt;
    }
    DXGI_QUERY_VIDEO_MEMORY_INFO memory = {};
    if (FAILED(accounting->QueryVideoMemoryInfo(0, DXGI_MEMORY_SEGMENT_GROUP_LOCAL, &memory))) {
        return std::nullopt;
    }
    return VideoMemoryUse{memory.CurrentUsage, memory.Budget, memory.CurrentReservation};
}
