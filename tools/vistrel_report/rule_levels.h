// The table of rules, by level. What rules of several levels ask of the user.
#pragma once

#include <string_view>
#include <vector>

#include "tools/vistrel_report/rules.h"

namespace RuleRequests {
inline constexpr std::string_view kRunAgainClosed =
    "Please close Vistrel and the program that hosts it, then run vistrel_diag again and send the new "
    "report.";
inline constexpr std::string_view kInstallFolder =
    "Please copy vistrel_diag.exe into the folder where Vistrel is installed (the one with Vistrel.exe), run "
    "it "
    "there and send the new report.";
inline constexpr std::string_view kPartTwo =
    "Please run vistrel_diag again with both parts: when it asks, have the headset on and a game running "
    "that "
    "shows the trouble.";
inline constexpr std::string_view kSendLog =
    "Please make a log: in Vistrel, Debug tab, turn on \"Show Vistrel debug log\", press Start, let it reach "
    "the "
    "state you see, press Stop, then run vistrel_diag once more.";
}  // namespace RuleRequests

std::vector<Rule> UntrustedRules();
std::vector<Rule> ExplainingRules();
std::vector<Rule> ContributingRules();
std::vector<Rule> WorthKnowingRules();
