#include "tools/vistrel_report/facts_from_reading.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "depth/depth_model_presets.h"
#include "platform/format.h"
#include "tools/vistrel_diag/worker/worker_end_reading.h"
#include "tools/vistrel_report/facts_of_sections.h"
#include "tools/vistrel_report/reading.h"
#include "tools/vistrel_report/report_document.h"

namespace {

std::string_view KindName(DocumentNoteKind kind) {
    switch (kind) {
        case DocumentNoteKind::Utf16:
            return "utf_16";
        case DocumentNoteKind::InvalidText:
            return "invalid_text";
        case DocumentNoteKind::ConsoleCopy:
            return "console_copy";
        case DocumentNoteKind::Quoted:
            return "quoted";
        case DocumentNoteKind::Wrapped:
            return "wrapped";
        case DocumentNoteKind::LineEndsLost:
            return "line_ends_lost";
        case DocumentNoteKind::NoOpening:
            return "no_opening";
        case DocumentNoteKind::OtherVersion:
            return "other_version";
        case DocumentNoteKind::CutOff:
            return "cut_off";
        case DocumentNoteKind::ForeignHeading:
            break;
    }
    return "foreign_heading";
}

/// The part that a section of the document is; part 2 repeats some.
Part PartOf(const SectionText& section) {
    const bool two = section.part == ReportPart::Two;
    switch (section.id) {
        case SectionId::RunningSoftware:
            return two ? Part::RunningSoftwareTwo : Part::RunningSoftware;
        case SectionId::Machine:
            return Part::Machine;
        case SectionId::Gpus:
            return Part::Gpus;
        case SectionId::Displays:
            return Part::Displays;
        case SectionId::GpuOverrides:
            return Part::GpuOverrides;
        case SectionId::Injection:
            return Part::Injection;
        case SectionId::SettingsFile:
        case SectionId::SettingsInEffect:
            return Part::Settings;
        case SectionId::SettingsVerbatim:
            return Part::SettingsVerbatim;
        case SectionId::ProductLog:
            return Part::ProductLog;
        case SectionId::Headset:
            return two ? Part::HeadsetTwo : Part::Headset;
        case SectionId::BenchmarkSetup:
            return Part::BenchmarkSetup;
        case SectionId::Capture:
            return Part::Capture;
        case SectionId::Warp:
            return Part::Warp;
        case SectionId::DepthModel:
            return Part::DepthModel;
        case SectionId::PartTwoSkipped:
            return Part::PartTwo;
        case SectionId::GameVideoMemory:
            return Part::VramTwo;
        case SectionId::HandTracking:
            return Part::HandTracking;
        case SectionId::GameFrameRate:
            return Part::GameFrameRate;
        case SectionId::Verdict:
            break;
    }
    return Part::Verdict;
}

void AddOpening(const std::optional<OpeningReading>& reading, Facts& facts) {
    if (!reading) {
        return;
    }
    if (reading->version_line != 0) {
        facts.report_version = reading->version;
    }
    if (!reading->tool_folder.empty()) {
        facts.folder = TextFact{reading->tool_folder, reading->folder_line};
    }
}

void AddCutShort(const std::optional<CutShortReading>& reading, const ReportDocument& document,
                 Facts& facts) {
    if (!reading || !document.cut_short) {
        return;
    }
    BrokenOff end{reading->section, {}, reading->line};
    end.crashed = reading->end == RunEnd::Crash || reading->end == RunEnd::Abort;
    // In the report's own words.
    std::string place;
    LineScan line(document.cut_short->text);
    line.UpTo(place, reading->section.empty() ? "first section: " : "\": ").UpToLast(end.cause, ". Whatever");
    facts.cut_short = end;
}

/// What was asked in a process of its own that died or hung, while the run went on.
void AddBrokenSections(const ReportDocument& document, Facts& facts) {
    for (const SectionText& section : document.sections) {
        if (section.id != SectionId::Headset && section.id != SectionId::DepthModel) {
            continue;
        }
        for (const SourceLine& line : section.lines) {
            std::string predicate;
            const bool told =
                LineScan(line.text).Text("!! The OpenXR query ").Rest(predicate).Matches() ||
                LineScan(line.text).Text("!! Loading onnxruntime.dll ").Rest(predicate).Matches();
            predicate.erase(predicate.find_last_not_of(". ") + 1);
            if (told && ReadWorkerEnd(predicate)) {
                facts.broken_sections.push_back(
                    {std::string(SectionTitle(section.id)), predicate, line.number});
            }
        }
    }
    for (const ModelRow& model : facts.models.rows) {
        if (ReadWorkerEnd(model.error)) {  // Not what the runtime says of itself.
            facts.broken_sections.push_back({std::string(SectionTitle(SectionId::DepthModel)),
                                             "\"" + model.name + "\" " + model.error, model.line});
        }
    }
}

void AddInjection(const std::optional<InjectionReading>& reading, Facts& facts) {
    if (!reading || !reading->found) {
        return;
    }
    for (std::size_t i = 0; i < reading->found->proxy_dlls.size(); ++i) {
        facts.proxy_dlls.push_back({reading->found->proxy_dlls[i], reading->proxy_dll_lines.at(i)});
    }
    for (std::size_t i = 0; i < reading->found->reshade_files.size(); ++i) {
        facts.reshade_files.push_back({reading->found->reshade_files[i], reading->reshade_file_lines.at(i)});
    }
}

void AddSettings(const PartOneReading& reading, Facts& facts) {
    SettingsFacts& settings = facts.settings;
    if (reading.settings_file) {
        settings.parse_error_line = reading.settings_file->line;
        settings.unreadable_file = TextFact{reading.settings_file->path, reading.settings_file->line};
    }
    if (!reading.settings) {
        return;
    }
    const SettingsInEffectReading& read = *reading.settings;
    if (read.version_line != 0) {
        settings.product_version = TextFact{read.product_version, read.version_line};
    }
    if (read.file_line != 0) {
        settings.file = TextFact{read.file_path, read.file_line};
    }
    const bool reshade = read.settings.depth_mode == DiagSettings::kReShadeDepthMode;
    if (read.depth_source_line != 0) {
        settings.depth_source = TextFact{reshade ? "ReShade" : "AI", read.depth_source_line};
    }
    if (read.depth_model_line != 0) {
        const DepthModelPreset* const preset = FindDepthModelPreset(read.settings.depth_model_quality);
        settings.depth_model =
            TextFact{preset != nullptr ? preset->display_name : "custom", read.depth_model_line};
    }
    if (read.rate_limit_line != 0 && std::isfinite(read.settings.ai_fps_limit)) {
        settings.ai_rate_limit = Rounded(read.settings.ai_fps_limit);
    }
    if (read.stereo_line != 0) {
        settings.stereo_enabled = read.settings.pseudo_3d;
    }
    if (read.separation_line != 0 && std::isfinite(read.separation_mm) &&
        std::isfinite(read.settings.f3d_depth_strength)) {
        settings.separation_mm = Rounded(read.separation_mm);
        settings.depth_strength = Rounded(read.settings.f3d_depth_strength);
    }
    // After a file that could not be parsed the report says "(not found)" as well.
    settings.defaults_line = reading.settings_file ? 0 : read.defaults_line;
    settings.stereo_off_line = read.no_stereo_line;
    settings.separation_line = read.near_zero_separation_line;
    settings.depth_strength_line = read.near_zero_strength_line;
}

/// The table marks the configured model only in a row with times. Its name is in the settings as well.
void MarkConfiguredModel(Facts& facts) {
    if (ConfiguredModel(facts) != nullptr || !facts.settings.depth_model) {
        return;
    }
    const auto row = std::find_if(
        facts.models.rows.begin(), facts.models.rows.end(),
        [&facts](const ModelRow& candidate) { return candidate.name == facts.settings.depth_model->text; });
    if (row != facts.models.rows.end() && !row->median_ms) {
        row->configured = true;
    }
}

void AddQuotedFiles(const PartOneReading& reading, Facts& facts) {
    const auto add = [&facts](const std::vector<ReadText>& quoted, LineNumber broke_off,
                              std::vector<TextFact>& lines) {
        std::transform(quoted.begin(), quoted.end(), std::back_inserter(lines), [](const ReadText& line) {
            return TextFact{line.text, line.line};
        });
        if (broke_off != 0) {
            facts.unread_file_lines.push_back(broke_off);
        }
    };
    if (const auto& settings = reading.settings_verbatim) {
        add(settings->quoted, settings->broke_off_line, facts.quoted_settings);
    }
    if (const auto& log = reading.product_log) {
        add(log->quoted, log->broke_off_line, facts.log_lines);
        if (!log->path.empty()) {
            facts.log_path = TextFact{log->path, std::max(log->path_line, log->no_log_line)};
        }
        facts.log_missing_line = log->no_log_line;
        facts.log_without_start_line = log->nothing_relevant_line;
    }
}

/// A section of which nothing was understood is not there.
void MarkParts(const Reading& reading, Facts& facts) {
    const auto mark = [&facts](Part part, bool present) {
        facts.present[static_cast<std::size_t>(part)] = present;
    };
    const PartOneReading& one = reading.part_one;
    const PartTwoReading& two = reading.part_two;
    mark(Part::Opening, reading.opening.has_value());
    mark(Part::RunningSoftware, one.running_software.has_value());
    mark(Part::Machine, one.machine.has_value());
    mark(Part::Gpus, one.gpus.has_value());
    mark(Part::Displays, one.displays.has_value());
    mark(Part::GpuOverrides, one.gpu_overrides.has_value());
    mark(Part::Injection, one.injection.has_value());
    mark(Part::Settings, one.settings.has_value() || one.settings_file.has_value());
    mark(Part::SettingsVerbatim, one.settings_verbatim.has_value());
    mark(Part::ProductLog, one.product_log.has_value());
    mark(Part::Headset, one.headset.has_value());
    mark(Part::BenchmarkSetup, one.benchmark_setup.has_value());
    mark(Part::Capture, one.capture.has_value());
    mark(Part::Warp, one.warp.has_value());
    mark(Part::DepthModel, one.depth_model.has_value());
    mark(Part::PartTwo, two.heading_line != 0);
    mark(Part::RunningSoftwareTwo, two.running_software.has_value());
    mark(Part::VramTwo, two.video_memory.has_value());
    mark(Part::HeadsetTwo, two.headset.has_value());
    mark(Part::HandTracking, two.hand_tracking.has_value());
    mark(Part::GameFrameRate, two.game_frame_rate.has_value());
    mark(Part::Verdict, reading.verdict.has_value());
}

std::string HeadingTitle(const SectionText& section) {
    const std::string title(SectionTitle(section.id));
    const std::string named = title.empty() ? std::string(PartName(PartOf(section))) : title;
    return section.part == ReportPart::Two && !title.empty() ? "Part 2: " + named : named;
}

Facts FactsOf(const ReportDocument& document, const std::string& name) {
    Facts facts;
    facts.name = name;
    const Reading reading = ReadReport(document);
    for (const SectionText& section : document.sections) {
        facts.headings.push_back({HeadingTitle(section), section.heading_line});
    }
    const PartOneReading& one = reading.part_one;
    const PartTwoReading& two = reading.part_two;
    AddOpening(reading.opening, facts);
    AddSoftware(one.running_software, facts.software);
    AddSoftware(two.running_software, facts.software_in_two);
    AddMachine(one.machine, facts.machine);
    AddGpus(one.gpus, facts);
    AddGameMemory(two.video_memory, facts);
    AddDisplays(one.displays, facts);
    AddOverrides(one.gpu_overrides, facts);
    AddInjection(one.injection, facts);
    AddSettings(one, facts);
    AddQuotedFiles(one, facts);
    AddHeadset(one.headset, facts.headset);
    AddHeadset(two.headset, facts.headset_in_two);
    AddBenchmark(one.benchmark_setup, facts.benchmark);
    AddCapture(one.capture, facts.capture);
    AddCapture(two.game_frame_rate, facts.game);
    AddWarp(one.warp, facts.warp);
    AddModels(one.depth_model, facts.models);
    MarkConfiguredModel(facts);
    AddHands(two.hand_tracking, facts.hands);
    AddVerdict(reading.verdict, facts.verdict);
    AddCutShort(reading.cut_short, document, facts);
    AddBrokenSections(document, facts);
    MarkParts(reading, facts);
    facts.part_two_skipped_line = two.skipped ? two.heading_line : 0;
    for (const SourceLine& line : document.lines) {
        facts.lines.push_back({std::string(line.text), line.number});
    }
    if (document.cut_short && FindLine(facts, document.cut_short->number) == nullptr) {
        facts.lines.push_back({std::string(document.cut_short->text), document.cut_short->number});
    }
    for (const SourceLine& line : reading.not_understood) {
        facts.not_understood.push_back(line.number);
    }
    for (const DocumentNote& note : reading.notes) {
        facts.notes.push_back({KindName(note.kind), note.text, note.line});
    }
    return facts;
}

}  // namespace

std::vector<Facts> ReadFacts(std::string bytes, const std::string& name) {
    const ReportFile file = ReportFile::FromBytes(std::move(bytes));
    std::vector<Facts> reports;
    for (const ReportDocument& document : file.Reports()) {
        const bool several = file.Reports().size() > 1;
        reports.push_back(
            FactsOf(document, several ? name + FormatText(" (%zu)", reports.size() + 1) : name));
    }
    return reports;
}
