#include "tests/lab/machine/import_patch.h"

#include <windows.h>

#include <cstring>
#include <iterator>
#include <string_view>

#include "tests/lab/console/console_functions.h"
#include "tests/lab/machine/adapters.h"
#include "tests/lab/machine/as_proc.h"
#include "tests/lab/machine/clock.h"
#include "tests/lab/machine/desktop_functions.h"
#include "tests/lab/machine/devices.h"
#include "tests/lab/machine/fault_points.h"
#include "tests/lab/machine/fault_watch.h"
#include "tests/lab/machine/handle_account.h"
#include "tests/lab/machine/module_functions.h"
#include "tests/lab/machine/process_functions.h"

namespace lab {
namespace {

FARPROC WINAPI PatchedGetProcAddress(HMODULE module, LPCSTR name);

struct Replacement {
    std::string_view name;
    FARPROC function;
    bool of_time = false;
};

/// The machine's function of this name; null if it has none.
FARPROC SimulatedFunction(std::string_view name) {
    static const Replacement replacements[] = {
        {"CreateDXGIFactory1", AsProc(&SimulatedCreateDXGIFactory1)},
        {"D3D11CreateDevice", AsProc(&SimulatedD3D11CreateDevice)},
        {"EnumDisplayDevicesW", AsProc(&SimulatedEnumDisplayDevicesW)},
        {"EnumDisplaySettingsW", AsProc(&SimulatedEnumDisplaySettingsW)},
        {"GetCursorInfo", AsProc(&SimulatedGetCursorInfo)},
        {"GetModuleFileNameW", AsProc(&SimulatedGetModuleFileNameW)},
        {"GetProcAddress", AsProc(&PatchedGetProcAddress)},
        {"CreateProcessW", AsProc(&SimulatedCreateProcessW)},
        {"TerminateProcess", AsProc(&SimulatedTerminateProcess)},
        {"QueryPerformanceCounter", AsProc(&ScriptedQueryPerformanceCounter), true},
        {"GetTickCount64", AsProc(&ScriptedGetTickCount64), true},
        {"Sleep", AsProc(&ScriptedSleep), true},
        {"WaitForMultipleObjects", AsProc(&ScriptedWaitForMultipleObjects), true},
    };
    for (const Replacement& replacement : replacements) {
        if (replacement.name == name && (!replacement.of_time || ClockIsScripted())) {
            return replacement.function;
        }
    }
    FARPROC const of_console = ConsoleFunction(name);
    return of_console != nullptr ? of_console : AccountingFunction(name);
}

/// The replacement for `real`: the machine's function if there is one, in any case watched for faults.
FARPROC ReplacementFor(std::string_view name, FARPROC real) {
    FARPROC function = SimulatedFunction(name);
    if (function == nullptr) {
        function = FaultsAreWatched() && name == "xrGetInstanceProcAddr" ? WatchOpenXrLookup(real) : real;
    }
    return reinterpret_cast<FARPROC>(WatchedFunction(name, reinterpret_cast<void*>(function)));
}

/// A function that the program looks up by name must be the same as its imported one.
FARPROC WINAPI PatchedGetProcAddress(HMODULE module, LPCSTR name) {
    FARPROC const real = GetProcAddress(module, name);
    const bool by_ordinal = IS_INTRESOURCE(name);
    if (real == nullptr || by_ordinal) {
        return real;
    }
    return ReplacementFor(name, real);
}

void Store(FARPROC* place, FARPROC function) {
    DWORD protection = 0;
    VirtualProtect(place, sizeof(*place), PAGE_READWRITE, &protection);
    *place = function;
    VirtualProtect(place, sizeof(*place), protection, &protection);
}

class Image {
  public:
    explicit Image(HMODULE module) : base_(reinterpret_cast<std::byte*>(module)) {}

    template <typename Type>
    Type* At(std::size_t offset) const {
        return reinterpret_cast<Type*>(base_ + offset);
    }

  private:
    std::byte* base_;
};

/// The function that replaces this one.
using Choice = FARPROC (*)(std::string_view name, FARPROC real);

void PatchLibraryImports(const Image& image, const IMAGE_IMPORT_DESCRIPTOR& library, Choice choose) {
    auto* name = image.At<IMAGE_THUNK_DATA>(library.OriginalFirstThunk);
    auto* place = image.At<FARPROC>(library.FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++place) {
        if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) {
            continue;
        }
        const auto* const by_name = image.At<IMAGE_IMPORT_BY_NAME>(name->u1.AddressOfData);
        FARPROC const replacement = choose(reinterpret_cast<const char*>(by_name->Name), *place);
        if (replacement != *place) {
            Store(place, replacement);
        }
    }
}

void PatchImportsOf(HMODULE module, Choice choose) {
    const Image image(module);
    const auto* const dos_header = image.At<IMAGE_DOS_HEADER>(0);
    const auto* const headers = image.At<IMAGE_NT_HEADERS>(static_cast<std::size_t>(dos_header->e_lfanew));
    const DWORD imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* library = image.At<IMAGE_IMPORT_DESCRIPTOR>(imports); library->Name != 0; ++library) {
        PatchLibraryImports(image, *library, choose);
    }
}

/// The C runtime uses its own imports to read and write the standard streams.
FARPROC ConsoleFunctionOrReal(std::string_view name, FARPROC real) {
    FARPROC const of_console = ConsoleFunction(name);
    return of_console != nullptr ? of_console : real;
}

}  // namespace

void PatchProgramImports() {
    PatchImportsOf(GetModuleHandleW(nullptr), ReplacementFor);
    PatchImportsOf(GetModuleHandleW(L"msvcrt.dll"), ConsoleFunctionOrReal);
}

}  // namespace lab
