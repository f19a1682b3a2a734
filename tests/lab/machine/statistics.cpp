#include "tests/lab/machine/statistics.h"

#include <new>

#include "tests/lab/machine/handle_account.h"

namespace lab {
namespace {

void Append(std::string& text, const std::string& name, long value) {
    text += name + " " + std::to_string(value) + "\n";
}

}  // namespace

Statistics& Counts() {
    static Statistics statistics{};
    return statistics;
}

void RestartCounts() {
    Statistics& counts = Counts();
    const long factories = counts.live_factories;
    const long adapters = counts.live_adapters;
    const long outputs = counts.live_outputs;
    const long duplications = counts.live_duplications;
    const long devices = counts.live_devices;
    counts.~Statistics();
    new (&counts) Statistics{};
    counts.live_factories = factories;
    counts.live_adapters = adapters;
    counts.live_outputs = outputs;
    counts.live_duplications = duplications;
    counts.live_devices = devices;
}

std::string StatisticsText() {
    const Statistics& counts = Counts();
    std::string text;
    Append(text, "live_objects", counts.LiveObjects());
    Append(text, "violations", counts.Violations());
    Append(text, "open_handles", OpenHandles());
    Append(text, "live_factories", counts.live_factories);
    Append(text, "live_adapters", counts.live_adapters);
    Append(text, "live_outputs", counts.live_outputs);
    Append(text, "live_duplications", counts.live_duplications);
    Append(text, "live_devices", counts.live_devices);
    Append(text, "made_factories", counts.made_factories);
    Append(text, "enumerations", counts.enumerations);
    Append(text, "made_duplications", counts.made_duplications);
    Append(text, "duplications_refused", counts.duplications_refused);
    Append(text, "frames_shown", counts.frames_shown);
    Append(text, "frames_delivered", counts.frames_delivered);
    Append(text, "frames_merged", counts.frames_merged);
    Append(text, "pointer_updates", counts.pointer_updates);
    Append(text, "slept_milliseconds", counts.slept_milliseconds);
    Append(text, "acquire_calls", counts.acquire_calls);
    Append(text, "acquire_timeouts", counts.acquire_timeouts);
    Append(text, "access_losses", counts.access_losses);
    Append(text, "releases", counts.releases);
    Append(text, "releases_without_frame", counts.releases_without_frame);
    Append(text, "acquires_without_release", counts.acquires_without_release);
    Append(text, "uses_after_release", counts.uses_after_release);
    Append(text, "copies_across_devices", counts.copies_across_devices);
    Append(text, "copies_of_other_size", counts.copies_of_other_size);
    Append(text, "frames_never_released", counts.frames_never_released);
    Append(text, "duplications_by_other_adapter", counts.duplications_by_other_adapter);
    Append(text, "duplications_of_duplicated", counts.duplications_of_duplicated);
    for (std::size_t i = 0; i < counts.devices_made_on.size(); ++i) {
        Append(text, "devices_made_on_" + std::to_string(i), counts.devices_made_on[i]);
    }
    return text;
}

}  // namespace lab
