// The scripted OpenXR runtime: its interface to the loader, and its instance. Built as a runtime for the
// genuine loader and, from the same objects, as a replacement for the loader itself.
#include "tests/lab/openxr/openxr_runtime.h"

#include <dxgi.h>
#include <openxr/openxr_loader_negotiation.h>
#include <wrl/client.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/lab/fatal_failure.h"

namespace {

std::vector<std::string> enabled_extensions;

/// Ends or stops the program if the script says so of this function, which is not in the log otherwise.
void FailIfScripted(const std::string& function) {
    if (CurrentScript().fatal_failures.count(function) != 0) {
        LogCall(function);
    }
}

std::wstring EnvironmentText(const wchar_t* name) {
    std::wstring text(32768, L'\0');
    text.resize(GetEnvironmentVariableW(name, text.data(), static_cast<DWORD>(text.size())));
    return text;
}

OpenXrScript& MutableScript() {
    static OpenXrScript script;
    return script;
}

/// Fills a name field, including its last byte if the script requests an unterminated name.
template <std::size_t Size>
void FillName(char (&field)[Size], const std::string& name, bool unterminated) {
    std::memset(field, unterminated ? 'x' : 0, Size);
    std::memcpy(field, name.data(), std::min(name.size(), Size - (unterminated ? 0 : 1)));
}

/// OpenXR's two calls for a list of `entries`, with the wrong counts that the script sets for `list`.
template <typename Fill>
XrResult AnswerList(const std::string& list, std::uint32_t entries, std::uint32_t capacity,
                    std::uint32_t* count, const Fill& fill) {
    const OpenXrScript& script = CurrentScript();
    if (capacity == 0) {
        const auto claim = script.claims.find(list);
        *count = claim != script.claims.end() ? claim->second : entries;
        return XR_SUCCESS;
    }
    const auto growth = script.growth.find(list);
    *count = entries + (growth != script.growth.end() ? growth->second : 0);
    if (capacity < *count) {
        return XR_ERROR_SIZE_INSUFFICIENT;
    }
    for (std::uint32_t i = 0; i < entries; ++i) {
        fill(i);
    }
    return XR_SUCCESS;
}

XrResult XRAPI_CALL EnumerateExtensions(const char* layer, std::uint32_t capacity, std::uint32_t* count,
                                        XrExtensionProperties* properties) {
    LoadScript();
    LogCall("xrEnumerateInstanceExtensionProperties " + std::string(capacity == 0 ? "count" : "list"));
    const OpenXrScript& script = CurrentScript();
    Expect(layer == nullptr, "layer named");
    if (const auto result = script.Result("xrEnumerateInstanceExtensionProperties")) {
        return static_cast<XrResult>(*result);
    }
    return AnswerList("extensions", static_cast<std::uint32_t>(script.extensions.size()), capacity, count,
                      [&](std::uint32_t i) {
                          Expect(properties[i].type == XR_TYPE_EXTENSION_PROPERTIES, "extension type");
                          FillName(properties[i].extensionName, script.extensions[i],
                                   script.unterminated.count("extensions") != 0);
                          properties[i].extensionVersion = 1;
                      });
}

XrResult XRAPI_CALL CreateInstance(const XrInstanceCreateInfo* info, XrInstance* instance) {
    LoadScript();
    ResetSession();
    enabled_extensions.assign(info->enabledExtensionNames,
                              info->enabledExtensionNames + info->enabledExtensionCount);
    std::string line = "xrCreateInstance " + std::string(info->applicationInfo.applicationName) + " " +
                       std::to_string(XR_VERSION_MAJOR(info->applicationInfo.apiVersion)) + "." +
                       std::to_string(XR_VERSION_MINOR(info->applicationInfo.apiVersion)) + "." +
                       std::to_string(XR_VERSION_PATCH(info->applicationInfo.apiVersion));
    for (const std::string& extension : enabled_extensions) {
        line += " " + extension;
    }
    LogCall(line);
    Expect(info->type == XR_TYPE_INSTANCE_CREATE_INFO, "instance info type");
    if (const auto result = CurrentScript().Result("xrCreateInstance")) {
        return static_cast<XrResult>(*result);
    }
    *instance = CurrentScript().nulls.count("xrCreateInstance") != 0 ? XR_NULL_HANDLE : kInstance;
    return XR_SUCCESS;
}

XrResult XRAPI_CALL DestroyInstance(XrInstance instance) {
    LogCall("xrDestroyInstance");
    Expect(instance == kInstance, "instance");
    return XR_SUCCESS;
}

XrResult XRAPI_CALL GetInstanceProperties(XrInstance instance, XrInstanceProperties* properties) {
    LogCall("xrGetInstanceProperties");
    Expect(instance == kInstance, "instance");
    Expect(properties->type == XR_TYPE_INSTANCE_PROPERTIES, "instance properties type");
    const OpenXrScript& script = CurrentScript();
    if (const auto result = script.Result("xrGetInstanceProperties")) {
        return static_cast<XrResult>(*result);
    }
    properties->runtimeVersion = (script.major << 48) | (script.minor << 32) | script.patch;
    FillName(properties->runtimeName, script.runtime, script.unterminated.count("runtime") != 0);
    return XR_SUCCESS;
}

XrResult XRAPI_CALL GetSystem(XrInstance instance, const XrSystemGetInfo* info, XrSystemId* system) {
    LogCall("xrGetSystem");
    Expect(instance == kInstance, "instance");
    Expect(info->type == XR_TYPE_SYSTEM_GET_INFO, "system info type");
    Expect(info->formFactor == XR_FORM_FACTOR_HEAD_MOUNTED_DISPLAY, "form factor");
    *system = CurrentScript().system;
    return static_cast<XrResult>(CurrentScript().Result("xrGetSystem").value_or(XR_SUCCESS));
}

XrResult XRAPI_CALL EnumerateViews(XrInstance instance, XrSystemId system, XrViewConfigurationType type,
                                   std::uint32_t capacity, std::uint32_t* count,
                                   XrViewConfigurationView* views) {
    LogCall("xrEnumerateViewConfigurationViews " + std::string(capacity == 0 ? "count" : "list"));
    const OpenXrScript& script = CurrentScript();
    Expect(instance == kInstance && system == script.system, "instance or system");
    Expect(type == XR_VIEW_CONFIGURATION_TYPE_PRIMARY_STEREO, "view configuration");
    if (const auto result = script.Result("xrEnumerateViewConfigurationViews")) {
        return static_cast<XrResult>(*result);
    }
    return AnswerList("views", static_cast<std::uint32_t>(script.views.size()), capacity, count,
                      [&](std::uint32_t i) {
                          Expect(views[i].type == XR_TYPE_VIEW_CONFIGURATION_VIEW, "view type");
                          views[i].recommendedImageRectWidth = script.views[i].width;
                          views[i].recommendedImageRectHeight = script.views[i].height;
                      });
}

/// The LUID of the system's first adapter; 0 when there is none.
LUID FirstAdapterLuid() {
    Microsoft::WRL::ComPtr<IDXGIFactory1> factory;
    Microsoft::WRL::ComPtr<IDXGIAdapter1> adapter;
    DXGI_ADAPTER_DESC1 description = {};
    if (SUCCEEDED(CreateDXGIFactory1(IID_PPV_ARGS(&factory))) &&
        SUCCEEDED(factory->EnumAdapters1(0, &adapter))) {
        adapter->GetDesc1(&description);
    }
    return description.AdapterLuid;
}

LUID ScriptedLuid(const std::string& text) {
    unsigned high = 0;
    unsigned low = 0;
    if (std::sscanf(text.c_str(), "%8X:%8X", &high, &low) != 2) {
        return FirstAdapterLuid();
    }
    return {low, static_cast<LONG>(high)};
}

XrResult XRAPI_CALL GetRequirements(XrInstance instance, XrSystemId system,
                                    XrGraphicsRequirementsD3D11KHR* requirements) {
    LogCall("xrGetD3D11GraphicsRequirementsKHR");
    const OpenXrScript& script = CurrentScript();
    Expect(instance == kInstance && system == script.system, "instance or system");
    Expect(requirements->type == XR_TYPE_GRAPHICS_REQUIREMENTS_D3D11_KHR, "requirements type");
    NoteRequirementsCall();
    if (const auto result = script.Result("xrGetD3D11GraphicsRequirementsKHR")) {
        return static_cast<XrResult>(*result);
    }
    requirements->adapterLuid = ScriptedLuid(script.luid);
    requirements->minFeatureLevel = D3D_FEATURE_LEVEL_11_0;
    return XR_SUCCESS;
}

}  // namespace

const OpenXrScript& CurrentScript() {
    return MutableScript();
}

void LoadScript() {
    std::ifstream file{std::filesystem::path(EnvironmentText(L"VISTREL_LAB_OPENXR"))};
    MutableScript() = ReadOpenXrScript(file);
    for (const std::string& mistake : CurrentScript().mistakes) {
        LogCall("WRONG script line: " + mistake);
    }
}

void LogCall(const std::string& line) {
    const std::wstring path = EnvironmentText(L"VISTREL_LAB_OPENXR_LOG");
    if (!path.empty()) {
        std::ofstream(std::filesystem::path(path), std::ios::app | std::ios::binary) << line << "\n";
    }
    const auto failure = CurrentScript().fatal_failures.find(line.substr(0, line.find(' ')));
    if (failure != CurrentScript().fatal_failures.end()) {
        lab::FailFatally(failure->second);
    }
}

bool Expect(bool right, const std::string& what) {
    if (!right) {
        LogCall("WRONG " + what);
    }
    return right;
}

bool ExtensionEnabled(const std::string& extension) {
    return std::find(enabled_extensions.begin(), enabled_extensions.end(), extension) !=
           enabled_extensions.end();
}

PFN_xrVoidFunction FindInstanceFunction(const std::string& name) {
    static const std::map<std::string, PFN_xrVoidFunction> functions = {
        {"xrDestroyInstance", reinterpret_cast<PFN_xrVoidFunction>(DestroyInstance)},
        {"xrGetInstanceProperties", reinterpret_cast<PFN_xrVoidFunction>(GetInstanceProperties)},
        {"xrGetSystem", reinterpret_cast<PFN_xrVoidFunction>(GetSystem)},
        {"xrEnumerateViewConfigurationViews", reinterpret_cast<PFN_xrVoidFunction>(EnumerateViews)},
        {"xrGetD3D11GraphicsRequirementsKHR", reinterpret_cast<PFN_xrVoidFunction>(GetRequirements)},
    };
    const auto found = functions.find(name);
    return found != functions.end() ? found->second : FindSessionFunction(name);
}

// The .def files of the libraries list which of these each one exports.
extern "C" {

XrResult XRAPI_CALL xrGetInstanceProcAddr(XrInstance, const char* name, PFN_xrVoidFunction* function) {
    FailIfScripted("xrGetInstanceProcAddr");
    *function = nullptr;
    if (std::strcmp(name, "xrCreateInstance") == 0) {
        *function = reinterpret_cast<PFN_xrVoidFunction>(CreateInstance);
    } else if (std::strcmp(name, "xrEnumerateInstanceExtensionProperties") == 0) {
        *function = reinterpret_cast<PFN_xrVoidFunction>(EnumerateExtensions);
    } else if (std::strcmp(name, "xrGetInstanceProcAddr") == 0) {
        *function = reinterpret_cast<PFN_xrVoidFunction>(xrGetInstanceProcAddr);
    } else if (!CurrentScript().Lacks(name)) {
        *function = FindInstanceFunction(name);
    }
    return *function != nullptr ? XR_SUCCESS : XR_ERROR_FUNCTION_UNSUPPORTED;
}

XrResult XRAPI_CALL xrNegotiateLoaderRuntimeInterface(const XrNegotiateLoaderInfo*,
                                                      XrNegotiateRuntimeRequest* request) {
    LoadScript();
    FailIfScripted("xrNegotiateLoaderRuntimeInterface");
    request->runtimeInterfaceVersion = XR_CURRENT_LOADER_RUNTIME_VERSION;
    request->runtimeApiVersion = XR_CURRENT_API_VERSION;
    request->getInstanceProcAddr = xrGetInstanceProcAddr;
    return XR_SUCCESS;
}

XrResult XRAPI_CALL xrCreateInstance(const XrInstanceCreateInfo* info, XrInstance* instance) {
    return CreateInstance(info, instance);
}

XrResult XRAPI_CALL xrEnumerateInstanceExtensionProperties(const char* layer, std::uint32_t capacity,
                                                           std::uint32_t* count,
                                                           XrExtensionProperties* properties) {
    return EnumerateExtensions(layer, capacity, count, properties);
}

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void* process_ends) {
    if (reason == DLL_PROCESS_ATTACH) {
        const std::wstring debug = EnvironmentText(L"XR_LOADER_DEBUG");
        LogCall("loaded, XR_LOADER_DEBUG=" + std::string(debug.begin(), debug.end()));
    } else if (reason == DLL_PROCESS_DETACH && process_ends == nullptr) {
        LogCall("unloaded");
    }
    return TRUE;
}

}  // extern "C"
