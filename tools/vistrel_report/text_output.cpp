#include "tools/vistrel_report/text_output.h"

#include <algorithm>
#include <array>
#include <vector>

#include "platform/format.h"
#include "tools/vistrel_report/count_text.h"
#include "tools/vistrel_report/visible_text.h"

namespace {

constexpr std::size_t kColumns = 100;
constexpr std::size_t kMailColumns = 72;
constexpr std::size_t kMostRequests = 3;
constexpr std::size_t kMostLinesTold = 8;
constexpr std::size_t kLongestShownLine = 100;  // Bytes.
constexpr std::array kLevels = {Level::Untrusted, Level::Explains, Level::Contributes, Level::WorthKnowing};

std::string LinesText(const std::vector<LineNumber>& lines) {
    if (lines.empty()) {
        return {};
    }
    std::string text = lines.size() == 1 ? "line " : "lines ";
    for (std::size_t i = 0; i < lines.size() && i < kMostLinesTold; ++i) {
        text += (i == 0 ? "" : ", ") + std::to_string(lines[i]);
    }
    return text + (lines.size() > kMostLinesTold ? ", ..." : "");
}

std::string FindingText(const Finding& finding) {
    const Rule& rule = *finding.rule;
    std::string text = "  * " + std::string(rule.title) + "  [" + std::string(rule.id) + "]\n";
    text += "    " + Wrapped(VisibleText(finding.judgement.says), kColumns - 4, "    ") + "\n";
    std::string base = LinesText(finding.judgement.lines);
    const std::string doubt = DoubtText(finding);
    base += (base.empty() || doubt.empty() ? "" : "; ") + doubt;
    if (!base.empty()) {
        text += "    (" + base + ")\n";
    }
    if (!rule.request.empty()) {
        text += "    Ask: " + Wrapped(std::string(rule.request), kColumns - 4, "         ") + "\n";
    }
    return text;
}

/// Rules that could not be judged, by what is missing.
std::string NotJudgedText(const Findings& findings) {
    std::vector<std::pair<std::string, std::string>> by_part;
    for (const Finding& finding : findings.all) {
        if (finding.judgement.answer != Answer::NotJudged || finding.judgement.missing.empty()) {
            continue;
        }
        const std::string part(PartName(finding.judgement.missing.front()));
        auto entry =
            std::find_if(by_part.begin(), by_part.end(), [&part](const auto& e) { return e.first == part; });
        if (entry == by_part.end()) {
            entry = by_part.insert(by_part.end(), {part, ""});
        }
        entry->second += (entry->second.empty() ? "" : ", ") + std::string(finding.rule->id);
    }
    std::string text = by_part.empty() ? "" : "\nNot judged, for a section is missing:\n";
    for (const auto& [part, ids] : by_part) {
        text += "  " + part + ":\n    " + Wrapped(ids, kColumns - 4, "    ") + "\n";
    }
    return text;
}

/// At most so many bytes of `text`, without a part of a character at the end.
std::string BeginningOf(const std::string& text, std::size_t longest) {
    constexpr std::size_t kMostFollowingBytes = 3;
    const auto follows = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; };
    std::size_t end = std::min(text.size(), longest);
    for (std::size_t i = 0; i < kMostFollowingBytes && end > 0 && end < text.size() && follows(text[end]);
         ++i) {
        --end;
    }
    return text.substr(0, end);
}

std::string NotesText(const Facts& facts) {
    std::string text;
    for (const NoteFact& note : facts.notes) {
        const std::string place = note.line == 0 ? "" : FormatText(" (line %zu)", note.line);
        text += "  " + Wrapped(VisibleText(note.text) + place, kColumns - 2, "  ") + "\n";
    }
    if (!facts.not_understood.empty()) {
        text +=
            "  " +
            CountText(facts.not_understood.size(), "line was not understood", "lines were not understood") +
            ":\n";
        for (std::size_t i = 0; i < facts.not_understood.size() && i < kMostLinesTold; ++i) {
            const LineNumber number = facts.not_understood[i];
            const TextFact* const found = FindLine(facts, number);
            const std::string line = found != nullptr ? BeginningOf(found->text, kLongestShownLine) : "";
            text += FormatText("    %6zu  %s\n", number, VisibleText(line).c_str());
        }
        if (facts.not_understood.size() > kMostLinesTold) {
            text += FormatText("    and %zu more\n", facts.not_understood.size() - kMostLinesTold);
        }
    }
    return text.empty() ? "" : "\nAbout the text itself:\n" + text;
}

}  // namespace

std::string Wrapped(const std::string& text, std::size_t columns, const std::string& indent) {
    std::string wrapped;
    std::size_t column = 0;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find(' ', start), text.size());
        const std::size_t length = end - start;
        if (column != 0 && column + 1 + length > columns) {
            wrapped += "\n" + indent;
            column = 0;
        } else if (start != 0) {
            wrapped += ' ';
            ++column;
        }
        wrapped += text.substr(start, length);
        column += length;
        start = end + 1;
    }
    return wrapped;
}

std::string FindingsText(const Facts& facts, const Findings& findings, std::optional<Level> only) {
    std::string text =
        "== " + VisibleText(facts.name) + "\n" + Wrapped(findings.summary, kColumns, "") + "\n";
    for (const Level level : kLevels) {
        const std::vector<const Finding*> found = FoundAtLevel(findings, level);
        if (found.empty() || (only && *only != level)) {
            continue;
        }
        text += "\n" + std::string(LevelTitle(level)) + ":\n";
        for (const Finding* finding : found) {
            text += FindingText(*finding);
        }
    }
    if (!only) {
        text += NotJudgedText(findings);
        text += NotesText(facts);
    }
    text += FormatText("\n%zu found, %zu not found, %zu not judged, ", CountOf(findings, Answer::Found),
                       CountOf(findings, Answer::NotFound), CountOf(findings, Answer::NotJudged)) +
            CountText(CountOf(findings, Answer::DoesNotApply), "does not apply", "do not apply") + ".\n";
    return text;
}

std::string ReplyText(const Facts& facts, const Findings& findings) {
    std::vector<std::string> requests;
    const bool incomplete = std::any_of(facts.notes.begin(), facts.notes.end(), [](const NoteFact& note) {
        return note.kind == "cut_off" || note.kind == "no_opening";
    });
    if (incomplete) {
        requests.emplace_back(
            "Please send us the whole file vistrel_diag_report.txt as an attachment: a part of it did not "
            "reach "
            "us.");
    }
    for (const Finding* finding : FoundOnes(findings)) {
        const std::string request(finding->rule->request);
        const bool asked = std::find(requests.begin(), requests.end(), request) != requests.end();
        if (!request.empty() && !asked && finding->doubtful_because.empty() &&
            requests.size() < kMostRequests) {
            requests.push_back(request);
        }
    }
    if (requests.empty()) {
        return "Hello,\n\nthank you for the report. It is complete, and we need nothing more from\n"
               "you for now. We will look into it and write again.\n\nKind regards\n";
    }
    std::string text = "Hello,\n\nthank you for the report; it helps a lot.\n";
    text += requests.size() == 1 ? "One thing would take us further:\n\n"
                                 : "These steps would take us further:\n\n";
    for (std::size_t i = 0; i < requests.size(); ++i) {
        const std::string number = requests.size() == 1 ? "" : FormatText("%zu. ", i + 1);
        text += number + Wrapped(requests[i], kMailColumns - number.size(), std::string(number.size(), ' ')) +
                "\n\n";
    }
    return text + "Thank you for your patience.\n\nKind regards\n";
}

std::string RuleListText() {
    std::string text;
    for (const Rule& rule : RuleTable()) {
        text += FormatText("%-13s %-26s %s\n", std::string(LevelName(rule.level)).c_str(),
                           std::string(rule.id).c_str(), std::string(rule.title).c_str());
    }
    return text;
}

std::string ExplainText(const Rule& rule) {
    const auto line = [](const char* name, const std::string& value) {
        return FormatText("%-12s%s\n", name, Wrapped(value, kColumns - 12, std::string(12, ' ')).c_str());
    };
    std::string needs;
    for (const Part part : rule.needs) {
        needs += (needs.empty() ? "" : "; ") + std::string(PartName(part));
    }
    std::string spoils;
    for (const Rule& other : RuleTable()) {
        if (&other != &rule && (rule.spoils & other.rests_on) != 0) {
            spoils += (spoils.empty() ? "" : ", ") + std::string(other.id);
        }
    }
    std::string text = std::string(rule.id) + ": " + std::string(rule.title) + "\n\n";
    text += line("Level", std::string(LevelTitle(rule.level)));
    text += line("Found when", std::string(rule.condition));
    text += line("Needs", needs.empty() ? "whichever of its sections are there" : needs);
    if (!spoils.empty()) {
        text += line("Spoils", spoils);
    }
    text += line("Ask", rule.request.empty() ? "nothing" : std::string(rule.request));
    text += line("Read", "docs/reading-a-report.md#" + std::string(rule.heading));
    return text;
}
