// The scripted desktop's devices: the machine's devices, with single calls that can be made to fail.
#include <algorithm>
#include <atomic>
#include <cstring>
#include <deque>
#include <utility>

#include "tests/lab/machine/adapters.h"
#include "tests/lab/machine/devices.h"
#include "tests/lab/machine/simulated_object.h"
#include "tests/lab/machine/vtable.h"
#include "tests/unit/support/scripted_desktop_parts.h"

using Microsoft::WRL::ComPtr;

namespace {

using GetAdapterFunction = HRESULT(STDMETHODCALLTYPE*)(IDXGIDevice*, IDXGIAdapter**);
using CreateTextureFunction = HRESULT(STDMETHODCALLTYPE*)(ID3D11Device*, const D3D11_TEXTURE2D_DESC*,
                                                          const D3D11_SUBRESOURCE_DATA*, ID3D11Texture2D**);
using CreateViewFunction = HRESULT(STDMETHODCALLTYPE*)(ID3D11Device*, ID3D11Resource*,
                                                       const D3D11_SHADER_RESOURCE_VIEW_DESC*,
                                                       ID3D11ShaderResourceView**);
using MapFunction = HRESULT(STDMETHODCALLTYPE*)(ID3D11DeviceContext*, ID3D11Resource*, UINT, D3D11_MAP, UINT,
                                                D3D11_MAPPED_SUBRESOURCE*);

std::atomic<GetAdapterFunction> real_get_adapter = nullptr;
std::atomic<CreateTextureFunction> real_create_texture = nullptr;
std::atomic<CreateViewFunction> real_create_view = nullptr;
std::atomic<MapFunction> real_map = nullptr;

HRESULT STDMETHODCALLTYPE ScriptedGetAdapter(IDXGIDevice* device, IDXGIAdapter** adapter) {
    if (FAILED(Desktop().get_adapter_result)) {
        *adapter = nullptr;
        return Desktop().get_adapter_result;
    }
    return real_get_adapter.load()(device, adapter);
}

HRESULT STDMETHODCALLTYPE ScriptedCreateTexture(ID3D11Device* device, const D3D11_TEXTURE2D_DESC* description,
                                                const D3D11_SUBRESOURCE_DATA* data,
                                                ID3D11Texture2D** texture) {
    if (Desktop().staging_textures_fail && description->Usage == D3D11_USAGE_STAGING) {
        *texture = nullptr;
        return E_OUTOFMEMORY;
    }
    D3D11_TEXTURE2D_DESC changed = *description;
    if (Desktop().gdi_flag_ignored) {
        changed.MiscFlags &= ~UINT{D3D11_RESOURCE_MISC_GDI_COMPATIBLE};
    }
    return real_create_texture.load()(device, &changed, data, texture);
}

HRESULT STDMETHODCALLTYPE ScriptedCreateView(ID3D11Device* device, ID3D11Resource* resource,
                                             const D3D11_SHADER_RESOURCE_VIEW_DESC* description,
                                             ID3D11ShaderResourceView** view) {
    if (Desktop().shader_views_fail) {
        *view = nullptr;
        return E_OUTOFMEMORY;
    }
    return real_create_view.load()(device, resource, description, view);
}

/// Copies the mapped data to rows with a larger pitch.
void WidenRows(ID3D11Resource* resource, D3D11_MAPPED_SUBRESOURCE* mapped) {
    static std::vector<std::uint8_t> wide;
    ComPtr<ID3D11Texture2D> texture;
    if (FAILED(resource->QueryInterface(IID_PPV_ARGS(&texture)))) {
        return;
    }
    D3D11_TEXTURE2D_DESC description = {};
    texture->GetDesc(&description);
    const std::size_t row_bytes = std::size_t{description.Width} * BytesPerTexel(description.Format);
    const std::size_t pitch = mapped->RowPitch + Desktop().extra_row_pitch;
    wide.assign(pitch * description.Height, 0xEE);
    for (UINT row = 0; row < description.Height; ++row) {
        std::memcpy(&wide[row * pitch],
                    static_cast<const std::uint8_t*>(mapped->pData) + std::size_t{row} * mapped->RowPitch,
                    row_bytes);
    }
    mapped->pData = wide.data();
    mapped->RowPitch = static_cast<UINT>(pitch);
}

HRESULT STDMETHODCALLTYPE ScriptedMap(ID3D11DeviceContext* context, ID3D11Resource* resource,
                                      UINT subresource, D3D11_MAP type, UINT flags,
                                      D3D11_MAPPED_SUBRESOURCE* mapped) {
    if (FAILED(Desktop().map_result)) {
        return Desktop().map_result;
    }
    const HRESULT result = real_map.load()(context, resource, subresource, type, flags, mapped);
    if (SUCCEEDED(result) && type == D3D11_MAP_READ && Desktop().extra_row_pitch != 0) {
        WidenRows(resource, mapped);
    }
    return result;
}

/// Positions in the vtables, as the interfaces declare them.
constexpr std::size_t kGetAdapterSlot = 7;
constexpr std::size_t kCreateTexture2dSlot = 5;
constexpr std::size_t kCreateShaderResourceViewSlot = 7;
constexpr std::size_t kMapSlot = 14;

void PatchTables(ID3D11Device* device) {
    ComPtr<IDXGIDevice> dxgi_device;
    ComPtr<ID3D11DeviceContext> context;
    device->QueryInterface(IID_PPV_ARGS(&dxgi_device));
    device->GetImmediateContext(&context);
    lab::ReplaceVtableSlot(dxgi_device.Get(), kGetAdapterSlot, &ScriptedGetAdapter, real_get_adapter);
    lab::ReplaceVtableSlot(device, kCreateTexture2dSlot, &ScriptedCreateTexture, real_create_texture);
    lab::ReplaceVtableSlot(device, kCreateShaderResourceViewSlot, &ScriptedCreateView, real_create_view);
    lab::ReplaceVtableSlot(context.Get(), kMapSlot, &ScriptedMap, real_map);
}

ULONG ReferencesOf(IUnknown* object) {
    object->AddRef();
    return object->Release();
}

/// Never destroyed: Direct3D may be gone before this program's own statics.
std::deque<KeptDevice>& KeptDevices() {
    static auto* devices = new std::deque<KeptDevice>;
    return *devices;
}

}  // namespace

const KeptDevice* DeviceFor(std::size_t adapter, const char* purpose) {
    const std::string key = purpose + std::to_string(adapter);
    for (const KeptDevice& kept : KeptDevices()) {
        if (kept.key == key) {
            return &kept;
        }
    }
    const auto owner = lab::OwnNew(lab::NewAdapter(adapter));
    KeptDevice made;
    made.key = key;
    if (FAILED(lab::SimulatedD3D11CreateDevice(owner.Get(), D3D_DRIVER_TYPE_UNKNOWN, nullptr, 0, nullptr, 0,
                                               D3D11_SDK_VERSION, &made.device, nullptr, &made.context))) {
        return nullptr;
    }
    PatchTables(made.device.Get());
    KeptDevice& kept = KeptDevices().emplace_back(std::move(made));
    kept.device_references = ReferencesOf(kept.device.Get());
    kept.context_references = ReferencesOf(kept.context.Get());
    return &kept;
}

bool DevicesAreStillReferenced() {
    return std::any_of(KeptDevices().begin(), KeptDevices().end(), [](const KeptDevice& kept) {
        return ReferencesOf(kept.device.Get()) != kept.device_references ||
               ReferencesOf(kept.context.Get()) != kept.context_references;
    });
}

ComPtr<ID3D11Device> RenderDevice(std::size_t adapter) {
    const KeptDevice* kept = DeviceFor(adapter, "render");
    return kept == nullptr ? nullptr : kept->device;
}

ComPtr<ID3D11Device> AnotherRenderDevice(std::size_t adapter) {
    const KeptDevice* kept = DeviceFor(adapter, "other");
    return kept == nullptr ? nullptr : kept->device;
}

std::vector<std::uint8_t> PixelsOf(ID3D11ShaderResourceView* view) {
    if (view == nullptr) {
        return {};
    }
    ComPtr<ID3D11Device> device;
    ComPtr<ID3D11DeviceContext> context;
    ComPtr<ID3D11Resource> resource;
    view->GetDevice(&device);
    device->GetImmediateContext(&context);
    view->GetResource(&resource);
    D3D11_TEXTURE2D_DESC description = DescriptionOf(view);
    const UINT row_bytes = description.Width * BytesPerTexel(description.Format);
    description.Usage = D3D11_USAGE_STAGING;
    description.BindFlags = 0;
    description.MiscFlags = 0;
    description.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
    ComPtr<ID3D11Texture2D> copy;
    if (FAILED(real_create_texture.load()(device.Get(), &description, nullptr, &copy))) {
        return {};
    }
    context->CopyResource(copy.Get(), resource.Get());
    D3D11_MAPPED_SUBRESOURCE mapped = {};
    if (FAILED(real_map.load()(context.Get(), copy.Get(), 0, D3D11_MAP_READ, 0, &mapped))) {
        return {};
    }
    std::vector<std::uint8_t> pixels;
    for (UINT row = 0; row < description.Height; ++row) {
        const auto* bytes =
            static_cast<const std::uint8_t*>(mapped.pData) + std::size_t{row} * mapped.RowPitch;
        pixels.insert(pixels.end(), bytes, bytes + row_bytes);
    }
    context->Unmap(copy.Get(), 0);
    return pixels;
}

D3D11_TEXTURE2D_DESC DescriptionOf(ID3D11ShaderResourceView* view) {
    ComPtr<ID3D11Resource> resource;
    ComPtr<ID3D11Texture2D> texture;
    D3D11_TEXTURE2D_DESC description = {};
    view->GetResource(&resource);
    if (SUCCEEDED(resource.As(&texture))) {
        texture->GetDesc(&description);
    }
    return description;
}
