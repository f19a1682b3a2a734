#include "tools/vistrel_report/markup.h"

#include <gtest/gtest.h>

namespace {

TEST(Markup, ElementsCloseInReverseOrder) {
    Markup page;
    {
        const Markup::Element outer = page.Open("div", {{"class", "lines"}});
        page.TextElement("span", "text");
        page.Void("br");
        page.Shape("rect", {{"x", 1.5}, {"y", std::size_t{2}}});
    }
    EXPECT_EQ(page.Text(), "<div class=\"lines\"><span>text</span><br>\n<rect x=\"1.5\" y=\"2\"/>\n</div>\n");
}

TEST(Markup, ExternalTextIsEscapedEverywhere) {
    constexpr const char* kHostile = "</b>\"'&<script>\xE2\x80\xAE\n";
    constexpr const char* kEscaped = "&lt;/b&gt;&quot;&#39;&amp;&lt;script&gt;[U+202E][U+000A]";
    Markup page;
    page.TextElement("b", kHostile, {Markup::Attribute::Text("title", kHostile)});
    page.TextOf(kHostile);
    EXPECT_EQ(page.Text(), std::string("<b title=\"") + kEscaped + "\">" + kEscaped + "</b>" + kEscaped);
}

TEST(Markup, AnchorsWithinThePage) {
    Markup page;
    page.Void("a", {Markup::Attribute::Numbered("id", "r", 3),
                    Markup::Attribute::Numbered("href", "#r", 3, "-l", 12)});
    EXPECT_EQ(page.Text(), "<a id=\"r3\" href=\"#r3-l12\">\n");
}

TEST(ShortNumber, HasNoUnnecessaryDigits) {
    EXPECT_EQ(ShortNumber(0.0), "0");
    EXPECT_EQ(ShortNumber(-0.001), "0");
    EXPECT_EQ(ShortNumber(100.0), "100");
    EXPECT_EQ(ShortNumber(2.5), "2.5");
    EXPECT_EQ(ShortNumber(1.006), "1.01");
    EXPECT_EQ(ShortNumber(1.0 / 0.0), "0");
}

}  // namespace
