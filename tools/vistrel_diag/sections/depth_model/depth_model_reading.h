// Reads back the lines of DEPTH MODEL INFERENCE.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "depth/inference_timing.h"
#include "tools/vistrel_diag/report/line_reading.h"
#include "tools/vistrel_diag/worker/worker_end.h"

/// One model. Not in the lines: fractions below a hundredth of a millisecond; the size and the path of a
/// model in the table; the size of a model that could not be timed.
struct ModelReading {
    ModelTiming timing;
    bool configured = false;  ///< the one that the product is set to use, as far as the report says
    std::uint32_t line = 0;   ///< of its time, or of the reason why it has none
};

struct DepthModelReading {
    std::vector<ModelReading> models;  ///< one, or a table of them
    std::optional<std::int32_t> runs;  ///< timed inferences; not printed with a table
    std::optional<std::int32_t> gpu;   ///< the GPU measured on, as the report numbers them
    std::string gpu_name;
    std::uint32_t gpu_line = 0;
    std::uint32_t table_line = 0;            ///< of the table's header; 0: one model at most
    std::uint32_t model_line = 0;            ///< of "Model           : ..."
    std::uint32_t path_line = 0;             ///< of "Path tried      : ..."
    std::uint32_t runtime_missing_line = 0;  ///< of "onnxruntime.dll is not next to this exe ..."
    std::optional<WorkerEnd> loading_ended;  ///< the process that loaded onnxruntime.dll ended
    std::uint32_t loading_ended_line = 0;
    std::uint32_t reshade_line = 0;         ///< of "Depth comes from ReShade on this setup ..."
    std::uint32_t no_custom_path_line = 0;  ///< of "Quality is set to Custom but ..."
};

/// Empty when no line was understood. Lines that were not understood are added to `unread`.
std::optional<DepthModelReading> ReadDepthModelSection(SourceLines lines, UnreadLines& unread);
