// One report as records, the basis of every finding.
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

/// The records of part 1, one per section. A section that is missing, or of which no line was understood, is
/// empty.
struct PartOneReading {
    std::optional<RunningSoftwareReading> running_software;
    std::optional<MachineReading> machine;
    std::optional<GpuReading> gpus;
    std::optional<DisplayReading> displays;
    std::optional<GpuOverrideReading> gpu_overrides;
    std::optional<InjectionReading> injection;
    std::optional<SettingsFileReading> settings_file;  ///< a file that could not be used
    std::optional<SettingsInEffectReading> settings;
    std::optional<SettingsVerbatimReading> settings_verbatim;
    std::optional<ProductLogReading> product_log;
    std::optional<HeadsetReading> headset;
    std::optional<BenchmarkSetupReading> benchmark_setup;
    std::optional<CaptureReading> capture;
    std::optional<WarpReading> warp;
    std::optional<DepthModelReading> depth_model;
};

/// The records of part 2.
struct PartTwoReading {
    bool skipped = false;            ///< the report says that the user skipped it
    std::uint32_t heading_line = 0;  ///< of part 2, run or skipped; 0 when there is none
    std::optional<RunningSoftwareReading> running_software;
    std::optional<GameVideoMemoryReading> video_memory;
    std::optional<HeadsetReading> headset;
    std::optional<HandTrackingReading> hand_tracking;
    std::optional<CaptureReading> game_frame_rate;
};

/// The records of a whole report. They own their data, except the lines not understood, which refer to the
/// file that the document is from.
struct Reading {
    std::optional<OpeningReading> opening;
    PartOneReading part_one;
    PartTwoReading part_two;
    std::optional<VerdictReading> verdict;
    std::optional<CutShortReading> cut_short;  ///< the run died
    std::vector<DocumentNote> notes;           ///< of the document
    UnreadLines not_understood;  ///< lines within the report that no reading function understood
};

/// Never fails: what cannot be read is left out, and its lines are listed as not understood.
Reading ReadReport(const ReportDocument& document);
