// What an experienced reader looks for in a report, as one table. docs/reading-a-report.md says the same in
// words; a test checks that the two agree.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/vistrel_report/facts.h"

/// The answer of a rule for one report.
enum class Answer {
    Found,
    NotFound,
    NotJudged,     ///< a section that it needs is missing
    DoesNotApply,  ///< the rule does not cover this machine or set-up
};

/// Levels of findings, by the effect of what was found.
enum class Level { Untrusted, Explains, Contributes, WorthKnowing };

/// The kinds of data that a finding depends on or makes unreliable; a set of bits.
using Topics = std::uint8_t;
namespace Topic {
inline constexpr Topics kNone = 0;
inline constexpr Topics kTimings = 1;    ///< times of the warp and the models, and what is computed from them
inline constexpr Topics kCapture = 2;    ///< whether and how fast the desktop can be captured
inline constexpr Topics kSettings = 4;   ///< that the settings are this user's
inline constexpr Topics kBehaviour = 8;  ///< what the product does by itself
}  // namespace Topic

struct Judgement {
    Answer answer = Answer::NotFound;
    std::string says;  ///< of what was found; UTF-8, one or two sentences. Contains no personal data
    std::vector<LineNumber> lines;  ///< lines that it depends on, ascending, each once
    std::vector<Part> missing;      ///< sections missing, for a rule that was not judged
};

struct Rule {
    std::string_view id;  ///< permanent
    Level level;
    std::string_view title;   ///< what was found, in a few words
    std::vector<Part> needs;  ///< if one of them is missing, the rule is not judged
    Judgement (*judge)(const Facts&);
    std::string_view condition;  ///< when it is found, for --explain
    std::string_view request;    ///< what to ask the user, ready to send; empty: nothing
    std::string_view heading;    ///< its anchor in docs/reading-a-report.md
    Topics rests_on = Topic::kNone;
    Topics spoils = Topic::kNone;
};

/// All rules: by level, and within a level the most informative first.
const std::vector<Rule>& RuleTable();

/// The rule with that id, or null.
const Rule* FindRule(std::string_view id);

/// "untrusted", "explains", "contributes", "worth-knowing": as --only and the JSON spell it.
std::string_view LevelName(Level level);

/// The level in words for a heading: "The report cannot be trusted", ...
std::string_view LevelTitle(Level level);

/// "found", "not_found", "not_judged", "does_not_apply".
std::string_view AnswerName(Answer answer);
