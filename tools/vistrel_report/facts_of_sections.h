// What the sections of a report say, as facts. A section that the report lacks adds none.
#pragma once

#include <cmath>
#include <optional>

#include "tools/vistrel_report/facts.h"

struct BenchmarkSetupReading;
struct CaptureReading;
struct DepthModelReading;
struct DisplayReading;
struct GameVideoMemoryReading;
struct GpuOverrideReading;
struct GpuReading;
struct HandTrackingReading;
struct HeadsetReading;
struct MachineReading;
struct RunningSoftwareReading;
struct VerdictReading;
struct WarpReading;

/// Without the digits behind what the report prints.
inline double Rounded(double value) {
    return std::round(value * 100.0) / 100.0;
}

void AddSoftware(const std::optional<RunningSoftwareReading>& reading, SoftwareFacts& facts);
void AddMachine(const std::optional<MachineReading>& reading, MachineFacts& facts);
void AddGpus(const std::optional<GpuReading>& reading, Facts& facts);
void AddGameMemory(const std::optional<GameVideoMemoryReading>& reading, Facts& facts);
void AddDisplays(const std::optional<DisplayReading>& reading, Facts& facts);
void AddOverrides(const std::optional<GpuOverrideReading>& reading, Facts& facts);
void AddHeadset(const std::optional<HeadsetReading>& reading, HeadsetFacts& facts);
void AddBenchmark(const std::optional<BenchmarkSetupReading>& reading, BenchmarkFacts& facts);
void AddCapture(const std::optional<CaptureReading>& reading, CaptureFacts& facts);
void AddWarp(const std::optional<WarpReading>& reading, WarpFacts& facts);
void AddModels(const std::optional<DepthModelReading>& reading, ModelFacts& facts);
void AddHands(const std::optional<HandTrackingReading>& reading, HandFacts& facts);
void AddVerdict(const std::optional<VerdictReading>& reading, VerdictFacts& facts);
