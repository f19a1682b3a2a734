// Connects a test's own process to a scripted OpenXR runtime.
#pragma once

#include <string>

/// Which openxr_loader.dll a program finds.
enum class LabLoader { None, Genuine, StandIn, WithoutCreate, WithoutFind, WithoutEnumerate, WithoutExports };

/// Only one at a time. Its destructor unloads the loader from the process.
class OpenXrLab {
  public:
    /// A machine with `loader`, and with the scripted runtime (which only the genuine loader looks for)
    /// unless `runtime_installed` is false.
    explicit OpenXrLab(LabLoader loader, bool runtime_installed = true);
    OpenXrLab(const OpenXrLab&) = delete;
    OpenXrLab& operator=(const OpenXrLab&) = delete;
    ~OpenXrLab();

    /// Sets what the runtime does from its next instance on, in the statements that README.md lists; starts a
    /// new log.
    void SetScript(const std::string& script) const;

    /// Everything that the runtime has logged since its script was set, one line per call.
    std::string Log() const;

    /// Unloads the loader, no matter how often it was loaded.
    static void UnloadLoader();

  private:
    std::wstring folder_;  ///< used only by this object, for script and log
};

/// The text of a file of the source tree; throws when it cannot be read.
std::string ReadSourceFile(const std::string& path_from_root);
