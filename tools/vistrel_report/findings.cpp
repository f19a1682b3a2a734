#include "tools/vistrel_report/findings.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace {

constexpr std::array kLevels = {Level::Untrusted, Level::Explains, Level::Contributes, Level::WorthKnowing};

Judgement Judge(const Rule& rule, const Facts& facts) {
    Judgement missing;
    std::copy_if(rule.needs.begin(), rule.needs.end(), std::back_inserter(missing.missing),
                 [&facts](Part part) { return !facts.Has(part); });
    if (!missing.missing.empty()) {
        missing.answer = Answer::NotJudged;
        return missing;
    }
    return rule.judge(facts);
}

void MarkDoubts(std::vector<Finding>& findings) {
    for (Finding& finding : findings) {
        if (finding.judgement.answer != Answer::Found) {
            continue;
        }
        for (const Finding& other : findings) {
            const bool spoils = (other.rule->spoils & finding.rule->rests_on) != 0;
            if (spoils && &other != &finding && other.judgement.answer == Answer::Found) {
                finding.doubtful_because.push_back(other.rule);
            }
        }
    }
}

const Finding* FirstFound(const Findings& findings, Level level) {
    const std::vector<const Finding*> found = FoundAtLevel(findings, level);
    return found.empty() ? nullptr : found.front();
}

/// The finding by which nothing can be judged, or null.
const Finding* Spoiler(const Findings& findings) {
    return FirstFound(findings, Level::Untrusted);
}

/// `title` as it goes on within a sentence: a name keeps its capital.
std::string WithinSentence(std::string_view title) {
    std::string text(title);
    const bool name = text.starts_with("Vistrel") || text.starts_with("Windows") ||
                      text.starts_with("Direct3D") || text.starts_with("SteamVR") ||
                      text.starts_with("GPU") || text.starts_with("3D");
    if (!name && !text.empty() && text[0] >= 'A' && text[0] <= 'Z') {
        text[0] = static_cast<char>(text[0] - 'A' + 'a');
    }
    return text;
}

std::string Summary(const Facts& facts, const Findings& findings) {
    if (const Finding* spoiler = Spoiler(findings)) {
        return "The verdict of this report cannot be judged: " + WithinSentence(spoiler->rule->title) + ".";
    }
    if (facts.cut_short) {
        return "The run was cut short, so there is no verdict to judge.";
    }
    if (!facts.Has(Part::Verdict)) {
        return "The end of the report is missing, so there is no verdict to judge.";
    }
    if (const Finding* cause = FirstFound(findings, Level::Explains)) {
        const std::string doubt = cause->doubtful_because.empty() ? "" : " (doubtful)";
        const std::size_t more = FoundAtLevel(findings, Level::Explains).size() - 1;
        return "What explains the trouble: " + WithinSentence(cause->rule->title) + doubt +
               (more == 0 ? "." : ", and " + std::to_string(more) + " more.");
    }
    if (facts.verdict.not_measured_line != 0) {
        return "The warp could not be measured, so there is no verdict to judge.";
    }
    if (const Finding* part = FirstFound(findings, Level::Contributes)) {
        return "Nothing explains the trouble by itself; what contributes: " +
               WithinSentence(part->rule->title) + ".";
    }
    return "Nothing in this report explains the trouble.";
}

}  // namespace

Findings JudgeReport(const Facts& facts) {
    Findings findings;
    findings.all.reserve(RuleTable().size());
    for (const Rule& rule : RuleTable()) {
        findings.all.push_back({&rule, Judge(rule, facts), {}});
    }
    MarkDoubts(findings.all);
    findings.verdict_judged =
        Spoiler(findings) == nullptr && facts.Has(Part::Verdict) && facts.verdict.not_measured_line == 0;
    findings.summary = Summary(facts, findings);
    return findings;
}

std::vector<const Finding*> FoundAtLevel(const Findings& findings, Level level) {
    std::vector<const Finding*> found;
    for (const Finding& finding : findings.all) {
        if (finding.rule->level == level && finding.judgement.answer == Answer::Found) {
            found.push_back(&finding);
        }
    }
    std::stable_partition(found.begin(), found.end(),
                          [](const Finding* finding) { return finding->doubtful_because.empty(); });
    return found;
}

std::vector<const Finding*> FoundOnes(const Findings& findings) {
    std::vector<const Finding*> all;
    for (const Level level : kLevels) {
        const std::vector<const Finding*> found = FoundAtLevel(findings, level);
        all.insert(all.end(), found.begin(), found.end());
    }
    return all;
}

std::size_t CountOf(const Findings& findings, Answer answer) {
    return static_cast<std::size_t>(
        std::count_if(findings.all.begin(), findings.all.end(),
                      [answer](const Finding& finding) { return finding.judgement.answer == answer; }));
}

std::string DoubtText(const Finding& finding) {
    std::string text;
    for (const Rule* rule : finding.doubtful_because) {
        text += (text.empty() ? "doubtful because of " : ", ") + std::string(rule->id);
    }
    return text;
}
