// Findings in plain text: for the console, for --explain and --list-rules, and as a reply to the user.
#pragma once

#include <optional>
#include <string>

#include "tools/vistrel_report/facts.h"
#include "tools/vistrel_report/findings.h"

/// The findings of one report; with `only`, just those of that level.
std::string FindingsText(const Facts& facts, const Findings& findings, std::optional<Level> only);

/// A short reply to send to the user, with at most three requests. The first one is for the whole file when
/// its beginning or its end is missing and the report does not say why.
std::string ReplyText(const Facts& facts, const Findings& findings);

/// One line per rule: level, id, title.
std::string RuleListText();

/// Everything in the table about one rule.
std::string ExplainText(const Rule& rule);

/// `text` wrapped at blanks to lines of at most `columns`, where that is possible; lines after the first
/// begin with `indent`.
std::string Wrapped(const std::string& text, std::size_t columns, const std::string& indent);
