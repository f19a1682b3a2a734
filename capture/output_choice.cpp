#include "capture/output_choice.h"

#include <algorithm>

std::optional<std::size_t> ChooseOutput(const std::vector<OutputRecord>& outputs,
                                        const AdapterLuid& render_luid, std::string_view source_name) {
    const auto wanted = std::find_if(outputs.begin(), outputs.end(), [&](const OutputRecord& output) {
        return source_name.empty() ? output.adapter_luid == render_luid : output.device_name == source_name;
    });
    if (wanted != outputs.end()) {
        return static_cast<std::size_t>(wanted - outputs.begin());
    }
    if (source_name.empty() && !outputs.empty()) {
        return 0;
    }
    return std::nullopt;
}

std::string JoinDeviceNames(const std::vector<OutputRecord>& outputs) {
    std::string joined;
    for (const OutputRecord& output : outputs) {
        if (!joined.empty()) {
            joined += ", ";
        }
        joined += output.device_name;
    }
    return joined;
}
