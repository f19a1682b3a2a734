#include "tools/vistrel_report/overview_page.h"

#include <algorithm>
#include <array>
#include <set>

#include "platform/format.h"
#include "tools/vistrel_report/charts.h"
#include "tools/vistrel_report/count_text.h"
#include "tools/vistrel_report/distributions.h"
#include "tools/vistrel_report/markup.h"
#include "tools/vistrel_report/page_document.h"

namespace {

/// How often each rule was found, in reports and in machines.
void WriteFindingSpread(Markup& page, const std::vector<ReportSummary>& reports) {
    std::vector<std::vector<std::string>> rows;
    for (const Rule& rule : RuleTable()) {
        std::size_t count = 0;
        std::set<std::string> machines;
        for (const ReportSummary& report : reports) {
            if (std::find(report.found.begin(), report.found.end(), &rule) != report.found.end()) {
                ++count;
                machines.insert(report.machine_key);
            }
        }
        machines.erase("");
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
        page.TextElement("p", "Without " + CountText(static_cast<std::size_t>(left_out),
                                                     "report whose figures cannot be trusted.",
                                                     "reports whose figures cannot be trusted."));
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

std::string OverviewPage(const std::vector<ReportSummary>& reports) {
    std::set<std::string> machines;
    std::size_t without_machine = 0;
    for (const ReportSummary& report : reports) {
        if (report.machine_key.empty()) {
            ++without_machine;
        } else {
            machines.insert(report.machine_key);
        }
    }
    return PageDocument(FormatText("%zu Vistrel diagnostic reports", reports.size()), [&](Markup& page) {
        page.TextElement("p", "Of " + CountText(machines.size(), "machine", "machines") +
                                  ", told apart by processor, memory and graphics cards. Two machines of the "
                                  "same configuration count as one.");
        if (without_machine > 0) {
            page.TextElement("p", CountText(without_machine, "report does not tell its machine. It is",
                                            "reports do not tell their machine. They are") +
                                      " left out of the counts of machines and of the charts.");
        }
        WriteFindingSpread(page, reports);
        WriteDistributions(page, reports);
        WriteReportTable(page, reports);
    });
}
