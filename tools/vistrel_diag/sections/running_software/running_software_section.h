// The programs that distort a measurement when they run at the same time: the check and the wait before the
// run, and the report's section about them.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/process_snapshot.h"

/// The program in the foreground.
struct ForegroundApplication {
    std::string executable_name;  ///< UTF-8; empty when its process is not found
    std::string title;            ///< UTF-8
};

struct RunningSoftwareInfo {
    /// Names of the notable programs, as their processes spell them; one entry per process.
    std::vector<std::string> notable;
    /// Empty when no window is in the foreground.
    std::optional<ForegroundApplication> foreground;
};

/// Whether this is the executable of the product or of its host application.
bool IsVistrelExecutable(std::string_view executable_name);

/// The notable programs of a snapshot, in its order. An empty list when there is no snapshot.
std::vector<std::string> NotablePrograms(const std::optional<ProcessSnapshot>& processes);

/// The executable name of the process `id`; empty when there is no snapshot or it has no such process.
std::string ExecutableNameOf(std::uint32_t id, const std::optional<ProcessSnapshot>& processes);

/// A window title as UTF-8. Half a character at the end, cut by the reading buffer, is dropped.
std::string WindowTitleText(std::u16string_view title);

using SnapshotSource = std::function<std::optional<ProcessSnapshot>()>;

/// Whether the product is running. False when there is no snapshot.
bool IsVistrelRunning(const SnapshotSource& take_snapshot);

/// Asks the user at the console to close the product and waits until it is closed, for 60 seconds at most:
/// one snapshot, one dot and one call of `wait_a_second` for each.
void WaitForVistrelToClose(const SnapshotSource& take_snapshot, const std::function<void()>& wait_a_second);

RunningSoftwareInfo ProbeRunningSoftware();
void PrintRunningSoftwareSection(const RunningSoftwareInfo& software);

/// As above, with this machine's processes and clock.
bool IsVistrelRunning();
void WaitForVistrelToClose();

/// Reports what ProbeRunningSoftware finds.
void ReportRunningSoftwareSection();
