// Shared by the source files of the scripted OpenXR runtime.
#pragma once

#include <windows.h>

#include <unknwn.h>

#include <d3d11.h>

#define XR_USE_PLATFORM_WIN32
#define XR_USE_GRAPHICS_API_D3D11
#include <openxr/openxr.h>
#include <openxr/openxr_platform.h>

#include <string>

#include "tests/lab/openxr/openxr_script.h"

/// The script of the current instance, or of the next one.
const OpenXrScript& CurrentScript();

/// Reads the script named by VISTREL_LAB_OPENXR again.
void LoadScript();

/// Adds a line to the file named by VISTREL_LAB_OPENXR_LOG; its first word is the function that was called.
/// Then makes that function fail fatally when the script says so.
void LogCall(const std::string& line);

/// Logs a caller's mistake as a line that begins with "WRONG". Returns `right`.
bool Expect(bool right, const std::string& what);

/// Looks up a function that needs an instance. Null when there is no such function.
PFN_xrVoidFunction FindInstanceFunction(const std::string& name);
PFN_xrVoidFunction FindSessionFunction(const std::string& name);

/// Resets everything about sessions, for a new instance.
void ResetSession();

/// Records that the graphics requirements were requested, which must happen before a session is created.
void NoteRequirementsCall();

/// A handle that represents the `number`th object of its kind.
template <typename Handle>
Handle MakeHandle(std::uintptr_t number) {
    return reinterpret_cast<Handle>(number);
}

inline const XrInstance kInstance = MakeHandle<XrInstance>(0x1000);

/// Whether `extension` was enabled for the instance.
bool ExtensionEnabled(const std::string& extension);
