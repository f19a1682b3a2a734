#include "platform/module_image.h"

namespace {

/// The structure at `offset` in the image.
template <typename Type>
const Type& At(HMODULE module, std::size_t offset) {
    return *reinterpret_cast<const Type*>(reinterpret_cast<const std::byte*>(module) + offset);
}

/// The headers of a module loaded as code in this process; Windows has already validated them.
const IMAGE_NT_HEADERS& Headers(HMODULE module) {
    const auto& dos = At<IMAGE_DOS_HEADER>(module, 0);
    return At<IMAGE_NT_HEADERS>(module, static_cast<std::size_t>(dos.e_lfanew));
}

}  // namespace

std::size_t ImageSize(HMODULE module) {
    return Headers(module).OptionalHeader.SizeOfImage;
}

const char* NameOfExport(HMODULE module, WORD ordinal) {
    const IMAGE_DATA_DIRECTORY& place =
        Headers(module).OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    if (place.VirtualAddress == 0) {
        return nullptr;
    }
    const auto& exports = At<IMAGE_EXPORT_DIRECTORY>(module, place.VirtualAddress);
    const auto* const names = &At<DWORD>(module, exports.AddressOfNames);
    const auto* const positions = &At<WORD>(module, exports.AddressOfNameOrdinals);
    for (DWORD i = 0; i < exports.NumberOfNames; ++i) {
        if (exports.Base + positions[i] == ordinal) {
            return &At<char>(module, names[i]);
        }
    }
    return nullptr;
}
