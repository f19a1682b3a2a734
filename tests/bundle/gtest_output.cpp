#include "tests/bundle/gtest_output.h"

#include <optional>

namespace {

constexpr std::string_view kRun = "[ RUN      ] ";
constexpr std::string_view kOk = "[       OK ] ";
constexpr std::string_view kFailed = "[  FAILED  ] ";
constexpr std::string_view kSkipped = "[  SKIPPED ] ";

/// "Suite.Test (12 ms)" or "Suite.Test, where GetParam() = 3 (12 ms)" without what follows the name.
std::string_view NameIn(std::string_view text) {
    return text.substr(0, text.find_first_of(", "));
}

/// The reason of "file:12: Skipped\nreason\n".
std::string SkipReason(const std::string& message) {
    constexpr std::string_view mark = ": Skipped\n";
    const std::size_t at = message.find(mark);
    std::string reason = at == std::string::npos ? message : message.substr(at + mark.size());
    while (!reason.empty() && reason.back() == '\n') {
        reason.pop_back();
    }
    return reason;
}

std::optional<TestOutcome> OutcomeOf(std::string_view line, std::string_view name) {
    for (const auto& [mark, outcome] :
         {std::pair(kOk, TestOutcome::Passed), std::pair(kFailed, TestOutcome::Failed),
          std::pair(kSkipped, TestOutcome::Skipped)}) {
        // A test may print anything, and print it without a line end.
        const std::size_t at = line.find(mark);
        if (at != std::string_view::npos && NameIn(line.substr(at + mark.size())) == name) {
            return outcome;
        }
    }
    return {};
}

}  // namespace

std::vector<TestResult> ReadGtestOutput(std::string_view output) {
    std::vector<TestResult> results;
    bool running = false;
    while (!output.empty()) {
        std::string_view line = output.substr(0, output.find('\n'));
        output.remove_prefix(line.size() < output.size() ? line.size() + 1 : output.size());
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (running) {
            TestResult& test = results.back();
            if (const auto outcome = OutcomeOf(line, test.name)) {
                test.outcome = *outcome;
                running = false;
                if (*outcome == TestOutcome::Skipped) {
                    test.message = SkipReason(test.message);
                }
            } else {
                test.message.append(line).append("\n");
            }
        } else if (line.starts_with(kRun)) {
            results.push_back({std::string(line.substr(kRun.size())), TestOutcome::Failed, {}});
            running = true;
        }
    }
    if (running) {
        results.back().message += "The program ended in this test.\n";
    }
    return results;
}
