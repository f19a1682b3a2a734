#include "tools/vistrel_diag/report/line_reading.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace {

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

std::size_t BlanksAt(std::string_view text) {
    return std::min(text.find_first_not_of(" \t"), text.size());
}

/// How many bytes at the start of `text` are `expected`, with its runs of blanks of any length; npos when it
/// is not there. A run that ends `expected` takes no more blanks than it has itself: what follows may be a
/// text that begins with some.
std::size_t LengthOf(std::string_view text, std::string_view expected, bool at_line_start) {
    if (text.starts_with(expected)) {
        return expected.size();
    }
    std::size_t at = 0;
    std::size_t i = 0;
    while (i < expected.size()) {
        const std::size_t wanted = BlanksAt(expected.substr(i));
        if (wanted == 0) {
            if (at == text.size() || text[at] != expected[i]) {
                return std::string_view::npos;
            }
            ++at;
            ++i;
            continue;
        }
        const std::size_t found = BlanksAt(text.substr(at));
        const bool may_be_missing = at_line_start && i == 0;
        if (found == 0 && !may_be_missing) {
            return std::string_view::npos;
        }
        i += wanted;
        at += i == expected.size() ? std::min(found, wanted) : found;
    }
    return at;
}

}  // namespace

LineScan& LineScan::Text(std::string_view expected) {
    if (matches_) {
        const std::size_t length = LengthOf(rest_, expected, rest_.size() == line_.size());
        matches_ = length != std::string_view::npos;
        rest_.remove_prefix(matches_ ? length : 0);
    }
    return *this;
}

template <typename Value>
LineScan& LineScan::ReadNumber(Value& value) {
    if (!matches_) {
        return *this;
    }
    Blanks();
    Value read = 0;
    const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), read);
    matches_ = error == std::errc();
    if (matches_) {
        value = read;
        rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
    }
    return *this;
}

LineScan& LineScan::Whole(std::int32_t& value) {
    return ReadNumber(value);
}

LineScan& LineScan::Whole(std::uint32_t& value) {
    return ReadNumber(value);
}

LineScan& LineScan::Whole(std::uint64_t& value) {
    return ReadNumber(value);
}

template <typename Value>
LineScan& LineScan::ReadDecimal(Value& value, bool any) {
    if (!matches_) {
        return *this;
    }
    Blanks();
    const std::size_t sign = rest_.starts_with('-') ? 1 : 0;
    if (sign < rest_.size() && IsDigit(rest_[sign])) {
        Value read = 0;
        const auto [end, error] =
            std::from_chars(rest_.data(), rest_.data() + rest_.size(), read, std::chars_format::fixed);
        matches_ = error == std::errc();
        if (matches_) {
            value = read;
            rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
        }
        return *this;
    }
    const std::string_view word = rest_.substr(sign, 3);
    matches_ = any && (word == "inf" || word == "nan");
    if (matches_) {
        const Value size =
            word == "inf" ? std::numeric_limits<Value>::infinity() : std::numeric_limits<Value>::quiet_NaN();
        value = sign == 1 ? -size : size;
        rest_.remove_prefix(sign + word.size());
    }
    return *this;
}

LineScan& LineScan::Number(double& value) {
    return ReadDecimal(value, false);
}

LineScan& LineScan::AnyNumber(double& value) {
    return ReadDecimal(value, true);
}

LineScan& LineScan::AnyNumber(float& value) {
    return ReadDecimal(value, true);
}

LineScan& LineScan::Hex(std::uint32_t& value) {
    constexpr std::size_t kDigits = 8;
    if (!matches_) {
        return *this;
    }
    const std::string_view digits = rest_.substr(0, kDigits);
    std::uint32_t read = 0;
    constexpr int kBase = 16;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), read, kBase);
    matches_ = digits.size() == kDigits && error == std::errc() && end == digits.data() + digits.size();
    if (matches_) {
        value = read;
        rest_.remove_prefix(kDigits);
    }
    return *this;
}

LineScan& LineScan::Cut(std::string& value, std::size_t position, std::size_t passed_over) {
    matches_ = position != std::string_view::npos;
    if (matches_) {
        value.assign(rest_.substr(0, position));
        rest_.remove_prefix(position + passed_over);
    }
    return *this;
}

LineScan& LineScan::UpTo(std::string& value, std::string_view expected) {
    return matches_ ? Cut(value, rest_.find(expected), expected.size()) : *this;
}

LineScan& LineScan::UpToLast(std::string& value, std::string_view expected) {
    return matches_ ? Cut(value, rest_.rfind(expected), expected.size()) : *this;
}

LineScan& LineScan::Rest(std::string& value) {
    if (matches_) {
        value.assign(rest_);
        rest_ = {};
    }
    return *this;
}

LineScan& LineScan::OneOf(std::size_t& place, std::initializer_list<std::string_view> words) {
    if (!matches_) {
        return *this;
    }
    matches_ = false;
    for (std::size_t i = 0; i < words.size() && !matches_; ++i) {
        const std::size_t length = LengthOf(rest_, words.begin()[i], false);
        if (length != std::string_view::npos) {
            matches_ = true;
            place = i;
            rest_.remove_prefix(length);
        }
    }
    return *this;
}

LineScan& LineScan::Blanks() {
    rest_.remove_prefix(matches_ ? BlanksAt(rest_) : 0);
    return *this;
}

bool LineScan::IsWhole() const {
    return matches_ && IsBlankLine(rest_);
}

bool IsLine(std::string_view line, std::string_view expected) {
    return LineScan(line).Text(expected).IsWhole();
}

bool BeginsLine(std::string_view line, std::string_view expected) {
    return LineScan(line).Text(expected).Matches();
}

bool IsBlankLine(std::string_view line) {
    return BlanksAt(line) == line.size();
}

bool ReadFixedLine(const SourceLine& line, std::string_view expected, std::uint32_t& where) {
    if (where != 0 || !IsLine(line.text, expected)) {
        return false;
    }
    where = line.number;
    return true;
}
