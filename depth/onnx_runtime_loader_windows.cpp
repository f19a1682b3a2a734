#include "depth/onnx_runtime_loader.h"

#include <windows.h>

#include <delayimp.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/format.h"
#include "platform/library.h"
#include "platform/long_path.h"
#include "platform/module_folder.h"
#include "platform/module_image.h"
#include "platform/utf8.h"

namespace {

constexpr const wchar_t* kModuleName = L"onnxruntime.dll";
constexpr WORD kGetApiBaseOrdinal = 1;
constexpr WORD kAppendDirectMlOrdinal = 4;
constexpr const char* kAppendDirectMlName = "OrtSessionOptionsAppendExecutionProvider_DML";
constexpr std::uint32_t kApiVersion = 24;

using GetApiBase = const OrtApiBase*(ORT_API_CALL*)();

/// Tries the full path first. For a bare name Windows returns a module of that name that is already loaded,
/// no matter from where. If none is loaded and the executable's folder has none, it finds the older version
/// in its own system folder.
HMODULE LoadRuntime() {
    const std::string folder = ExecutableFolder();
    if (folder.empty()) {
        return LoadLibraryQuietly(kModuleName);
    }
    const std::wstring own = WideFromUtf8(OpenablePath(folder + "\\onnxruntime.dll"));
    HMODULE const module = LoadLibraryQuietly(own.c_str());
    const DWORD error = GetLastError();
    if (module == nullptr && GetFileAttributesW(own.c_str()) != INVALID_FILE_ATTRIBUTES) {
        SetLastError(error);
        return nullptr;  // It exists but cannot be loaded; any other one would not be the product's.
    }
    return module != nullptr ? module : LoadLibraryQuietly(kModuleName);
}

/// The loaded module; null before it is loaded.
HMODULE& CurrentModule() {
    static HMODULE module = nullptr;
    return module;
}

/// The module, which is loaded on the first call and never unloaded. Null when it cannot be loaded.
HMODULE OnnxRuntimeModule() {
    HMODULE& module = CurrentModule();
    if (module == nullptr) {
        module = LoadRuntime();
    }
    return module;
}

std::string ModulePath(HMODULE module) {
    std::array<wchar_t, 1024> path = {};
    const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    return Utf8FromWide({path.data(), length});
}

/// The export at `ordinal` if it is called `name` or has no name: a runtime from another build may export a
/// different function there.
template <typename Function>
Function Entry(HMODULE module, WORD ordinal, std::string_view name) {
    const char* const given = NameOfExport(module, ordinal);
    if (given != nullptr && given != name) {
        return nullptr;
    }
    return reinterpret_cast<Function>(GetProcAddress(module, MAKEINTRESOURCEA(ordinal)));
}

/// The API table of version kApiVersion. Windows has an older runtime in its system folder, which is found
/// when there is none beside the executable, so the message names the file that was loaded.
const OrtApi* ApiTable(HMODULE module) {
    const auto get_api_base = Entry<GetApiBase>(module, kGetApiBaseOrdinal, "OrtGetApiBase");
    if (get_api_base == nullptr) {
        throw Ort::Exception(FormatText("%s has no OrtGetApiBase at ordinal %d", ModulePath(module).c_str(),
                                        kGetApiBaseOrdinal));
    }
    const OrtApiBase* const base = get_api_base();
    if (base == nullptr) {
        throw Ort::Exception(FormatText("OrtGetApiBase of %s answers nothing", ModulePath(module).c_str()));
    }
    const OrtApi* const api = base->GetApi(kApiVersion);
    if (api == nullptr) {
        const char* const version = base->GetVersionString();
        throw Ort::Exception(FormatText("%s is version %s, which does not offer API version %u",
                                        ModulePath(module).c_str(), version == nullptr ? "unknown" : version,
                                        kApiVersion));
    }
    return api;
}

OnnxRuntime FindOnnxRuntime() {
    const HMODULE module = OnnxRuntimeModule();
    if (module == nullptr) {
        throw Ort::Exception(FormatText("onnxruntime.dll could not be loaded (error %lu)", GetLastError()));
    }
    OnnxRuntime runtime;
    runtime.api = ApiTable(module);
    runtime.append_directml =
        Entry<decltype(runtime.append_directml)>(module, kAppendDirectMlOrdinal, kAppendDirectMlName);
    if (runtime.append_directml == nullptr) {
        throw Ort::Exception(FormatText("%s has no %s at ordinal %d", ModulePath(module).c_str(),
                                        kAppendDirectMlName, kAppendDirectMlOrdinal));
    }
    return runtime;
}

/// The result of FindOnnxRuntime, which runs once: the runtime, or why there is none.
struct FoundRuntime {
    OnnxRuntime runtime;
    std::string refusal;
};

FoundRuntime FindOnce() {
    FoundRuntime found;
    try {
        found.runtime = FindOnnxRuntime();
    } catch (const Ort::Exception& failure) {
        found.refusal = failure.what();
    }
    return found;
}

/// Replaces an import that cannot be found. All delay-loaded imports of the runtime return an HRESULT, and on
/// x64 the caller removes the arguments.
HRESULT MissingImport() {
    return HRESULT_FROM_WIN32(ERROR_DELAY_LOAD_FAILED);
}

/// Whether the runtime itself has this import: the delay-load descriptor is inside the importing module.
bool IsImportOf(const DelayLoadInfo& import, HMODULE module) {
    const auto place = reinterpret_cast<std::uintptr_t>(import.pidd);
    const auto begin = reinterpret_cast<std::uintptr_t>(module);
    return module != nullptr && place >= begin && place - begin < ImageSize(module);
}

/// The delay-load helper raises exceptions that a handler may resolve: it continues with the function that
/// the handler stores in the record. This handler runs before those of the code that triggered the load, so
/// it must ignore whatever does not concern the runtime.
LONG CALLBACK AnswerMissingImport(EXCEPTION_POINTERS* raised) {
    const EXCEPTION_RECORD& exception = *raised->ExceptionRecord;
    const bool is_missing_import =
        exception.ExceptionCode == VcppException(ERROR_SEVERITY_ERROR, ERROR_MOD_NOT_FOUND) ||
        exception.ExceptionCode == VcppException(ERROR_SEVERITY_ERROR, ERROR_PROC_NOT_FOUND);
    if (!is_missing_import || exception.NumberParameters == 0) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    auto* const import = reinterpret_cast<DelayLoadInfo*>(exception.ExceptionInformation[0]);
    if (import == nullptr || !IsImportOf(*import, CurrentModule())) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    import->pfnCur = reinterpret_cast<FARPROC>(&MissingImport);
    return EXCEPTION_CONTINUE_EXECUTION;
}

}  // namespace

bool LoadOnnxRuntimeModule() {
    return OnnxRuntimeModule() != nullptr;
}

const OnnxRuntime& LoadedOnnxRuntime() {
    static const FoundRuntime found = FindOnce();
    if (!found.refusal.empty()) {
        throw Ort::Exception(found.refusal);
    }
    return found.runtime;
}

DelayLoadGuard::DelayLoadGuard() : handler_(AddVectoredExceptionHandler(1, AnswerMissingImport)) {}

DelayLoadGuard::~DelayLoadGuard() {
    if (handler_ != nullptr) {
        RemoveVectoredExceptionHandler(handler_);
    }
}
