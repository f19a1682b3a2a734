// Shared by the source files of the scripted desktop.
#pragma once

#include <string>

#include "tests/lab/machine/image_source.h"
#include "tests/unit/support/scripted_desktop.h"

/// Records a call that Windows would not allow.
inline void Misuse(const char* text) {
    Desktop().misuses.emplace_back(text);
}

inline UINT BytesPerTexel(DXGI_FORMAT format) {
    return format == DXGI_FORMAT_R16G16B16A16_FLOAT ? 8 : 4;
}

/// A lab::ImageSourceMaker: the images of Desktop().
HRESULT MakeScriptedImages(std::size_t output, ID3D11Device* device,
                           std::unique_ptr<lab::ImageSource>& source);

/// A device that is kept for all tests: creating one takes half a second.
struct KeptDevice {
    std::string key;
    Microsoft::WRL::ComPtr<ID3D11Device> device;
    Microsoft::WRL::ComPtr<ID3D11DeviceContext> context;
    ULONG device_references = 0;
    ULONG context_references = 0;
};

/// The device of that `purpose` for an adapter. Null when none can be made.
const KeptDevice* DeviceFor(std::size_t adapter, const char* purpose);
