#include "tools/vistrel_report/page.h"

#include <algorithm>
#include <array>
#include <limits>
#include <map>

#include "platform/format.h"
#include "tools/vistrel_report/charts.h"
#include "tools/vistrel_report/distributions.h"
#include "tools/vistrel_report/markup.h"
#include "tools/vistrel_report/style_sheet.h"

namespace {

constexpr std::array kLevels = {Level::Untrusted, Level::Explains, Level::Contributes, Level::WorthKnowing};

Markup::Attribute ClassOfFinding(Level level) {
    switch (level) {
        case Level::Untrusted:
            return {"class", "finding untrusted"};
        case Level::Explains:
            return {"class", "finding explains"};
        case Level::Contributes:
            return {"class", "finding contributes"};
        case Level::WorthKnowing:
            break;
    }
    return {"class", "finding"};
}

Markup::Attribute ClassOfSentence(const std::vector<const Finding*>& found) {
    if (!found.empty()) {
        switch (found.front()->rule->level) {
            case Level::Untrusted:
                return {"class", "sentence untrusted"};
            case Level::Explains:
                return {"class", "sentence explains"};
            case Level::Contributes:
                return {"class", "sentence contributes"};
            case Level::WorthKnowing:
                break;
        }
    }
    return {"class", "sentence"};
}

void WriteHead(Markup& page, const std::string& title) {
    const Markup::Element head = page.Open("head");
    page.Void("meta", {{"charset", "utf-8"}});
    page.Void("meta", {{"http-equiv", "Content-Security-Policy"},
                       {"content", "default-src 'none'; style-src 'sha256-" VISTREL_REPORT_STYLE_HASH
                                   "'; base-uri 'none'; form-action 'none'"}});
    page.Void("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
    page.Void("meta", {{"name", "color-scheme"}, {"content", "light dark"}});
    page.Void("meta", {{"name", "referrer"}, {"content", "no-referrer"}});
    page.TextElement("title", title);
    const Markup::Element style = page.Open("style");
    page.Verbatim(VISTREL_REPORT_STYLE);
}

/// The document around what `write` puts into its main part.
template <typename Write>
std::string Document(const std::string& title, Write write) {
    Markup page;
    page.Verbatim("<!DOCTYPE html>\n");
    {
        const Markup::Element html = page.Open("html", {{"lang", "en"}});
        WriteHead(page, title);
        const Markup::Element body = page.Open("body");
        const Markup::Element main = page.Open("main");
        page.TextElement("h1", title);
        write(page);
    }
    return page.Text();
}

/// One report's part of a page; `number_` makes its names unique.
class ReportWriter {
  public:
    ReportWriter(Markup& page, const JudgedReport& report, std::size_t number)
        : page_(page), facts_(report.facts), findings_(report.findings), number_(number) {}

    void Write() {
        const std::vector<const Finding*> found = FoundOnes(findings_);
        page_.TextElement("h2", facts_.name, {Markup::Attribute::Numbered("id", "r", number_)});
        page_.TextElement("p", findings_.summary, {ClassOfSentence(found)});
        WriteMachine();
        WriteFindings();
        WriteCharts();
        WriteOthers();
        WriteNotes();
        WriteLines(found);
    }

  private:
    Markup::Attribute FindingName(Literal attribute, Literal prefix, const Finding& finding) const {
        const auto place = static_cast<std::size_t>(finding.rule - RuleTable().data());
        return Markup::Attribute::Numbered(attribute, prefix, number_, "-f", place);
    }

    void WriteMachine() {
        const Markup::Element list = page_.Open("dl", {{"class", "facts"}});
        const auto row = [this](const char* name, const std::string& value) {
            if (!value.empty()) {
                page_.TextElement("dt", name);
                page_.TextElement("dd", value);
            }
        };
        const MachineFacts& machine = facts_.machine;
        if (machine.windows) {
            row("Windows",
                machine.windows->text +
                    (machine.build ? FormatText(", build %lld", static_cast<long long>(*machine.build))
                                   : ""));
        }
        row("Processor", machine.processor ? machine.processor->text : "");
        row("Memory", machine.memory_gb ? FormatText("%.1f GB, %.1f GB free", *machine.memory_gb,
                                                     machine.free_memory_gb.value_or(0.0))
                                        : "");
        for (const GpuFacts& gpu : facts_.gpus) {
            if (!gpu.software) {
                row("GPU", FormatText("%lld: ", static_cast<long long>(gpu.number)) + gpu.name +
                               (facts_.benchmark.gpu == gpu.number ? " (benchmark GPU)" : ""));
            }
        }
        const HeadsetFacts& headset = facts_.headset_in_two.runtime ? facts_.headset_in_two : facts_.headset;
        row("Headset", headset.runtime ? headset.runtime->text : "");
        row("Machine key", MachineKey(facts_));
    }

    void WriteFindings() {
        for (const Level level : kLevels) {
            const std::vector<const Finding*> found = FoundAtLevel(findings_, level);
            if (found.empty()) {
                continue;
            }
            page_.TextElement("h3", LevelTitle(level));
            for (const Finding* finding : found) {
                WriteFinding(*finding);
            }
        }
    }

    void WriteFinding(const Finding& finding) {
        const Markup::Element card =
            page_.Open("div", {ClassOfFinding(finding.rule->level), FindingName("id", "r", finding)});
        page_.TextElement("h4", finding.rule->title);
        page_.TextElement("p", finding.judgement.says);
        if (!finding.doubtful_because.empty()) {
            page_.TextElement("p", DoubtText(finding), {{"class", "doubt"}});
        }
        if (!finding.rule->request.empty()) {
            const Markup::Element ask = page_.Open("p");
            page_.TextElement("b", "Ask: ");
            page_.TextOf(finding.rule->request);
        }
        const Markup::Element base = page_.Open("p", {{"class", "ids"}});
        page_.TextElement("code", finding.rule->id);
        for (const LineNumber line : finding.judgement.lines) {
            page_.TextOf(line == finding.judgement.lines.front() ? " - line " : ", ");
            page_.TextElement("a", std::to_string(line),
                              {Markup::Attribute::Numbered("href", "#r", number_, "-l", line)});
        }
    }

    void WriteCharts() {
        const std::vector<Chart> charts = ChartsOf(facts_);
        if (charts.empty()) {
            return;
        }
        page_.TextElement("h3", "In figures");
        const Markup::Element grid = page_.Open("div", {{"class", "charts"}});
        for (std::size_t i = 0; i < charts.size(); ++i) {
            WriteChart(page_, charts[i], number_, i);
        }
    }

    /// What was not found, not judged, or does not apply, folded away.
    void WriteOthers() {
        const Markup::Element details = page_.Open("details");
        page_.TextElement(
            "summary", FormatText("%zu not found, %zu not judged, %zu do not apply",
                                  CountOf(findings_, Answer::NotFound), CountOf(findings_, Answer::NotJudged),
                                  CountOf(findings_, Answer::DoesNotApply)));
        std::vector<std::vector<std::string>> rows;
        for (const Finding& finding : findings_.all) {
            const Answer answer = finding.judgement.answer;
            if (answer == Answer::Found) {
                continue;
            }
            std::string why = answer == Answer::NotFound ? "not found" : "does not apply";
            if (answer == Answer::NotJudged) {
                why = "not judged; missing: ";
                for (const Part part : finding.judgement.missing) {
                    why +=
                        (part == finding.judgement.missing.front() ? "" : "; ") + std::string(PartName(part));
                }
            }
            rows.push_back({std::string(finding.rule->title), why, std::string(finding.rule->id)});
        }
        WriteTable(page_, {"Looked for", "Answer", "Rule"}, rows);
    }

    void WriteNotes() {
        if (facts_.notes.empty() && facts_.not_understood.empty()) {
            return;
        }
        page_.TextElement("h3", "About the text itself");
        const Markup::Element list = page_.Open("ul");
        for (const NoteFact& note : facts_.notes) {
            const Markup::Element item = page_.Open("li");
            page_.TextOf(note.text);
            LinkToLine(note.line);
        }
        if (!facts_.not_understood.empty()) {
            const Markup::Element item = page_.Open("li");
            page_.TextOf(FormatText("%zu lines were not understood", facts_.not_understood.size()));
            for (const LineNumber line : facts_.not_understood) {
                LinkToLine(line);
            }
        }
    }

    void LinkToLine(LineNumber line) {
        if (line != 0) {
            page_.TextOf(" ");
            page_.TextElement("a", std::to_string(line),
                              {Markup::Attribute::Numbered("href", "#r", number_, "-l", line)});
        }
    }

    void WriteLines(const std::vector<const Finding*>& found) {
        std::map<LineNumber, std::vector<const Finding*>> marked;
        for (const Finding* finding : found) {
            for (const LineNumber line : finding->judgement.lines) {
                marked[line].push_back(finding);
            }
        }
        page_.TextElement("h3", "The report as written");
        LineNumber from = 0;
        std::string title = "Opening lines";
        for (const HeadingFact& heading : facts_.headings) {
            WriteSection(title, from, heading.line, marked);
            title = heading.title;
            from = heading.line;
        }
        WriteSection(title, from, std::numeric_limits<LineNumber>::max(), marked);
    }

    /// The lines from `from` to the one before `to`.
    void WriteSection(const std::string& title, LineNumber from, LineNumber to,
                      const std::map<LineNumber, std::vector<const Finding*>>& marked) {
        const auto by_number = [](const TextFact& line, LineNumber number) { return line.line < number; };
        const auto begin = std::lower_bound(facts_.lines.begin(), facts_.lines.end(), from, by_number);
        const auto end = std::lower_bound(begin, facts_.lines.end(), to, by_number);
        if (begin == end) {
            return;
        }
        const Markup::Element section = page_.Open("details", {{"open", "open"}});
        page_.TextElement("summary", title);
        const Markup::Element lines = page_.Open("div", {{"class", "lines"}});
        for (auto line = begin; line != end; ++line) {
            const auto found = marked.find(line->line);
            WriteLine(*line, found == marked.end() ? nullptr : &found->second);
        }
    }

    void WriteLine(const TextFact& written, const std::vector<const Finding*>* found) {
        const Markup::Element line = page_.Open(
            "div",
            {found != nullptr ? Markup::Attribute("class", "line found") : Markup::Attribute("class", "line"),
             Markup::Attribute::Numbered("id", "r", number_, "-l", written.line)});
        page_.TextElement("span", std::to_string(written.line), {{"class", "number"}});
        page_.TextElement("span", written.text, {{"class", "text"}});
        if (found == nullptr) {
            return;
        }
        const Markup::Element why = page_.Open("span", {{"class", "why"}});
        for (const Finding* finding : *found) {
            page_.TextElement("a", finding->rule->id, {FindingName("href", "#r", *finding)});
            page_.TextOf(" ");
        }
    }

    Markup& page_;
    const Facts& facts_;
    const Findings& findings_;
    std::size_t number_;
};

void WriteContents(Markup& page, const std::vector<JudgedReport>& reports) {
    const Markup::Element navigation = page.Open("nav");
    const Markup::Element list = page.Open("ol");
    for (std::size_t i = 0; i < reports.size(); ++i) {
        const Markup::Element item = page.Open("li");
        page.TextElement("a", reports[i].facts.name, {Markup::Attribute::Numbered("href", "#r", i + 1)});
        page.TextOf(": " + reports[i].findings.summary);
    }
}

/// How often each rule was found, in reports and in machines.
void WriteFindingSpread(Markup& page, const std::vector<ReportSummary>& reports) {
    std::vector<std::vector<std::string>> rows;
    for (const Rule& rule : RuleTable()) {
        std::size_t count = 0;
        std::map<std::string, std::size_t> machines;
        for (const ReportSummary& report : reports) {
            if (std::find(report.found.begin(), report.found.end(), &rule) != report.found.end()) {
                ++count;
                ++machines[report.machine_key];
            }
        }
        if (count > 0) {
            rows.push_back({std::string(rule.title), std::string(LevelTitle(rule.level)),
                            std::to_string(count), std::to_string(machines.size()), std::string(rule.id)});
        }
    }
    page.TextElement("h2", "Findings");
    WriteTable(page, {"Finding", "Level", "Reports", "Machines", "Rule"}, rows);
}

/// What is drawn of the reports' figures.
struct Distributions {
    Distribution warp;
    Distribution models;
    Distribution desktop;
    Distribution game;
};

Distributions DistributionsOf(const std::vector<ReportSummary>& reports) {
    Distributions all;
    for (const ReportSummary& report : reports) {
        if (!report.trusted) {
            continue;
        }
        const auto add = [&report](Distribution& distribution, const std::string& of, double value) {
            distribution.Add(report.gpu, of, report.machine_key, value);
        };
        for (const auto& [size, milliseconds] : report.warp_ms) {
            add(all.warp, size, milliseconds);
        }
        for (const auto& [model, milliseconds] : report.model_ms) {
            add(all.models, model, milliseconds);
        }
        if (report.desktop_fps) {
            add(all.desktop, "", *report.desktop_fps);
        }
        if (report.game_fps) {
            add(all.game, "", *report.game_fps);
        }
    }
    return all;
}

/// How costs and rates spread over the machines.
void WriteDistributions(Markup& page, const std::vector<ReportSummary>& reports) {
    const Distributions all = DistributionsOf(reports);
    const std::array charts = {
        std::pair(&all.warp, DistributionTexts{"What the warp costs",
                                               "Milliseconds for both eyes of one headset frame, against the "
                                               "time of one frame.",
                                               "Size",
                                               "ms",
                                               {144.0, 120.0, 90.0, 72.0}}),
        std::pair(&all.models, DistributionTexts{"What the depth models cost",
                                                 "Milliseconds of one inference, the median of a report.",
                                                 "Model",
                                                 "ms",
                                                 {}}),
        std::pair(&all.desktop, DistributionTexts{"New images of the idle desktop",
                                                  "Images a second that reached the capture in part 1.",
                                                  "",
                                                  "fps",
                                                  {}}),
        std::pair(&all.game, DistributionTexts{"New images of the game",
                                               "Images a second that reached the capture in part 2.",
                                               "",
                                               "fps",
                                               {}}),
    };
    page.TextElement("h2", "Costs and rates");
    const auto left_out = std::count_if(reports.begin(), reports.end(),
                                        [](const ReportSummary& report) { return !report.trusted; });
    if (left_out > 0) {
        page.TextElement("p", FormatText("Without %zu reports whose figures cannot be trusted.",
                                         static_cast<std::size_t>(left_out)));
    }
    const Markup::Element grid = page.Open("div", {{"class", "charts"}});
    std::size_t number = 0;
    for (const auto& [distribution, texts] : charts) {
        if (!distribution->IsEmpty()) {
            WriteChart(page, distribution->ToChart(texts), 0, number++);
        }
    }
}

void WriteReportTable(Markup& page, const std::vector<ReportSummary>& reports) {
    page.TextElement("h2", "Reports");
    const Markup::Element scroll = page.Open("div", {{"class", "scroll"}});
    const Markup::Element table = page.Open("table");
    {
        const Markup::Element head = page.Open("thead");
        const Markup::Element row = page.Open("tr");
        for (const char* name : {"Report", "Machine key", "GPU", "What was found"}) {
            page.TextElement("th", name);
        }
    }
    const Markup::Element body = page.Open("tbody");
    for (const ReportSummary& report : reports) {
        const Markup::Element row = page.Open("tr");
        {
            const Markup::Element cell = page.Open("td");
            if (report.link.empty()) {
                page.TextOf(report.name);
            } else {
                page.TextElement("a", report.name, {Markup::Attribute::Text("href", report.link)});
            }
        }
        page.TextElement("td", report.machine_key);
        page.TextElement("td", report.gpu);
        page.TextElement("td", report.sentence);
    }
}

}  // namespace

ReportSummary SummaryOf(const JudgedReport& report) {
    ReportSummary summary;
    summary.name = report.facts.name;
    summary.machine_key = MachineKey(report.facts);
    summary.gpu = report.facts.benchmark.gpu_name;
    summary.sentence = report.findings.summary;
    for (const Finding* finding : FoundOnes(report.findings)) {
        summary.found.push_back(finding->rule);
        summary.trusted = summary.trusted && finding->rule->level != Level::Untrusted;
    }
    for (const WarpRow& row : report.facts.warp.rows) {
        if (summary.warp_ms.size() < kMostFiguresOfReport) {
            summary.warp_ms.emplace_back(FormatText("%lldx%lld", static_cast<long long>(row.width),
                                                    static_cast<long long>(row.height)),
                                         row.milliseconds);
        }
    }
    for (const ModelRow& row : report.facts.models.rows) {
        if (row.median_ms && summary.model_ms.size() < kMostFiguresOfReport) {
            summary.model_ms.emplace_back(row.name, *row.median_ms);
        }
    }
    summary.desktop_fps = report.facts.capture.fps;
    summary.game_fps = report.facts.game.fps;
    return summary;
}

std::string DetailedPage(const std::vector<JudgedReport>& reports) {
    const bool one = reports.size() == 1;
    return Document(
        one ? "Vistrel diagnostic report" : FormatText("%zu Vistrel diagnostic reports", reports.size()),
        [&](Markup& page) {
            if (!one) {
                WriteContents(page, reports);
            }
            for (std::size_t i = 0; i < reports.size(); ++i) {
                ReportWriter(page, reports[i], i + 1).Write();
            }
        });
}

std::string OverviewPage(const std::vector<ReportSummary>& reports) {
    std::map<std::string, std::size_t> machines;
    for (const ReportSummary& report : reports) {
        ++machines[report.machine_key];
    }
    return Document(FormatText("%zu Vistrel diagnostic reports", reports.size()), [&](Markup& page) {
        page.TextElement(
            "p", FormatText("Of %zu machines, told apart by processor, memory and graphics cards. Two "
                            "machines of one make count as one.",
                            machines.size()));
        WriteFindingSpread(page, reports);
        WriteDistributions(page, reports);
        WriteReportTable(page, reports);
    });
}
