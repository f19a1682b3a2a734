// The way back from a line of a report to the values that were printed into it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// A line as a reading sees it: without its line end, and without what mail or a console has put around it.
struct SourceLine {
    std::string_view text;     ///< UTF-8 as it was found; valid as long as the file that it was read from
    std::uint32_t number = 0;  ///< in that file, from 1; of the first one where several were joined
};

using SourceLines = std::span<const SourceLine>;

/// The lines that no reading could make anything of, in the order of the file.
using UnreadLines = std::vector<SourceLine>;

/// Matches one line against what a print function writes, from left to right:
///
///     LineScan("GPU 3           : Name [AMD]").Text("GPU ").Whole(index).Text("           :
///     ").UpToLast(name, " [")
///
/// The first part that does not match makes the scan fail; the parts behind it are not looked at. A value
/// that was read before is left as it was read: a caller that minds reads into a record of its own. Numbers
/// are what printf writes, nothing else: no hexadecimal, no exponent, no sign "+".
///
/// A run of blanks in an expected text matches one of any length but none, for mail and web pages shorten
/// such runs; at the start of a line it may be missing altogether. What belongs to a text value is never
/// touched.
class LineScan {
  public:
    explicit LineScan(std::string_view line) : line_(line), rest_(line) {}

    /// `expected` comes next.
    LineScan& Text(std::string_view expected);

    /// A number without decimals. Fails when it does not fit.
    LineScan& Whole(std::int32_t& value);
    LineScan& Whole(std::uint32_t& value);
    LineScan& Whole(std::uint64_t& value);

    /// A number with or without decimals. Fails for infinities and what is not a number.
    LineScan& Number(double& value);

    /// As Number, but "inf", "-inf", "nan" and "-nan" count too: for values that can be printed so.
    LineScan& AnyNumber(double& value);
    LineScan& AnyNumber(float& value);

    /// Eight hexadecimal digits, as "%08X" writes them.
    LineScan& Hex(std::uint32_t& value);

    /// The text up to `expected`, its first or last occurrence, which is passed over as well. The text may
    /// be empty.
    LineScan& UpTo(std::string& value, std::string_view expected);
    LineScan& UpToLast(std::string& value, std::string_view expected);

    /// All that is left. Never fails.
    LineScan& Rest(std::string& value);

    /// One of `words` comes next; the first that does, by its place among them.
    LineScan& OneOf(std::size_t& place, std::initializer_list<std::string_view> words);

    /// Passes over blanks, if there are any. Never fails.
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

/// Hands each line with text to `read`, which says whether it understood it; adds the others to `unread`.
/// Returns whether any was understood.
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

/// Notes the number of `line` in `where` when it is `expected` alone and none was noted before.
bool ReadFixedLine(const SourceLine& line, std::string_view expected, std::uint32_t& where);

/// A text of the report and where it stands.
struct ReadText {
    std::string text;
    std::uint32_t line = 0;
};
