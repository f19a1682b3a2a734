#include "tools/vistrel_diag/worker/worker_message.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

WorkerMessage ThereAndBack(const WorkerMessage& message) {
    const std::string line = message.ToLine();
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    return WorkerMessage::FromLine(line.substr(0, line.size() - 1)).value();
}

TEST(WorkerMessage, RoundTripsValues) {
    const WorkerMessage message =
        ThereAndBack(WorkerMessage()
                         .SetText("text", "line 1\nline 2 \"Ü\" %s")
                         .SetText("empty", "")
                         .SetInteger("most", std::numeric_limits<std::int64_t>::max())
                         .SetInteger("least", std::numeric_limits<std::int64_t>::min())
                         .SetTruth("yes", true)
                         .SetTruth("no", false));
    EXPECT_EQ(message.Text("text"), "line 1\nline 2 \"Ü\" %s");
    EXPECT_EQ(message.Text("empty"), "");
    EXPECT_EQ(message.Integer("most"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(message.Integer("least"), std::numeric_limits<std::int64_t>::min());
    EXPECT_TRUE(message.Truth("yes"));
    EXPECT_FALSE(message.Truth("no"));
}

TEST(WorkerMessage, RoundTripsNumbersBitForBit) {
    for (const double number : {0.0, 9.22, 1.0 / 3, 1e300, 5e-324, 2.0, -7.25}) {
        EXPECT_EQ(ThereAndBack(WorkerMessage().SetNumber("n", number)).Number("n"), number);
    }
    EXPECT_EQ(
        ThereAndBack(WorkerMessage().SetNumber("n", std::numeric_limits<double>::infinity())).Number("n"),
        std::nullopt);
}

TEST(WorkerMessage, ReplacesInvalidUtf8) {
    EXPECT_EQ(ThereAndBack(WorkerMessage().SetText("text", "a\xFFz")).Text("text"), "a\xEF\xBF\xBDz");
}

TEST(WorkerMessage, HasNoValueOfAnotherTypeOrName) {
    const WorkerMessage message = WorkerMessage().SetInteger("seven", 7);
    EXPECT_EQ(message.Text("seven"), std::nullopt);
    EXPECT_EQ(message.Number("seven"), std::nullopt);
    EXPECT_FALSE(message.Truth("seven"));
    EXPECT_EQ(message.Integer("eight"), std::nullopt);
}

TEST(WorkerMessage, RejectsInvalidMessages) {
    for (const char* line : {"", "{", "7", "[]", "null", "{\"a\":1}}", "\xFF", "{\"a\":\"\xFF\"}"}) {
        EXPECT_FALSE(WorkerMessage::FromLine(line).has_value()) << line;
    }
    const std::optional<WorkerMessage> odd =
        WorkerMessage::FromLine("{\"list\":[1],\"a\":1,\"nothing\":null}");
    ASSERT_TRUE(odd.has_value());
    EXPECT_EQ(odd->Integer("a"), 1);
}

}  // namespace
