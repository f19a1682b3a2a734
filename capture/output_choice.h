// Which monitor is captured, out of all that hang on the machine's GPUs.
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

/// The position in `outputs` (in enumeration order) of the one to capture; empty when there is none. A
/// non-empty `source_name` names it exactly, case included. Otherwise it is the first on the GPU with
/// `render_luid`, or else the first of all; being the primary display plays no part.
std::optional<std::size_t> ChooseOutput(const std::vector<OutputRecord>& outputs,
                                        const AdapterLuid& render_luid, std::string_view source_name);

/// The device names of all `outputs`, joined with ", ".
std::string JoinDeviceNames(const std::vector<OutputRecord>& outputs);
