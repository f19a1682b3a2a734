// What the rules make of one report.
#pragma once

#include <string>
#include <vector>

#include "tools/vistrel_report/facts.h"
#include "tools/vistrel_report/rules.h"

struct Finding {
    const Rule* rule = nullptr;
    Judgement judgement;
    /// Rules that were found and spoil what this finding rests on; only of one that was found itself.
    std::vector<const Rule*> doubtful_because;
};

struct Findings {
    std::vector<Finding> all;    ///< one for each rule, in the table's order
    bool verdict_judged = true;  ///< false: the report cannot be trusted, or has no verdict
    std::string summary;         ///< one sentence for the top
};

/// Asks every rule of the table.
Findings JudgeReport(const Facts& facts);

/// Those that were found at this level, the doubtful ones last.
std::vector<const Finding*> FoundAtLevel(const Findings& findings, Level level);

/// All that were found, by level, the doubtful ones last in each.
std::vector<const Finding*> FoundOnes(const Findings& findings);

/// How many answers of this kind there are.
std::size_t CountOf(const Findings& findings, Answer answer);

/// "doubtful because of product-running, wrong-folder", or empty.
std::string DoubtText(const Finding& finding);
