// The headset: what the OpenXR runtime requires of the machine, and the report's section about it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/luid.h"
#include "tools/vistrel_diag/worker/worker_end.h"

struct DisplayInfo;
struct GpuInfo;

inline constexpr const char* kHeadsetTitle = "HEADSET / OPENXR";

/// Why a query stopped before it was complete.
enum class HeadsetStop { NoLoader, NoEntryPoints, NoInstance, NoHeadset };

/// What the OpenXR runtime reported.
struct HeadsetQuery {
    bool headset_found = false;
    std::string runtime;                          ///< name, blank, version; UTF-8, empty when unknown
    bool luid_known = false;                      ///< the runtime named the adapter it requires
    AdapterLuid adapter_luid;                     ///< that adapter
    std::uint32_t eye_width = 0, eye_height = 0;  ///< recommended pixels of one eye; 0 when unknown
    std::optional<HeadsetStop> stop;
    std::int32_t stop_result = 0;  ///< the XrResult that stopped it; 0 when it did not stop for one
    /// Set when the querying process ended early; the other fields then hold what it had found by then.
    std::optional<WorkerEnd> worker_end;
};

void PrintHeadsetSection(const HeadsetQuery& query, const std::vector<GpuInfo>& gpus,
                         const std::vector<DisplayInfo>& displays);

/// Reports `query` against the lists of GPUs and displays that earlier sections filled.
void ReportHeadsetSection(const HeadsetQuery& query);

/// Queries the OpenXR runtime in a process of its own, or in this one when no other can be started. In this
/// process the headset section is marked as current first, so that the report of a crash names it.
HeadsetQuery AskHeadset();
