#include "tests/lab/machine/fault_failures.h"

#include <windows.h>

#include <map>
#include <string>

namespace lab {
namespace {

constexpr std::uint64_t kMinusOne = ~std::uint64_t{0};
constexpr Failure kFalse = {0, ERROR_ACCESS_DENIED};
constexpr Failure kNull = {0, ERROR_NOT_ENOUGH_MEMORY};
constexpr Failure kInvalidHandle = {kMinusOne, ERROR_ACCESS_DENIED};
constexpr Failure kErrorCode = {ERROR_ACCESS_DENIED};
constexpr Failure kResult = {0x80004005};  // E_FAIL
constexpr Failure kOpenXr = {0xFFFFFFFE};  // XR_ERROR_RUNTIME_FAILURE
constexpr Failure kStream = {kMinusOne};   // EOF, or -1 of the functions on file descriptors
constexpr Failure kZero = {0};
constexpr Failure kDeviceGone = {0x887A0005};  // DXGI_ERROR_DEVICE_REMOVED

const std::map<std::string_view, Failure>& Failures() {
    static const std::map<std::string_view, Failure> failures = {
        // advapi32
        {"RegCloseKey", kErrorCode},
        {"RegEnumValueW", kErrorCode},
        {"RegGetValueW", kErrorCode},
        {"RegOpenKeyExW", kErrorCode},
        {"RegQueryValueExW", kErrorCode},
        // kernel32
        {"AddVectoredExceptionHandler", kNull},
        {"CreateDirectoryW", kFalse},
        {"CreateEventW", kNull},
        {"CreateFileMappingW", kNull},
        {"CreateFileW", kInvalidHandle},
        {"CreateJobObjectW", kNull},
        {"CreatePipe", kFalse},
        {"CreateProcessW", kFalse},
        {"CreateThread", kNull},
        {"CreateToolhelp32Snapshot", kInvalidHandle},
        {"FreeLibrary", kFalse},
        {"GetConsoleMode", kFalse},
        {"GetConsoleOutputCP", kZero},
        {"GetExitCodeProcess", kFalse},
        {"GetExitCodeThread", kFalse},
        {"GetFileAttributesW", kInvalidHandle},
        {"GetFullPathNameW", kFalse},
        {"GetHandleInformation", kFalse},
        {"GetModuleFileNameW", kFalse},
        {"GetModuleHandleExW", kFalse},
        {"GetModuleHandleW", kNull},
        {"GetProcAddress", {0, ERROR_PROC_NOT_FOUND}},
        {"GetStdHandle", kInvalidHandle},
        {"GetSystemDirectoryW", kFalse},
        {"GlobalMemoryStatusEx", kFalse},
        {"InitializeProcThreadAttributeList", kFalse},
        {"K32GetMappedFileNameW", kFalse},
        {"LoadLibraryExW", {0, ERROR_MOD_NOT_FOUND}},
        {"LoadLibraryW", {0, ERROR_MOD_NOT_FOUND}},
        {"MapViewOfFile", kNull},
        {"MultiByteToWideChar", {0, ERROR_NO_UNICODE_TRANSLATION}},
        {"OpenProcess", kFalse},
        {"PeekNamedPipe", {0, ERROR_BROKEN_PIPE}},
        {"Process32FirstW", kFalse},
        {"Process32NextW", kFalse},
        {"ReadFile", {0, ERROR_BROKEN_PIPE}},
        {"SetConsoleCtrlHandler", kFalse},
        {"SetConsoleMode", kFalse},
        {"SetConsoleOutputCP", kFalse},
        {"SetDllDirectoryW", kFalse},
        {"SetEnvironmentVariableW", kFalse},
        {"SetEvent", kFalse},
        {"SetHandleInformation", kFalse},
        {"SetInformationJobObject", kFalse},
        {"SetThreadErrorMode", kFalse},
        {"SetThreadStackGuarantee", kFalse},
        {"UpdateProcThreadAttribute", kFalse},
        {"WaitForMultipleObjects", {0xFFFFFFFF, ERROR_ACCESS_DENIED}},
        {"WaitForSingleObject", {0xFFFFFFFF, ERROR_ACCESS_DENIED}},
        {"WideCharToMultiByte", {0, ERROR_NO_UNICODE_TRANSLATION}},
        {"WriteConsoleW", kFalse},
        {"WriteFile", kFalse},
        // user32 and shell32
        {"CreateWindowExW", kNull},
        {"DestroyWindow", kFalse},
        {"DrawIconEx", kFalse},
        {"EnumDisplayDevicesW", kZero},
        {"EnumDisplaySettingsW", kZero},
        {"GetCursorInfo", kFalse},
        {"GetForegroundWindow", kZero},
        {"GetMessageW", kInvalidHandle},
        {"GetWindowTextW", kFalse},
        {"GetWindowThreadProcessId", kFalse},
        {"PostThreadMessageW", kFalse},
        {"RegisterClassW", kNull},
        {"UnregisterClassW", kFalse},
        {"SHGetFolderPathW", kResult},
        // the C runtime's files and threads
        {"_beginthreadex", kZero},
        {"_fstat64", kStream},
        {"_localtime64", kZero},
        {"_read", kStream},
        {"_wfopen", kZero},
        {"_write", kStream},
        {"fclose", kStream},
        {"fflush", kStream},
        {"fopen", kZero},
        {"fputs", kStream},
        {"fwrite", kZero},
        {"setvbuf", kStream},
        // DXGI, Direct3D and the shader compiler
        {"CreateDXGIFactory1", kDeviceGone},
        {"D3D11CreateDevice", kDeviceGone},
        {"D3DCompile", kResult},
    };
    return failures;
}

}  // namespace

const Failure* FailureOf(std::string_view name) {
    if (name.starts_with("xr")) {
        return &kOpenXr;
    }
    const auto found = Failures().find(name);
    return found != Failures().end() ? &found->second : nullptr;
}

}  // namespace lab
