#include "tools/vistrel_report/report_program.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/format.h"
#include "tools/vistrel_report/comparison.h"
#include "tools/vistrel_report/count_text.h"
#include "tools/vistrel_report/exit_status.h"
#include "tools/vistrel_report/facts_from_reading.h"
#include "tools/vistrel_report/findings.h"
#include "tools/vistrel_report/json_output.h"
#include "tools/vistrel_report/masks.h"
#include "tools/vistrel_report/overview_page.h"
#include "tools/vistrel_report/page_document.h"
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
                WriteReply();
                break;
            case Task::Compare:
                WriteComparison();
                break;
            case Task::Json:
                ForEachReport([this](const JudgedReport& report, std::size_t) {
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

    void WrongUse(const std::string& sentence) {
        Complain(sentence);
        status_ = ExitStatus::kUsage;
    }

    static std::string NameOf(const std::string& input) { return input == "-" ? "standard input" : input; }

    /// The reports of one input, or a complaint when it is none.
    std::vector<Facts> Read(const Input& input) {
        InputBytes bytes = ReadInput(input, in_);
        if (!bytes.error.empty()) {
            NoReport(NameOf(input.name) + " " + bytes.error + ".");
            return {};
        }
        std::vector<Facts> reports = ReadFacts(std::move(bytes.bytes), NameOf(input.name));
        if (reports.empty() && input.of_a_folder) {
            ++passed_over_;
        } else if (reports.empty()) {
            NoReport(NameOf(input.name) + " is no report of vistrel_diag.");
        }
        return reports;
    }

    /// Calls `take` for each report of the inputs, one after the other; only one is held at a time. Returns
    /// how many reports each of the options' inputs gave.
    std::vector<std::size_t> ForEachReport(
        const std::function<void(JudgedReport, std::size_t argument)>& take) {
        std::vector<std::size_t> taken(options_.inputs.size());
        std::vector<bool> folder_with_files(options_.inputs.size());
        for (const Input& input : ExpandFolders(options_.inputs)) {
            folder_with_files[input.argument] = input.of_a_folder;
            for (Facts& facts : Read(input)) {
                ++taken[input.argument];
                Findings findings = JudgeReport(facts);
                if (options_.mask) {
                    masks_.Mask(facts);
                }
                take({std::move(facts), std::move(findings)}, input.argument);
            }
        }
        if (passed_over_ > 0) {
            Complain(CountText(passed_over_, "file of the folders is no report.",
                               "files of the folders are no reports."));
        }
        for (std::size_t argument = 0; argument < taken.size(); ++argument) {
            if (taken[argument] == 0 && folder_with_files[argument]) {
                NoReport("The folder " + options_.inputs[argument] + " holds no report of vistrel_diag.");
            }
        }
        return taken;
    }

    /// The first report of each of the options' inputs. None, with a complaint, unless each gave exactly one:
    /// which of several is meant cannot be told.
    std::vector<JudgedReport> OneReportOfEach(const std::string& option) {
        std::vector<JudgedReport> reports;
        std::optional<std::size_t> last;
        const std::vector<std::size_t> taken =
            ForEachReport([&reports, &last](JudgedReport report, std::size_t argument) {
                if (last != argument) {
                    reports.push_back(std::move(report));
                    last = argument;
                }
            });
        for (std::size_t argument = 0; argument < taken.size(); ++argument) {
            if (taken[argument] > 1) {
                WrongUse(option + " takes one report of each input; " + NameOf(options_.inputs[argument]) +
                         FormatText(" holds %zu.", taken[argument]));
            }
        }
        const bool one_each =
            std::all_of(taken.begin(), taken.end(), [](std::size_t reports_of) { return reports_of == 1; });
        return one_each ? std::move(reports) : std::vector<JudgedReport>();
    }

    void WriteReply() {
        for (const JudgedReport& report : OneReportOfEach("--reply")) {
            out_ << ReplyText(report.facts, report.findings);
        }
    }

    void WriteFindings() {
        bool first = true;
        ForEachReport([this, &first](const JudgedReport& report, std::size_t) {
            out_ << (first ? "" : "\n") << FindingsText(report.facts, report.findings, options_.only);
            first = false;
        });
    }

    void WriteCsv() {
        out_ << CsvHead(options_.with_personal_data);
        ForEachReport([this](const JudgedReport& report, std::size_t) {
            out_ << CsvRow(report.facts, report.findings, options_.with_personal_data);
        });
    }

    void WriteComparison() {
        const std::vector<JudgedReport> reports = OneReportOfEach("--compare");
        if (reports.size() != 2) {
            return;  // A complaint was made.
        }
        const Comparison comparison =
            Compare(reports[0].facts, reports[0].findings, reports[1].facts, reports[1].findings);
        out_ << ComparisonText(reports[0].facts.name, reports[1].facts.name, comparison);
    }

    /// False, with a complaint, where the page would replace a file that is none: most likely the name of a
    /// report took the place of the page's.
    bool MayWritePage(const std::string& path) {
        const bool other_file = path != "-" && HoldsOtherThan(kPageStart, path);
        if (other_file) {
            WrongUse(path +
                     " is not overwritten, for it is no page. Behind --html comes the page to write, "
                     "and then the reports.");
        }
        return !other_file;
    }

    void WritePage(const std::string& path, const std::string& page) {
        if (path == "-") {
            out_ << page;
        } else if (!WriteWholeFile(path, page)) {
            WrongUse("The page " + path + " could not be written.");
        }
    }

    void WritePages() {
        const bool folder =
            options_.page.ends_with('/') || options_.page.ends_with('\\') || IsFolder(options_.page);
        folder ? WriteFolder() : WriteOnePage();
    }

    /// In full as long as they are not too many, and then as a table.
    void WriteOnePage() {
        if (!MayWritePage(options_.page)) {
            return;
        }
        std::vector<JudgedReport> detailed;
        std::vector<ReportSummary> summaries;
        ForEachReport([&](JudgedReport report, std::size_t) {
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
            WrongUse("The folder " + options_.page + " could not be made.");
            return;
        }
        const std::string index = options_.page + "/index.html";
        if (!MayWritePage(index)) {
            return;
        }
        std::vector<ReportSummary> summaries;
        ForEachReport([&](JudgedReport report, std::size_t) {
            summaries.push_back(SummaryOf(report));
            summaries.back().link = FormatText("report-%zu.html", summaries.size());
            const std::string path = options_.page + "/" + summaries.back().link;
            std::vector<JudgedReport> one;
            one.push_back(std::move(report));
            if (MayWritePage(path)) {
                WritePage(path, DetailedPage(one));
            }
        });
        if (!summaries.empty()) {
            WritePage(index, OverviewPage(summaries));
        }
    }

    const ReportOptions& options_;
    std::istream& in_;
    std::ostream& out_;
    std::ostream& errors_;
    Masks masks_;
    std::size_t passed_over_ = 0;  ///< files of folders that are no reports
    int status_ = ExitStatus::kRead;
};

}  // namespace

int RunReportProgram(const ReportOptions& options, std::istream& in, std::ostream& out,
                     std::ostream& errors) {
    return Program(options, in, out, errors).Run();
}
