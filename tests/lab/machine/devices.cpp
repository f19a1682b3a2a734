#include "tests/lab/machine/devices.h"

#include <dxgi1_4.h>
#include <wrl/client.h>

#include <atomic>

#include "tests/lab/machine/adapters.h"
#include "tests/lab/machine/fault_points.h"
#include "tests/lab/machine/fault_watch.h"
#include "tests/lab/machine/frame_guard.h"
#include "tests/lab/machine/gpu_clock.h"
#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/map_failures.h"
#include "tests/lab/machine/simulated_object.h"
#include "tests/lab/machine/statistics.h"
#include "tests/lab/machine/texture_memory.h"
#include "tests/lab/machine/vtable.h"

namespace lab {
namespace {

using Microsoft::WRL::ComPtr;

// {B1F9A0E2-7C35-4D1E-8F61-93C2D4A7E520}: the private data in which a device keeps its tag.
constexpr GUID kDeviceTag = {0xb1f9a0e2, 0x7c35, 0x4d1e, {0x8f, 0x61, 0x93, 0xc2, 0xd4, 0xa7, 0xe5, 0x20}};
constexpr std::size_t kGetAdapterSlot = 7;

/// Has the same lifetime as the device that holds it, so that devices can be counted.
class DeviceTag final : public SimulatedUnknown<IUnknown> {
  public:
    explicit DeviceTag(std::size_t position) : SimulatedUnknown(Counts().live_devices), position_(position) {}
    std::size_t Position() const { return position_; }

  private:
    std::size_t position_;
};

template <typename Function>
Function RealFunction(const wchar_t* library, const char* name) {
    return reinterpret_cast<Function>(
        GetProcAddress(LoadLibraryExW(library, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32), name));
}

/// The only real adapter; kept, because creating a real factory takes long.
IDXGIAdapter* RealAdapter() {
    static IDXGIAdapter* const adapter = [] {
        const auto create = RealFunction<decltype(&CreateDXGIFactory1)>(L"dxgi.dll", "CreateDXGIFactory1");
        ComPtr<IDXGIFactory1> factory;
        IDXGIAdapter* first = nullptr;
        if (SUCCEEDED(create(IID_PPV_ARGS(&factory)))) {
            factory->EnumAdapters(0, &first);
        }
        return first;
    }();
    return adapter;
}

using GetAdapterFunction = HRESULT(STDMETHODCALLTYPE*)(IDXGIDevice*, IDXGIAdapter**);
std::atomic<GetAdapterFunction> real_get_adapter = nullptr;

HRESULT STDMETHODCALLTYPE SimulatedGetAdapter(IDXGIDevice* device, IDXGIAdapter** adapter) {
    const std::optional<std::size_t> position = DeviceAdapterPosition(device);
    if (!position || adapter == nullptr) {
        return real_get_adapter.load()(device, adapter);
    }
    *adapter = NewAdapter(*position);
    return S_OK;
}

void TagDevice(ID3D11Device* device, std::size_t position) {
    const ComPtr<DeviceTag> tag = OwnNew(new DeviceTag(position));
    device->SetPrivateDataInterface(kDeviceTag, tag.Get());
    ComPtr<IDXGIDevice> dxgi_device;
    if (SUCCEEDED(device->QueryInterface(IID_PPV_ARGS(&dxgi_device)))) {
        ReplaceVtableSlot(dxgi_device.Get(), kGetAdapterSlot, &SimulatedGetAdapter, real_get_adapter);
    }
    ComPtr<ID3D11DeviceContext> context;
    device->GetImmediateContext(&context);
    GuardFrames(context.Get());
    const Adapter& adapter = TheMachine().scenario.adapters[position];
    if (adapter.draw_rate) {
        WatchGpuTime(context.Get());
    }
    if (adapter.memory_falls_milliseconds) {
        WatchTextureMemory(device, context.Get());
    }
    if (adapter.mapping) {
        WatchMapping(context.Get());
    }
    if (FaultsAreWatched()) {
        WatchDevice(device);
    }
    if (position < Counts().devices_made_on.size()) {
        ++Counts().devices_made_on[position];
    }
}

/// The adapter that Windows would choose for a program that does not name one.
std::optional<std::size_t> DefaultAdapter() {
    if (TheMachine().scenario.adapters.empty()) {
        return {};
    }
    return 0;
}

}  // namespace

std::optional<std::size_t> DeviceAdapterPosition(IUnknown* device) {
    ComPtr<IDXGIObject> object;
    ComPtr<IUnknown> tag;
    UINT size = sizeof(IUnknown*);
    if (device == nullptr || FAILED(device->QueryInterface(__uuidof(IDXGIDevice), &object)) ||
        FAILED(object->GetPrivateData(kDeviceTag, &size, tag.GetAddressOf())) || !tag) {
        return {};
    }
    return static_cast<DeviceTag*>(tag.Get())->Position();
}

HRESULT WINAPI SimulatedD3D11CreateDevice(IDXGIAdapter* adapter, D3D_DRIVER_TYPE driver_type,
                                          HMODULE software, UINT flags, const D3D_FEATURE_LEVEL* levels,
                                          UINT level_count, UINT sdk_version, ID3D11Device** device,
                                          D3D_FEATURE_LEVEL* level, ID3D11DeviceContext** context) {
    InjectFailure("D3D11CreateDevice");
    // Wine is more permissive here than Windows.
    const bool adapter_given = adapter != nullptr;
    if (adapter_given != (driver_type == D3D_DRIVER_TYPE_UNKNOWN) || sdk_version != D3D11_SDK_VERSION) {
        return E_INVALIDARG;
    }
    const Scenario& scenario = TheMachine().scenario;
    const std::optional<std::size_t> position = adapter_given ? AdapterPosition(adapter) : DefaultAdapter();
    if (!position) {
        return DXGI_ERROR_UNSUPPORTED;
    }
    const std::optional<ResultCode> failure =
        scenario.device_fails ? scenario.device_fails : scenario.adapters[*position].device_fails;
    if (failure) {
        return static_cast<HRESULT>(*failure);
    }
    const auto create = RealFunction<decltype(&D3D11CreateDevice)>(L"d3d11.dll", "D3D11CreateDevice");
    ComPtr<ID3D11Device> made;
    const HRESULT result = create(RealAdapter(), D3D_DRIVER_TYPE_UNKNOWN, software, flags, levels,
                                  level_count, sdk_version, &made, level, context);
    if (FAILED(result)) {
        return result;
    }
    TagDevice(made.Get(), *position);
    if (device != nullptr) {
        *device = made.Detach();
    }
    return result;
}

}  // namespace lab
