// DXGI's objects as the scripted machine has them.
#include <algorithm>
#include <atomic>
#include <utility>

#include "tests/lab/machine/output_stub.h"
#include "tests/lab/machine/simulated_object.h"
#include "tests/unit/support/fake_desktop_parts.h"

using Microsoft::WRL::ComPtr;

namespace {

std::atomic<long> live_objects = 0;

template <typename Interface, typename... Parents>
class FakeObject : public lab::SimulatedDxgiObject<Interface, Parents...> {
  public:
    FakeObject() : lab::SimulatedDxgiObject<Interface, Parents...>(live_objects) {}
};

template <typename Description, std::size_t Size>
void SetText(Description (&array)[Size], const std::wstring& text) {
    text.copy(array, Size - 1);
}

ComPtr<ID3D11Texture2D> MakeTexture(ID3D11Device* device, const FakeFrame& frame) {
    const std::vector<std::uint8_t> pixels = FakePixels(frame);
    D3D11_TEXTURE2D_DESC description = {};
    description.Width = frame.width;
    description.Height = frame.height;
    description.MipLevels = 1;
    description.ArraySize = 1;
    description.Format = frame.format;
    description.SampleDesc.Count = 1;
    description.Usage = D3D11_USAGE_DEFAULT;
    description.BindFlags = D3D11_BIND_RENDER_TARGET;
    const D3D11_SUBRESOURCE_DATA data = {pixels.data(), frame.width * BytesPerTexel(frame.format), 0};
    ComPtr<ID3D11Texture2D> texture;
    if (FAILED(device->CreateTexture2D(&description, &data, &texture))) {
        Misuse("a desktop texture could not be made");
    }
    return texture;
}

/// A resource that is no texture.
ComPtr<IDXGIResource> MakeBuffer(ID3D11Device* device) {
    D3D11_BUFFER_DESC description = {};
    description.ByteWidth = 16;
    description.BindFlags = D3D11_BIND_VERTEX_BUFFER;
    ComPtr<ID3D11Buffer> buffer;
    ComPtr<IDXGIResource> resource;
    if (FAILED(device->CreateBuffer(&description, nullptr, &buffer)) || FAILED(buffer.As(&resource))) {
        Misuse("a buffer could not be made");
    }
    return resource;
}

class FakeDuplication final : public FakeObject<IDXGIOutputDuplication> {
  public:
    FakeDuplication(ComPtr<ID3D11Device> device, std::wstring output)
        : device_(std::move(device)), output_(std::move(output)) {
        live_outputs_.push_back(output_);
    }
    ~FakeDuplication() override {
        std::erase(live_outputs_, output_);
        if (acquired_) {
            Misuse("duplication released with a frame still held");
        }
    }
    static bool IsDuplicated(const std::wstring& output) {
        return std::find(live_outputs_.begin(), live_outputs_.end(), output) != live_outputs_.end();
    }

    void STDMETHODCALLTYPE GetDesc(DXGI_OUTDUPL_DESC*) override {}
    HRESULT STDMETHODCALLTYPE AcquireNextFrame(UINT timeout, DXGI_OUTDUPL_FRAME_INFO* information,
                                               IDXGIResource** resource) override {
        *resource = nullptr;
        Machine().timeouts.push_back(timeout);
        if (acquired_) {
            Misuse("AcquireNextFrame before ReleaseFrame");
            return DXGI_ERROR_INVALID_CALL;
        }
        if (lost_) {
            return DXGI_ERROR_ACCESS_LOST;
        }
        const FakeFrame frame = NextFrame();
        lost_ = frame.result == DXGI_ERROR_ACCESS_LOST;
        if (FAILED(frame.result)) {
            return frame.result;
        }
        acquired_ = true;
        ++Machine().frames_acquired;
        *information = {};
        information->LastPresentTime.QuadPart = frame.present_ticks;
        information->AccumulatedFrames = 1;
        if (!frame.has_texture) {
            return MakeBuffer(device_.Get()).CopyTo(resource);
        }
        texture_ = MakeTexture(device_.Get(), frame);
        return texture_.CopyTo(resource);
    }
    HRESULT STDMETHODCALLTYPE GetFrameDirtyRects(UINT, RECT*, UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetFrameMoveRects(UINT, DXGI_OUTDUPL_MOVE_RECT*, UINT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetFramePointerShape(UINT, void*, UINT*,
                                                   DXGI_OUTDUPL_POINTER_SHAPE_INFO*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE MapDesktopSurface(DXGI_MAPPED_RECT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UnMapDesktopSurface() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ReleaseFrame() override {
        if (!acquired_) {
            ++Machine().idle_releases;
            return DXGI_ERROR_INVALID_CALL;
        }
        acquired_ = false;
        ++Machine().frames_released;
        if (texture_) {
            Spoil();
        }
        return S_OK;
    }

  private:
    static FakeFrame NextFrame() {
        FakeDesktop& desktop = Machine();
        if (!desktop.frames.empty()) {
            const FakeFrame frame = desktop.frames.front();
            desktop.frames.pop_front();
            return frame;
        }
        return desktop.next_frame ? desktop.next_frame() : FakeFrame{.result = DXGI_ERROR_WAIT_TIMEOUT};
    }

    /// What was given back is overwritten at once, and nobody may refer to it any more.
    void Spoil() {
        D3D11_TEXTURE2D_DESC description = {};
        texture_->GetDesc(&description);
        const UINT pitch = description.Width * BytesPerTexel(description.Format);
        const std::vector<std::uint8_t> garbage(std::size_t{pitch} * description.Height, 0xDD);
        ComPtr<ID3D11DeviceContext> context;
        device_->GetImmediateContext(&context);
        context->UpdateSubresource(texture_.Get(), 0, nullptr, garbage.data(), pitch, 0);
        if (texture_.Reset() != 0) {
            Misuse("a frame is still referenced after ReleaseFrame");
        }
    }

    static inline std::vector<std::wstring> live_outputs_;
    ComPtr<ID3D11Device> device_;
    std::wstring output_;
    ComPtr<ID3D11Texture2D> texture_;
    bool acquired_ = false;
    bool lost_ = false;
};

class FakeOutput final : public lab::Output1Stub<FakeObject<IDXGIOutput1, IDXGIOutput>> {
  public:
    FakeOutput(std::size_t adapter, FakeOutputScript script)
        : adapter_(adapter), script_(std::move(script)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (iid == __uuidof(IDXGIOutput1) && !script_.has_output1) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        return Output1Stub::QueryInterface(iid, object);
    }
    HRESULT STDMETHODCALLTYPE GetDesc(DXGI_OUTPUT_DESC* description) override {
        *description = {};
        SetText(description->DeviceName, script_.name);
        description->DesktopCoordinates = {script_.left, script_.top, script_.left + 64, script_.top + 48};
        description->AttachedToDesktop = TRUE;
        return script_.describe_result;
    }
    HRESULT STDMETHODCALLTYPE DuplicateOutput(IUnknown* unknown,
                                              IDXGIOutputDuplication** duplication) override {
        *duplication = nullptr;
        ++Machine().duplications;
        Machine().duplicated.push_back(script_.name);
        ComPtr<ID3D11Device> device;
        if (unknown == nullptr || FAILED(unknown->QueryInterface(IID_PPV_ARGS(&device)))) {
            Misuse("DuplicateOutput without a device");
            return E_INVALIDARG;
        }
        std::size_t adapter = 0;
        UINT size = sizeof(adapter);
        if (FAILED(device->GetPrivateData(kAdapterTag, &size, &adapter)) || adapter != adapter_) {
            Misuse("DuplicateOutput with a device of another adapter");
            return DXGI_ERROR_UNSUPPORTED;
        }
        if (FAILED(script_.duplicate_result)) {
            return script_.duplicate_result;
        }
        if (FakeDuplication::IsDuplicated(script_.name)) {
            Misuse("DuplicateOutput while the old duplication is still referenced");
            return E_INVALIDARG;
        }
        *duplication = new FakeDuplication(device, script_.name);
        return S_OK;
    }

  private:
    std::size_t adapter_;
    FakeOutputScript script_;
};

class FakeAdapter final : public FakeObject<IDXGIAdapter1, IDXGIAdapter> {
  public:
    explicit FakeAdapter(std::size_t number) : number_(number), script_(Machine().adapters.at(number)) {}

    std::size_t Number() const { return number_; }

    HRESULT STDMETHODCALLTYPE EnumOutputs(UINT index, IDXGIOutput** output) override {
        *output = nullptr;
        ++Machine().enumerations;
        if (index >= script_.outputs.size()) {
            return script_.end_of_outputs;
        }
        *output = new FakeOutput(number_, script_.outputs[index]);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetDesc(DXGI_ADAPTER_DESC* description) override {
        *description = {};
        SetText(description->Description, script_.name);
        description->AdapterLuid = script_.luid;
        return Machine().render_describe_result;
    }
    HRESULT STDMETHODCALLTYPE CheckInterfaceSupport(REFGUID, LARGE_INTEGER*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetDesc1(DXGI_ADAPTER_DESC1* description) override {
        *description = {};
        SetText(description->Description, script_.name);
        description->AdapterLuid = script_.luid;
        return script_.describe_result;
    }

  private:
    std::size_t number_;
    FakeAdapterScript script_;
};

class FakeFactory final : public FakeObject<IDXGIFactory1, IDXGIFactory> {
  public:
    HRESULT STDMETHODCALLTYPE EnumAdapters(UINT, IDXGIAdapter**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MakeWindowAssociation(HWND, UINT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetWindowAssociation(HWND*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateSwapChain(IUnknown*, DXGI_SWAP_CHAIN_DESC*, IDXGISwapChain**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CreateSoftwareAdapter(HMODULE, IDXGIAdapter**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumAdapters1(UINT index, IDXGIAdapter1** adapter) override {
        *adapter = nullptr;
        ++Machine().enumerations;
        if (index >= Machine().adapters.size()) {
            return Machine().end_of_adapters;
        }
        *adapter = new FakeAdapter(index);
        return S_OK;
    }
    WINBOOL STDMETHODCALLTYPE IsCurrent() override { return TRUE; }
};

}  // namespace

IDXGIFactory1* MakeFakeFactory() {
    return new FakeFactory;
}

IDXGIAdapter1* MakeFakeAdapter(std::size_t number) {
    return new FakeAdapter(number);
}

std::size_t NumberOf(IDXGIAdapter* adapter) {
    return static_cast<FakeAdapter*>(adapter)->Number();
}

int LiveFakeObjects() {
    return static_cast<int>(live_objects);
}
