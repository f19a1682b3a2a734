#include "tools/vistrel_report/report_program.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/format.h"
#include "tools/vistrel_report/comparison.h"
#include "tools/vistrel_report/exit_status.h"
#include "tools/vistrel_report/facts_from_reading.h"
#include "tools/vistrel_report/findings.h"
#include "tools/vistrel_report/json_output.h"
#include "tools/vistrel_report/masks.h"
#include "tools/vistrel_report/overview_page.h"
#include "tools/vistrel_report/report_inputs.h"
#include "tools/vistrel_report/report_page.h"
#include "tools/vistrel_report/text_output.h"
#include "tools/vistrel_report/visible_text.h"

namespace {

class Program {
  public:
    Program(const ReportOptions& options, std::istream& in, std::ostream& out, std::ostream& errors)
        : options_(options), in_(in), out_(out), errors_(errors) {}

    int Run() {
        switch (options_.task) {
            case Task::ListRules:
                out_ << RuleListText();
                break;
            case Task::Explain:
                out_ << ExplainText(*FindRule(options_.rule));
                break;
            case Task::Findings:
                WriteFindings();
                break;
            case Task::Reply:
                ForEachReport([this](const JudgedReport& report) { out_ << ReplyText(report.findings); });
                break;
            case Task::Compare:
                WriteComparison();
                break;
            case Task::Json:
                ForEachReport([this](const JudgedReport& report) {
                    out_ << JsonLine(report.facts, report.findings, options_.with_personal_data);
                });
                break;
            case Task::Csv:
                WriteCsv();
                break;
            case Task::Page:
                WritePages();
                break;
        }
        out_.flush();
        if (!out_) {
            Complain("The output could not be written.");
            return ExitStatus::kUsage;
        }
        return status_;
    }

  private:
    void Complain(const std::string& sentence) {
        errors_ << "vistrel_report: " << VisibleText(sentence) << "\n";
    }

    void NoReport(const std::string& sentence) {
        Complain(sentence);
        status_ = std::max(status_, ExitStatus::kNoReport);
    }

    /// Calls `take` for each report of the inputs, one after the other; only one is held at a time.
    void ForEachReport(const std::function<void(JudgedReport)>& take) {
        std::size_t passed_over = 0;
        std::size_t taken = 0;
        for (const Input& input : ExpandFolders(options_.inputs)) {
            InputBytes bytes = ReadInput(input, in_);
            if (!bytes.error.empty()) {
                NoReport(input.name + " " + bytes.error + ".");
                continue;
            }
            std::vector<Facts> reports =
                ReadFacts(std::move(bytes.bytes), input.name == "-" ? "standard input" : input.name);
            if (reports.empty() && !input.of_a_folder) {
                NoReport(input.name + " is no report of vistrel_diag.");
            }
            passed_over += reports.empty() && input.of_a_folder ? 1 : 0;
            for (Facts& facts : reports) {
                ++taken;
                Findings findings = JudgeReport(facts);
                if (options_.mask) {
                    masks_.Mask(facts);
                }
                take({std::move(facts), std::move(findings)});
            }
        }
        if (passed_over > 0) {
            const std::string sentence = FormatText("%zu files of the folders are no reports.", passed_over);
            taken == 0 ? NoReport(sentence) : Complain(sentence);
        }
    }

    void WriteFindings() {
        bool first = true;
        ForEachReport([this, &first](const JudgedReport& report) {
            out_ << (first ? "" : "\n") << FindingsText(report.facts, report.findings, options_.only);
            first = false;
        });
    }

    void WriteCsv() {
        out_ << CsvHead(options_.with_personal_data);
        ForEachReport([this](const JudgedReport& report) {
            out_ << CsvRow(report.facts, report.findings, options_.with_personal_data);
        });
    }

    void WriteComparison() {
        std::vector<JudgedReport> reports;
        ForEachReport([&reports](JudgedReport report) { reports.push_back(std::move(report)); });
        if (reports.size() != 2) {
            NoReport(FormatText("Two reports can be compared; there are %zu.", reports.size()));
            return;
        }
        const Comparison comparison =
            Compare(reports[0].facts, reports[0].findings, reports[1].facts, reports[1].findings);
        out_ << ComparisonText(reports[0].facts.name, reports[1].facts.name, comparison);
    }

    void WritePage(const std::string& path, const std::string& page) {
        if (path == "-") {
            out_ << page;
        } else if (!WriteWholeFile(path, page)) {
            Complain("The page " + path + " could not be written.");
            status_ = ExitStatus::kUsage;
        }
    }

    void WritePages() {
        const bool folder =
            options_.page.ends_with('/') || options_.page.ends_with('\\') || IsFolder(options_.page);
        folder ? WriteFolder() : WriteOnePage();
    }

    /// In full as long as they are not too many, and then as a table.
    void WriteOnePage() {
        std::vector<JudgedReport> detailed;
        std::vector<ReportSummary> summaries;
        ForEachReport([&](JudgedReport report) {
            summaries.push_back(SummaryOf(report));
            if (summaries.size() <= kMostDetailedReports) {
                detailed.push_back(std::move(report));
            } else {
                detailed.clear();
            }
        });
        if (!summaries.empty()) {
            WritePage(options_.page, detailed.empty() ? OverviewPage(summaries) : DetailedPage(detailed));
        }
    }

    void WriteFolder() {
        if (!MakeFolder(options_.page)) {
            Complain("The folder " + options_.page + " could not be made.");
            status_ = ExitStatus::kUsage;
            return;
        }
        std::vector<ReportSummary> summaries;
        ForEachReport([&](JudgedReport report) {
            summaries.push_back(SummaryOf(report));
            summaries.back().link = FormatText("report-%zu.html", summaries.size());
            std::vector<JudgedReport> one;
            one.push_back(std::move(report));
            WritePage(options_.page + "/" + summaries.back().link, DetailedPage(one));
        });
        if (!summaries.empty()) {
            WritePage(options_.page + "/index.html", OverviewPage(summaries));
        }
    }

    const ReportOptions& options_;
    std::istream& in_;
    std::ostream& out_;
    std::ostream& errors_;
    Masks masks_;
    int status_ = ExitStatus::kRead;
};

}  // namespace

int RunReportProgram(const ReportOptions& options, std::istream& in, std::ostream& out,
                     std::ostream& errors) {
    return Program(options, in, out, errors).Run();
}
