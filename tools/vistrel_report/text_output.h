// Findings in plain text: for the console, for --explain and --list-rules, and as an answer to the user.
#pragma once

#include <optional>
#include <string>

#include "tools/vistrel_report/facts.h"
#include "tools/vistrel_report/findings.h"

/// The findings of one report, those of one level only when `only` says so.
std::string FindingsText(const Facts& facts, const Findings& findings, std::optional<Level> only);

/// A short answer to send to the user, with at most three requests.
std::string ReplyText(const Findings& findings);

/// One line a rule: level, id, title.
std::string RuleListText();

/// All that the table says of one rule.
std::string ExplainText(const Rule& rule);

/// `text` broken at blanks so that no line is longer than `columns` where it can be helped; the lines after
/// the first begin with `indent`.
std::string Wrapped(const std::string& text, std::size_t columns, const std::string& indent);
