// Compares two reports of one user.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/vistrel_report/facts.h"
#include "tools/vistrel_report/findings.h"

enum class RowState { Same, WithinTolerance, Changed, NotComparable, OnlyInOld, OnlyInNew };

/// Runs of the same set-up differ by up to this share; a smaller difference does not count as a change.
inline constexpr double kRunTolerance = 0.10;

struct ComparedRow {
    std::string what;
    std::string old_value;
    std::string new_value;
    RowState state = RowState::Same;
    std::string why;  ///< why it is not comparable, or by how much a number changed
};

struct Comparison {
    std::vector<ComparedRow> rows;
    std::vector<const Rule*> came;
    std::vector<const Rule*> went;
};

/// Values that differ after every restart of the machine are not compared: LUIDs, free memory.
Comparison Compare(const Facts& old_facts, const Findings& old_findings, const Facts& new_facts,
                   const Findings& new_findings);

/// The comparison as text. Rows that are the same, or within the tolerance, are counted but not shown.
std::string ComparisonText(const std::string& old_name, const std::string& new_name,
                           const Comparison& comparison);
