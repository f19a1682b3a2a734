// The words of one line of a scenario, and the values they spell.
#pragma once

#include <cstdint>
#include <deque>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

#include "tests/lab/machine/scenario.h"

namespace lab {

/// Every method removes words from the front and throws ScenarioError if they are not what it expects.
class Words {
  public:
    /// Blanks separate words; "#" at the start of the line or after a blank begins a comment.
    explicit Words(std::string_view line);

    bool AtEnd() const { return words_.empty(); }
    void ExpectEnd() const;

    /// The next word, without removing it; empty at the end.
    std::string Peek() const { return AtEnd() ? std::string() : words_.front(); }
    /// The next word; if there is none, the message says that `what` is missing.
    std::string Next(std::string_view what);
    /// The rest, with one blank between words.
    std::string Rest();
    void Expect(std::string_view word);
    std::string OneOf(std::initializer_list<std::string_view> choices);

    int Number(std::string_view what);
    /// "0x887A0004"
    std::uint32_t Code();
    /// "fails 0x887A0004"
    ResultCode FailsWith();
    /// "end with 0x887A0004"
    ResultCode EndWith();
    /// "8192 MB"
    std::uint64_t Megabytes();
    /// "800 megapixels per second"
    int Rate(std::string_view of_what);
    /// "1920x1080"
    Size Dimensions();
    /// "-1920,0"
    std::pair<int, int> Point();
    /// "00000000:0000A001", high half first
    std::pair<std::int32_t, std::uint32_t> Luid();
    /// "bgra", "bgra-typeless", "rgba", "rgba-typeless" or "fp16"
    PixelFormat Format();
    /// "0x80070005", "0x80070005 3 times" or "0x80070005 for 1200 ms"
    Refusal RefusalOf();

  private:
    std::deque<std::string> words_;
};

}  // namespace lab
