// The OpenXR loader, found at run time: the tool links no OpenXR library, so that it also runs where none is
// installed.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <d3d11.h>

#define XR_USE_PLATFORM_WIN32
#define XR_USE_GRAPHICS_API_D3D11
#include <openxr/openxr.h>
#include <openxr/openxr_platform.h>

#include <initializer_list>
#include <utility>

#include "platform/library.h"

/// The library openxr_loader.dll. A copy in the executable's own folder is preferred.
class OpenXrLoader {
  public:
    /// Loads the library. First switches off the loader's diagnostics for the rest of the process: it would
    /// write them to our console.
    OpenXrLoader();

    /// Whether the library was found and loaded.
    explicit operator bool() const { return static_cast<bool>(library_); }

    /// A function that the loader exports; null when it does not export one of that name.
    template <typename Function>
    Function EntryPoint(const char* name) const {
        return reinterpret_cast<Function>(GetProcAddress(library_.get(), name));
    }

    /// Keeps the loader in the process after this object is destroyed. Without this call it is unloaded then.
    void StayLoaded();

  private:
    UniqueLibrary library_;
};

/// An OpenXR structure of the given type with everything else zero.
template <typename Structure>
Structure OpenXrStructure(XrStructureType type) {
    Structure structure = {};
    structure.type = type;
    return structure;
}

/// An instance of the application "vistrel_diag" for OpenXR 1.0.34; null when the loader or the runtime
/// refuses. The caller destroys it. `result` (may be null) receives the XrResult.
XrInstance CreateOpenXrInstance(PFN_xrCreateInstance create_instance,
                                std::initializer_list<const char*> extensions, XrResult* result = nullptr);

/// The head-mounted display; XR_NULL_SYSTEM_ID when the runtime has none right now. `result` (may be null)
/// receives the XrResult.
XrSystemId FindHeadMountedDisplay(PFN_xrGetSystem get_system, XrInstance instance,
                                  XrResult* result = nullptr);

/// Looks up a function of the instance; null when neither the loader nor the runtime has it.
template <typename Function>
void FindOpenXrFunction(PFN_xrGetInstanceProcAddr get_function, XrInstance instance, const char* name,
                        Function& function) {
    PFN_xrVoidFunction found = nullptr;
    const bool has_it = XR_SUCCEEDED(get_function(instance, name, &found));
    function = has_it ? reinterpret_cast<Function>(found) : nullptr;
}

/// Owns one OpenXR handle. Where the runtime lacks the destroying function, the handle is not destroyed.
template <typename Handle>
class OpenXrOwned {
  public:
    using Destroy = XrResult(XRAPI_PTR*)(Handle);

    OpenXrOwned(Handle handle, Destroy destroy) : handle_(handle), destroy_(destroy) {}
    OpenXrOwned(OpenXrOwned&& other) noexcept
        : handle_(std::exchange(other.handle_, Handle{})), destroy_(other.destroy_) {}
    OpenXrOwned& operator=(OpenXrOwned&&) = delete;
    OpenXrOwned(const OpenXrOwned&) = delete;
    OpenXrOwned& operator=(const OpenXrOwned&) = delete;
    ~OpenXrOwned() {
        if (handle_ != Handle{} && destroy_ != nullptr) {
            destroy_(handle_);
        }
    }

    explicit operator bool() const { return handle_ != Handle{}; }
    Handle get() const { return handle_; }

  private:
    Handle handle_;
    Destroy destroy_;
};
