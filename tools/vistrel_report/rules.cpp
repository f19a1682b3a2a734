#include "tools/vistrel_report/rules.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "tools/vistrel_report/rule_levels.h"

namespace {

void Append(std::vector<Rule>& table, std::vector<Rule> rules) {
    std::move(rules.begin(), rules.end(), std::back_inserter(table));
}

std::vector<Rule> MakeTable() {
    std::vector<Rule> table;
    Append(table, UntrustedRules());
    Append(table, ExplainingRules());
    Append(table, ContributingRules());
    Append(table, WorthKnowingRules());
    return table;
}

}  // namespace

const std::vector<Rule>& RuleTable() {
    static const std::vector<Rule> table = MakeTable();
    return table;
}

const Rule* FindRule(std::string_view id) {
    const std::vector<Rule>& table = RuleTable();
    const auto found =
        std::find_if(table.begin(), table.end(), [id](const Rule& rule) { return rule.id == id; });
    return found == table.end() ? nullptr : &*found;
}

std::string_view LevelName(Level level) {
    switch (level) {
        case Level::Untrusted:
            return "untrusted";
        case Level::Explains:
            return "explains";
        case Level::Contributes:
            return "contributes";
        case Level::WorthKnowing:
            break;
    }
    return "worth-knowing";
}

std::string_view LevelTitle(Level level) {
    switch (level) {
        case Level::Untrusted:
            return "The report cannot be trusted";
        case Level::Explains:
            return "Explains the trouble";
        case Level::Contributes:
            return "Contributes";
        case Level::WorthKnowing:
            break;
    }
    return "Worth knowing";
}

std::string_view AnswerName(Answer answer) {
    switch (answer) {
        case Answer::Found:
            return "found";
        case Answer::NotFound:
            return "not_found";
        case Answer::NotJudged:
            return "not_judged";
        case Answer::DoesNotApply:
            break;
    }
    return "does_not_apply";
}
