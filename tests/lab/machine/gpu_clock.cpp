#include "tests/lab/machine/gpu_clock.h"

#include <wrl/client.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <optional>

#include "tests/lab/machine/black_texture.h"
#include "tests/lab/machine/clock.h"
#include "tests/lab/machine/devices.h"
#include "tests/lab/machine/gpu_timeline.h"
#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/vtable.h"

namespace lab {
namespace {

using Microsoft::WRL::ComPtr;

// {7E0A52C9-1D83-4B6F-A1F4-60B9E3D75C18}: the private data in which a query keeps its mark.
constexpr GUID kMark = {0x7e0a52c9, 0x1d83, 0x4b6f, {0xa1, 0xf4, 0x60, 0xb9, 0xe3, 0xd7, 0x5c, 0x18}};
constexpr std::size_t kDrawSlot = 13;
constexpr std::size_t kEndSlot = 28;
constexpr std::size_t kGetDataSlot = 29;
constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::int64_t kNanosecondsPerMicrosecond = 1'000;
constexpr std::int64_t kMicrosecondsPerMillisecond = 1'000;

using DrawFunction = void(STDMETHODCALLTYPE*)(ID3D11DeviceContext*, UINT, UINT);
using EndFunction = void(STDMETHODCALLTYPE*)(ID3D11DeviceContext*, ID3D11Asynchronous*);
using GetDataFunction = HRESULT(STDMETHODCALLTYPE*)(ID3D11DeviceContext*, ID3D11Asynchronous*, void*, UINT,
                                                    UINT);
std::atomic<DrawFunction> real_draw = nullptr;
std::atomic<EndFunction> real_end = nullptr;
std::atomic<GetDataFunction> real_get_data = nullptr;

/// When a query ended: in GPU time, and when the program can see it.
struct Mark {
    std::uint64_t stamp = 0;      ///< nanoseconds
    std::int64_t known_from = 0;  ///< MachineTime
};

/// The time of GPUs whose work takes no time on the machine's clock.
std::atomic<std::uint64_t> gpu_time = kNanosecondsPerSecond;

/// The one GPU that has a ramp. Programs draw on one thread.
GpuTimeline& Timeline() {
    static GpuTimeline timeline;
    return timeline;
}

/// The adapter of a context whose GPU is scripted; null for any other.
const Adapter* ScriptedAdapter(ID3D11DeviceContext* context) {
    ComPtr<ID3D11Device> device;
    context->GetDevice(&device);
    const std::optional<std::size_t> position = DeviceAdapterPosition(device.Get());
    const auto& adapters = TheMachine().scenario.adapters;
    return position && *position < adapters.size() && adapters[*position].draw_rate ? &adapters[*position]
                                                                                    : nullptr;
}

std::int64_t NowInNanoseconds() {
    return MachineTime() * kNanosecondsPerMicrosecond;
}

void TakeGpuTime(const Adapter& adapter, double nanoseconds) {
    if (adapter.ramp) {
        Timeline().Work(nanoseconds, NowInNanoseconds(), adapter.ramp);
    } else {
        gpu_time += static_cast<std::uint64_t>(nanoseconds);
    }
}

Mark MarkOf(const Adapter& adapter) {
    Mark mark = {gpu_time, MachineTime()};
    if (adapter.ramp) {
        const std::int64_t done = Timeline().DoneAt(NowInNanoseconds());
        mark = {static_cast<std::uint64_t>(done), done / kNanosecondsPerMicrosecond};
    }
    mark.known_from += adapter.stamps_late_milliseconds * kMicrosecondsPerMillisecond;
    return mark;
}

/// The type of the query; for any other object, a type that is not simulated.
D3D11_QUERY KindOf(ID3D11Asynchronous* asynchronous) {
    ComPtr<ID3D11Query> query;
    D3D11_QUERY_DESC description = {D3D11_QUERY_PIPELINE_STATISTICS, 0};
    if (asynchronous != nullptr && SUCCEEDED(asynchronous->QueryInterface(IID_PPV_ARGS(&query)))) {
        query->GetDesc(&description);
    }
    return description.Query;
}

bool IsSimulated(D3D11_QUERY kind) {
    return kind == D3D11_QUERY_TIMESTAMP_DISJOINT || kind == D3D11_QUERY_TIMESTAMP ||
           kind == D3D11_QUERY_EVENT;
}

void STDMETHODCALLTYPE ScriptedDraw(ID3D11DeviceContext* context, UINT count, UINT first) {
    const Adapter* const adapter = ScriptedAdapter(context);
    if (adapter == nullptr) {
        real_draw.load()(context, count, first);
        return;
    }
    int rate = *adapter->draw_rate;
    if (adapter->black_draw_rate && ReadsBlackTexture(context)) {
        rate = *adapter->black_draw_rate;
    }
    UINT viewports = 1;
    D3D11_VIEWPORT viewport = {};
    context->RSGetViewports(&viewports, &viewport);
    const double pixels = static_cast<double>(viewport.Width) * static_cast<double>(viewport.Height);
    TakeGpuTime(*adapter, pixels * static_cast<double>(kNanosecondsPerMicrosecond) / rate);
}

void STDMETHODCALLTYPE ScriptedEnd(ID3D11DeviceContext* context, ID3D11Asynchronous* asynchronous) {
    if (const Adapter* const adapter = ScriptedAdapter(context)) {
        const Mark mark = MarkOf(*adapter);
        asynchronous->SetPrivateData(kMark, sizeof(mark), &mark);
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
    const Adapter* const adapter = ScriptedAdapter(context);
    const D3D11_QUERY kind = KindOf(asynchronous);
    if (adapter == nullptr || !IsSimulated(kind)) {
        return real_get_data.load()(context, asynchronous, data, size, flags);
    }
    Mark mark;
    UINT mark_size = sizeof(mark);
    if (FAILED(asynchronous->GetPrivateData(kMark, &mark_size, &mark)) || mark_size != sizeof(mark) ||
        adapter->stamp_trouble == StampTrouble::kNever || MachineTime() < mark.known_from) {
        return S_FALSE;  // Not ended yet, or the data is not ready.
    }
    if (kind == D3D11_QUERY_TIMESTAMP) {
        return GiveData(&mark.stamp, sizeof(mark.stamp), data, size);
    }
    if (kind == D3D11_QUERY_EVENT) {
        const BOOL done = TRUE;
        return GiveData(&done, sizeof(done), data, size);
    }
    const D3D11_QUERY_DATA_TIMESTAMP_DISJOINT clock = {
        kNanosecondsPerSecond, adapter->stamp_trouble == StampTrouble::kDisjoint ? TRUE : FALSE};
    return GiveData(&clock, sizeof(clock), data, size);
}

}  // namespace

void WatchGpuTime(ID3D11DeviceContext* context) {
    ReplaceVtableSlot(context, kDrawSlot, &ScriptedDraw, real_draw);
    ReplaceVtableSlot(context, kEndSlot, &ScriptedEnd, real_end);
    ReplaceVtableSlot(context, kGetDataSlot, &ScriptedGetData, real_get_data);
}

}  // namespace lab
