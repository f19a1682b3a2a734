// Reads back the lines of BENCHMARK SETUP.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/vistrel_diag/report/line_reading.h"

/// The lines name one GPU; the list of GPUs is not in them.
struct BenchmarkSetupReading {
    std::int32_t gpu = -1;  ///< as the report numbers them; -1 when none was chosen
    std::string gpu_name;   ///< "default" when the list has none at that position
    std::uint32_t gpu_line = 0;
    std::uint32_t named_by_runtime_line = 0;     ///< the OpenXR runtime named the adapter
    std::uint32_t chosen_by_size_line = 0;       ///< the runtime named no adapter
    std::optional<std::uint32_t> device_result;  ///< the HRESULT, when there is no device
    std::uint32_t device_line = 0;
};

/// Empty when no line was understood. Lines that were not understood are added to `unread`.
std::optional<BenchmarkSetupReading> ReadBenchmarkSetupSection(SourceLines lines, UnreadLines& unread);
