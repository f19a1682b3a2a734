#include "tests/bundle/summary.h"

#include <algorithm>

namespace {

constexpr std::size_t kLongestMessage = 4000;  // Bytes of a failed test's output.

std::string Indented(const std::string& message) {
    std::string text = "    ";
    for (const char c : message.substr(0, kLongestMessage)) {
        text += c;
        if (c == '\n') {
            text += "    ";
        }
    }
    text.erase(text.find_last_not_of(" \n") + 1);
    return text + "\n";
}

}  // namespace

std::size_t Summary::Count(TestOutcome outcome) const {
    std::size_t count = 0;
    for (const Step& step : steps_) {
        count += static_cast<std::size_t>(
            std::count_if(step.tests.begin(), step.tests.end(),
                          [&](const TestResult& test) { return test.outcome == outcome; }));
    }
    return count;
}

bool Summary::AllPassed() const {
    return Count(TestOutcome::Failed) == 0 && Count(TestOutcome::Passed) > 0;
}

std::string Summary::Failures() const {
    std::string text;
    for (const Step& step : steps_) {
        for (const TestResult& test : step.tests) {
            if (test.outcome == TestOutcome::Failed) {
                text += "\nFAILED: " + step.name + ": " + test.name + "\n" + Indented(test.message);
            }
        }
    }
    return text;
}

std::string Summary::Skips() const {
    std::map<std::string, std::vector<std::string>> by_reason;
    for (const Step& step : steps_) {
        for (const TestResult& test : step.tests) {
            if (test.outcome == TestOutcome::Skipped) {
                by_reason[test.message].push_back(step.name + ": " + test.name);
            }
        }
    }
    std::string text;
    for (const auto& [reason, names] : by_reason) {
        text += "\nSkipped, because " + reason + ":\n";
        for (const std::string& name : names) {
            text += "    " + name + "\n";
        }
    }
    return text;
}

std::string Summary::Text(const std::string& machine, const std::vector<std::string>& left_out) const {
    std::string text = "vistrel_diag test bundle\nMachine: " + machine + "\n\n";
    text += "Passed:  " + std::to_string(Count(TestOutcome::Passed)) + "\n";
    text += "Failed:  " + std::to_string(Count(TestOutcome::Failed)) + "\n";
    text += "Skipped: " + std::to_string(Count(TestOutcome::Skipped)) + "\n";
    text += Failures() + Skips();
    if (!left_out.empty()) {
        text += "\nNot in this bundle:\n";
        for (const std::string& line : left_out) {
            text += "    " + line + "\n";
        }
    }
    return text;
}
