#include "tools/vistrel_report/report_page.h"

#include <algorithm>
#include <array>
#include <limits>
#include <map>

#include "platform/format.h"
#include "tools/vistrel_report/charts.h"
#include "tools/vistrel_report/count_text.h"
#include "tools/vistrel_report/markup.h"
#include "tools/vistrel_report/page_document.h"

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
            page_.TextOf(CountText(facts_.not_understood.size(), "line was not understood",
                                   "lines were not understood"));
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

}  // namespace

std::string DetailedPage(const std::vector<JudgedReport>& reports) {
    const bool one = reports.size() == 1;
    return PageDocument(
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
