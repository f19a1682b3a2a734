// Converts the sections that were read into the facts of a report.
#pragma once

#include <string>
#include <vector>

#include "tools/vistrel_report/facts.h"

/// The reports in the bytes of a file or mail; empty when there are none. Any bytes are accepted. Each report
/// is called `name`, followed by "(1)", "(2)" when there are several.
std::vector<Facts> ReadFacts(std::string bytes, const std::string& name);
