// The result of applying the rules to one report.
#pragma once

#include <string>
#include <vector>

#include "tools/vistrel_report/facts.h"
#include "tools/vistrel_report/rules.h"

struct Finding {
    const Rule* rule = nullptr;
    Judgement judgement;
    /// Rules that were found and make the data behind this finding unreliable. Only for a rule that was found
    /// itself.
    std::vector<const Rule*> doubtful_because;
};

struct Findings {
    std::vector<Finding> all;    ///< one for each rule, in the table's order
    bool verdict_judged = true;  ///< false: the report cannot be trusted, or has no verdict
    std::string summary;         ///< one sentence for the top
};

/// Applies every rule of the table.
Findings JudgeReport(const Facts& facts);

/// The findings of this level, the doubtful ones last.
std::vector<const Finding*> FoundAtLevel(const Findings& findings, Level level);

/// All findings, by level, the doubtful ones last within each.
std::vector<const Finding*> FoundOnes(const Findings& findings);

/// How many answers of this kind there are.
std::size_t CountOf(const Findings& findings, Answer answer);

/// "doubtful because of product-running, wrong-folder", or empty.
std::string DoubtText(const Finding& finding);
