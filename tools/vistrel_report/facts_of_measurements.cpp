// Headset, capture, costs, hands and verdict.
#include "platform/format.h"
#include "tools/vistrel_diag/sections/benchmark_setup/benchmark_setup_reading.h"
#include "tools/vistrel_diag/sections/capture/capture_reading.h"
#include "tools/vistrel_diag/sections/depth_model/depth_model_reading.h"
#include "tools/vistrel_diag/sections/hand_tracking/hand_tracking_reading.h"
#include "tools/vistrel_diag/sections/headset/headset_reading.h"
#include "tools/vistrel_diag/sections/verdict/verdict_reading.h"
#include "tools/vistrel_diag/sections/warp/warp_reading.h"
#include "tools/vistrel_report/facts_of_sections.h"

namespace {

std::optional<TextFact> TextOf(const std::optional<ReadText>& text) {
    return text ? std::optional(TextFact{text->text, text->line}) : std::nullopt;
}

}  // namespace

void AddHeadset(const std::optional<HeadsetReading>& reading, HeadsetFacts& facts) {
    if (!reading) {
        return;
    }
    facts.runtime = TextOf(reading->runtime);
    facts.message = TextOf(reading->message);
    if (reading->eye_width && reading->eye_height) {
        facts.eye_width = *reading->eye_width;
        facts.eye_height = *reading->eye_height;
    }
    if (reading->required_gpu) {
        facts.required_gpu = reading->required_gpu->gpu;
        facts.required_gpu_name = reading->required_gpu->name;
        facts.required_gpu_line = reading->required_gpu->line;
    }
    if (!reading->cross_gpu_lines.empty()) {
        facts.cross_gpu_line = reading->cross_gpu_lines.front();
    }
}

void AddBenchmark(const std::optional<BenchmarkSetupReading>& reading, BenchmarkFacts& facts) {
    if (!reading) {
        return;
    }
    if (reading->gpu_line != 0) {
        facts.gpu = reading->gpu;
        facts.gpu_name = reading->gpu_name;
        facts.gpu_line = reading->gpu_line;
    }
    facts.guessed_line = reading->chosen_by_size_line;
    if (reading->device_result) {
        facts.failure = TextFact{FormatText("0x%08X", static_cast<unsigned>(*reading->device_result)),
                                 reading->device_line};
    }
}

void AddCapture(const std::optional<CaptureReading>& reading, CaptureFacts& facts) {
    if (!reading) {
        return;
    }
    const CaptureMeasurement& measurement = reading->measurement;
    if (reading->failure_line != 0) {
        facts.failure = TextFact{measurement.error, reading->failure_line};
    }
    if (measurement.width != 0 && measurement.height != 0) {
        facts.width = measurement.width;
        facts.height = measurement.height;
        facts.size_line = reading->size_line;
    }
    if (reading->other_gpu_line != 0) {
        facts.other_gpu = TextFact{measurement.capture_gpu_name, reading->other_gpu_line};
    }
    if (reading->frame_rate_line != 0) {
        facts.fps = reading->frames_per_second;
        facts.fps_line = reading->frame_rate_line;
    }
    facts.not_read_back_line = reading->synthetic_picture_line;
}

void AddWarp(const std::optional<WarpReading>& reading, WarpFacts& facts) {
    if (!reading) {
        return;
    }
    for (const WarpRowReading& row : reading->rows) {
        facts.rows.push_back({row.width, row.height, row.label, row.gpu_ms, row.vram_mb, row.line});
    }
    for (const ReadText& problem : reading->problems) {
        facts.failures.push_back({problem.text, problem.line});
    }
    facts.shader_failure_line = reading->shader_error ? reading->shader_error->line : 0;
}

void AddModels(const std::optional<DepthModelReading>& reading, ModelFacts& facts) {
    if (!reading) {
        return;
    }
    for (const ModelReading& model : reading->models) {
        ModelRow row;
        row.name = model.timing.name;
        row.error = model.timing.error;
        row.configured = model.configured;
        row.line = model.line;
        if (model.timing.ok) {
            row.median_ms = model.timing.median_ms;
            row.min_ms = model.timing.min_ms;
            row.max_ms = model.timing.max_ms;
        }
        facts.rows.push_back(row);
    }
    facts.runtime_missing_line = reading->runtime_missing_line;
    facts.no_custom_model_line = reading->no_custom_path_line;
}

void AddHands(const std::optional<HandTrackingReading>& reading, HandFacts& facts) {
    if (!reading) {
        return;
    }
    if (reading->extensions) {
        facts.hand_tracking = reading->extensions->hand_tracking;
        facts.data_source = reading->extensions->data_source;
        facts.data_source_line = reading->extensions_line;
    }
    if (reading->stop) {
        facts.stop = TextFact{"stopped", reading->stop_line};
    }
    if (reading->conclusion) {
        facts.told_apart = *reading->conclusion == HandConclusion::Reported;
        facts.conclusion = TextFact{"concluded", reading->conclusion_line};
    }
}

void AddVerdict(const std::optional<VerdictReading>& reading, VerdictFacts& facts) {
    if (!reading) {
        return;
    }
    for (const RefreshRowReading& row : reading->rows) {
        facts.shares.push_back(
            {row.refresh_hz, row.warp_ms_a_second, row.ai_percent, row.reshade_percent, row.line});
    }
    facts.reshade_mode = reading->reshade_mode.value_or(false);
    if (reading->model) {
        facts.model_rate = reading->model->rate;
        facts.model_too_slow_line = reading->model->cannot_keep_up_line;
    }
    if (reading->grade) {
        facts.share = reading->percent;
        facts.share_line = reading->grade_line;
    }
    facts.not_measured_line = reading->no_verdict_line;
}
