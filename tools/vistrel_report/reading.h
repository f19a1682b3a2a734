// One report as records: what every finding rests on.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "tools/vistrel_diag/run_texts_reading.h"
#include "tools/vistrel_diag/sections/benchmark_setup/benchmark_setup_reading.h"
#include "tools/vistrel_diag/sections/capture/capture_reading.h"
#include "tools/vistrel_diag/sections/depth_model/depth_model_reading.h"
#include "tools/vistrel_diag/sections/displays/display_reading.h"
#include "tools/vistrel_diag/sections/gpu_overrides/gpu_override_reading.h"
#include "tools/vistrel_diag/sections/gpus/gpu_reading.h"
#include "tools/vistrel_diag/sections/hand_tracking/hand_tracking_reading.h"
#include "tools/vistrel_diag/sections/headset/headset_reading.h"
#include "tools/vistrel_diag/sections/injection/injection_reading.h"
#include "tools/vistrel_diag/sections/machine/machine_reading.h"
#include "tools/vistrel_diag/sections/product_log/product_log_reading.h"
#include "tools/vistrel_diag/sections/running_software/running_software_reading.h"
#include "tools/vistrel_diag/sections/settings/settings_reading.h"
#include "tools/vistrel_diag/sections/verdict/verdict_reading.h"
#include "tools/vistrel_diag/sections/warp/warp_reading.h"
#include "tools/vistrel_report/report_document.h"

/// Part 1 read, a record a section. A section that is not there, or of which nothing was understood, is
/// empty.
struct PartOneReading {
    std::optional<RunningSoftwareReading> running_software;
    std::optional<MachineReading> machine;
    std::optional<GpuReading> gpus;
    std::optional<DisplayReading> displays;
    std::optional<GpuOverrideReading> gpu_overrides;
    std::optional<InjectionReading> injection;
    std::optional<SettingsFileReading> settings_file;  ///< one that could not be used
    std::optional<SettingsInEffectReading> settings;
    std::optional<SettingsVerbatimReading> settings_verbatim;
    std::optional<ProductLogReading> product_log;
    std::optional<HeadsetReading> headset;
    std::optional<BenchmarkSetupReading> benchmark_setup;
    std::optional<CaptureReading> capture;
    std::optional<WarpReading> warp;
    std::optional<DepthModelReading> depth_model;
};

/// Part 2 read.
struct PartTwoReading {
    bool skipped = false;            ///< the report says that the user skipped it
    std::uint32_t heading_line = 0;  ///< of either heading; 0 without part 2, skipped or not
    std::optional<RunningSoftwareReading> running_software;
    std::optional<GameVideoMemoryReading> video_memory;
    std::optional<HeadsetReading> headset;
    std::optional<HandTrackingReading> hand_tracking;
    std::optional<CaptureReading> game_frame_rate;
};

/// A report read. Everything is owned but the lines not understood, which refer to the file that the document
/// is from.
struct Reading {
    std::optional<OpeningReading> opening;
    PartOneReading part_one;
    PartTwoReading part_two;
    std::optional<VerdictReading> verdict;
    std::optional<CutShortReading> cut_short;  ///< the run died
    std::vector<DocumentNote> notes;           ///< the document's
    UnreadLines not_understood;                ///< lines within the report that no reading claims
};

/// Never fails: what cannot be read is left out and, as far as there are lines of it, told as not understood.
Reading ReadReport(const ReportDocument& document);
