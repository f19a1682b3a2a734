// The result of the test bundle: what passed, failed and was skipped, and why.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/bundle/gtest_output.h"

/// One program or one whole run of the tool, and the tests in it.
struct Step {
    std::string name;
    std::vector<TestResult> tests;
};

class Summary {
  public:
    void Add(Step step) { steps_.push_back(std::move(step)); }

    bool AllPassed() const;

    /// The text of the summary file, with plain line ends: figures first, then each failed test with what it
    /// printed, then the skipped ones by their reason, then `left_out`, one line an entry.
    std::string Text(const std::string& machine, const std::vector<std::string>& left_out) const;

  private:
    std::size_t Count(TestOutcome outcome) const;
    std::string Failures() const;
    std::string Skips() const;

    std::vector<Step> steps_;
};
