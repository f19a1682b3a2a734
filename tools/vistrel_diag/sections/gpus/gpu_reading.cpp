#include "tools/vistrel_diag/sections/gpus/gpu_reading.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <utility>

namespace {

constexpr std::string_view kOutOfHeadroom = "<<< OUT OF HEADROOM";

/// Megabytes and percent as they are printed, without decimals.
struct PrintedMemory {
    double usage = 0.0;
    double budget = 0.0;
    double percent = 0.0;
    std::optional<bool> out_of_headroom;  ///< where the line tells
};

std::uint64_t BytesOf(double bytes) {
    constexpr double kMostBytes = 18446744073709549568.0;  // The largest double below 2 to the power of 64.
    return static_cast<std::uint64_t>(std::fmin(std::fmax(std::nearbyint(bytes), 0.0), kMostBytes));
}

/// Below 0 when the percentage of `memory` is smaller than what was printed, above 0 when it is larger.
int Compare(const VideoMemoryUse& memory, const PrintedMemory& printed) {
    const double percent = BudgetPercent(memory);
    const double rounded = std::nearbyint(percent);
    if (rounded != printed.percent) {
        return rounded < printed.percent ? -1 : 1;
    }
    const bool out_of_headroom = percent > kHeadroomPercent;
    if (printed.out_of_headroom && *printed.out_of_headroom != out_of_headroom) {
        return out_of_headroom ? 1 : -1;
    }
    return 0;
}

/// The memory whose usage and budget are apart from the printed megabytes by `part` of half a megabyte, in
/// opposite directions.
VideoMemoryUse MemoryAt(const PrintedMemory& printed, double part) {
    constexpr double kHalf = 0.5;
    return {BytesOf((printed.usage + part * kHalf) * kBytesPerMegabyte),
            BytesOf((printed.budget - part * kHalf) * kBytesPerMegabyte), 0};
}

/// Bytes that print as that: the printed megabytes themselves, unless their percentage prints differently.
/// Then they are searched for where the megabytes still round to what was printed.
VideoMemoryUse MemoryThatPrints(const PrintedMemory& printed) {
    double low = -1.0;
    double high = 1.0;
    double part = 0.0;
    constexpr int kMostSteps = 60;
    for (int step = 0; step < kMostSteps; ++step) {
        const VideoMemoryUse memory = MemoryAt(printed, part);
        const int difference = Compare(memory, printed);
        if (difference == 0) {
            return memory;
        }
        (difference < 0 ? low : high) = part;
        part = (low + high) / 2.0;
    }
    return MemoryAt(printed, 0.0);
}

std::uint32_t VendorId(std::size_t place) {
    constexpr std::array<std::uint32_t, 5> kVendors = {0x1002, 0x10DE, 0x1414, 0x8086, 0};
    return kVendors.at(place);
}

std::vector<std::string> Separated(std::string_view names) {
    constexpr std::string_view kSeparator = ", ";
    std::vector<std::string> separated;
    while (true) {
        const std::size_t end = names.find(kSeparator);
        separated.emplace_back(names.substr(0, end));
        if (end == std::string_view::npos) {
            return separated;
        }
        names.remove_prefix(end + kSeparator.size());
    }
}

bool ReadName(std::string_view line, GpuInfo& gpu) {
    std::string vendor_and_kind;
    GpuInfo read;
    if (!LineScan(line)
             .Text("GPU ")
             .Whole(read.index)
             .Text("           : ")
             .UpToLast(read.name, " [")
             .Rest(vendor_and_kind)
             .Matches()) {
        return false;
    }
    std::size_t vendor = 0;
    std::size_t kind = 0;
    if (!LineScan(vendor_and_kind)
             .OneOf(vendor, {"AMD", "NVIDIA", "Microsoft", "Intel", "?"})
             .OneOf(kind, {"] (software)", "]"})
             .IsWhole()) {
        return false;
    }
    read.vendor_id = VendorId(vendor);
    read.software = kind == 0;
    gpu = std::move(read);
    return true;
}

bool ReadMemory(std::string_view line, GpuInfo& gpu) {
    double dedicated = 0.0;
    double shared = 0.0;
    if (!LineScan(line)
             .Text("  VRAM          : ")
             .Number(dedicated)
             .Text(" MB dedicated, ")
             .Number(shared)
             .Text(" MB shared system")
             .IsWhole()) {
        return false;
    }
    gpu.dedicated_video_memory = BytesOf(dedicated * kBytesPerMegabyte);
    gpu.shared_system_memory = BytesOf(shared * kBytesPerMegabyte);
    return true;
}

bool ReadLuid(std::string_view line, GpuInfo& gpu) {
    std::uint32_t high = 0;
    std::uint32_t low = 0;
    if (!LineScan(line).Text("  LUID          : ").Hex(high).Text(":").Hex(low).IsWhole()) {
        return false;
    }
    gpu.luid = {low, static_cast<std::int32_t>(high)};
    return true;
}

bool ReadDisplays(std::string_view line, GpuInfo& gpu) {
    std::string names;
    if (!LineScan(line).Text("  Displays      : ").Rest(names).Matches()) {
        return false;
    }
    if (!IsLine(names, "NONE attached to this GPU")) {
        gpu.displays = Separated(names);
    }
    return true;
}

bool ReadMemoryInUse(std::string_view line, std::optional<VideoMemoryUse>& memory) {
    PrintedMemory printed;
    if (!LineScan(line)
             .Text("  VRAM in use   : ")
             .Number(printed.usage)
             .Text(" MB of ")
             .Number(printed.budget)
             .Text(" MB budget (")
             .Number(printed.percent)
             .Text("%)")
             .IsWhole()) {
        return false;
    }
    memory = MemoryThatPrints(printed);
    return true;
}

bool ReadMemoryReserved(std::string_view line, std::optional<VideoMemoryUse>& memory) {
    double reserved = 0.0;
    if (!memory || !LineScan(line).Text("  VRAM reserved : ").Number(reserved).Text(" MB").IsWhole()) {
        return false;
    }
    // The line is there only where something is reserved, be it less than half a megabyte.
    memory->reservation = std::max<std::uint64_t>(BytesOf(reserved * kBytesPerMegabyte), 1);
    return true;
}

/// Reads a line that belongs to the GPU named last. Null when it is none.
std::uint32_t* ReadGpuLine(std::string_view line, ProbedGpu& probed, GpuLines& lines) {
    if (lines.memory == 0 && ReadMemory(line, probed.gpu)) {
        return &lines.memory;
    }
    if (lines.luid == 0 && ReadLuid(line, probed.gpu)) {
        return &lines.luid;
    }
    if (lines.displays == 0 && ReadDisplays(line, probed.gpu)) {
        return &lines.displays;
    }
    if (lines.memory_in_use == 0 && ReadMemoryInUse(line, probed.memory)) {
        return &lines.memory_in_use;
    }
    if (lines.memory_reserved == 0 && ReadMemoryReserved(line, probed.memory)) {
        return &lines.memory_reserved;
    }
    return nullptr;
}

/// Name and usage share `text`: the name is padded to 34 columns, and a blank follows.
bool SplitNameAndUsage(std::string_view text, std::string& name, double& usage) {
    constexpr std::size_t kNameColumns = 34;
    const std::size_t blank = text.find_last_of(' ');
    if (blank == std::string_view::npos || !LineScan(text.substr(blank)).Number(usage).IsWhole()) {
        return false;
    }
    name.assign(text.substr(0, blank));
    while (name.size() <= kNameColumns && name.ends_with(' ')) {
        name.pop_back();
    }
    return true;
}

bool ReadVramLine(std::string_view line, ProbedGpu& probed) {
    std::string name_and_usage;
    std::string rest;
    PrintedMemory printed;
    ProbedGpu read;
    if (!LineScan(line)
             .Text("  GPU ")
             .Whole(read.gpu.index)
             .Text(" ")
             .UpToLast(name_and_usage, " MB of ")
             .Number(printed.budget)
             .Text(" MB  (")
             .Number(printed.percent)
             .Text("%)")
             .Blanks()
             .Rest(rest)
             .Matches() ||
        !SplitNameAndUsage(name_and_usage, read.gpu.name, printed.usage)) {
        return false;
    }
    printed.out_of_headroom = IsLine(rest, kOutOfHeadroom);
    if (!*printed.out_of_headroom && !IsBlankLine(rest)) {
        return false;
    }
    read.memory = MemoryThatPrints(printed);
    probed = std::move(read);
    return true;
}

}  // namespace

bool GameVideoMemoryReading::OutOfHeadroom(std::size_t position) const {
    const std::optional<VideoMemoryUse>& memory = gpus.at(position).memory;
    return memory && BudgetPercent(*memory) > kHeadroomPercent;
}

std::optional<GpuReading> ReadGpuSection(SourceLines lines, UnreadLines& unread) {
    GpuReading reading;
    reading.inventory.factory_created = true;
    for (const SourceLine& line : lines) {
        ProbedGpu probed;
        if (IsBlankLine(line.text)) {
            continue;
        }
        if (ReadName(line.text, probed.gpu)) {
            reading.inventory.gpus.push_back(std::move(probed));
            reading.lines.emplace_back().name = line.number;
        } else if (IsLine(line.text,
                          "NOTE: more than one hardware GPU is present. Which one drives the monitor decides "
                          "whether capture is a local copy or a bus transfer.")) {
            reading.several_gpus_line = line.number;
        } else if (IsLine(line.text, "!! CreateDXGIFactory1 failed - cannot enumerate GPUs.")) {
            reading.inventory.factory_created = false;
            reading.factory_failed_line = line.number;
        } else if (std::uint32_t* where =
                       reading.lines.empty()
                           ? nullptr
                           : ReadGpuLine(line.text, reading.inventory.gpus.back(), reading.lines.back())) {
            *where = line.number;
        } else {
            unread.push_back(line);
        }
    }
    return reading;
}

std::optional<GameVideoMemoryReading> ReadVramLines(SourceLines lines, UnreadLines& unread) {
    GameVideoMemoryReading reading;
    for (const SourceLine& line : lines) {
        ProbedGpu probed;
        if (IsBlankLine(line.text)) {
            continue;
        }
        if (reading.heading_line == 0 &&
            LineScan(line.text).Text("VRAM ").UpToLast(reading.moment, ":").IsWhole()) {
            reading.heading_line = line.number;
        } else if (ReadVramLine(line.text, probed)) {
            reading.gpus.push_back(std::move(probed));
            reading.lines.push_back(line.number);
        } else {
            unread.push_back(line);
        }
    }
    if (reading.heading_line == 0 && reading.gpus.empty()) {
        return std::nullopt;
    }
    return reading;
}
