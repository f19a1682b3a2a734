#pragma once

// What the tests of the way there and back share: what a section prints, what
// is read from it, and generators of values.
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/unit/support/report_capture.h"
#include "tools/vistrel_report/reading.h"
#include "tools/vistrel_report/source_text.h"

/// The same cases in every run, and a case that fails is shown as it is, for
/// making it smaller may take minutes. RC_PARAMS="seed=N" tries others.
inline const int kSameCasesInEveryRun = setenv("RC_PARAMS", "seed=1 noshrink=1", 0);

inline std::string Printed(const std::function<void()>& print) {
    const ReportCapture capture;
    print();
    return capture.Text();
}

/// What `read` makes of `text`, all of which it must understand.
template <typename Record>
Record ReadBack(const std::string& text, std::optional<Record> (*read)(SourceLines, UnreadLines&)) {
    const std::vector<SourceLine> lines = SplitLines(text);
    UnreadLines unread;
    std::optional<Record> record = read(lines, unread);
    if (!unread.empty()) {
        RC_FAIL("not understood: " + std::string(unread.front().text) + "\nin:\n" + text);
    }
    RC_ASSERT(record.has_value());
    return std::move(*record);
}

/// A text of one line that ends in no blank, with all that makes reading one
/// hard.
inline rc::Gen<std::string> Word() {
    const auto character =
        rc::gen::element<char>(' ', ' ', '(', ')', '[', ']', ':', '"', '=', '-', '>', '.', ',', '%', '\\',
                               '/', 'x', 'A', 'b', 'M', 'B', '0', '1', '9', '\xC3', '\t');
    return rc::gen::map(rc::gen::container<std::string>(character),
                        [](std::string text) { return "N" + text + "e"; });
}

inline rc::Gen<std::string> WordWithout(std::string separator) {
    return rc::gen::suchThat(
        Word(), [separator](const std::string& text) { return text.find(separator) == std::string::npos; });
}

inline rc::Gen<double> Between(double low, double high) {
    return rc::gen::map(rc::gen::inRange<std::int64_t>(0, 1'000'000'001), [low, high](std::int64_t part) {
        return low + (high - low) * static_cast<double>(part) / 1e9;
    });
}

/// A value of `gen`, or none.
template <typename Value>
std::optional<Value> Maybe(const rc::Gen<Value>& gen) {
    return *rc::gen::arbitrary<bool>() ? std::optional<Value>(*gen) : std::nullopt;
}

/// Milliseconds over the whole range that a report can hold, zero among them.
inline rc::Gen<double> Milliseconds() {
    return rc::gen::oneOf(rc::gen::just(0.0), Between(0.0, 1.0), Between(0.0, 60.0), Between(0.0, 1e6));
}

inline rc::Gen<std::uint64_t> Bytes() {
    constexpr std::uint64_t kMegabyte = 1048576;
    return rc::gen::oneOf(rc::gen::just<std::uint64_t>(0), rc::gen::inRange<std::uint64_t>(0, 4 * kMegabyte),
                          rc::gen::inRange<std::uint64_t>(0, 65536 * kMegabyte));
}

inline rc::Gen<float> Float(double low, double high) {
    return rc::gen::map(Between(low, high), [](double number) { return static_cast<float>(number); });
}
