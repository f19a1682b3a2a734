#include "tests/lab/machine/scenario_words.h"

#include <charconv>
#include <sstream>

namespace lab {
namespace {

template <typename Value>
Value Parse(std::string_view text, int base, std::string_view what) {
    Value value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value, base);
    if (error != std::errc() || stop != end || text.empty()) {
        throw ScenarioError("'" + std::string(text) + "' is not " + std::string(what));
    }
    return value;
}

std::pair<std::string_view, std::string_view> Halves(std::string_view text, char separator,
                                                     std::string_view what) {
    const std::size_t position = text.find(separator);
    if (position == std::string_view::npos) {
        throw ScenarioError("'" + std::string(text) + "' is not " + std::string(what));
    }
    return {text.substr(0, position), text.substr(position + 1)};
}

}  // namespace

Words::Words(std::string_view line) {
    std::istringstream stream{std::string(line)};
    for (std::string word; stream >> word && word.front() != '#';) {
        words_.push_back(word);
    }
}

void Words::ExpectEnd() const {
    if (!AtEnd()) {
        throw ScenarioError("'" + words_.front() + "' is one word too many");
    }
}

std::string Words::Next(std::string_view what) {
    if (AtEnd()) {
        throw ScenarioError(std::string(what) + " is missing");
    }
    std::string word = words_.front();
    words_.pop_front();
    return word;
}

std::string Words::Rest() {
    std::string text;
    while (!AtEnd()) {
        text += (text.empty() ? "" : " ") + Next("a word");
    }
    return text;
}

void Words::Expect(std::string_view word) {
    OneOf({word});
}

std::string Words::OneOf(std::initializer_list<std::string_view> choices) {
    std::string listed;
    for (const std::string_view choice : choices) {
        if (Peek() == choice) {
            return Next("a word");
        }
        listed += (listed.empty() ? "'" : " or '") + std::string(choice) + "'";
    }
    throw ScenarioError(listed + " is expected" + (AtEnd() ? "" : " instead of '" + words_.front() + "'"));
}

int Words::Number(std::string_view what) {
    return Parse<int>(Next(what), 10, "a whole number");
}

std::uint32_t Words::Code() {
    const std::string word = Next("a code");
    if (!word.starts_with("0x")) {
        throw ScenarioError("'" + word + "' is not a code like 0x887A0004");
    }
    return Parse<std::uint32_t>(std::string_view(word).substr(2), 16, "a hexadecimal number");
}

ResultCode Words::FailsWith() {
    Expect("fails");
    return Code();
}

ResultCode Words::EndWith() {
    Expect("end");
    Expect("with");
    return Code();
}

std::uint64_t Words::Megabytes() {
    const auto amount = Parse<std::uint64_t>(Next("an amount"), 10, "an amount of memory");
    Expect("MB");
    return amount;
}

int Words::Rate(std::string_view of_what) {
    const int rate = Number("a rate");
    if (rate < 1) {
        throw ScenarioError("a rate of " + std::to_string(rate) + " is none");
    }
    if (!of_what.empty()) {
        Expect(of_what);
    }
    Expect("per");
    Expect("second");
    return rate;
}

Size Words::Dimensions() {
    const std::string word = Next("a size");
    const auto [width, height] = Halves(word, 'x', "a size like 1920x1080");
    return {Parse<std::uint32_t>(width, 10, "a width"), Parse<std::uint32_t>(height, 10, "a height")};
}

std::pair<int, int> Words::Point() {
    const std::string word = Next("a position");
    const auto [x, y] = Halves(word, ',', "a position like 1920,0");
    return {Parse<int>(x, 10, "a position"), Parse<int>(y, 10, "a position")};
}

std::pair<std::int32_t, std::uint32_t> Words::Luid() {
    const std::string word = Next("a LUID");
    const auto [high, low] = Halves(word, ':', "a LUID like 00000000:0000A001");
    return {static_cast<std::int32_t>(Parse<std::uint32_t>(high, 16, "a LUID's half")),
            Parse<std::uint32_t>(low, 16, "a LUID's half")};
}

PixelFormat Words::Format() {
    const std::string name = OneOf({"bgra", "bgra-typeless", "rgba", "rgba-typeless", "fp16"});
    if (name == "bgra") {
        return PixelFormat::kBgra;
    }
    if (name == "bgra-typeless") {
        return PixelFormat::kBgraTypeless;
    }
    if (name == "rgba") {
        return PixelFormat::kRgba;
    }
    return name == "rgba-typeless" ? PixelFormat::kRgbaTypeless : PixelFormat::kHalfFloat;
}

Refusal Words::RefusalOf() {
    Refusal refusal;
    refusal.result = Code();
    if (Peek() == "for") {
        Expect("for");
        refusal.milliseconds = Number("how long");
        Expect("ms");
    } else if (!AtEnd()) {
        refusal.times = Number("how often");
        Expect("times");
    }
    return refusal;
}

}  // namespace lab
