#include "tools/vistrel_diag/sections/benchmark_setup/benchmark_setup_reading.h"

#include <utility>

namespace {

bool ReadGpu(const SourceLine& line, BenchmarkSetupReading& reading) {
    std::int32_t gpu = 0;
    std::string name;
    if (reading.gpu_line != 0 || !LineScan(line.text)
                                      .Text("Benchmark GPU   : GPU ")
                                      .Whole(gpu)
                                      .Text(" (")
                                      .UpToLast(name, ")")
                                      .IsWhole()) {
        return false;
    }
    reading.gpu = gpu;
    reading.gpu_name = std::move(name);
    reading.gpu_line = line.number;
    return true;
}

bool ReadDeviceFailure(const SourceLine& line, BenchmarkSetupReading& reading) {
    std::uint32_t result = 0;
    if (!LineScan(line.text)
             .Text("!! D3D11CreateDevice failed (0x")
             .Hex(result)
             .Text("). Cannot benchmark.")
             .IsWhole()) {
        return false;
    }
    reading.device_result = result;
    reading.device_line = line.number;
    return true;
}

}  // namespace

std::optional<BenchmarkSetupReading> ReadBenchmarkSetupSection(SourceLines lines, UnreadLines& unread) {
    BenchmarkSetupReading reading;
    const bool any = ReadEachLine(lines, unread, [&reading](const SourceLine& line) {
        return ReadGpu(line, reading) || ReadDeviceFailure(line, reading) ||
               ReadFixedLine(line,
                             "  chosen the way Vistrel chooses it: the adapter the OpenXR runtime requires.",
                             reading.named_by_runtime_line) ||
               ReadFixedLine(
                   line,
                   "  chosen as the largest hardware GPU. The runtime did not name a required adapter (no "
                   "headset awake), so Vistrel's real choice could not be read - turn the headset on and "
                   "re-run to check for the cross-adapter case.",
                   reading.chosen_by_size_line);
    });
    return any ? std::optional(std::move(reading)) : std::nullopt;
}
