#include "tools/vistrel_report/json_output.h"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

Json TextOrNull(const std::optional<TextFact>& fact) {
    return fact ? Json(fact->text) : Json();
}

template <typename Value>
Json ValueOrNull(const std::optional<Value>& value) {
    return value ? Json(*value) : Json();
}

Json MachineJson(const MachineFacts& machine) {
    return {{"windows", TextOrNull(machine.windows)},
            {"build", ValueOrNull(machine.build)},
            {"processor", TextOrNull(machine.processor)},
            {"logical_processors", ValueOrNull(machine.logical_processors)},
            {"memory_gb", ValueOrNull(machine.memory_gb)},
            {"free_memory_gb", ValueOrNull(machine.free_memory_gb)},
            {"gpu_scheduling", TextOrNull(machine.gpu_scheduling)}};
}

Json MemoryJson(const std::optional<MemoryUse>& memory) {
    return memory ? Json({{"used_mb", memory->used_mb}, {"budget_mb", memory->budget_mb}}) : Json();
}

Json GpusJson(const std::vector<GpuFacts>& gpus) {
    Json list = Json::array();
    for (const GpuFacts& gpu : gpus) {
        list.push_back({{"number", gpu.number},
                        {"name", gpu.name},
                        {"vendor", gpu.vendor},
                        {"software", gpu.software},
                        {"dedicated_mb", ValueOrNull(gpu.dedicated_mb)},
                        {"shared_mb", ValueOrNull(gpu.shared_mb)},
                        {"displays", gpu.displays.size()},
                        {"memory", MemoryJson(gpu.memory)},
                        {"game_memory", MemoryJson(gpu.memory_in_two)}});
    }
    return list;
}

Json DisplaysJson(const std::vector<DisplayFacts>& displays) {
    Json list = Json::array();
    for (const DisplayFacts& display : displays) {
        list.push_back({{"width", display.width},
                        {"height", display.height},
                        {"refresh_hz", display.refresh_hz},
                        {"primary", display.primary},
                        {"gpu", display.gpu}});
    }
    return list;
}

Json SettingsJson(const SettingsFacts& settings) {
    return {{"product_version", TextOrNull(settings.product_version)},
            {"depth_source", TextOrNull(settings.depth_source)},
            {"depth_model", TextOrNull(settings.depth_model)},
            {"ai_rate_limit", ValueOrNull(settings.ai_rate_limit)},
            {"stereo_enabled", ValueOrNull(settings.stereo_enabled)},
            {"separation_mm", ValueOrNull(settings.separation_mm)},
            {"depth_strength", ValueOrNull(settings.depth_strength)}};
}

Json HeadsetJson(const Facts& facts) {
    const HeadsetFacts& headset = facts.headset_in_two.runtime ? facts.headset_in_two : facts.headset;
    const HeadsetFacts& seen = facts.headset_in_two.eye_width ? facts.headset_in_two : facts.headset;
    const HeadsetFacts* const with_gpu = HeadsetWithGpu(facts);
    return {{"runtime", TextOrNull(headset.runtime)},
            {"eye_width", ValueOrNull(seen.eye_width)},
            {"eye_height", ValueOrNull(seen.eye_height)},
            {"required_gpu", with_gpu != nullptr ? ValueOrNull(with_gpu->required_gpu) : Json()}};
}

Json CaptureJson(const CaptureFacts& capture) {
    return {{"width", ValueOrNull(capture.width)},
            {"height", ValueOrNull(capture.height)},
            {"fps", ValueOrNull(capture.fps)},
            {"failed", capture.failure.has_value()}};
}

Json WarpJson(const Facts& facts) {
    const WarpRow* const desktop = DesktopWarp(facts);
    Json list = Json::array();
    for (const WarpRow& row : facts.warp.rows) {
        list.push_back({{"width", row.width},
                        {"height", row.height},
                        {"desktop", &row == desktop},
                        {"gpu_ms", row.milliseconds},
                        {"vram_mb", row.vram_mb}});
    }
    return list;
}

Json ModelsJson(const ModelFacts& models) {
    Json list = Json::array();
    for (const ModelRow& row : models.rows) {
        list.push_back({{"name", row.name},
                        {"configured", row.configured},
                        {"median_ms", ValueOrNull(row.median_ms)},
                        {"min_ms", row.median_ms ? Json(row.min_ms) : Json()},
                        {"max_ms", row.median_ms ? Json(row.max_ms) : Json()}});
    }
    return list;
}

std::string_view ModeName(const VerdictFacts& verdict) {
    return verdict.reshade_mode ? "reshade" : "ai";
}

Json VerdictJson(const VerdictFacts& verdict) {
    Json shares = Json::array();
    for (const ShareRow& row : verdict.shares) {
        shares.push_back({{"refresh_hz", row.refresh_hz},
                          {"warp_ms_per_second", row.warp_ms_per_second},
                          {"ai_percent", ValueOrNull(row.ai_percent)},
                          {"reshade_percent", ValueOrNull(row.reshade_percent)}});
    }
    return {{"mode", verdict.share ? Json(ModeName(verdict)) : Json()},
            {"share_percent", ValueOrNull(verdict.share)},
            {"model_rate", ValueOrNull(verdict.model_rate)},
            {"shares", shares}};
}

Json CutShortJson(const std::optional<BrokenOff>& end) {
    return end ? Json({{"section", end->section}, {"cause", end->cause}, {"line", end->line}}) : Json();
}

Json BrokenSectionsJson(const std::vector<BrokenOff>& sections) {
    Json list = Json::array();
    for (const BrokenOff& broken : sections) {
        list.push_back({{"section", broken.section}, {"cause", broken.cause}, {"line", broken.line}});
    }
    return list;
}

Json FindingsJson(const Findings& findings) {
    Json list = Json::array();
    for (const Finding& finding : findings.all) {
        Json missing = Json::array();
        for (const Part part : finding.judgement.missing) {
            missing.push_back(PartName(part));
        }
        Json doubts = Json::array();
        for (const Rule* rule : finding.doubtful_because) {
            doubts.push_back(rule->id);
        }
        list.push_back({{"rule", finding.rule->id},
                        {"level", LevelName(finding.rule->level)},
                        {"answer", AnswerName(finding.judgement.answer)},
                        {"says", finding.judgement.says.empty() ? Json() : Json(finding.judgement.says)},
                        {"lines", finding.judgement.lines},
                        {"missing", missing},
                        {"doubtful_because", doubts}});
    }
    return list;
}

Json TextsJson(const std::vector<TextFact>& facts) {
    Json list = Json::array();
    for (const TextFact& fact : facts) {
        list.push_back(fact.text);
    }
    return list;
}

Json PersonalJson(const Facts& facts) {
    Json overrides = Json::array();
    for (const OverrideFacts& choice : facts.overrides) {
        overrides.push_back({{"application", choice.application}, {"choice", choice.choice}});
    }
    return {{"folder", TextOrNull(facts.folder)},
            {"settings_file", TextOrNull(facts.settings.file)},
            {"settings_lines", TextsJson(facts.quoted_settings)},
            {"log_file", TextOrNull(facts.log_path)},
            {"log_lines", TextsJson(facts.log_lines)},
            {"foreground_program", TextOrNull(facts.software.foreground_program)},
            {"foreground_title", TextOrNull(facts.software.foreground_title)},
            {"game_foreground_program", TextOrNull(facts.software_in_two.foreground_program)},
            {"game_foreground_title", TextOrNull(facts.software_in_two.foreground_title)},
            {"gpu_choices", overrides}};
}

Json ReportJson(const Facts& facts, const Findings& findings, bool with_personal_data) {
    const std::string key = MachineKey(facts);
    Json kinds = Json::array();
    for (const NoteFact& note : facts.notes) {
        kinds.push_back(note.kind);
    }
    return {{"schema", kSchema},
            {"report", facts.name},
            {"report_version", ValueOrNull(facts.report_version)},
            {"machine_key", key.empty() ? Json() : Json(key)},
            {"summary", findings.summary},
            {"verdict_judged", findings.verdict_judged},
            {"machine", MachineJson(facts.machine)},
            {"gpus", GpusJson(facts.gpus)},
            {"displays", DisplaysJson(facts.displays)},
            {"programs", TextsJson(facts.software.programs)},
            {"game_programs", TextsJson(facts.software_in_two.programs)},
            {"settings", SettingsJson(facts.settings)},
            {"headset", HeadsetJson(facts)},
            {"benchmark_gpu", ValueOrNull(facts.benchmark.gpu)},
            {"benchmark_gpu_name", facts.benchmark.gpu ? Json(facts.benchmark.gpu_name) : Json()},
            {"capture", facts.Has(Part::Capture) ? CaptureJson(facts.capture) : Json()},
            {"game_capture", facts.Has(Part::GameFrameRate) ? CaptureJson(facts.game) : Json()},
            {"warp", WarpJson(facts)},
            {"models", ModelsJson(facts.models)},
            {"verdict", facts.Has(Part::Verdict) ? VerdictJson(facts.verdict) : Json()},
            {"cut_short", CutShortJson(facts.cut_short)},
            {"broken_sections", BrokenSectionsJson(facts.broken_sections)},
            {"findings", FindingsJson(findings)},
            {"notes", kinds},
            {"lines_not_understood", facts.not_understood.size()},
            {"personal", with_personal_data ? PersonalJson(facts) : Json()}};
}

std::string Dumped(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string JsonLine(const Facts& facts, const Findings& findings, bool with_personal_data) {
    return Dumped(ReportJson(facts, findings, with_personal_data)) + "\n";
}
