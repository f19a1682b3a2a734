// What changed between two reports of one user.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/vistrel_report/facts.h"
#include "tools/vistrel_report/findings.h"

enum class RowState { Same, WithinTolerance, Changed, NotComparable, OnlyInOld, OnlyInNew };

/// Runs of the same set-up differ by so much; what differs by no more is no change.
inline constexpr double kRunTolerance = 0.10;

struct ComparedRow {
    std::string what;
    std::string old_value;
    std::string new_value;
    RowState state = RowState::Same;
    std::string why;  ///< of one that is not comparable; of a changed number by how much
};

struct Comparison {
    std::vector<ComparedRow> rows;
    std::vector<const Rule*> came;
    std::vector<const Rule*> went;
};

/// Never compares what differs by itself from one start of the machine to the next: LUIDs, free memory.
Comparison Compare(const Facts& old_facts, const Findings& old_findings, const Facts& new_facts,
                   const Findings& new_findings);

/// As text; rows that are the same, or within the tolerance, are hidden and counted.
std::string ComparisonText(const std::string& old_name, const std::string& new_name,
                           const Comparison& comparison);
