#include "tests/lab/machine/texture_memory.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <optional>
#include <vector>

#include "tests/lab/machine/clock.h"
#include "tests/lab/machine/devices.h"
#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/simulated_object.h"
#include "tests/lab/machine/statistics.h"
#include "tests/lab/machine/vtable.h"

namespace lab {
namespace {

using Microsoft::WRL::ComPtr;

// {A86C13F7-5E29-4D04-9B7D-C2F0184E6A35}: the private data that counts a texture.
constexpr GUID kTextureTag = {0xa86c13f7, 0x5e29, 0x4d04, {0x9b, 0x7d, 0xc2, 0xf0, 0x18, 0x4e, 0x6a, 0x35}};
constexpr std::size_t kCreateTexture2dSlot = 5;
constexpr std::size_t kFlushSlot = 111;
constexpr std::int64_t kMicrosecondsPerMillisecond = 1'000;
constexpr std::int64_t kBytesPerMicrosecond = 4'000;

struct Freed {
    std::uint64_t bytes = 0;
    std::optional<std::int64_t> gone_at;  ///< MachineTime; empty before a flush
};

struct Memory {
    std::uint64_t living = 0;
    std::vector<Freed> freed;
};

/// By the adapter's position. Programs make and release textures on one thread.
std::array<Memory, kCountedAdapters>& Memories() {
    static std::array<Memory, kCountedAdapters> memories;
    return memories;
}

std::atomic<long> living_tags = 0;

/// Has the same lifetime as the texture that holds it.
class TextureTag final : public SimulatedUnknown<IUnknown> {
  public:
    TextureTag(std::size_t position, std::uint64_t bytes)
        : SimulatedUnknown(living_tags), position_(position), bytes_(bytes) {
        Memories().at(position_).living += bytes_;
    }
    ~TextureTag() override {
        Memory& memory = Memories().at(position_);
        memory.living -= bytes_;
        memory.freed.push_back({bytes_, {}});
    }

  private:
    std::size_t position_;
    std::uint64_t bytes_;
};

using CreateFunction = HRESULT(STDMETHODCALLTYPE*)(ID3D11Device*, const D3D11_TEXTURE2D_DESC*,
                                                   const D3D11_SUBRESOURCE_DATA*, ID3D11Texture2D**);
using FlushFunction = void(STDMETHODCALLTYPE*)(ID3D11DeviceContext*);
std::atomic<CreateFunction> real_create = nullptr;
std::atomic<FlushFunction> real_flush = nullptr;

/// The position of an adapter whose memory is counted.
std::optional<std::size_t> CountedAdapter(ID3D11Device* device) {
    const std::optional<std::size_t> position = DeviceAdapterPosition(device);
    const auto& adapters = TheMachine().scenario.adapters;
    const bool counted = position && *position < std::min(adapters.size(), kCountedAdapters) &&
                         adapters[*position].memory_falls_milliseconds;
    return counted ? position : std::nullopt;
}

std::uint64_t BytesOf(const D3D11_TEXTURE2D_DESC& description) {
    std::uint64_t texel = 4;
    if (description.Format == DXGI_FORMAT_R8_UNORM) {
        texel = 1;
    } else if (description.Format == DXGI_FORMAT_R16G16B16A16_FLOAT) {
        texel = 8;
    }
    return texel * description.Width * description.Height;
}

HRESULT STDMETHODCALLTYPE CountingCreate(ID3D11Device* device, const D3D11_TEXTURE2D_DESC* description,
                                         const D3D11_SUBRESOURCE_DATA* data, ID3D11Texture2D** texture) {
    const HRESULT result = real_create.load()(device, description, data, texture);
    const std::optional<std::size_t> position = CountedAdapter(device);
    // Textures that the CPU reads are in system memory.
    if (FAILED(result) || texture == nullptr || !position || description->Usage == D3D11_USAGE_STAGING) {
        return result;
    }
    const std::uint64_t bytes = BytesOf(*description);
    (*texture)->SetPrivateDataInterface(kTextureTag, OwnNew(new TextureTag(*position, bytes)).Get());
    if (ClockIsScripted()) {
        PassTime(static_cast<std::int64_t>(bytes) / kBytesPerMicrosecond);
    }
    return result;
}

void STDMETHODCALLTYPE CountingFlush(ID3D11DeviceContext* context) {
    real_flush.load()(context);
    ComPtr<ID3D11Device> device;
    context->GetDevice(&device);
    const std::optional<std::size_t> position = CountedAdapter(device.Get());
    if (!position) {
        return;
    }
    const int late = *TheMachine().scenario.adapters[*position].memory_falls_milliseconds;
    for (Freed& freed : Memories().at(*position).freed) {
        if (!freed.gone_at) {
            freed.gone_at = MachineTime() + late * kMicrosecondsPerMillisecond;
        }
    }
}

}  // namespace

void WatchTextureMemory(ID3D11Device* device, ID3D11DeviceContext* context) {
    ReplaceVtableSlot(device, kCreateTexture2dSlot, &CountingCreate, real_create);
    ReplaceVtableSlot(context, kFlushSlot, &CountingFlush, real_flush);
}

std::uint64_t TextureMemory(std::size_t position) {
    if (position >= kCountedAdapters) {
        return 0;
    }
    Memory& memory = Memories().at(position);
    std::erase_if(memory.freed,
                  [](const Freed& freed) { return freed.gone_at && *freed.gone_at <= MachineTime(); });
    std::uint64_t bytes = memory.living;
    for (const Freed& freed : memory.freed) {
        bytes += freed.bytes;
    }
    return bytes;
}

}  // namespace lab
