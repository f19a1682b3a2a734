// Words in place of what may name a person: folders, the user's name, window titles, and the lines that a
// report quotes from files. docs/reading-a-report.md says which those are.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/vistrel_report/facts.h"

/// Keeps its words from report to report: the same thing gets the same word as long as it lives.
class Masks {
  public:
    /// Replaces everything personal in what is shown of the report, its text among it.
    void Mask(Facts& facts);

  private:
    /// "<folder 1>", "<folder 2>", ...: the same for the same thing.
    const std::string& WordFor(std::string_view kind, const std::string& thing);
    void Collect(const Facts& facts);
    void CollectPath(const std::string& path);
    void Replace(std::string& text) const;
    void MaskQuotedLines(Facts& facts);

    std::map<std::pair<std::string, std::string>, std::string> words_;
    std::map<std::string, std::size_t> counts_;
    std::vector<std::pair<std::string, std::string>> replacements_;  ///< of the report at hand, longest first
};
