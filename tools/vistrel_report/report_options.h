// What the program was asked to do.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/vistrel_report/rules.h"

enum class Task { Findings, Reply, Page, Compare, Json, Csv, ListRules, Explain };

struct ReportOptions {
    Task task = Task::Findings;
    std::vector<std::string> inputs;  ///< files, folders, or "-" for standard input; UTF-8
    std::string page;                 ///< the file or folder to write, of Task::Page; "-": standard output
    std::string rule;                 ///< of Task::Explain
    std::optional<Level> only;
    bool with_personal_data = false;
    bool mask = false;
};
