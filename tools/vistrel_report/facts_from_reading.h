// From the sections that were read to the facts of a report.
#pragma once

#include <string>
#include <vector>

#include "tools/vistrel_report/facts.h"

/// The reports in the bytes of a file or mail; none when there is none in it. Any bytes do. Each is called
/// `name`, with "(1)", "(2)" behind it where there are several.
std::vector<Facts> ReadFacts(std::string bytes, const std::string& name);
