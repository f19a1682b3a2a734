// Texts of the guided run itself: its console texts, and the report lines that belong to no section.
#pragma once

#include <functional>
#include <string>

void PrintBanner();

/// The report's first lines. `tool_folder` is UTF-8 and may be empty.
void PrintOpeningLines(const std::string& tool_folder);

void PrintPartTwoInstructions();

/// Counts down 15 seconds on one console line, for the user to click on the game. `wait_a_second` is called
/// once for each second.
void CountDownToPartTwo(const std::function<void()>& wait_a_second);

/// Prints what the report says in place of part 2.
void ReportPartTwoSkipped();
