#include "tools/vistrel_diag/openxr/openxr_loader.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr std::string_view kApplicationName = "vistrel_diag";

bool Succeeded(XrResult answer, XrResult* result) {
    if (result != nullptr) {
        *result = answer;
    }
    return XR_SUCCEEDED(answer);
}

}  // namespace

OpenXrLoader::OpenXrLoader() {
    SetEnvironmentVariableW(L"XR_LOADER_DEBUG", L"none");
    library_ = UniqueLibrary(LoadLibraryQuietly(L"openxr_loader.dll"));
}

void OpenXrLoader::StayLoaded() {
    // Takes another reference, which is never released.
    HMODULE kept = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(library_.get()),
                       &kept);
}

XrInstance CreateOpenXrInstance(PFN_xrCreateInstance create_instance,
                                std::initializer_list<const char*> extensions, XrResult* result) {
    auto info = OpenXrStructure<XrInstanceCreateInfo>(XR_TYPE_INSTANCE_CREATE_INFO);
    const std::size_t length =
        std::min(kApplicationName.size(), sizeof(info.applicationInfo.applicationName) - 1);
    std::copy_n(kApplicationName.begin(), length, info.applicationInfo.applicationName);
    info.applicationInfo.apiVersion = XR_MAKE_VERSION(1, 0, 34);
    info.enabledExtensionCount = static_cast<std::uint32_t>(extensions.size());
    info.enabledExtensionNames = extensions.begin();

    XrInstance instance = XR_NULL_HANDLE;
    return Succeeded(create_instance(&info, &instance), result) ? instance : XR_NULL_HANDLE;
}

XrSystemId FindHeadMountedDisplay(PFN_xrGetSystem get_system, XrInstance instance, XrResult* result) {
    auto info = OpenXrStructure<XrSystemGetInfo>(XR_TYPE_SYSTEM_GET_INFO);
    info.formFactor = XR_FORM_FACTOR_HEAD_MOUNTED_DISPLAY;
    XrSystemId system = XR_NULL_SYSTEM_ID;
    return Succeeded(get_system(instance, &info, &system), result) ? system : XR_NULL_SYSTEM_ID;
}
