#include "tools/vistrel_diag/sections/product_log/product_log_selection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tests/unit/support/repeated_text.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::vector<std::string> Select(const std::string& text) {
    std::istringstream log(text);
    return SelectProductLogLines(log);
}

const std::vector<std::string> kMarkers = {"DepthEstimator",
                                           "DirectML",
                                           "D3D12 device",
                                           "D3D11CreateDevice",
                                           "Required Graphics Adapter",
                                           "Found DXGI Adapter",
                                           "Match found",
                                           "ERROR",
                                           "WARNING",
                                           "failed",
                                           "Failed",
                                           "monitor is driven by",
                                           "Initialized DXGI",
                                           "Initialized WGC",
                                           "ReShade mode"};

/// The same selection spelled out plainly, with everything held in memory.
std::vector<std::string> SelectPlainly(const std::string& text) {
    std::istringstream log(text);
    std::vector<std::string> kept;
    for (std::string line; std::getline(log, line);) {
        if (std::any_of(kMarkers.begin(), kMarkers.end(),
                        [&](const std::string& marker) { return line.find(marker) != std::string::npos; })) {
            kept.push_back(line);
        }
    }
    std::size_t anchor = 0;
    for (std::size_t i = 0; i < kept.size(); ++i) {
        if (kept[i].find("Initializing D3D11") != std::string::npos) {
            anchor = i;
        }
    }
    const std::size_t first = kept.size() - anchor <= 60 ? anchor : kept.size() - 60;
    return {kept.begin() + static_cast<std::ptrdiff_t>(first), kept.end()};
}

std::string Lines(int from, int to, const std::string& text) {
    std::string lines;
    for (int i = from; i <= to; ++i) {
        lines += text + " " + std::to_string(i) + "\n";
    }
    return lines;
}

TEST(ProductLogSelection, EachMarkerSelectsItsLineAtAnyPosition) {
    for (const std::string& marker : kMarkers) {
        for (std::size_t before = 0; before < 12; ++before) {
            for (const char* behind : {"", "x", " and more"}) {
                const std::string line = std::string(before, '.') + marker + behind;
                EXPECT_THAT(Select("other\n" + line + "\nother\n"), ElementsAre(line));
            }
        }
    }
}

TEST(ProductLogSelection, AMarkerWithAnyCharacterChangedSelectsNothing) {
    for (const std::string& marker : kMarkers) {
        for (std::size_t i = 0; i < marker.size(); ++i) {
            std::string line = marker;
            line[i] = '_';
            EXPECT_THAT(Select(line), IsEmpty());
            EXPECT_THAT(Select(marker.substr(0, i)), IsEmpty());
        }
    }
}

TEST(ProductLogSelection, MarkersAreMatchedByCase) {
    EXPECT_THAT(Select("FAILED\nerror\nwarning\nDIRECTML\nreshade mode\n"), IsEmpty());
    EXPECT_THAT(Select("it failed\nFailed it\nFAILED\n"), ElementsAre("it failed", "Failed it"));
}

TEST(ProductLogSelection, AMarkerDoesNotSpanLines) {
    EXPECT_THAT(Select("ERR\nOR\nfai\r\nled\n"), IsEmpty());
}

TEST(ProductLogSelection, AnEmptyLogHasNoRelevantLine) {
    EXPECT_THAT(Select(""), IsEmpty());
    EXPECT_THAT(Select("\n\n"), IsEmpty());
}

TEST(ProductLogSelection, OnlyTheLastRunIsSelected) {
    EXPECT_THAT(Select("Initializing D3D11 ERROR first\nERROR a\nInitializing D3D11 WARNING second\n"
                       "nothing\nERROR b\n"),
                ElementsAre("Initializing D3D11 WARNING second", "ERROR b"));
}

TEST(ProductLogSelection, TheAnchorCountsAtAnyPositionAndOnlyWhole) {
    const std::string anchor = "Initializing D3D11";
    for (std::size_t before = 0; before < 40; ++before) {
        const std::string start = std::string(before, 'I') + anchor + " failed";
        EXPECT_THAT(Select("ERROR\n" + start + "\n"), ElementsAre(start)) << before;
    }
    for (std::size_t i = 0; i < anchor.size(); ++i) {
        std::string other = anchor + " failed";
        ++other[i];
        EXPECT_THAT(Select("ERROR\n" + other + "\n"), SizeIs(2)) << other;
    }
}

TEST(ProductLogSelection, AnAnchorWithoutAMarkerDoesNotCount) {
    EXPECT_THAT(Select("ERROR a\nInitializing D3D11\nERROR b\n"), ElementsAre("ERROR a", "ERROR b"));
}

TEST(ProductLogSelection, TheAnchorCanBeTheLastLine) {
    EXPECT_THAT(Select("ERROR a\nERROR Initializing D3D11"), ElementsAre("ERROR Initializing D3D11"));
}

TEST(ProductLogSelection, WithoutAnAnchorAllLinesAreSelectedUpToSixty) {
    EXPECT_THAT(Select(Lines(1, 40, "ERROR")), SizeIs(40));
    EXPECT_THAT(Select(Lines(1, 60, "ERROR")), SizeIs(60));
    const auto lines = Select(Lines(1, 61, "ERROR"));
    ASSERT_THAT(lines, SizeIs(60));
    EXPECT_EQ(lines.front(), "ERROR 2");
    EXPECT_EQ(lines.back(), "ERROR 61");
}

TEST(ProductLogSelection, ARunOfSixtyLinesIsSelectedWholeAndALongerOneFromItsEnd) {
    const std::string before = Lines(1, 100, "ERROR before") + "Initializing D3D11 failed\n";
    auto lines = Select(before + Lines(1, 59, "WARNING"));
    ASSERT_THAT(lines, SizeIs(60));
    EXPECT_EQ(lines.front(), "Initializing D3D11 failed");
    lines = Select(before + Lines(1, 60, "WARNING"));
    ASSERT_THAT(lines, SizeIs(60));
    EXPECT_EQ(lines.front(), "WARNING 1");
    lines = Select(before + Lines(1, 500, "WARNING"));
    ASSERT_THAT(lines, SizeIs(60));
    EXPECT_EQ(lines.front(), "WARNING 441");
    EXPECT_EQ(lines.back(), "WARNING 500");
}

TEST(ProductLogSelection, AcceptsBothLineEndsAndAMissingFinalOne) {
    EXPECT_THAT(Select("ERROR a\r\nERROR b\nx\r\nERROR c"), ElementsAre("ERROR a", "ERROR b", "ERROR c"));
}

TEST(ProductLogSelection, MarkersAndAnchorCountHoweverFarIntoALine) {
    for (const std::size_t before : {5000U, 262'130U, 262'140U, 262'143U, 524'200U, 1'000'000U}) {
        const std::string far(before, 'x');
        const auto lines = Select("ERROR first\n" + far + "failed" + far + "Initializing D3D11" + far + "\n" +
                                  "ERROR last\n");
        ASSERT_THAT(lines, SizeIs(2)) << before;
        EXPECT_EQ(lines[0], std::string(4095, 'x'));
        EXPECT_EQ(lines[1], "ERROR last");
        EXPECT_THAT(Select(far + "Initializing D3D11" + far + "ERROR\nERROR last\n"), SizeIs(2)) << before;
        EXPECT_THAT(Select("ERROR first\n" + far + "Initializing D3D11" + far + "\nERROR last\n"),
                    ElementsAre("ERROR first", "ERROR last"))
            << before;
    }
}

TEST(ProductLogSelection, MatchesASimpleSelectionOnRandomLogs) {
    std::vector<std::string> words = kMarkers;
    words.insert(words.end(), {"Initializing D3D11", "Initializing D3D11", "Initializing D3D1", "FAILED",
                               "DirectX", "ERR", "D3D11", " ", "x", "Graphics Adapter", "mode", "i", "fa"});
    std::mt19937 random(19700101);  // NOLINT: the same logs in every run.
    const auto below = [&random](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
    };
    for (int round = 0; round < 400; ++round) {
        const std::size_t relevant_one_in = 1 + below(4);
        const std::size_t anchor_one_in = 1 + below(120);
        std::string text;
        for (std::size_t line = below(300); line > 0; --line) {
            if (below(anchor_one_in) == 0) {
                text += "Initializing D3D11 ";
            }
            for (std::size_t word = below(4); word > 0; --word) {
                text += below(relevant_one_in) == 0 ? words[below(words.size())] : "word ";
            }
            text += "\n";
        }
        ASSERT_EQ(Select(text), SelectPlainly(text)) << "round " << round;
    }
}

TEST(ProductLogSelection, ManyRelevantLinesKeepTheLast) {
    RepeatedText text(Lines(1, 10'000, "DirectML: something failed here"), 50);
    std::istream log(&text);
    const auto lines = SelectProductLogLines(log);
    ASSERT_THAT(lines, SizeIs(60));
    EXPECT_EQ(lines.front(), "DirectML: something failed here 9941");
    EXPECT_EQ(lines.back(), "DirectML: something failed here 10000");
}

TEST(ProductLogSelection, ALineOfAHundredMegabytesIsSearchedToItsEnd) {
    RepeatedText text(std::string(1 << 20, 'x') + "failed Initializing D3D11", 100);
    std::istream log(&text);
    EXPECT_THAT(SelectProductLogLines(log), ElementsAre(std::string(4095, 'x')));
}

}  // namespace
