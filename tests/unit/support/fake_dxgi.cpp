#include "tests/unit/support/fake_dxgi.h"

#include <algorithm>
#include <cstddef>

#include "tests/lab/machine/output_stub.h"

// COM's interfaces have no virtual destructor; the objects here delete themselves as what they are.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace {

FakeDxgi& Dxgi() {
    return FakeDxgi::Instance();
}

/// Reference counting, and what every DXGI object has.
template <typename Interface>
class FakeObject : public Interface {
  public:
    FakeObject() { ++Dxgi().live_objects; }
    FakeObject(const FakeObject&) = delete;
    FakeObject& operator=(const FakeObject&) = delete;
    virtual ~FakeObject() { --Dxgi().live_objects; }

    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    HRESULT STDMETHODCALLTYPE SetPrivateData(REFGUID, UINT, const void*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetPrivateDataInterface(REFGUID, const IUnknown*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPrivateData(REFGUID, UINT*, void*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetParent(REFIID, void**) override { return E_NOTIMPL; }

  private:
    ULONG references_ = 1;
};

template <std::size_t Size>
void CopyName(const std::wstring& name, WCHAR (&target)[Size]) {
    // As Windows does not promise: a name that fills the array is not terminated.
    std::copy_n(name.begin(), std::min(name.size(), Size), target);
}

class Output : public lab::OutputStub<FakeObject<IDXGIOutput>> {
  public:
    explicit Output(const FakeOutput& script) : script_(script) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    HRESULT STDMETHODCALLTYPE GetDesc(DXGI_OUTPUT_DESC* description) override {
        if (SUCCEEDED(script_.description)) {
            CopyName(script_.name, description->DeviceName);
        }
        return script_.description;
    }

  private:
    FakeOutput script_;
};

class Adapter : public FakeObject<IDXGIAdapter3> {
  public:
    explicit Adapter(const FakeAdapter& script) : script_(script) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        if (id == __uuidof(IDXGIAdapter3) && script_.accounts_memory) {
            *object = static_cast<IDXGIAdapter3*>(this);
            AddRef();
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    HRESULT STDMETHODCALLTYPE EnumOutputs(UINT index, IDXGIOutput** output) override {
        ++Dxgi().enumerations;
        *output = nullptr;
        if (index >= script_.outputs.size()) {
            return Dxgi().null_behind_the_last ? S_OK : Dxgi().behind_the_last;
        }
        if (SUCCEEDED(script_.outputs[index].enumeration)) {
            *output = new Output(script_.outputs[index]);
        }
        return script_.outputs[index].enumeration;
    }
    HRESULT STDMETHODCALLTYPE GetDesc1(DXGI_ADAPTER_DESC1* description) override {
        if (SUCCEEDED(script_.description)) {
            CopyName(script_.name, description->Description);
            description->AdapterLuid = script_.luid;
            description->DedicatedVideoMemory = script_.dedicated_video_memory;
            description->SharedSystemMemory = script_.shared_system_memory;
            description->VendorId = script_.vendor_id;
            description->Flags = script_.flags;
        }
        return script_.description;
    }
    HRESULT STDMETHODCALLTYPE QueryVideoMemoryInfo(UINT node, DXGI_MEMORY_SEGMENT_GROUP group,
                                                   DXGI_QUERY_VIDEO_MEMORY_INFO* memory) override {
        if (node != 0 || group != DXGI_MEMORY_SEGMENT_GROUP_LOCAL) {
            return E_INVALIDARG;
        }
        *memory = script_.memory;
        return script_.memory_query;
    }
    HRESULT STDMETHODCALLTYPE GetDesc(DXGI_ADAPTER_DESC*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CheckInterfaceSupport(REFGUID, LARGE_INTEGER*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetDesc2(DXGI_ADAPTER_DESC2*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RegisterHardwareContentProtectionTeardownStatusEvent(HANDLE, DWORD*) override {
        return E_NOTIMPL;
    }
    void STDMETHODCALLTYPE UnregisterHardwareContentProtectionTeardownStatus(DWORD) override {}
    HRESULT STDMETHODCALLTYPE SetVideoMemoryReservation(UINT, DXGI_MEMORY_SEGMENT_GROUP, UINT64) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE RegisterVideoMemoryBudgetChangeNotificationEvent(HANDLE, DWORD*) override {
        return E_NOTIMPL;
    }
    void STDMETHODCALLTYPE UnregisterVideoMemoryBudgetChangeNotification(DWORD) override {}

  private:
    FakeAdapter script_;
};

class Factory : public FakeObject<IDXGIFactory1> {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    HRESULT STDMETHODCALLTYPE EnumAdapters1(UINT index, IDXGIAdapter1** adapter) override {
        ++Dxgi().enumerations;
        *adapter = nullptr;
        if (index >= Dxgi().adapters.size()) {
            return Dxgi().null_behind_the_last ? S_OK : Dxgi().behind_the_last;
        }
        if (SUCCEEDED(Dxgi().adapters[index].enumeration)) {
            *adapter = new Adapter(Dxgi().adapters[index]);
        }
        return Dxgi().adapters[index].enumeration;
    }
    HRESULT STDMETHODCALLTYPE EnumAdapters(UINT, IDXGIAdapter**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MakeWindowAssociation(HWND, UINT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetWindowAssociation(HWND*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateSwapChain(IUnknown*, DXGI_SWAP_CHAIN_DESC*, IDXGISwapChain**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CreateSoftwareAdapter(HMODULE, IDXGIAdapter**) override { return E_NOTIMPL; }
    WINBOOL STDMETHODCALLTYPE IsCurrent() override { return TRUE; }
};

}  // namespace

FakeDxgi& FakeDxgi::Instance() {
    static FakeDxgi dxgi;
    return dxgi;
}

extern "C" HRESULT WINAPI CreateDXGIFactory1(REFIID id, void** factory) {
    *factory = nullptr;
    if (id != __uuidof(IDXGIFactory1)) {
        return E_NOINTERFACE;
    }
    if (SUCCEEDED(Dxgi().factory)) {
        *factory = static_cast<IDXGIFactory1*>(new Factory);
    }
    return Dxgi().factory;
}
