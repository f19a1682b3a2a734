// Text, page, data and masks for reports that were edited at random: lines removed, repeated and moved,
// numbers and names replaced. In all cases a finding refers to existing lines, and the page stays valid.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "tests/fuzz/fuzz_input.h"
#include "tools/vistrel_report/comparison.h"
#include "tools/vistrel_report/facts_from_reading.h"
#include "tools/vistrel_report/findings.h"
#include "tools/vistrel_report/json_output.h"
#include "tools/vistrel_report/masks.h"
#include "tools/vistrel_report/overview_page.h"
#include "tools/vistrel_report/report_page.h"
#include "tools/vistrel_report/text_output.h"

namespace {

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// A whole report, with part 2 and every model.
const std::vector<std::string>& Template() {
    static const std::vector<std::string> lines = [] {
        std::ifstream file("tests/report/rules/video-memory-full.report.txt");
        Require(file.is_open());
        std::vector<std::string> read;
        for (std::string line; std::getline(file, line);) {
            read.push_back(line);
        }
        return read;
    }();
    return lines;
}

/// Replaces the number that `place` counts to, or a name behind ": ", by `text`.
void ReplaceValue(std::string& line, std::size_t place, const std::string& text) {
    constexpr std::string_view kDigits = "0123456789.";
    std::size_t begin = line.find_first_of(kDigits);
    for (std::size_t i = 0; i < place % 4 && begin != std::string::npos; ++i) {
        begin = line.find_first_of(kDigits, std::min(line.find_first_not_of(kDigits, begin), line.size()));
    }
    if (begin == std::string::npos) {
        const std::size_t colon = line.find(": ");
        begin = colon == std::string::npos ? line.size() : colon + 2;
    }
    line.replace(begin, std::min(line.find_first_not_of(kDigits, begin), line.size()) - begin, text);
}

std::string EditedReport(FuzzInput input) {
    std::vector<std::string> lines = Template();
    while (!input.IsAtEnd() && !lines.empty()) {
        const std::size_t edit = input.Number() % 6;
        const std::size_t at = (input.Number() * 256 + input.Number()) % lines.size();
        const auto place = lines.begin() + static_cast<std::ptrdiff_t>(at);
        if (edit == 0) {
            lines.erase(place);
        } else if (edit == 1 && lines.size() < 1000) {
            lines.insert(place, lines[input.Number() % lines.size()]);
        } else if (edit == 2) {
            std::swap(lines[at], lines[input.Number() % lines.size()]);
        } else if (edit == 3 && lines.size() < 1000) {
            lines.insert(place, input.Text(80));
        } else if (edit == 4) {
            lines.resize(at);
        } else {
            const std::size_t value = input.Number();
            ReplaceValue(lines[at], value, input.Text(12));
        }
    }
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\r\n";
    }
    return text;
}

void CheckPage(const std::string& page) {
    Require(page.ends_with("</html>\n"));
    Require(page.find("<script") == std::string::npos);
    Require(std::all_of(page.begin(), page.end(), [](char byte) {
        const auto value = static_cast<unsigned char>(byte);
        return value >= 0x20 ? value != 0x7F : byte == '\n';
    }));
}

void CheckFindings(const Facts& facts, const Findings& findings) {
    Require(findings.all.size() == RuleTable().size());
    for (const Finding& finding : findings.all) {
        const bool found = finding.judgement.answer == Answer::Found;
        Require(found == !finding.judgement.says.empty());
        for (const LineNumber line : finding.judgement.lines) {
            Require(FindLine(facts, line) != nullptr);
        }
    }
}

/// Only one kind of output, because all of them take ten times as long.
void CheckOutput(Facts facts, const Findings& findings, std::size_t kind) {
    if (kind == 0) {
        Require(JsonLine(facts, findings, true).ends_with("}\n"));
        return;
    }
    if (kind == 1) {
        Require(CsvRow(facts, findings, true).ends_with("\r\n"));
        Require(!ReplyText(facts, findings).empty());
        return;
    }
    if (kind == 2) {
        const Comparison comparison = Compare(facts, findings, facts, findings);
        Require(ComparisonText("a", "b", comparison).find("Changed") == std::string::npos);
        return;
    }
    Masks masks;
    masks.Mask(facts);
    if (kind == 3) {
        Require(!FindingsText(facts, findings, {}).empty());
        return;
    }
    std::vector<JudgedReport> reports;
    reports.push_back({std::move(facts), findings});
    CheckPage(kind == 4 ? DetailedPage(reports) : OverviewPage({SummaryOf(reports.front())}));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const std::size_t kind = input.Number() % 6;
    for (Facts& facts : ReadFacts(EditedReport(input), "report.txt")) {
        const Findings findings = JudgeReport(facts);
        CheckFindings(facts, findings);
        CheckOutput(std::move(facts), findings, kind);
    }
    return 0;
}
