#include "platform/fault_module.h"

// windows.h first
#include <winternl.h>

#include <array>
#include <cstddef>
#include <string_view>

extern "C" NTSTATUS NTAPI NtQueryVirtualMemory(HANDLE process, const void* address, int what, void* answer,
                                               SIZE_T size, SIZE_T* needed);

namespace {

constexpr int kMappedFileName = 2;  // MemoryMappedFilenameInformation

/// The result, followed by the text it points to. Small enough for the stack that is left after an overflow.
struct MappedFileName {
    UNICODE_STRING path;
    std::array<wchar_t, 520> text;
};

}  // namespace

const void* FaultAddress(const EXCEPTION_RECORD& exception) {
    constexpr DWORD kCppException = 0xE06D7363;
    constexpr DWORD kThrowingImage = 3;  // Index of this parameter in 64-bit programs.
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
    // A device path, "\Device\HarddiskVolume3\Windows\System32\name.dll". Longer paths do not fit and give no
    // name.
    MappedFileName answer = {};
    if (NtQueryVirtualMemory(GetCurrentProcess(), address, kMappedFileName, &answer, sizeof(answer),
                             nullptr) < 0 ||
        answer.path.Buffer == nullptr) {
        return;
    }
    const std::wstring_view whole(answer.path.Buffer, answer.path.Length / sizeof(wchar_t));
    const std::wstring_view name = whole.substr(whole.find_last_of(L"\\/") + 1);
    const int written = WideCharToMultiByte(CP_UTF8, 0, name.data(), static_cast<int>(name.size()), buffer,
                                            static_cast<int>(size) - 1, nullptr, nullptr);
    buffer[written > 0 ? written : 0] = '\0';
}

std::size_t OffsetInModule(const void* address) {
    MEMORY_BASIC_INFORMATION region = {};
    if (VirtualQuery(address, &region, sizeof(region)) == 0 || region.AllocationBase == nullptr) {
        return 0;
    }
    return static_cast<std::size_t>(static_cast<const std::byte*>(address) -
                                    static_cast<const std::byte*>(region.AllocationBase));
}
