#include "tools/vistrel_report/source_text.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

std::vector<std::string_view> SplitOf(const std::string& text) {
    std::vector<SourceLine> lines = {{"before", 6}, {text, 7}, {"after", 8}};
    SplitLostLineEnds(lines, 1);
    EXPECT_EQ(lines.front().text, "before");
    EXPECT_EQ(lines.back().text, "after");
    std::vector<std::string_view> parts;
    for (std::size_t i = 1; i + 1 < lines.size(); ++i) {
        EXPECT_EQ(lines[i].number, 7U);
        parts.push_back(lines[i].text);
    }
    return parts;
}

using Parts = std::vector<std::string_view>;

TEST(SplitLostLineEnds, ALineEndsWhereAnotherBegins) {
    EXPECT_EQ(SplitOf("first OS              : Windows \t CPU             : x"),
              (Parts{"first", "OS              : Windows", "CPU             : x"}));
    EXPECT_EQ(SplitOf("== MACHINE ====OS              : Windows"),
              (Parts{"== MACHINE ====", "OS              : Windows"}));
    EXPECT_EQ(SplitOf("== MACHINE ====a name \t == GPUs ====b"),
              (Parts{"== MACHINE ====", "a name", "== GPUs ====", "b"}));
    // What follows a label belongs to it.
    EXPECT_EQ(SplitOf("CPU             :   OS              : x"),
              (Parts{"CPU             :   OS              : x"}));
    EXPECT_EQ(SplitOf("  "), (Parts{"  "}));
    EXPECT_EQ(SplitOf(""), (Parts{""}));
}

TEST(SplitLostLineEnds, ManyBlanks) {
    const std::string blanks(20000, ' ');
    const std::string last = "RAM             : x" + blanks;
    EXPECT_EQ(SplitOf("first" + blanks + last), (Parts{"first", last}));
}

}  // namespace
