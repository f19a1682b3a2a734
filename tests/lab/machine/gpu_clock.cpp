#include "tests/lab/machine/gpu_clock.h"

#include <wrl/client.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <optional>

#include "tests/lab/machine/devices.h"
#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/vtable.h"

namespace lab {
namespace {

using Microsoft::WRL::ComPtr;

// {7E0A52C9-1D83-4B6F-A1F4-60B9E3D75C18}: the private data in which a query keeps its time stamp.
constexpr GUID kTimeStamp = {0x7e0a52c9, 0x1d83, 0x4b6f, {0xa1, 0xf4, 0x60, 0xb9, 0xe3, 0xd7, 0x5c, 0x18}};
constexpr std::size_t kDrawSlot = 13;
constexpr std::size_t kEndSlot = 28;
constexpr std::size_t kGetDataSlot = 29;
constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr double kNanosecondsPerMicrosecond = 1'000;

using DrawFunction = void(STDMETHODCALLTYPE*)(ID3D11DeviceContext*, UINT, UINT);
using EndFunction = void(STDMETHODCALLTYPE*)(ID3D11DeviceContext*, ID3D11Asynchronous*);
using GetDataFunction = HRESULT(STDMETHODCALLTYPE*)(ID3D11DeviceContext*, ID3D11Asynchronous*, void*, UINT,
                                                    UINT);
std::atomic<DrawFunction> real_draw = nullptr;
std::atomic<EndFunction> real_end = nullptr;
std::atomic<GetDataFunction> real_get_data = nullptr;

std::atomic<std::uint64_t> gpu_time = kNanosecondsPerSecond;

/// Megapixels a second; empty on a context whose GPU is not scripted.
std::optional<int> DrawRate(ID3D11DeviceContext* context) {
    ComPtr<ID3D11Device> device;
    context->GetDevice(&device);
    const std::optional<std::size_t> position = DeviceAdapterPosition(device.Get());
    const auto& adapters = TheMachine().scenario.adapters;
    return position && *position < adapters.size() ? adapters[*position].draw_rate : std::nullopt;
}

std::optional<D3D11_QUERY> KindOf(ID3D11Asynchronous* asynchronous) {
    ComPtr<ID3D11Query> query;
    if (asynchronous == nullptr || FAILED(asynchronous->QueryInterface(IID_PPV_ARGS(&query)))) {
        return {};
    }
    D3D11_QUERY_DESC description = {};
    query->GetDesc(&description);
    return description.Query;
}

void STDMETHODCALLTYPE ScriptedDraw(ID3D11DeviceContext* context, UINT count, UINT first) {
    const std::optional<int> rate = DrawRate(context);
    if (!rate) {
        real_draw.load()(context, count, first);
        return;
    }
    UINT viewports = 1;
    D3D11_VIEWPORT viewport = {};
    context->RSGetViewports(&viewports, &viewport);
    const double pixels = static_cast<double>(viewport.Width) * static_cast<double>(viewport.Height);
    gpu_time += static_cast<std::uint64_t>(pixels * kNanosecondsPerMicrosecond / *rate);
}

void STDMETHODCALLTYPE ScriptedEnd(ID3D11DeviceContext* context, ID3D11Asynchronous* asynchronous) {
    if (DrawRate(context) && KindOf(asynchronous) == D3D11_QUERY_TIMESTAMP) {
        const std::uint64_t now = gpu_time;
        asynchronous->SetPrivateData(kTimeStamp, sizeof(now), &now);
    }
    real_end.load()(context, asynchronous);
}

HRESULT GiveData(const void* answer, UINT answer_size, void* data, UINT size) {
    if (data == nullptr) {
        return S_OK;
    }
    if (size != answer_size) {
        return E_INVALIDARG;
    }
    std::memcpy(data, answer, size);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE ScriptedGetData(ID3D11DeviceContext* context, ID3D11Asynchronous* asynchronous,
                                          void* data, UINT size, UINT flags) {
    const std::optional<D3D11_QUERY> kind = DrawRate(context) ? KindOf(asynchronous) : std::nullopt;
    if (kind == D3D11_QUERY_TIMESTAMP_DISJOINT) {
        const D3D11_QUERY_DATA_TIMESTAMP_DISJOINT steady = {kNanosecondsPerSecond, FALSE};
        return GiveData(&steady, sizeof(steady), data, size);
    }
    if (kind != D3D11_QUERY_TIMESTAMP) {
        return real_get_data.load()(context, asynchronous, data, size, flags);
    }
    std::uint64_t stamp = 0;
    UINT stamp_size = sizeof(stamp);
    if (FAILED(asynchronous->GetPrivateData(kTimeStamp, &stamp_size, &stamp)) ||
        stamp_size != sizeof(stamp)) {
        return S_FALSE;  // Not ended yet.
    }
    return GiveData(&stamp, sizeof(stamp), data, size);
}

}  // namespace

void WatchGpuTime(ID3D11DeviceContext* context) {
    ReplaceVtableSlot(context, kDrawSlot, &ScriptedDraw, real_draw);
    ReplaceVtableSlot(context, kEndSlot, &ScriptedEnd, real_end);
    ReplaceVtableSlot(context, kGetDataSlot, &ScriptedGetData, real_get_data);
}

}  // namespace lab
