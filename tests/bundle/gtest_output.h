// The output of a GoogleTest program, test by test.
#pragma once

#include <string>
#include <string_view>
#include <vector>

enum class TestOutcome { Passed, Failed, Skipped };

struct TestResult {
    std::string name;  ///< "Suite.Test"
    TestOutcome outcome = TestOutcome::Passed;
    std::string message;  ///< its output; for a skipped test only the reason
};

/// The results in the order of the output. A test that began and did not end counts as failed: the program
/// crashed in it.
std::vector<TestResult> ReadGtestOutput(std::string_view output);
