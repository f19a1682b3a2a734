// Which of the monitors connected to the machine's GPUs is captured.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/luid.h"

/// One monitor that is part of the desktop, and the GPU that drives it.
struct OutputRecord {
    AdapterLuid adapter_luid;
    std::string adapter_name;  ///< UTF-8; may be empty
    std::string device_name;   ///< UTF-8, such as \\.\DISPLAY1
    std::int32_t left = 0;     ///< top-left corner in desktop coordinates
    std::int32_t top = 0;
};

/// The position in `outputs` (in enumeration order) of the monitor to capture; empty when there is none. A
/// non-empty `source_name` is its exact name, case-sensitive. Otherwise it is the first monitor on the GPU
/// with `render_luid`, or else the first of all; whether it is the primary display does not matter.
std::optional<std::size_t> ChooseOutput(const std::vector<OutputRecord>& outputs,
                                        const AdapterLuid& render_luid, std::string_view source_name);

/// The device names of all `outputs`, joined with ", ".
std::string JoinDeviceNames(const std::vector<OutputRecord>& outputs);
