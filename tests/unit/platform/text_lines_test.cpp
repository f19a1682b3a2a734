#include "platform/text_lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t kSmallBuffer = 2 * TextLines::kOverlap;

/// The lines of `text`, assembled from their pieces; checks the guarantees of each piece.
std::vector<std::string> LinesOf(const std::string& text, std::size_t buffer_bytes = kSmallBuffer) {
    std::istringstream file(text);
    TextLines reader(file, buffer_bytes);
    std::vector<std::string> lines;
    bool line_open = false;
    while (const auto piece = reader.Next()) {
        EXPECT_EQ(piece->begins, !line_open);
        if (piece->begins) {
            EXPECT_EQ(piece->repeated, 0U);
            lines.emplace_back();
        } else {
            EXPECT_EQ(piece->repeated, TextLines::kOverlap);
            EXPECT_TRUE(lines.back().ends_with(piece->text.substr(0, piece->repeated)));
        }
        lines.back() += piece->Fresh();
        line_open = !piece->ends;
    }
    EXPECT_FALSE(line_open);
    EXPECT_FALSE(reader.Next()) << "the end stays the end";
    return lines;
}

TEST(TextLines, LinesEndAtLineFeeds) {
    EXPECT_THAT(LinesOf("one\ntwo\nthree\n"), ElementsAre("one", "two", "three"));
    EXPECT_THAT(LinesOf("\n\nx\n\n"), ElementsAre("", "", "x", ""));
}

TEST(TextLines, ALineFeedIsFoundAmongBytesLikeIt) {
    for (const char like : {'\x0B', '\x09', '\x8A', '\x0E', '\x00', '\xFF'}) {
        for (std::size_t before = 0; before < 20; ++before) {
            const std::string first(before, like);
            EXPECT_THAT(LinesOf(first + "\n" + std::string(20, like)),
                        ElementsAre(first, std::string(20, like)));
        }
    }
}

TEST(TextLines, TheLastLineNeedsNoLineFeed) {
    EXPECT_THAT(LinesOf("one\ntwo"), ElementsAre("one", "two"));
    EXPECT_THAT(LinesOf("x"), ElementsAre("x"));
}

TEST(TextLines, AnEmptyTextHasNoLines) {
    EXPECT_THAT(LinesOf(""), IsEmpty());
}

TEST(TextLines, ACarriageReturnBeforeTheLineFeedIsDropped) {
    EXPECT_THAT(LinesOf("one\r\ntwo\r\n\r\n"), ElementsAre("one", "two", ""));
}

TEST(TextLines, OtherCarriageReturnsAreKept) {
    EXPECT_THAT(LinesOf("a\rb\r\r\nc\r"), ElementsAre("a\rb\r", "c\r"));
    EXPECT_THAT(LinesOf("\r"), ElementsAre("\r"));
}

TEST(TextLines, TheEndOfTextCharacterEndsTheText) {
    EXPECT_THAT(LinesOf("one\ntw\x1Ao\nthree\n"), ElementsAre("one", "tw"));
    EXPECT_THAT(LinesOf("one\n\x1Atwo\n"), ElementsAre("one"));
    EXPECT_THAT(LinesOf("\x1A"), IsEmpty());
}

TEST(TextLines, ZeroBytesAndInvalidUtf8AreKept) {
    const std::string rubbish("a\0b\xFF\xC3\n\0\n\x80", 9);
    EXPECT_THAT(LinesOf(rubbish), ElementsAre(std::string("a\0b\xFF\xC3", 5), std::string("\0", 1), "\x80"));
}

TEST(TextLines, AReadErrorEndsTheText) {
    class FailingFile : public std::streambuf {
        int_type underflow() override { throw std::runtime_error("read error"); }
    };
    FailingFile failing;
    std::istream file(&failing);
    EXPECT_FALSE(TextLines(file).Next());
}

TEST(TextLines, ABufferTooSmallForTheOverlapIsEnlarged) {
    const std::string line(1000, 'x');
    for (const std::size_t bytes : {std::size_t{0}, std::size_t{1}, TextLines::kOverlap}) {
        EXPECT_THAT(LinesOf(line + "\r\nnext", bytes), ElementsAre(line, "next"));
    }
}

/// Every length around the buffer's edges, with both line ends and without.
TEST(TextLines, LinesOfAnyLengthAreReadWhole) {
    for (std::size_t length = 0; length <= 5 * kSmallBuffer; ++length) {
        std::string line;
        for (std::size_t i = 0; i < length; ++i) {
            line += static_cast<char>('a' + i % 26);
        }
        EXPECT_THAT(LinesOf(line + "\r\nnext\n"), ElementsAre(line, "next")) << length;
        EXPECT_THAT(LinesOf("x\n" + line + "\nnext"), ElementsAre("x", line, "next")) << length;
        EXPECT_THAT(LinesOf(line + "\r"), ElementsAre(line + "\r")) << length;
        EXPECT_THAT(LinesOf(line + "\x1A\n"), length == 0 ? std::vector<std::string>{} : std::vector{line})
            << length;
    }
}

/// The result of getline for the same text, with CR LF replaced by LF.
std::vector<std::string> PlainLinesOf(std::string text) {
    text = text.substr(0, text.find('\x1A'));
    for (std::size_t i = text.find("\r\n"); i != std::string::npos; i = text.find("\r\n", i)) {
        text.erase(i, 1);
    }
    std::istringstream file(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

TEST(TextLines, MatchASimpleReaderOnRandomText) {
    std::mt19937 random(20240615);  // NOLINT: the same texts in every run.
    std::uniform_int_distribution<int> kind(0, 200);
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        const int length = kind(random) * 4;
        for (int i = 0; i < length; ++i) {
            const int k = kind(random);
            text += k < 3 ? '\n' : k < 8 ? '\r' : k == 8 && round % 4 == 0 ? '\x1A' : static_cast<char>(k);
        }
        ASSERT_EQ(LinesOf(text), PlainLinesOf(text)) << "round " << round;
        ASSERT_EQ(LinesOf(text, 300), PlainLinesOf(text)) << "round " << round;
    }
}

}  // namespace
