#include "tests/lab/machine/adapters.h"

#include <wrl/client.h>

#include "tests/lab/machine/fault_points.h"
#include "tests/lab/machine/fault_watch.h"
#include "tests/lab/machine/fixed_text.h"
#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/outputs.h"
#include "tests/lab/machine/simulated_object.h"
#include "tests/lab/machine/statistics.h"
#include "tests/lab/machine/texture_memory.h"

namespace lab {
namespace {

using Microsoft::WRL::ComPtr;

// {6D4E1F0C-5B7A-4C6B-9A55-2F3C1A0E7B11}: answered by simulated adapters alone.
constexpr GUID kSimulatedAdapter = {
    0x6d4e1f0c, 0x5b7a, 0x4c6b, {0x9a, 0x55, 0x2f, 0x3c, 0x1a, 0x0e, 0x7b, 0x11}};

class SimulatedAdapter final
    : public SimulatedDxgiObject<IDXGIAdapter3, IDXGIAdapter, IDXGIAdapter1, IDXGIAdapter2> {
  public:
    explicit SimulatedAdapter(std::size_t position)
        : SimulatedDxgiObject(Counts().live_adapters), position_(position) {}

    std::size_t Position() const { return position_; }

    HRESULT STDMETHODCALLTYPE GetParent(REFIID wanted, void** parent) override {
        return SimulatedCreateDXGIFactory1(wanted, parent);
    }

    HRESULT STDMETHODCALLTYPE EnumOutputs(UINT index, IDXGIOutput** output) override {
        if (output == nullptr) {
            return DXGI_ERROR_INVALID_CALL;
        }
        *output = nullptr;
        ++Counts().enumerations;
        const std::vector<std::size_t> driven = TheMachine().OutputsOf(position_);
        if (index >= driven.size()) {
            return static_cast<HRESULT>(Script().outputs_end_with.value_or(DXGI_ERROR_NOT_FOUND));
        }
        const Output& script = TheMachine().scenario.outputs[driven[index]];
        if (script.enumeration_fails) {
            return static_cast<HRESULT>(*script.enumeration_fails);
        }
        *output = NewOutput(driven[index]);
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE GetDesc(DXGI_ADAPTER_DESC* description) override {
        return Describe(description);
    }
    HRESULT STDMETHODCALLTYPE GetDesc1(DXGI_ADAPTER_DESC1* description) override {
        const HRESULT result = Describe(description);
        if (SUCCEEDED(result)) {
            description->Flags = Flags();
        }
        return result;
    }
    HRESULT STDMETHODCALLTYPE GetDesc2(DXGI_ADAPTER_DESC2* description) override {
        const HRESULT result = Describe(description);
        if (SUCCEEDED(result)) {
            description->Flags = Flags();
        }
        return result;
    }
    HRESULT STDMETHODCALLTYPE CheckInterfaceSupport(REFGUID, LARGE_INTEGER*) override {
        return DXGI_ERROR_UNSUPPORTED;
    }

    HRESULT STDMETHODCALLTYPE QueryVideoMemoryInfo(UINT node, DXGI_MEMORY_SEGMENT_GROUP group,
                                                   DXGI_QUERY_VIDEO_MEMORY_INFO* info) override {
        InjectFailure("QueryVideoMemoryInfo");
        if (node != 0 || info == nullptr) {
            return E_INVALIDARG;
        }
        *info = {};
        if (Script().memory_fails) {
            return static_cast<HRESULT>(*Script().memory_fails);
        }
        if (group == DXGI_MEMORY_SEGMENT_GROUP_LOCAL) {
            info->Budget = Script().budget_bytes;
            info->CurrentUsage = Script().used_bytes + TextureMemory(position_);
            const bool drifted = TheMachine().memory_readings++ % 2 != 0;
            info->CurrentUsage += drifted ? Script().memory_drift_bytes : 0;
            info->CurrentReservation = Script().reserved_bytes;
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetVideoMemoryReservation(UINT, DXGI_MEMORY_SEGMENT_GROUP, UINT64) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE RegisterHardwareContentProtectionTeardownStatusEvent(HANDLE, DWORD*) override {
        return E_NOTIMPL;
    }
    void STDMETHODCALLTYPE UnregisterHardwareContentProtectionTeardownStatus(DWORD) override {}
    HRESULT STDMETHODCALLTYPE RegisterVideoMemoryBudgetChangeNotificationEvent(HANDLE, DWORD*) override {
        return E_NOTIMPL;
    }
    void STDMETHODCALLTYPE UnregisterVideoMemoryBudgetChangeNotification(DWORD) override {}

  protected:
    bool Answers(REFIID wanted) const override {
        if (wanted == __uuidof(IDXGIAdapter3) && Script().without_adapter3) {
            return false;
        }
        return wanted == kSimulatedAdapter || SimulatedDxgiObject::Answers(wanted);
    }

  private:
    const Adapter& Script() const { return TheMachine().scenario.adapters[position_]; }

    UINT Flags() const {
        return (Script().software ? UINT{DXGI_ADAPTER_FLAG_SOFTWARE} : 0U) |
               (Script().remote ? UINT{DXGI_ADAPTER_FLAG_REMOTE} : 0U);
    }

    template <typename Description>
    HRESULT Describe(Description* description) const {
        if (description == nullptr) {
            return E_INVALIDARG;
        }
        const Adapter& script = Script();
        if (script.description_fails) {
            return static_cast<HRESULT>(*script.description_fails);
        }
        *description = {};
        FillText(script.name, description->Description);
        description->VendorId = script.vendor;
        description->DedicatedVideoMemory = script.dedicated_bytes;
        description->SharedSystemMemory = script.shared_bytes;
        description->AdapterLuid = {script.luid_low, script.luid_high};
        return S_OK;
    }

    std::size_t position_;
};

class SimulatedFactory final : public SimulatedDxgiObject<IDXGIFactory1, IDXGIFactory> {
  public:
    SimulatedFactory() : SimulatedDxgiObject(Counts().live_factories) { ++Counts().made_factories; }

    HRESULT STDMETHODCALLTYPE EnumAdapters(UINT index, IDXGIAdapter** adapter) override {
        return Enumerate(index, adapter);
    }
    HRESULT STDMETHODCALLTYPE EnumAdapters1(UINT index, IDXGIAdapter1** adapter) override {
        return Enumerate(index, adapter);
    }
    BOOL STDMETHODCALLTYPE IsCurrent() override { return TRUE; }
    HRESULT STDMETHODCALLTYPE MakeWindowAssociation(HWND, UINT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetWindowAssociation(HWND*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateSwapChain(IUnknown*, DXGI_SWAP_CHAIN_DESC*, IDXGISwapChain**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CreateSoftwareAdapter(HMODULE, IDXGIAdapter**) override { return E_NOTIMPL; }

  private:
    template <typename AdapterInterface>
    static HRESULT Enumerate(UINT index, AdapterInterface** adapter) {
        if (adapter == nullptr) {
            return DXGI_ERROR_INVALID_CALL;
        }
        *adapter = nullptr;
        ++Counts().enumerations;
        const Scenario& scenario = TheMachine().scenario;
        if (index >= scenario.adapters.size()) {
            return static_cast<HRESULT>(scenario.adapters_end_with.value_or(DXGI_ERROR_NOT_FOUND));
        }
        if (scenario.adapters[index].enumeration_fails) {
            return static_cast<HRESULT>(*scenario.adapters[index].enumeration_fails);
        }
        *adapter = NewAdapter(index);
        return S_OK;
    }
};

}  // namespace

HRESULT WINAPI SimulatedCreateDXGIFactory1(REFIID wanted, void** factory) {
    InjectFailure("CreateDXGIFactory1");
    if (factory == nullptr) {
        return DXGI_ERROR_INVALID_CALL;
    }
    *factory = nullptr;
    if (TheMachine().scenario.factory_fails) {
        return static_cast<HRESULT>(*TheMachine().scenario.factory_fails);
    }
    const ComPtr<SimulatedFactory> made = OwnNew(new SimulatedFactory);
    if (FaultsAreWatched()) {
        WatchFactory(made.Get());
    }
    return made->QueryInterface(wanted, factory);
}

IDXGIAdapter1* NewAdapter(std::size_t position) {
    return new SimulatedAdapter(position);
}

std::optional<std::size_t> AdapterPosition(IUnknown* adapter) {
    ComPtr<IUnknown> simulated;
    if (adapter == nullptr || FAILED(adapter->QueryInterface(kSimulatedAdapter, &simulated))) {
        return {};
    }
    return static_cast<SimulatedAdapter*>(static_cast<IDXGIAdapter3*>(simulated.Get()))->Position();
}

}  // namespace lab
