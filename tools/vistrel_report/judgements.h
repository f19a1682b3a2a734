// Functions that make a rule's answer.
#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "tools/vistrel_report/rules.h"

inline Judgement Found(std::string says, std::vector<LineNumber> lines) {
    std::sort(lines.begin(), lines.end());
    lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
    lines.erase(std::remove(lines.begin(), lines.end(), LineNumber{0}), lines.end());
    return {Answer::Found, std::move(says), std::move(lines), {}};
}

inline Judgement NotFound() {
    return {};
}

inline Judgement DoesNotApply() {
    return {Answer::DoesNotApply, {}, {}, {}};
}

inline Judgement NotJudged(std::vector<Part> missing) {
    return {Answer::NotJudged, {}, {}, std::move(missing)};
}

/// Found when `line` is not 0.
inline Judgement FoundAt(LineNumber line, std::string says) {
    return line == 0 ? NotFound() : Found(std::move(says), {line});
}
