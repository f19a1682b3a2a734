// Reads the printed values back from a line of a report.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// A line of a report to be read: without its line end, and without what mail or a console added around it.
struct SourceLine {
    std::string_view text;     ///< UTF-8 as found; valid as long as the file it was read from
    std::uint32_t number = 0;  ///< in that file, from 1; for joined lines that of the first one
};

using SourceLines = std::span<const SourceLine>;

/// The lines that no reading function understood, in the order of the file.
using UnreadLines = std::vector<SourceLine>;

/// Matches one line against what a print function writes, from left to right:
///
///     LineScan("GPU 3 : Name [AMD]").Text("GPU ").Whole(index).Text(" : ").UpToLast(name, " [")
///
/// The first part that does not match makes the scan fail, and later parts are skipped. Values read before
/// the failure keep what was read: a caller that must not see them reads into a temporary record. Numbers
/// have exactly the forms that printf writes: no hexadecimal, no exponent, no sign "+".
///
/// A run of blanks in an expected text matches a run of one or more blanks, because mail and web pages
/// shorten such runs. At the start of a line the run may be missing altogether. Blanks inside a text value
/// are kept unchanged.
class LineScan {
  public:
    explicit LineScan(std::string_view line) : line_(line), rest_(line) {}

    /// `expected` comes next.
    LineScan& Text(std::string_view expected);

    /// A number without decimals. Fails when it does not fit the type.
    LineScan& Whole(std::int32_t& value);
    LineScan& Whole(std::uint32_t& value);
    LineScan& Whole(std::uint64_t& value);

    /// A number with or without decimals. Fails for infinities and NaN.
    LineScan& Number(double& value);

    /// As Number, but also accepts "inf", "-inf", "nan" and "-nan", for values that can be printed that way.
    LineScan& AnyNumber(double& value);
    LineScan& AnyNumber(float& value);

    /// Eight hexadecimal digits, as "%08X" writes them.
    LineScan& Hex(std::uint32_t& value);

    /// The text up to the first (UpTo) or last (UpToLast) occurrence of `expected`, which is skipped as well.
    /// The text may be empty.
    LineScan& UpTo(std::string& value, std::string_view expected);
    LineScan& UpToLast(std::string& value, std::string_view expected);

    /// All remaining text. Never fails.
    LineScan& Rest(std::string& value);

    /// One of `words` comes next. `place` receives the index of the first one that matches.
    LineScan& OneOf(std::size_t& place, std::initializer_list<std::string_view> words);

    /// Skips blanks, if there are any. Never fails.
    LineScan& Blanks();

    /// Whether everything so far has matched.
    bool Matches() const { return matches_; }

    /// Whether everything has matched and nothing but blanks is left.
    bool IsWhole() const;

  private:
    template <typename Value>
    LineScan& ReadNumber(Value& value);
    template <typename Value>
    LineScan& ReadDecimal(Value& value, bool any);
    LineScan& Cut(std::string& value, std::size_t position, std::size_t passed_over);

    std::string_view line_;
    std::string_view rest_;
    bool matches_ = true;
};

/// Whether `line` is `expected` alone, by the rules of LineScan.
bool IsLine(std::string_view line, std::string_view expected);

/// Whether `line` begins with `expected`, by the rules of LineScan.
bool BeginsLine(std::string_view line, std::string_view expected);

/// Whether `line` is empty or blank.
bool IsBlankLine(std::string_view line);

/// Passes each nonblank line to `read`, which returns whether it understood the line. Adds the lines not
/// understood to `unread`. Returns whether any line was understood.
template <typename Read>
bool ReadEachLine(SourceLines lines, UnreadLines& unread, Read read) {
    bool any = false;
    for (const SourceLine& line : lines) {
        if (IsBlankLine(line.text)) {
            continue;
        }
        if (read(line)) {
            any = true;
        } else {
            unread.push_back(line);
        }
    }
    return any;
}

/// Stores the number of `line` in `where` when the line is exactly `expected` and no number was stored
/// before.
bool ReadFixedLine(const SourceLine& line, std::string_view expected, std::uint32_t& where);

/// A text of the report and the line it is on.
struct ReadText {
    std::string text;
    std::uint32_t line = 0;
};
