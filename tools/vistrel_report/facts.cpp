#include "tools/vistrel_report/facts.h"

#include <algorithm>

#include "platform/format.h"

namespace {

constexpr std::array<std::string_view, kPartCount> kPartNames = {
    "the opening lines",
    "WHAT ELSE WAS RUNNING DURING THIS TEST",
    "MACHINE",
    "GPUs",
    "DISPLAYS",
    "PER-APP GPU OVERRIDES",
    "INJECTED INTO VISTREL'S OWN FOLDER",
    "VISTREL SETTINGS IN EFFECT",
    "VISTREL SETTINGS, VERBATIM",
    "WHAT VISTREL ITSELF LOGGED LAST RUN",
    "HEADSET / OPENXR",
    "BENCHMARK SETUP",
    "SCREEN CAPTURE",
    "STEREO WARP COST",
    "DEPTH MODEL INFERENCE",
    "PART 2",
    "part 2, WHAT ELSE WAS RUNNING DURING THIS TEST",
    "part 2, VRAM while the game is running",
    "part 2, HEADSET / OPENXR",
    "HAND TRACKING",
    "part 2, frame rate reaching the capture",
    "VERDICT",
};

/// FNV-1a, which is the same everywhere.
class Hash {
  public:
    void Add(std::string_view text) {
        for (const char character : text) {
            AddByte(static_cast<unsigned char>(character));
        }
        AddByte(0xFF);  // No byte of UTF-8: keeps "ab", "c" from being "a", "bc".
    }
    std::string Digits() const { return FormatText("%016llx", static_cast<unsigned long long>(value_)); }

  private:
    void AddByte(unsigned char byte) { value_ = (value_ ^ byte) * 1099511628211ULL; }
    std::uint64_t value_ = 14695981039346656037ULL;
};

}  // namespace

std::string_view PartName(Part part) {
    return kPartNames[static_cast<std::size_t>(part)];
}

TextFact* FindLine(Facts& facts, LineNumber number) {
    const auto found =
        std::lower_bound(facts.lines.begin(), facts.lines.end(), number,
                         [](const TextFact& line, LineNumber wanted) { return line.line < wanted; });
    return found == facts.lines.end() || found->line != number ? nullptr : &*found;
}

const TextFact* FindLine(const Facts& facts, LineNumber number) {
    const auto found =
        std::lower_bound(facts.lines.begin(), facts.lines.end(), number,
                         [](const TextFact& line, LineNumber wanted) { return line.line < wanted; });
    return found == facts.lines.end() || found->line != number ? nullptr : &*found;
}

const GpuFacts* FindGpu(const Facts& facts, std::int64_t number) {
    const auto found = std::find_if(facts.gpus.begin(), facts.gpus.end(),
                                    [number](const GpuFacts& gpu) { return gpu.number == number; });
    return found == facts.gpus.end() ? nullptr : &*found;
}

const HeadsetFacts* LastHeadset(const Facts& facts) {
    if (facts.Has(Part::HeadsetTwo)) {
        return &facts.headset_in_two;
    }
    return facts.Has(Part::Headset) ? &facts.headset : nullptr;
}

const HeadsetFacts* HeadsetWithGpu(const Facts& facts) {
    const bool only_in_one = !facts.headset_in_two.required_gpu && facts.headset.required_gpu;
    return only_in_one ? &facts.headset : LastHeadset(facts);
}

const DisplayFacts* PrimaryDisplay(const Facts& facts) {
    const auto found = std::find_if(facts.displays.rbegin(), facts.displays.rend(),
                                    [](const DisplayFacts& display) { return display.primary; });
    return found == facts.displays.rend() ? nullptr : &*found;
}

bool DepthIsFromReShade(const Facts& facts) {
    const std::optional<TextFact>& source = facts.settings.depth_source;
    return source ? source->text == "ReShade" : facts.verdict.reshade_mode;
}

std::size_t HardwareGpuCount(const Facts& facts) {
    return static_cast<std::size_t>(std::count_if(facts.gpus.begin(), facts.gpus.end(),
                                                  [](const GpuFacts& gpu) { return !gpu.software; }));
}

const WarpRow* DesktopWarp(const Facts& facts) {
    const std::vector<WarpRow>& rows = facts.warp.rows;
    return !rows.empty() && rows.front().label.starts_with("your desktop") ? &rows.front() : nullptr;
}

const ModelRow* ConfiguredModel(const Facts& facts) {
    const auto found = std::find_if(facts.models.rows.begin(), facts.models.rows.end(),
                                    [](const ModelRow& row) { return row.configured; });
    return found == facts.models.rows.end() ? nullptr : &*found;
}

std::string MachineKey(const Facts& facts) {
    if (!facts.machine.processor && !facts.machine.memory_gb && facts.gpus.empty()) {
        return {};
    }
    Hash hash;
    hash.Add(facts.machine.processor ? facts.machine.processor->text : "");
    hash.Add(facts.machine.memory_gb ? FormatText("%.1f", *facts.machine.memory_gb) : "");
    for (const GpuFacts& gpu : facts.gpus) {
        hash.Add(gpu.name);
        hash.Add(gpu.dedicated_mb ? FormatText("%.0f", *gpu.dedicated_mb) : "");
    }
    return hash.Digits();
}
