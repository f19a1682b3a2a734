#include "tests/lab/machine/map_failures.h"

#include <wrl/client.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <optional>

#include "tests/lab/machine/clock.h"
#include "tests/lab/machine/devices.h"
#include "tests/lab/machine/frame_schedule.h"
#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/statistics.h"
#include "tests/lab/machine/vtable.h"

namespace lab {
namespace {

using Microsoft::WRL::ComPtr;

constexpr std::size_t kMapSlot = 14;

using MapFunction = HRESULT(STDMETHODCALLTYPE*)(ID3D11DeviceContext*, ID3D11Resource*, UINT, D3D11_MAP, UINT,
                                                D3D11_MAPPED_SUBRESOURCE*);
std::atomic<MapFunction> real_map = nullptr;

struct Failing {
    std::optional<std::int64_t> since;  ///< MachineTime of the first try
    int times = 0;
};

/// The failure to return now; empty when the adapter's textures can be mapped.
std::optional<ResultCode> FailNow(ID3D11DeviceContext* context) {
    static std::array<Failing, kCountedAdapters> states;
    ComPtr<ID3D11Device> device;
    context->GetDevice(&device);
    const std::optional<std::size_t> position = DeviceAdapterPosition(device.Get());
    const auto& adapters = TheMachine().scenario.adapters;
    if (!position || *position >= adapters.size() || *position >= states.size() ||
        !adapters[*position].mapping) {
        return {};
    }
    Failing& state = states.at(*position);
    state.since = state.since.value_or(MachineTime());
    const Refusal& mapping = *adapters[*position].mapping;
    if (!StillRefuses(mapping, state.times, MachineTime() - *state.since)) {
        return {};
    }
    ++state.times;
    return mapping.result;
}

HRESULT STDMETHODCALLTYPE FailingMap(ID3D11DeviceContext* context, ID3D11Resource* resource, UINT subresource,
                                     D3D11_MAP kind, UINT flags, D3D11_MAPPED_SUBRESOURCE* mapped) {
    if (const std::optional<ResultCode> failure = FailNow(context)) {
        return static_cast<HRESULT>(*failure);
    }
    return real_map.load()(context, resource, subresource, kind, flags, mapped);
}

}  // namespace

void WatchMapping(ID3D11DeviceContext* context) {
    ReplaceVtableSlot(context, kMapSlot, &FailingMap, real_map);
}

}  // namespace lab
