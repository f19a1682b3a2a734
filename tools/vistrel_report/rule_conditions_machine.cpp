// The machine: graphics cards, displays, memory, Windows' choices of GPU, headset and hands.
#include <algorithm>

#include "platform/format.h"
#include "platform/letter_case.h"
#include "tools/vistrel_report/judgements.h"
#include "tools/vistrel_report/rule_conditions.h"

namespace RuleConditions {
namespace {

constexpr double kLowMemoryGb = 2.0;  // Less than this explains stutter by itself.
constexpr std::int64_t kFirstBuildWithGpuChoices = 17134;

/// The value behind "GpuPreference="; empty without one, for Windows keeps other choices at the same place.
std::string_view GpuPreferenceOf(const OverrideFacts& choice) {
    constexpr std::string_view kName = "GpuPreference=";
    std::string_view text(choice.choice);
    const std::size_t name = text.find(kName);
    if (name == std::string_view::npos) {
        return {};
    }
    text.remove_prefix(name + kName.size());
    return text.substr(0, text.find_first_not_of("0123456789"));
}

/// Windows 11 writes larger numbers for one certain GPU; they are not this one.
bool SaysIntegrated(const OverrideFacts& choice) {
    return GpuPreferenceOf(choice) == "1";
}

/// The value 0 leaves the GPU to Windows.
bool SaysOtherGpu(const OverrideFacts& choice) {
    const std::string_view value = GpuPreferenceOf(choice);
    return !value.empty() && value != "0" && value != "1";
}

/// Found when the message of the last part that asked has `words` in it.
Judgement HeadsetMessage(const Facts& facts, std::string_view words, const char* says) {
    const HeadsetFacts* const headset = LastHeadset(facts);
    if (headset == nullptr) {
        return NotJudged({Part::Headset});
    }
    if (!headset->message || headset->message->text.find(words) == std::string::npos) {
        return NotFound();
    }
    return Found(says, {headset->message->line});
}

/// The hardware GPU with the least dedicated memory: the integrated one of a machine with two.
const GpuFacts* SmallestHardwareGpu(const Facts& facts) {
    const GpuFacts* smallest = nullptr;
    for (const GpuFacts& gpu : facts.gpus) {
        const bool smaller = smallest == nullptr || gpu.dedicated_mb < smallest->dedicated_mb;
        if (!gpu.software && smaller) {
            smallest = &gpu;
        }
    }
    return smallest;
}

}  // namespace

Judgement GpuListFailed(const Facts& facts) {
    return FoundAt(facts.gpu_list_failure_line, "Windows could not list the graphics cards (DXGI failed).");
}

Judgement NoHardwareGpu(const Facts& facts) {
    if (facts.gpu_list_failure_line != 0) {
        return DoesNotApply();  // Another rule tells that they could not be listed.
    }
    if (HardwareGpuCount(facts) > 0) {
        return NotFound();
    }
    std::vector<LineNumber> lines;
    std::transform(facts.gpus.begin(), facts.gpus.end(), std::back_inserter(lines),
                   [](const GpuFacts& gpu) { return gpu.line; });
    return Found(facts.gpus.empty() ? "Windows lists no graphics card at all."
                                    : "Windows lists only its own software rasteriser.",
                 lines);
}

Judgement DeviceFailed(const Facts& facts) {
    if (!facts.benchmark.failure) {
        return NotFound();
    }
    return Found(
        "Direct3D 11 could not be started on the GPU to measure on, so no GPU numbers exist. The code is "
        "on the line told.",
        {facts.benchmark.failure->line});
}

Judgement LowMemory(const Facts& facts) {
    const std::optional<double>& free_gb = facts.machine.free_memory_gb;
    const bool told = free_gb && facts.machine.memory_gb && *facts.machine.memory_gb > 0.0;
    if (!told) {
        return DoesNotApply();  // Windows did not tell.
    }
    if (*free_gb >= kLowMemoryGb) {
        return NotFound();
    }
    return Found(FormatText("Only %.1f GB of %.1f GB memory were free.", *free_gb, *facts.machine.memory_gb),
                 {facts.machine.memory_line});
}

Judgement OldWindows(const Facts& facts) {
    if (!facts.machine.build) {
        return DoesNotApply();
    }
    if (*facts.machine.build >= kFirstBuildWithGpuChoices) {
        return NotFound();
    }
    return Found(FormatText("Build %lld of Windows has no GPU choice per application.",
                            static_cast<long long>(*facts.machine.build)),
                 {facts.machine.windows ? facts.machine.windows->line : 0});
}

Judgement GpuSchedulingOn(const Facts& facts) {
    if (!facts.machine.gpu_scheduling) {
        return DoesNotApply();
    }
    if (facts.machine.gpu_scheduling->text != "ENABLED") {
        return NotFound();
    }
    return Found(
        "Hardware-accelerated GPU scheduling is on. Where frame times are uneven, a run with the other "
        "setting tells whether it matters.",
        {facts.machine.gpu_scheduling->line});
}

Judgement GpuNotDescribed(const Facts& facts) {
    if (facts.gpus.empty()) {
        return DoesNotApply();
    }
    for (std::size_t i = 0; i < facts.gpus.size(); ++i) {
        if (facts.gpus[i].number != static_cast<std::int64_t>(i)) {
            return Found(FormatText("GPU %zu is not listed: its driver could not describe it.", i),
                         {facts.gpus[i].line});
        }
    }
    return NotFound();
}

Judgement DisplayWithoutGpu(const Facts& facts) {
    if (facts.displays.empty()) {
        return DoesNotApply();
    }
    std::vector<LineNumber> lines;
    bool primary = false;
    for (const DisplayFacts& display : facts.displays) {
        if (display.gpu < 0) {
            lines.push_back(display.line);
            primary = primary || display.primary;
        }
    }
    if (lines.empty()) {
        return NotFound();
    }
    return Found(
        primary ? "The primary display is claimed by no graphics card: a USB or virtual display, or one of "
                  "an adapter that failed."
                : "A display is claimed by no graphics card: a USB or virtual display, or one of an "
                  "adapter that failed.",
        lines);
}

Judgement GpuChoiceIntegrated(const Facts& facts) {
    if (HardwareGpuCount(facts) < 2) {
        return DoesNotApply();  // There is only one to choose.
    }
    std::vector<LineNumber> lines;
    for (const OverrideFacts& choice : facts.overrides) {
        if (SaysIntegrated(choice)) {
            lines.push_back(choice.line);
        }
    }
    if (lines.empty()) {
        return NotFound();
    }
    const HeadsetFacts* const headset = HeadsetWithGpu(facts);
    const GpuFacts* const integrated = SmallestHardwareGpu(facts);
    const bool required_known = headset != nullptr && headset->required_gpu && *headset->required_gpu >= 0;
    if (required_known && integrated != nullptr && *headset->required_gpu == integrated->number) {
        return NotFound();  // It is where the headset is.
    }
    if (required_known) {
        lines.push_back(headset->required_gpu_line);
        return Found(
            FormatText("Windows is told to run Vistrel or SteamVR on the integrated GPU, and the headset "
                       "requires GPU %lld (%s).",
                       static_cast<long long>(*headset->required_gpu), headset->required_gpu_name.c_str()),
            lines);
    }
    return Found("Windows is told to run Vistrel or SteamVR on the integrated GPU.", lines);
}

Judgement GpuChoiceOther(const Facts& facts) {
    if (facts.Has(Part::Gpus) && HardwareGpuCount(facts) < 2) {
        return DoesNotApply();  // There is only one to choose.
    }
    std::vector<LineNumber> lines;
    for (const OverrideFacts& choice : facts.overrides) {
        if (SaysOtherGpu(choice)) {
            lines.push_back(choice.line);
        }
    }
    if (lines.empty()) {
        return NotFound();
    }
    return Found(
        "Windows has a choice of GPU for Vistrel or SteamVR, not for the integrated one. It is harmless "
        "where it names the headset's GPU.",
        lines);
}

Judgement LogNamesAdapter(const Facts& facts) {
    if (HardwareGpuCount(facts) < 2) {
        return DoesNotApply();
    }
    const auto line = std::find_if(
        facts.log_lines.rbegin(), facts.log_lines.rend(),
        [](const TextFact& candidate) { return candidate.text.find("Match found") != std::string::npos; });
    if (line == facts.log_lines.rend()) {
        return NotFound();
    }
    const HeadsetFacts* const headset = HeadsetWithGpu(facts);
    if (headset == nullptr || !headset->required_gpu || *headset->required_gpu < 0) {
        return Found("The log tells which graphics card Vistrel rendered on in its last run.", {line->line});
    }
    return Found(
        FormatText("The log tells which graphics card Vistrel rendered on in its last run. The headset "
                   "requires GPU %lld (%s).",
                   static_cast<long long>(*headset->required_gpu), headset->required_gpu_name.c_str()),
        {line->line, headset->required_gpu_line});
}

Judgement OpenXrLoaderMissing(const Facts& facts) {
    return HeadsetMessage(facts, "openxr_loader.dll not found",
                          "openxr_loader.dll is not beside the tool, so nothing about the headset is known.");
}

Judgement NoOpenXrRuntime(const Facts& facts) {
    return HeadsetMessage(facts, "No OpenXR runtime accepted",
                          "No OpenXR runtime answered: none is installed, or it was not running.");
}

Judgement HeadsetAsleep(const Facts& facts) {
    const std::optional<TextFact>& message = facts.headset_in_two.message;
    if (!message || message->text.find("reports no headset") == std::string::npos) {
        return NotFound();
    }
    return Found("In part 2 the runtime reported no headset: it was asleep or not connected.",
                 {message->line});
}

Judgement HeadsetGpuUnknown(const Facts& facts) {
    const HeadsetFacts* const headset = HeadsetWithGpu(facts);
    if (headset == nullptr) {
        return NotJudged({Part::Headset});
    }
    if (!headset->required_gpu) {
        return DoesNotApply();
    }
    if (*headset->required_gpu >= 0) {
        return NotFound();
    }
    return Found(
        "The headset requires a GPU that the report does not list: it appeared after the inventory, or is "
        "hidden from the tool.",
        {headset->required_gpu_line});
}

Judgement CrossGpu(const Facts& facts) {
    if (!facts.Has(Part::Headset) && !facts.Has(Part::HeadsetTwo) && !facts.Has(Part::Capture)) {
        return NotJudged({Part::Headset, Part::Capture});
    }
    const LineNumber other = facts.capture.other_gpu ? facts.capture.other_gpu->line : 0;
    const std::vector<LineNumber> lines = {facts.headset.cross_gpu_line, facts.headset_in_two.cross_gpu_line,
                                           other};
    if (std::all_of(lines.begin(), lines.end(), [](LineNumber line) { return line == 0; })) {
        return facts.Has(Part::Gpus) && HardwareGpuCount(facts) < 2 ? DoesNotApply() : NotFound();
    }
    return Found(
        "The display hangs on another GPU than the one that renders, so each frame goes through system "
        "memory. The picture is correct; it costs time.",
        lines);
}

Judgement BenchmarkGpuGuessed(const Facts& facts) {
    if (HardwareGpuCount(facts) < 2) {
        return DoesNotApply();
    }
    return FoundAt(
        facts.benchmark.guessed_line,
        "The runtime named no adapter, so the largest GPU was measured. On a machine with two that need "
        "not be the headset's.");
}

Judgement HandsNotToldApart(const Facts& facts) {
    if (!facts.hands.conclusion) {
        return DoesNotApply();  // Nobody watched.
    }
    if (facts.hands.told_apart) {
        return NotFound();
    }
    return Found("The runtime does not tell a bare hand from one that holds a controller.",
                 {facts.hands.conclusion->line, facts.hands.data_source_line});
}

Judgement HandsNotWatched(const Facts& facts) {
    if (!facts.hands.stop) {
        return NotFound();
    }
    return Found("The hand probe was skipped; the line told says why.", {facts.hands.stop->line});
}

}  // namespace RuleConditions
