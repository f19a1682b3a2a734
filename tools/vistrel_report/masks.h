// Replaces what may identify a person: folders, the user's name, window titles, and what a report quotes from
// files. docs/reading-a-report.md lists all of it.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/vistrel_report/facts.h"

/// One object can mask several reports: the same thing gets the same word in all of them.
class Masks {
  public:
    /// Replaces everything personal in the parts of the report that are shown, its text included.
    void Mask(Facts& facts);

  private:
    /// "<folder 1>", "<folder 2>", ...: the same for the same thing.
    const std::string& WordFor(std::string_view kind, const std::string& thing);
    void Collect(const Facts& facts);
    void CollectPath(const std::string& path);
    void Replace(std::string& text) const;
    void MaskQuotedLines(Facts& facts);
    void MaskTitleLines(Facts& facts, const std::optional<TextFact>& title);
    void MaskParserMessage(Facts& facts);
    void MaskQuotingSections(Facts& facts);
    void MaskNote(NoteFact& note) const;

    std::map<std::pair<std::string, std::string>, std::string> words_;
    std::map<std::string, std::size_t> counts_;
    std::vector<std::pair<std::string, std::string>> replacements_;  ///< of the current report, longest first
};
