// Sharing a COM interface with code that knows no Windows header.
#pragma once

#include <wrl/client.h>

#include <memory>

/// A shared reference to `interface_pointer` that releases it with the last copy. Empty when given none.
template <typename Interface>
std::shared_ptr<Interface> ShareCom(const Microsoft::WRL::ComPtr<Interface>& interface_pointer) {
    if (!interface_pointer) {
        return {};
    }
    Microsoft::WRL::ComPtr<Interface> reference = interface_pointer;
    return {reference.Detach(), [](Interface* held) { held->Release(); }};
}
