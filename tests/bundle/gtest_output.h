// What a GoogleTest program printed, test by test.
#pragma once

#include <string>
#include <string_view>
#include <vector>

enum class TestOutcome { Passed, Failed, Skipped };

struct TestResult {
    std::string name;  ///< "Suite.Test"
    TestOutcome outcome = TestOutcome::Passed;
    std::string message;  ///< what was printed while it ran; of a skipped test the reason alone
};

/// The results in the order of the output. A test that began and did not end counts as failed: the program
/// died in it.
std::vector<TestResult> ReadGtestOutput(std::string_view output);
