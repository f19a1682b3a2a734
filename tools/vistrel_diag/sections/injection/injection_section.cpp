#include "tools/vistrel_diag/sections/injection/injection_section.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "tools/vistrel_diag/report/report.h"

namespace {

constexpr std::array kProxyDllNames = {"dxgi.dll",  "d3d9.dll",    "d3d10.dll",    "d3d11.dll",
                                       "d3d12.dll", "d3d8.dll",    "opengl32.dll", "dinput8.dll",
                                       "winmm.dll", "version.dll", "dbghelp.dll"};
constexpr std::array kReShadeFileNames = {"ReShade.ini",       "ReShade64.dll", "ReShade32.dll",
                                          "ReShadePreset.ini", "ReShade.log",   "reshade-shaders"};

template <std::size_t Count>
std::vector<const char*> Existing(const std::array<const char*, Count>& names,
                                  const std::function<bool(const char*)>& exists) {
    std::vector<const char*> existing;
    std::copy_if(names.begin(), names.end(), std::back_inserter(existing), exists);
    return existing;
}

}  // namespace

InjectedFiles FindInjectedFiles(const std::function<bool(const char* name)>& exists) {
    return {Existing(kProxyDllNames, exists), Existing(kReShadeFileNames, exists)};
}

void PrintInjectionSection(const std::optional<InjectedFiles>& found) {
    if (!found) {
        Report::Line("Cannot tell - the folder this is running from is not known.");
        return;
    }
    for (const char* name : found->proxy_dlls) {
        Report::Line("PROXY DLL      : %s   <- not ours", name);
    }
    for (const char* name : found->reshade_files) {
        Report::Line("ReShade file   : %s", name);
    }
    if (found->proxy_dlls.empty() && found->reshade_files.empty()) {
        Report::Line("Nothing found. No proxy DLL and no ReShade files beside Vistrel.exe.");
        return;
    }
    Report::Line("");
    Report::Line(
        ">>> Something is injecting itself into Vistrel. This is what to undo first, before anything else in "
        "this report is worth reading.");
    // Also right if there are only proxy DLLs: ReShade installs itself under these names.
    Report::Line(
        ">>> ReShade belongs on the GAME, never on Vistrel.exe. Run the ReShade uninstaller against this "
        "folder, or delete the files listed above.");
    Report::Line(
        ">>> The symptom it produces is AI depth that runs and reports timings while no 3D ever reaches the "
        "headset.");
}
