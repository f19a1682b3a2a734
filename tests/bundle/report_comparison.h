// Compares a report that was made on this machine with one that was reviewed on another.
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The sections that describe the machine on which the tests run and its user, which a simulated machine does
/// not replace. Only their titles are compared.
bool IsOfThisMachine(std::string_view title);

/// The lines that differ, "- " before an expected and "+ " before an actual one; empty when the reports say
/// the same. `expected` has plain line ends and "<install>" for the tool's folder, as the golden reports
/// have; `actual` is the report file as it is, made by a tool in `install_folder`.
std::vector<std::string> ReportDifferences(std::string_view expected, std::string_view actual,
                                           std::string_view install_folder);

/// The reasons why a text is not the whole report of an ordinary run: a section that is missing or out of
/// order, a closing line of a run that was cut short. Empty for a whole one.
std::vector<std::string> WhatIsMissing(std::string_view report);
