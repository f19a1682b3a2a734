#include "tests/lab/machine/frame_guard.h"

#include <wrl/client.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/statistics.h"
#include "tests/lab/machine/vtable.h"

namespace lab {
namespace {

using Microsoft::WRL::ComPtr;

// {3C0B7D14-92E8-4F0A-B6A3-5E1D8C27F9A6}: the private data that marks a frame.
constexpr GUID kFrameMark = {0x3c0b7d14, 0x92e8, 0x4f0a, {0xb6, 0xa3, 0x5e, 0x1d, 0x8c, 0x27, 0xf9, 0xa6}};
constexpr std::size_t kCopySubresourceRegionSlot = 46;
constexpr std::size_t kCopyResourceSlot = 47;

using CopyResourceFunction = void(STDMETHODCALLTYPE*)(ID3D11DeviceContext*, ID3D11Resource*, ID3D11Resource*);
using CopyRegionFunction = void(STDMETHODCALLTYPE*)(ID3D11DeviceContext*, ID3D11Resource*, UINT, UINT, UINT,
                                                    UINT, ID3D11Resource*, UINT, const D3D11_BOX*);
std::atomic<CopyResourceFunction> real_copy_resource = nullptr;
std::atomic<CopyRegionFunction> real_copy_region = nullptr;

ComPtr<ID3D11Device> DeviceOf(ID3D11DeviceChild* child) {
    ComPtr<ID3D11Device> device;
    child->GetDevice(&device);
    return device;
}

/// Whether the copy is allowed; every violation is counted.
bool MayCopy(ID3D11DeviceContext* context, ID3D11Resource* destination, ID3D11Resource* source) {
    if (destination == nullptr || source == nullptr) {
        return true;
    }
    std::uint32_t held = 0;
    UINT size = sizeof(held);
    if (SUCCEEDED(source->GetPrivateData(kFrameMark, &size, &held)) && size == sizeof(held) && held == 0) {
        ++Counts().uses_after_release;
    }
    const ComPtr<ID3D11Device> device = DeviceOf(context);
    if (DeviceOf(destination).Get() != device.Get() || DeviceOf(source).Get() != device.Get()) {
        ++Counts().copies_across_devices;
        return false;
    }
    return true;
}

/// Whether both textures have the same size. Otherwise Windows copies nothing and reports no error.
bool OfOneSize(ID3D11Resource* destination, ID3D11Resource* source) {
    ComPtr<ID3D11Texture2D> to;
    ComPtr<ID3D11Texture2D> from;
    if (destination == nullptr || source == nullptr ||
        FAILED(destination->QueryInterface(IID_PPV_ARGS(&to))) ||
        FAILED(source->QueryInterface(IID_PPV_ARGS(&from)))) {
        return true;
    }
    D3D11_TEXTURE2D_DESC to_description = {};
    D3D11_TEXTURE2D_DESC from_description = {};
    to->GetDesc(&to_description);
    from->GetDesc(&from_description);
    return to_description.Width == from_description.Width && to_description.Height == from_description.Height;
}

void STDMETHODCALLTYPE GuardedCopyResource(ID3D11DeviceContext* context, ID3D11Resource* destination,
                                           ID3D11Resource* source) {
    InjectFailure("CopyResource");
    if (!OfOneSize(destination, source)) {
        ++Counts().copies_of_other_size;
    } else if (MayCopy(context, destination, source)) {
        real_copy_resource.load()(context, destination, source);
    }
}

void STDMETHODCALLTYPE GuardedCopyRegion(ID3D11DeviceContext* context, ID3D11Resource* destination,
                                         UINT destination_index, UINT x, UINT y, UINT z,
                                         ID3D11Resource* source, UINT source_index, const D3D11_BOX* box) {
    if (MayCopy(context, destination, source)) {
        real_copy_region.load()(context, destination, destination_index, x, y, z, source, source_index, box);
    }
}

}  // namespace

void MarkFrame(ID3D11Texture2D* texture, bool held) {
    const std::uint32_t mark = held ? 1 : 0;
    texture->SetPrivateData(kFrameMark, sizeof(mark), &mark);
}

void GuardFrames(ID3D11DeviceContext* context) {
    ReplaceVtableSlot(context, kCopyResourceSlot, &GuardedCopyResource, real_copy_resource);
    ReplaceVtableSlot(context, kCopySubresourceRegionSlot, &GuardedCopyRegion, real_copy_region);
}

}  // namespace lab
