#include <utility>
#include <vector>

#include "platform/format.h"
#include "platform/utf8.h"
#include "tools/vistrel_report/json_output.h"

namespace {

/// A name and a cell, which is written already.
using Column = std::pair<std::string_view, std::string>;
using Columns = std::vector<Column>;

std::string TextCell(const std::optional<TextFact>& fact) {
    return fact ? CsvCell(fact->text) : std::string();
}

std::string Number(const std::optional<std::int64_t>& number) {
    return number ? std::to_string(*number) : std::string();
}

std::string Number(const std::optional<double>& number) {
    return number ? FormatText("%.2f", *number) : std::string();
}

void AddMachine(const Facts& facts, Columns& columns) {
    const MachineFacts& machine = facts.machine;
    columns.emplace_back("windows", TextCell(machine.windows));
    columns.emplace_back("build", Number(machine.build));
    columns.emplace_back("processor", TextCell(machine.processor));
    columns.emplace_back("logical_processors", Number(machine.logical_processors));
    columns.emplace_back("memory_gb", Number(machine.memory_gb));
    columns.emplace_back("free_memory_gb", Number(machine.free_memory_gb));
    columns.emplace_back("gpu_scheduling", TextCell(machine.gpu_scheduling));
    columns.emplace_back("benchmark_gpu_name", CsvCell(facts.benchmark.gpu_name));
    const HeadsetFacts& headset = facts.headset_in_two.runtime ? facts.headset_in_two : facts.headset;
    columns.emplace_back("runtime", TextCell(headset.runtime));
    const HeadsetFacts* const with_gpu = HeadsetWithGpu(facts);
    columns.emplace_back("required_gpu", with_gpu != nullptr ? Number(with_gpu->required_gpu) : "");
}

void AddMeasurements(const Facts& facts, Columns& columns) {
    const WarpRow* const desktop = DesktopWarp(facts);
    const ModelRow* const model = ConfiguredModel(facts);
    columns.emplace_back("desktop_width", desktop != nullptr ? std::to_string(desktop->width) : "");
    columns.emplace_back("desktop_height", desktop != nullptr ? std::to_string(desktop->height) : "");
    columns.emplace_back("desktop_warp_ms",
                         desktop != nullptr ? FormatText("%.2f", desktop->milliseconds) : "");
    columns.emplace_back("model", model != nullptr ? CsvCell(model->name) : "");
    columns.emplace_back("model_median_ms", model != nullptr ? Number(model->median_ms) : "");
    columns.emplace_back("capture_fps", Number(facts.capture.fps));
    columns.emplace_back("game_fps", Number(facts.game.fps));
    columns.emplace_back("mode", !facts.verdict.share ? "" : facts.verdict.reshade_mode ? "reshade" : "ai");
    columns.emplace_back("share_percent", Number(facts.verdict.share));
    columns.emplace_back("cut_short_section", facts.cut_short ? CsvCell(facts.cut_short->section) : "");
    columns.emplace_back("cut_short_cause", facts.cut_short ? CsvCell(facts.cut_short->cause) : "");
    columns.emplace_back("lines_not_understood", std::to_string(facts.not_understood.size()));
}

Columns ColumnsOf(const Facts& facts, const Findings& findings, bool with_personal_data) {
    Columns columns;
    columns.emplace_back("schema", std::to_string(kSchema));
    columns.emplace_back("report", CsvCell(facts.name));
    columns.emplace_back("report_version", CsvCell(facts.report_version.value_or("")));
    columns.emplace_back("machine_key", MachineKey(facts));
    columns.emplace_back("summary", CsvCell(findings.summary));
    columns.emplace_back("verdict_judged", findings.verdict_judged ? "true" : "false");
    AddMachine(facts, columns);
    AddMeasurements(facts, columns);
    for (const Finding& finding : findings.all) {
        columns.emplace_back(finding.rule->id, std::string(AnswerName(finding.judgement.answer)));
    }
    if (with_personal_data) {
        columns.emplace_back("folder", TextCell(facts.folder));
        columns.emplace_back("settings_file", TextCell(facts.settings.file));
        columns.emplace_back("log_file", TextCell(facts.log_path));
        columns.emplace_back("foreground_program", TextCell(facts.software.foreground_program));
        columns.emplace_back("foreground_title", TextCell(facts.software.foreground_title));
    }
    return columns;
}

}  // namespace

std::string CsvCell(std::string_view text) {
    std::string cell = ValidUtf8(text);
    if (!cell.empty() && std::string_view("=+-@\t\r").find(cell.front()) != std::string_view::npos) {
        cell.insert(0, "'");
    }
    if (cell.find_first_of("\",\r\n") == std::string::npos) {
        return cell;
    }
    std::string quoted = "\"";
    for (const char character : cell) {
        quoted += character == '"' ? "\"\"" : std::string(1, character);
    }
    return quoted + "\"";
}

std::string CsvHead(bool with_personal_data) {
    const Facts nothing;
    std::string row;
    for (const Column& column : ColumnsOf(nothing, JudgeReport(nothing), with_personal_data)) {
        row.append(row.empty() ? "" : ",").append(column.first);
    }
    return row + "\r\n";
}

std::string CsvRow(const Facts& facts, const Findings& findings, bool with_personal_data) {
    std::string row;
    for (const Column& column : ColumnsOf(facts, findings, with_personal_data)) {
        row.append(row.empty() ? "" : ",").append(column.second);
    }
    return row + "\r\n";
}
