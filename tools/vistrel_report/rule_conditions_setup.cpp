// What was running, where the tool ran, how the run ended, and what the product is set to.
#include <algorithm>
#include <array>

#include "platform/format.h"
#include "platform/letter_case.h"
#include "tools/vistrel_report/judgements.h"
#include "tools/vistrel_report/rule_conditions.h"

namespace RuleConditions {
namespace {

/// The running programs of `software` whose name is among `names`.
template <std::size_t Count>
std::vector<TextFact> Running(const SoftwareFacts& software,
                              const std::array<std::string_view, Count>& names) {
    std::vector<TextFact> running;
    std::copy_if(software.programs.begin(), software.programs.end(), std::back_inserter(running),
                 [&names](const TextFact& program) {
                     return std::any_of(names.begin(), names.end(), [&program](std::string_view name) {
                         return EqualsIgnoringAsciiCase(name, program.text);
                     });
                 });
    return running;
}

std::vector<LineNumber> LinesOf(const std::vector<TextFact>& facts) {
    std::vector<LineNumber> lines;
    std::transform(facts.begin(), facts.end(), std::back_inserter(lines),
                   [](const TextFact& fact) { return fact.line; });
    return lines;
}

/// The names, each once.
std::string NamesOf(const std::vector<TextFact>& facts) {
    std::string names;
    for (auto fact = facts.begin(); fact != facts.end(); ++fact) {
        const bool told = std::any_of(facts.begin(), fact,
                                      [&fact](const TextFact& before) { return before.text == fact->text; });
        if (!told) {
            names += (names.empty() ? "" : ", ") + fact->text;
        }
    }
    return names;
}

bool NoneWasFound(const ModelFacts& models) {
    return !models.rows.empty() &&
           std::all_of(models.rows.begin(), models.rows.end(), [](const ModelRow& row) {
               return !row.median_ms && row.error.find("model file not found") != std::string::npos;
           });
}

}  // namespace

Judgement ProductRunning(const Facts& facts) {
    if (!facts.Has(Part::RunningSoftware) && !facts.Has(Part::RunningSoftwareTwo)) {
        return NotJudged({Part::RunningSoftware});
    }
    const LineNumber one = facts.software.product_running_line;
    const LineNumber two = facts.software_in_two.product_running_line;
    if (one == 0 && two == 0) {
        return NotFound();
    }
    const char* when = two == 0 ? "part 1" : one == 0 ? "part 2" : "both parts";
    return Found(
        FormatText("Vistrel was running in %s. It holds the screen capture and competes for the GPU, so "
                   "the capture fails and the timings read too high.",
                   when),
        {one, two});
}

Judgement WrongFolder(const Facts& facts) {
    const bool no_model = NoneWasFound(facts.models);
    const bool no_runtime = facts.models.runtime_missing_line != 0;
    if (facts.models.rows.empty() && !no_runtime) {
        return DoesNotApply();
    }
    const LineNumber shader = facts.warp.shader_failure_line;
    const LineNumber settings = facts.settings.defaults_line;
    const bool shader_found = !facts.warp.rows.empty() || !facts.warp.failures.empty();
    if (!(no_model || no_runtime) || shader_found || (shader == 0 && settings == 0)) {
        return NotFound();  // The shader lies in the folder of the models and the AI runtime.
    }
    std::vector<LineNumber> lines = {facts.folder ? facts.folder->line : 0, settings, shader,
                                     facts.models.runtime_missing_line};
    if (no_model) {
        lines.push_back(facts.models.rows.front().line);
    }
    return Found(
        FormatText("%s%s.",
                   no_runtime ? "The AI runtime is not beside the tool"
                              : "Not one depth model was found beside the tool",
                   settings != 0 ? ", and neither is a settings file. What follows is about built-in "
                                   "defaults, not about this user's set-up"
                                 : ", and the shader could not be used either"),
        lines);
}

Judgement AiRuntimeMissing(const Facts& facts) {
    if (facts.models.runtime_missing_line == 0) {
        return NotFound();
    }
    if (WrongFolder(facts).answer == Answer::Found) {
        return DoesNotApply();  // That says why.
    }
    if (DepthIsFromReShade(facts)) {
        return DoesNotApply();  // Nothing needs it.
    }
    return Found(
        "onnxruntime.dll is not beside the tool, or could not be loaded: it needs the Visual C++ runtime "
        "(2015-2022, x64).",
        {facts.models.runtime_missing_line});
}

Judgement InjectedFiles(const Facts& facts) {
    if (facts.proxy_dlls.empty() && facts.reshade_files.empty()) {
        return NotFound();
    }
    std::vector<TextFact> all = facts.proxy_dlls;
    all.insert(all.end(), facts.reshade_files.begin(), facts.reshade_files.end());
    return Found("Beside the tool lies what Windows or ReShade loads into the product: " + NamesOf(all) +
                     ". It is to be removed before anything else is judged.",
                 LinesOf(all));
}

Judgement SettingsUnreadable(const Facts& facts) {
    return FoundAt(
        facts.settings.parse_error_line,
        "The settings file was found and could not be parsed, so defaults were measured, except for "
        "what stands before the error.");
}

Judgement RunCrashed(const Facts& facts) {
    if (!facts.cut_short) {
        return facts.Has(Part::Verdict) ? NotFound() : NotJudged({Part::Verdict});
    }
    const BrokenOff& end = *facts.cut_short;
    if (!end.crashed) {
        return NotFound();
    }
    const std::string place = end.section.empty() ? "before its first section" : "in \"" + end.section + "\"";
    return Found("The run ended " + place + ": " + end.cause + ". What would follow is missing.", {end.line});
}

Judgement RunStopped(const Facts& facts) {
    if (!facts.cut_short) {
        return facts.Has(Part::Verdict) ? NotFound() : NotJudged({Part::Verdict});
    }
    if (facts.cut_short->crashed) {
        return NotFound();
    }
    const BrokenOff& end = *facts.cut_short;
    const std::string place = end.section.empty() ? "before its first section" : "in \"" + end.section + "\"";
    return Found("The run ended " + place + ": " + end.cause + ". What would follow is missing.", {end.line});
}

Judgement SectionCrashed(const Facts& facts) {
    if (facts.broken_sections.empty()) {
        return facts.Has(Part::Headset) || facts.Has(Part::DepthModel)
                   ? NotFound()
                   : NotJudged({Part::Headset, Part::DepthModel});
    }
    std::vector<LineNumber> lines;
    std::transform(facts.broken_sections.begin(), facts.broken_sections.end(), std::back_inserter(lines),
                   [](const BrokenOff& broken) { return broken.line; });
    const BrokenOff& first = facts.broken_sections.front();
    return Found("In \"" + first.section + "\": " + first.cause + ".", lines);
}

Judgement StereoOff(const Facts& facts) {
    return FoundAt(facts.settings.stereo_off_line, "3D is off, so a flat screen is what the headset shows.");
}

Judgement SeparationNearZero(const Facts& facts) {
    return FoundAt(facts.settings.separation_line,
                   "The separation is near zero, which looks exactly like no 3D at all.");
}

Judgement DepthStrengthNearZero(const Facts& facts) {
    return FoundAt(facts.settings.depth_strength_line,
                   "The depth strength is near zero, so the depth map changes almost nothing.");
}

Judgement DefaultsMeasured(const Facts& facts) {
    return FoundAt(
        facts.settings.defaults_line,
        "No settings file was found: model, mode and limits are the built-in defaults, which need not "
        "be this user's.");
}

Judgement CustomModelMissing(const Facts& facts) {
    if (DepthIsFromReShade(facts)) {
        return DoesNotApply();  // No model runs.
    }
    // The line says that no path is stored, but the tool never reads one.
    return FoundAt(facts.models.no_custom_model_line,
                   "The quality is set to a custom model. The tool does not read where its file is, so what "
                   "it costs is unknown, and so is whether it is there.");
}

Judgement FileNotReadWhole(const Facts& facts) {
    if (!facts.Has(Part::SettingsVerbatim) && !facts.Has(Part::ProductLog)) {
        return NotJudged({Part::SettingsVerbatim, Part::ProductLog});
    }
    if (facts.unread_file_lines.empty()) {
        return NotFound();
    }
    return Found("The disk or another program stood in the way of reading a file to its end.",
                 facts.unread_file_lines);
}

Judgement LogMissing(const Facts& facts) {
    return FoundAt(
        facts.log_missing_line,
        "The product left no log. It is off by default, and the most useful thing to have when depth "
        "never appears.");
}

Judgement LogWithoutStart(const Facts& facts) {
    return FoundAt(facts.log_without_start_line,
                   "The log has none of the lines that decide whether depth happens; Start was probably not "
                   "pressed in that run.");
}

Judgement VrSoftwareRunning(const Facts& facts) {
    constexpr std::array<std::string_view, 5> kNames = {"vrserver.exe", "vrcompositor.exe", "vrmonitor.exe",
                                                        "VirtualDesktop.Streamer.exe", "OculusClient.exe"};
    const std::vector<TextFact> running = Running(facts.software, kNames);
    if (running.empty()) {
        return NotFound();
    }
    return Found(NamesOf(running) + " ran during the baseline, so the timings can be too high.",
                 LinesOf(running));
}

Judgement CaptureSoftwareRunning(const Facts& facts) {
    constexpr std::array<std::string_view, 3> kNames = {"obs64.exe", "obs32.exe", "Parsec.exe"};
    if (!facts.Has(Part::RunningSoftware) && !facts.Has(Part::RunningSoftwareTwo)) {
        return NotJudged({Part::RunningSoftware});
    }
    std::vector<TextFact> running = Running(facts.software, kNames);
    const std::vector<TextFact> in_two = Running(facts.software_in_two, kNames);
    running.insert(running.end(), in_two.begin(), in_two.end());
    if (running.empty()) {
        return NotFound();
    }
    return Found("Running: " + NamesOf(running) +
                     ". A program that captures the screen can make the capture of another one fail.",
                 LinesOf(running));
}

}  // namespace RuleConditions
