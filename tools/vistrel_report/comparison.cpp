#include "tools/vistrel_report/comparison.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string_view>

#include "platform/format.h"
#include "tools/vistrel_report/count_text.h"
#include "tools/vistrel_report/visible_text.h"

namespace {

/// One value of a report that can be compared.
struct Value {
    std::string what;
    std::string text;
    std::optional<double> number;  ///< of a measurement: it differs a little from run to run
    std::string basis;             ///< what must be the same for the number to be comparable
};

void AddText(std::vector<Value>& values, const char* what, const std::optional<TextFact>& fact) {
    if (fact) {
        values.push_back({what, fact->text, {}, {}});
    }
}

void AddMeasurement(std::vector<Value>& values, const std::string& what, double number, const char* unit,
                    const std::string& basis) {
    values.push_back({what, FormatText("%.2f ", number) + unit, number, basis});
}

void AddMachine(std::vector<Value>& values, const Facts& facts) {
    AddText(values, "Windows", facts.machine.windows);
    if (facts.machine.build) {
        values.push_back({"Windows build", std::to_string(*facts.machine.build), {}, {}});
    }
    AddText(values, "Processor", facts.machine.processor);
    if (facts.machine.memory_gb) {
        values.push_back({"Memory", FormatText("%.1f GB", *facts.machine.memory_gb), {}, {}});
    }
    AddText(values, "GPU scheduling", facts.machine.gpu_scheduling);
    for (const GpuFacts& gpu : facts.gpus) {
        values.push_back({FormatText("GPU %lld", static_cast<long long>(gpu.number)), gpu.name, {}, {}});
    }
    for (const DisplayFacts& display : facts.displays) {
        values.push_back(
            {"Display " + display.name,
             FormatText("%lldx%lld @ %lld Hz, GPU %lld%s", static_cast<long long>(display.width),
                        static_cast<long long>(display.height), static_cast<long long>(display.refresh_hz),
                        static_cast<long long>(display.gpu), display.primary ? ", primary" : ""),
             {},
             {}});
    }
}

void AddSettings(std::vector<Value>& values, const SettingsFacts& settings) {
    AddText(values, "Vistrel version", settings.product_version);
    AddText(values, "Settings file", settings.file);
    AddText(values, "Depth source", settings.depth_source);
    AddText(values, "Depth model", settings.depth_model);
    const auto add = [&values](const char* what, const std::optional<double>& number, const char* unit) {
        if (number) {
            values.push_back({what, FormatText("%.2f%s", *number, unit), {}, {}});
        }
    };
    add("AI rate limit", settings.ai_rate_limit, " fps");
    add("Separation", settings.separation_mm, " mm");
    add("Depth strength", settings.depth_strength, "");
    if (settings.stereo_enabled) {
        values.push_back({"3D", *settings.stereo_enabled ? "on" : "off", {}, {}});
    }
}

/// As the last part that told them.
void AddHeadset(std::vector<Value>& values, const Facts& facts) {
    const HeadsetFacts& one = facts.headset;
    const HeadsetFacts& two = facts.headset_in_two;
    AddText(values, "OpenXR runtime", two.runtime ? two.runtime : one.runtime);
    const HeadsetFacts& told = two.required_gpu ? two : one;
    if (told.required_gpu) {
        values.push_back({"GPU of the headset",
                          *told.required_gpu < 0
                              ? std::string("not among those listed")
                              : FormatText("GPU %lld: ", static_cast<long long>(*told.required_gpu)) +
                                    told.required_gpu_name,
                          {},
                          {}});
    }
}

/// "capture of 1920x1080": a larger image can arrive less often on the same machine.
std::string CaptureBasis(const CaptureFacts& capture) {
    return capture.width && capture.height
               ? FormatText("capture of %lldx%lld", static_cast<long long>(*capture.width),
                            static_cast<long long>(*capture.height))
               : "capture of an unknown size";
}

void AddCosts(std::vector<Value>& values, const Facts& facts) {
    const std::string gpu = "GPU " + facts.benchmark.gpu_name;
    for (const WarpRow& row : facts.warp.rows) {
        AddMeasurement(values,
                       FormatText("Warp at %lldx%lld", static_cast<long long>(row.width),
                                  static_cast<long long>(row.height)),
                       row.milliseconds, "ms", gpu);
    }
    for (const ModelRow& row : facts.models.rows) {
        if (row.median_ms) {
            AddMeasurement(values, "Model " + row.name, *row.median_ms, "ms", gpu);
        }
    }
    const WarpRow* const desktop = facts.warp.rows.empty() ? nullptr : &facts.warp.rows.front();
    const ModelRow* const model = ConfiguredModel(facts);
    const std::string basis =
        gpu + ", size " +
        (desktop != nullptr ? FormatText("%lldx%lld", static_cast<long long>(desktop->width),
                                         static_cast<long long>(desktop->height))
                            : std::string("unknown")) +
        ", model " + (model != nullptr ? model->name : std::string("unknown")) + ", depth from " +
        (facts.verdict.reshade_mode ? "ReShade" : "AI");
    if (facts.verdict.share) {
        AddMeasurement(values, "Share of the GPU at 90 Hz", *facts.verdict.share, "%", basis);
    }
    if (facts.capture.fps) {
        AddMeasurement(values, "Desktop's rate", *facts.capture.fps, "fps", CaptureBasis(facts.capture));
    }
    if (facts.game.fps) {
        AddMeasurement(values, "Game's rate", *facts.game.fps, "fps", CaptureBasis(facts.game));
    }
}

std::vector<Value> ValuesOf(const Facts& facts) {
    std::vector<Value> values;
    AddMachine(values, facts);
    AddSettings(values, facts.settings);
    AddHeadset(values, facts);
    AddCosts(values, facts);
    return values;
}

/// In which parts two bases differ: "size 1920x1080 against 2560x1440".
std::string Difference(const std::string& old_basis, const std::string& new_basis) {
    return old_basis + " against " + new_basis;
}

ComparedRow CompareValues(const Value& before, const Value& now) {
    ComparedRow row{before.what, before.text, now.text, RowState::Same, {}};
    if (before.number && now.number && before.basis != now.basis) {
        row.state = RowState::NotComparable;
        row.why = Difference(before.basis, now.basis);
    } else if (before.number && now.number) {
        const double larger = std::max(std::abs(*before.number), std::abs(*now.number));
        const double difference = *now.number - *before.number;
        const bool within = std::abs(difference) <= kRunTolerance * larger;
        row.state = before.text == now.text ? RowState::Same
                    : within                ? RowState::WithinTolerance
                                            : RowState::Changed;
        row.why =
            *before.number != 0.0 ? FormatText("%+.0f%%", difference / std::abs(*before.number) * 100.0) : "";
    } else if (before.text != now.text) {
        row.state = RowState::Changed;
    }
    return row;
}

/// Finds for each value of one report the one to compare it with in the other: of the same name, and with as
/// many of that name before it, for a damaged report can hold a row twice.
class Counterparts {
  public:
    /// `others` must outlive this.
    explicit Counterparts(const std::vector<Value>& others) {
        for (const Value& other : others) {
            by_name_[other.what].values.push_back(&other);
        }
    }

    /// To be called once for each value, in order. Null when there is none.
    const Value* Of(const Value& value) {
        const auto found = by_name_.find(value.what);
        if (found == by_name_.end() || found->second.taken == found->second.values.size()) {
            return nullptr;
        }
        return found->second.values[found->second.taken++];
    }

  private:
    struct SameName {
        std::vector<const Value*> values;
        std::size_t taken = 0;
    };
    std::map<std::string_view, SameName> by_name_;
};

bool WasFound(const Findings& findings, const Rule* rule) {
    return std::any_of(findings.all.begin(), findings.all.end(), [rule](const Finding& finding) {
        return finding.rule == rule && finding.judgement.answer == Answer::Found;
    });
}

std::string RuleLines(const char* title, const std::vector<const Rule*>& rules) {
    std::string text = rules.empty() ? "" : "\n" + std::string(title) + ":\n";
    for (const Rule* rule : rules) {
        text += "  " + std::string(rule->title) + "  [" + std::string(rule->id) + "]\n";
    }
    return text;
}

std::string RowLine(const ComparedRow& row) {
    const std::string old_value = VisibleText(row.old_value);
    const std::string new_value = VisibleText(row.new_value);
    std::string line = FormatText("  %-28s ", VisibleText(row.what).c_str());
    switch (row.state) {
        case RowState::OnlyInOld:
            return line + old_value + "\n";
        case RowState::OnlyInNew:
            return line + new_value + "\n";
        case RowState::NotComparable:
            return line + old_value + " and " + new_value + ": " + VisibleText(row.why) + "\n";
        default:
            return line + old_value + " -> " + new_value + (row.why.empty() ? "" : "  (" + row.why + ")") +
                   "\n";
    }
}

std::string RowsText(const char* title, const Comparison& comparison, RowState state) {
    std::string text;
    for (const ComparedRow& row : comparison.rows) {
        if (row.state == state) {
            text += RowLine(row);
        }
    }
    return text.empty() ? text : "\n" + std::string(title) + ":\n" + text;
}

std::size_t CountRows(const Comparison& comparison, RowState state) {
    return static_cast<std::size_t>(
        std::count_if(comparison.rows.begin(), comparison.rows.end(),
                      [state](const ComparedRow& row) { return row.state == state; }));
}

}  // namespace

Comparison Compare(const Facts& old_facts, const Findings& old_findings, const Facts& new_facts,
                   const Findings& new_findings) {
    Comparison comparison;
    const std::vector<Value> before = ValuesOf(old_facts);
    const std::vector<Value> now = ValuesOf(new_facts);
    Counterparts of_now(now);
    for (const Value& value : before) {
        const Value* const other = of_now.Of(value);
        comparison.rows.push_back(other != nullptr
                                      ? CompareValues(value, *other)
                                      : ComparedRow{value.what, value.text, {}, RowState::OnlyInOld, {}});
    }
    Counterparts of_before(before);
    for (const Value& value : now) {
        if (of_before.Of(value) == nullptr) {
            comparison.rows.push_back({value.what, {}, value.text, RowState::OnlyInNew, {}});
        }
    }
    for (const Rule& rule : RuleTable()) {
        const bool was = WasFound(old_findings, &rule);
        const bool is = WasFound(new_findings, &rule);
        if (was != is) {
            (is ? comparison.came : comparison.went).push_back(&rule);
        }
    }
    return comparison;
}

std::string ComparisonText(const std::string& old_name, const std::string& new_name,
                           const Comparison& comparison) {
    std::string text = "Old: " + VisibleText(old_name) + "\nNew: " + VisibleText(new_name) + "\n";
    text += RuleLines("Findings that came", comparison.came);
    text += RuleLines("Findings that went", comparison.went);
    text += RowsText("Changed", comparison, RowState::Changed);
    text += RowsText("Not comparable", comparison, RowState::NotComparable);
    text += RowsText("Only in the old report", comparison, RowState::OnlyInOld);
    text += RowsText("Only in the new report", comparison, RowState::OnlyInNew);
    return text + "\nHidden: " +
           CountText(CountRows(comparison, RowState::Same), "row that is the same",
                     "rows that are the same") +
           FormatText(", %zu within the %.0f%% that runs differ by.\n",
                      CountRows(comparison, RowState::WithinTolerance), kRunTolerance * 100.0);
}
