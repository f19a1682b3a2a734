#include "platform/fault_module.h"

// windows.h first
#include <psapi.h>

#include <array>
#include <string_view>

const void* FaultAddress(const EXCEPTION_RECORD& exception) {
    constexpr DWORD kCppException = 0xE06D7363;
    constexpr DWORD kThrowingImage = 3;  // Of its parameters, in 64-bit programs.
    if (exception.ExceptionCode == kCppException && exception.NumberParameters > kThrowingImage) {
        return reinterpret_cast<const void*>(exception.ExceptionInformation[kThrowingImage]);
    }
    return exception.ExceptionAddress;
}

void FindFaultModule(const void* address, char* buffer, std::size_t size) {
    if (size == 0) {
        return;
    }
    buffer[0] = '\0';
    // A device path, "\Device\HarddiskVolume3\Windows\System32\name.dll". Small enough for the stack that is
    // left after an overflow; a longer path is cut, and then has no name.
    std::array<wchar_t, 520> path = {};
    const DWORD length = K32GetMappedFileNameW(GetCurrentProcess(), const_cast<void*>(address), path.data(),
                                               static_cast<DWORD>(path.size()));
    if (length == 0 || length >= path.size() - 1) {
        return;
    }
    const std::wstring_view whole(path.data(), length);
    const std::wstring_view name = whole.substr(whole.find_last_of(L"\\/") + 1);
    const int written = WideCharToMultiByte(CP_UTF8, 0, name.data(), static_cast<int>(name.size()), buffer,
                                            static_cast<int>(size) - 1, nullptr, nullptr);
    buffer[written > 0 ? written : 0] = '\0';
}
