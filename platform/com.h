// Shares a COM interface with code that includes no Windows header.
#pragma once

#include <wrl/client.h>

#include <memory>

/// A shared reference to `interface_pointer`; its last copy releases the interface. Empty when
/// `interface_pointer` is null.
template <typename Interface>
std::shared_ptr<Interface> ShareCom(const Microsoft::WRL::ComPtr<Interface>& interface_pointer) {
    if (!interface_pointer) {
        return {};
    }
    Microsoft::WRL::ComPtr<Interface> reference = interface_pointer;
    return {reference.Detach(), [](Interface* held) { held->Release(); }};
}
