// Every rule with facts that were edited at random: facts of a report are removed, added, and replaced by any
// number and any text. A result must be complete, and refer to lines of the report.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "tests/fuzz/fuzz_input.h"
#include "tools/vistrel_report/facts_from_reading.h"
#include "tools/vistrel_report/findings.h"

namespace {

/// Every line number of the facts is from 1 to this.
constexpr LineNumber kLastLine = 255;

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// The facts of a whole report, with part 2 and every model.
const Facts& Template() {
    static const Facts facts = [] {
        std::ifstream file("tests/report/rules/video-memory-full.report.txt", std::ios::binary);
        Require(file.is_open());
        std::string text((std::istreambuf_iterator<char>(file)), {});
        Facts read = ReadFacts(std::move(text), "report.txt").front();
        Require(read.lines.back().line <= kLastLine);
        read.lines.clear();  // No rule looks at them.
        return read;
    }();
    return facts;
}

// ---- One fact, replaced

LineNumber AnyLine(FuzzInput& input) {
    return input.Number() % kLastLine + 1;
}

double AnyNumber(FuzzInput& input) {
    constexpr std::array kNumbers = {0.0,
                                     -1.0,
                                     1.0,
                                     2.0,
                                     25.0,
                                     50.0,
                                     1e308,
                                     -1e308,
                                     std::numeric_limits<double>::infinity(),
                                     std::numeric_limits<double>::quiet_NaN()};
    const std::size_t number = input.Number();
    return number < kNumbers.size() ? kNumbers.at(number) : static_cast<double>(number) / 4.0;
}

void Replace(bool& fact, FuzzInput& input) {
    fact = input.Number() % 2 != 0;
}
void Replace(double& fact, FuzzInput& input) {
    fact = AnyNumber(input);
}
void Replace(std::int64_t& fact, FuzzInput& input) {
    constexpr std::array<std::int64_t, 6> kNumbers = {
        -1, 0, 1, 17134, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()};
    const std::size_t number = input.Number();
    fact = number < kNumbers.size() ? kNumbers.at(number) : static_cast<std::int64_t>(number);
}
void Replace(std::string& fact, FuzzInput& input) {
    fact = input.Text(40);
}
void Replace(TextFact& fact, FuzzInput& input) {
    fact = {input.Text(40), AnyLine(input)};
}
void Replace(BrokenOff& fact, FuzzInput& input) {
    fact = {input.Text(10), input.Text(20), AnyLine(input), input.Number() % 2 != 0};
}
void Replace(MemoryUse& fact, FuzzInput& input) {
    fact = {AnyNumber(input), AnyNumber(input), AnyLine(input), input.Number() % 2 != 0};
}
void Replace(GpuFacts& fact, FuzzInput& input) {
    Replace(fact.number, input);
    Replace(fact.software, input);
    fact.line = AnyLine(input);
}
void Replace(DisplayFacts& fact, FuzzInput& input) {
    Replace(fact.refresh_hz, input);
    Replace(fact.primary, input);
    Replace(fact.gpu, input);
    fact.line = AnyLine(input);
}
void Replace(OverrideFacts& fact, FuzzInput& input) {
    Replace(fact.choice, input);
    fact.line = AnyLine(input);
}
void Replace(WarpRow& fact, FuzzInput& input) {
    Replace(fact.width, input);
    Replace(fact.height, input);
    Replace(fact.milliseconds, input);
    fact.line = AnyLine(input);
}
template <typename Value>
void Replace(std::optional<Value>& fact, FuzzInput& input) {
    if (input.Number() % 2 == 0) {
        fact.reset();
    } else {
        Replace(fact.emplace(), input);
    }
}
void Replace(ModelRow& fact, FuzzInput& input) {
    Replace(fact.median_ms, input);
    Replace(fact.max_ms, input);
    Replace(fact.error, input);
    Replace(fact.configured, input);
    fact.line = AnyLine(input);
}
/// One entry is removed, added or replaced.
template <typename Value>
void Replace(std::vector<Value>& facts, FuzzInput& input) {
    const std::size_t edit = input.Number() % 3;
    if (facts.empty() || edit == 0) {
        if (facts.size() < 20) {
            Replace(facts.emplace_back(), input);
        }
    } else if (edit == 1) {
        facts.erase(facts.begin() + static_cast<std::ptrdiff_t>(input.Number() % facts.size()));
    } else {
        Replace(facts[input.Number() % facts.size()], input);
    }
}
/// A line that is 0 where the report lacks it.
void ReplaceLine(LineNumber& fact, FuzzInput& input) {
    fact = input.Number() % 2 == 0 ? 0 : AnyLine(input);
}
/// A line that another fact of the same line of the report goes with.
template <typename Value>
void ReplaceWithLine(std::optional<Value>& fact, LineNumber& line, FuzzInput& input) {
    Replace(fact, input);
    line = AnyLine(input);
}

// ---- All facts that rules look at

using Edit = void (*)(Facts&, FuzzInput&);

constexpr auto kMachineEdits = std::to_array<Edit>(
    {[](Facts& facts, FuzzInput& input) { Replace(facts.machine.windows, input); },
     [](Facts& facts, FuzzInput& input) { Replace(facts.machine.build, input); },
     [](Facts& facts, FuzzInput& input) { Replace(facts.machine.memory_gb, input); },
     [](Facts& facts, FuzzInput& input) {
         ReplaceWithLine(facts.machine.free_memory_gb, facts.machine.memory_line, input);
     },
     [](Facts& facts, FuzzInput& input) { Replace(facts.machine.gpu_scheduling, input); },
     [](Facts& facts, FuzzInput& input) { Replace(facts.gpus, input); },
     [](Facts& facts, FuzzInput& input) {
         if (!facts.gpus.empty()) {
             GpuFacts& gpu = facts.gpus[input.Number() % facts.gpus.size()];
             Replace(gpu.dedicated_mb, input);
             Replace(gpu.memory_in_two, input);
         }
     },
     [](Facts& facts, FuzzInput& input) { ReplaceLine(facts.gpu_list_failure_line, input); },
     [](Facts& facts, FuzzInput& input) { Replace(facts.displays, input); },
     [](Facts& facts, FuzzInput& input) { Replace(facts.overrides, input); },
     [](Facts& facts, FuzzInput& input) {
         BenchmarkFacts& benchmark = facts.benchmark;
         Replace(benchmark.failure, input);
         ReplaceLine(benchmark.guessed_line, input);
     }});

void EditHeadset(HeadsetFacts& headset, FuzzInput& input) {
    Replace(headset.message, input);
    ReplaceWithLine(headset.required_gpu, headset.required_gpu_line, input);
    ReplaceLine(headset.cross_gpu_line, input);
}

void EditCapture(CaptureFacts& capture, FuzzInput& input) {
    Replace(capture.failure, input);
    Replace(capture.other_gpu, input);
    Replace(capture.height, input);
    ReplaceWithLine(capture.width, capture.size_line, input);
    ReplaceWithLine(capture.fps, capture.fps_line, input);
    ReplaceLine(capture.not_read_back_line, input);
}

void EditSoftware(SoftwareFacts& software, FuzzInput& input) {
    Replace(software.programs, input);
    ReplaceLine(software.product_running_line, input);
}

constexpr auto kSetupEdits = std::to_array<Edit>(
    {[](Facts& facts, FuzzInput& input) { EditSoftware(facts.software, input); },
     [](Facts& facts, FuzzInput& input) { EditSoftware(facts.software_in_two, input); },
     [](Facts& facts, FuzzInput& input) { Replace(facts.folder, input); },
     [](Facts& facts, FuzzInput& input) { Replace(facts.proxy_dlls, input); },
     [](Facts& facts, FuzzInput& input) { Replace(facts.reshade_files, input); },
     [](Facts& facts, FuzzInput& input) { ReplaceLine(facts.settings.defaults_line, input); },
     [](Facts& facts, FuzzInput& input) { ReplaceLine(facts.settings.parse_error_line, input); },
     [](Facts& facts, FuzzInput& input) {
         ReplaceLine(facts.settings.stereo_off_line, input);
         ReplaceLine(facts.settings.separation_line, input);
         ReplaceLine(facts.settings.depth_strength_line, input);
     },
     [](Facts& facts, FuzzInput& input) {
         ReplaceLine(facts.log_missing_line, input);
         ReplaceLine(facts.log_without_start_line, input);
     },
     [](Facts& facts, FuzzInput& input) { Replace(facts.log_lines, input); },
     [](Facts& facts, FuzzInput& input) {
         facts.unread_file_lines = {AnyLine(input), AnyLine(input)};
     },
     [](Facts& facts, FuzzInput& input) { Replace(facts.cut_short, input); },
     [](Facts& facts, FuzzInput& input) { Replace(facts.broken_sections, input); },
     [](Facts& facts, FuzzInput& input) { ReplaceLine(facts.part_two_skipped_line, input); }});

constexpr auto kFigureEdits = std::to_array<Edit>(
    {[](Facts& facts, FuzzInput& input) { EditHeadset(facts.headset, input); },
     [](Facts& facts, FuzzInput& input) { EditHeadset(facts.headset_in_two, input); },
     [](Facts& facts, FuzzInput& input) { EditCapture(facts.capture, input); },
     [](Facts& facts, FuzzInput& input) { EditCapture(facts.game, input); },
     [](Facts& facts, FuzzInput& input) { Replace(facts.warp.rows, input); },
     [](Facts& facts, FuzzInput& input) { ReplaceLine(facts.warp.shader_failure_line, input); },
     [](Facts& facts, FuzzInput& input) { Replace(facts.models.rows, input); },
     [](Facts& facts, FuzzInput& input) {
         ReplaceLine(facts.models.runtime_missing_line, input);
         ReplaceLine(facts.models.no_custom_model_line, input);
     },
     [](Facts& facts, FuzzInput& input) {
         Replace(facts.hands.stop, input);
         Replace(facts.hands.conclusion, input);
         ReplaceLine(facts.hands.data_source_line, input);
         Replace(facts.hands.told_apart, input);
     },
     [](Facts& facts, FuzzInput& input) {
         ReplaceWithLine(facts.verdict.share, facts.verdict.share_line, input);
     },
     [](Facts& facts, FuzzInput& input) {
         ReplaceLine(facts.verdict.model_too_slow_line, input);
         ReplaceLine(facts.verdict.not_measured_line, input);
     }});

Facts EditedFacts(FuzzInput input) {
    Facts facts = Template();
    while (!input.IsAtEnd()) {
        std::size_t edit =
            input.Number() % (kPartCount + kMachineEdits.size() + kSetupEdits.size() + kFigureEdits.size());
        if (edit < kPartCount) {
            facts.present.at(edit) = !facts.present.at(edit);
        } else if ((edit -= kPartCount) < kMachineEdits.size()) {
            kMachineEdits.at(edit)(facts, input);
        } else if ((edit -= kMachineEdits.size()) < kSetupEdits.size()) {
            kSetupEdits.at(edit)(facts, input);
        } else {
            kFigureEdits.at(edit - kSetupEdits.size())(facts, input);
        }
    }
    return facts;
}

// ---- What must hold

bool AreLinesOfReport(const std::vector<LineNumber>& lines) {
    return std::is_sorted(lines.begin(), lines.end(), std::less_equal<>()) &&
           (lines.empty() || (lines.front() >= 1 && lines.back() <= kLastLine));
}

bool IsFound(const Rule& rule, const Findings& findings) {
    return std::any_of(findings.all.begin(), findings.all.end(), [&rule](const Finding& finding) {
        return finding.rule == &rule && finding.judgement.answer == Answer::Found;
    });
}

void CheckFinding(const Finding& finding, const Findings& findings) {
    const Judgement& judgement = finding.judgement;
    const bool found = judgement.answer == Answer::Found;
    Require(found == !judgement.says.empty());
    Require(found || judgement.lines.empty());
    Require(AreLinesOfReport(judgement.lines));
    Require((judgement.answer == Answer::NotJudged) == !judgement.missing.empty());
    Require(found || finding.doubtful_because.empty());
    for (const Rule* rule : finding.doubtful_because) {
        Require(rule != finding.rule && IsFound(*rule, findings));
    }
    Require(!(found && finding.rule->level == Level::Untrusted) || !findings.verdict_judged);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Facts facts = EditedFacts(FuzzInput(data, size));
    const Findings findings = JudgeReport(facts);
    Require(findings.all.size() == RuleTable().size());
    Require(findings.summary.ends_with('.'));
    Require(!findings.verdict_judged || facts.Has(Part::Verdict));
    for (const Finding& finding : findings.all) {
        CheckFinding(finding, findings);
    }
    return 0;
}
