// What the guided run itself says: its console texts, and the report lines that belong to no section.
#pragma once

#include <functional>
#include <string>

void PrintBanner();

/// The report's first lines. `tool_folder` is UTF-8 and may be empty.
void PrintOpeningLines(const std::string& tool_folder);

void PrintPartTwoInstructions();

/// Gives the person 15 seconds to click on the game, shown on one console line. `wait_a_second` is called
/// once for each.
void CountDownToPartTwo(const std::function<void()>& wait_a_second);

/// What the report says in place of part 2.
void ReportPartTwoSkipped();
