// Reads back the lines of HEADSET / OPENXR.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/luid.h"
#include "tools/vistrel_diag/report/line_reading.h"
#include "tools/vistrel_diag/sections/headset/headset_section.h"
#include "tools/vistrel_diag/worker/worker_end.h"

/// The GPU that the runtime requires.
struct RequiredGpuReading {
    AdapterLuid luid;
    std::int32_t gpu = -1;  ///< as the report numbers them; -1 when it lists none with that LUID
    std::string name;       ///< "NOT FOUND" when there is none
    std::uint32_t line = 0;
};

/// Not in the lines: the lists of GPUs and displays (one of each is named), and the OpenXR result of a query
/// that stopped.
struct HeadsetReading {
    std::optional<ReadText> runtime;      ///< name and version
    std::optional<ReadText> message;      ///< why the query stopped early
    std::optional<HeadsetStop> stop;      ///< the same, as a value
    std::optional<WorkerEnd> worker_end;  ///< the process that asked ended before it was done
    std::uint32_t worker_end_line = 0;
    std::optional<std::uint32_t> eye_width;
    std::optional<std::uint32_t> eye_height;
    std::uint32_t eye_line = 0;
    std::optional<RequiredGpuReading> required_gpu;
    std::optional<std::int32_t> display_gpu;  ///< drives the primary display, when the note says that it is
                                              ///< another one than required
    std::vector<std::uint32_t> cross_gpu_lines;  ///< of "!! NOTE: the headset requires GPU ...", one a note
};

/// Empty when no line was understood. Lines that were not understood are added to `unread`.
std::optional<HeadsetReading> ReadHeadsetSection(SourceLines lines, UnreadLines& unread);
