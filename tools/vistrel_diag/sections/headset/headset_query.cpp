#include "tools/vistrel_diag/sections/headset/headset_query.h"

namespace {

/// The number, converted to the field's type without a check; 0 when it is missing. It comes from a process
/// that a library may have corrupted, so any value is possible.
template <typename Field>
Field Number(const WorkerMessage& message, std::string_view name) {
    return static_cast<Field>(message.Integer(name).value_or(0));
}

std::optional<HeadsetStop> StopOf(const WorkerMessage& message) {
    const std::optional<std::int64_t> stop = message.Integer("stop");
    if (!stop || *stop < 0 || *stop > static_cast<std::int64_t>(HeadsetStop::NoHeadset)) {
        return std::nullopt;
    }
    return static_cast<HeadsetStop>(*stop);
}

}  // namespace

WorkerMessage MessageOf(const HeadsetQuery& query) {
    WorkerMessage message;
    message.SetTruth("headset_found", query.headset_found)
        .SetText("runtime", query.runtime)
        .SetTruth("luid_known", query.luid_known)
        .SetInteger("luid_high", query.adapter_luid.high)
        .SetInteger("luid_low", query.adapter_luid.low)
        .SetInteger("eye_width", query.eye_width)
        .SetInteger("eye_height", query.eye_height)
        .SetInteger("stop_result", query.stop_result);
    if (query.stop) {
        message.SetInteger("stop", static_cast<std::int64_t>(*query.stop));
    }
    return message;
}

HeadsetQuery HeadsetQueryOf(const WorkerMessage& message) {
    HeadsetQuery query;
    query.headset_found = message.Truth("headset_found");
    query.runtime = message.Text("runtime").value_or("");
    query.luid_known = message.Truth("luid_known");
    query.adapter_luid.high = Number<decltype(query.adapter_luid.high)>(message, "luid_high");
    query.adapter_luid.low = Number<decltype(query.adapter_luid.low)>(message, "luid_low");
    query.eye_width = Number<std::uint32_t>(message, "eye_width");
    query.eye_height = Number<std::uint32_t>(message, "eye_height");
    query.stop_result = Number<std::int32_t>(message, "stop_result");
    query.stop = StopOf(message);
    return query;
}
