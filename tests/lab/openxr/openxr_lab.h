// Puts a test's own process in front of a scripted OpenXR runtime.
#pragma once

#include <string>

/// Which openxr_loader.dll a program finds.
enum class LabLoader { None, Genuine, StandIn, WithoutCreate, WithoutFind, WithoutEnumerate, WithoutExports };

/// One at a time. Afterwards no loader is left in the process.
class OpenXrLab {
  public:
    /// A machine with `loader`, and with the scripted runtime (which only the genuine loader looks for)
    /// unless `runtime_installed` is false.
    explicit OpenXrLab(LabLoader loader, bool runtime_installed = true);
    OpenXrLab(const OpenXrLab&) = delete;
    OpenXrLab& operator=(const OpenXrLab&) = delete;
    ~OpenXrLab();

    /// What the runtime does from its next instance on, statements as README.md lists them; begins a new log.
    void SetScript(const std::string& script) const;

    /// Everything that the runtime logged since its script was set, a line a call.
    std::string Log() const;

    /// Unloads the loader however often it was loaded.
    static void UnloadLoader();

  private:
    std::wstring folder_;  ///< of this object alone, for script and log
};

/// The text of a file of the source tree; throws when it cannot be read.
std::string ReadSourceFile(const std::string& path_from_root);
