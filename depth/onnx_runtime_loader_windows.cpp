#include "depth/onnx_runtime_loader.h"

#include <windows.h>

#include <delayimp.h>

#include <array>
#include <optional>
#include <string>

#include "platform/format.h"
#include "platform/library.h"
#include "platform/utf8.h"

namespace {

constexpr const wchar_t* kModuleName = L"onnxruntime.dll";
constexpr WORD kGetApiBaseOrdinal = 1;
constexpr WORD kAppendDirectMlOrdinal = 4;
constexpr std::uint32_t kApiVersion = 24;

using GetApiBase = const OrtApiBase*(ORT_API_CALL*)();

/// The module, loaded when it is not yet and never let go. Null when it cannot be loaded.
HMODULE OnnxRuntimeModule() {
    static HMODULE module = nullptr;
    if (module == nullptr) {
        module = LoadLibraryQuietly(kModuleName);
    }
    return module;
}

std::string ModulePath(HMODULE module) {
    std::array<wchar_t, 1024> path = {};
    const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    return Utf8FromWide({path.data(), length});
}

template <typename Function>
Function EntryByOrdinal(HMODULE module, WORD ordinal) {
    return reinterpret_cast<Function>(GetProcAddress(module, MAKEINTRESOURCEA(ordinal)));
}

/// The table of version kApiVersion. Windows itself carries an older runtime in its system folder, found when
/// none lies beside the executable, so the message says which one this is.
const OrtApi* ApiTable(HMODULE module) {
    const auto get_api_base = EntryByOrdinal<GetApiBase>(module, kGetApiBaseOrdinal);
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
        EntryByOrdinal<decltype(runtime.append_directml)>(module, kAppendDirectMlOrdinal);
    if (runtime.append_directml == nullptr) {
        throw Ort::Exception(
            FormatText("%s has no OrtSessionOptionsAppendExecutionProvider_DML at ordinal %d",
                       ModulePath(module).c_str(), kAppendDirectMlOrdinal));
    }
    return runtime;
}

/// Stands in for an import that cannot be found. All those that the runtime puts off return an HRESULT, and
/// on x64 the caller clears the arguments away.
HRESULT MissingImport() {
    return HRESULT_FROM_WIN32(ERROR_DELAY_LOAD_FAILED);
}

/// The exceptions of the delay-load helper are made to be answered: it goes on with whatever function the
/// handler leaves in the record.
LONG CALLBACK AnswerMissingImport(EXCEPTION_POINTERS* raised) {
    const EXCEPTION_RECORD& exception = *raised->ExceptionRecord;
    const bool is_missing_import =
        exception.ExceptionCode == VcppException(ERROR_SEVERITY_ERROR, ERROR_MOD_NOT_FOUND) ||
        exception.ExceptionCode == VcppException(ERROR_SEVERITY_ERROR, ERROR_PROC_NOT_FOUND);
    if (!is_missing_import || exception.NumberParameters == 0) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    auto* const import = reinterpret_cast<DelayLoadInfo*>(exception.ExceptionInformation[0]);
    import->pfnCur = reinterpret_cast<FARPROC>(&MissingImport);
    return EXCEPTION_CONTINUE_EXECUTION;
}

}  // namespace

bool LoadOnnxRuntimeModule() {
    return OnnxRuntimeModule() != nullptr;
}

const OnnxRuntime& LoadedOnnxRuntime() {
    static const OnnxRuntime runtime = FindOnnxRuntime();
    return runtime;
}

DelayLoadGuard::DelayLoadGuard() : handler_(AddVectoredExceptionHandler(1, AnswerMissingImport)) {}

DelayLoadGuard::~DelayLoadGuard() {
    if (handler_ != nullptr) {
        RemoveVectoredExceptionHandler(handler_);
    }
}
