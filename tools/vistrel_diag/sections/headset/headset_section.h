// The headset: what the OpenXR runtime requires of the machine, and the report's section about it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/luid.h"

struct DisplayInfo;
struct GpuInfo;

/// What the OpenXR runtime reported.
struct HeadsetQuery {
    bool headset_found = false;
    std::string runtime;                          ///< name, blank, version; UTF-8, empty when unknown
    bool luid_known = false;                      ///< the runtime named the adapter it requires
    AdapterLuid adapter_luid;                     ///< that adapter
    std::uint32_t eye_width = 0, eye_height = 0;  ///< recommended pixels of one eye; 0 when unknown
    std::string message;                          ///< UTF-8; why the query stopped early, if it did
};

/// Asks the OpenXR runtime through the loader beside the executable. Never fails: what went wrong is in the
/// message, and what was learnt before that is kept. The loader stays loaded.
HeadsetQuery QueryOpenXrHeadset();

void PrintHeadsetSection(const HeadsetQuery& query, const std::vector<GpuInfo>& gpus,
                         const std::vector<DisplayInfo>& displays);

/// Reports `query` against the lists of GPUs and displays that earlier sections filled.
void ReportHeadsetSection(const HeadsetQuery& query);
