#include "tools/vistrel_diag/report/kept_text.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

TEST(KeptText, IsEmptyAtFirst) {
    const KeptText text;
    EXPECT_EQ(text.size(), 0U);
    EXPECT_EQ(text.Copy(), "");
}

TEST(KeptText, KeepsWhatIsAppendedAcrossItsBlocks) {
    KeptText text;
    std::string expected;
    for (int i = 0; i < 3000; ++i) {
        const std::string line(static_cast<std::size_t>(i % 131), static_cast<char>('a' + i % 26));
        text.Append(line);
        expected += line;
    }
    ASSERT_GT(expected.size(), 2U * 64 * 1024);
    EXPECT_EQ(text.size(), expected.size());
    EXPECT_EQ(text.Copy(), expected);
}

TEST(KeptText, AcceptsAnAppendLongerThanABlockAndOneThatFillsItExactly) {
    KeptText text;
    text.Append(std::string(64 * 1024, 'x'));
    text.Append("");
    text.Append(std::string(200 * 1024, 'y'));
    EXPECT_EQ(text.Copy(), std::string(64 * 1024, 'x') + std::string(200 * 1024, 'y'));
}

TEST(KeptText, AReaderOnAnotherThreadSeesWholeLinesOnly) {
    KeptText text;
    const std::string line(99, 'l');
    std::atomic<bool> done = false;
    std::size_t torn = 0;
    std::thread reader([&] {
        while (!done.load()) {
            const std::string seen = text.Copy();
            torn += seen.size() % 100 != 0 || (!seen.empty() && seen.back() != '\n');
        }
    });
    for (int i = 0; i < 20000; ++i) {
        text.Append(line + "\n");
    }
    done.store(true);
    reader.join();
    EXPECT_EQ(torn, 0U);
    EXPECT_EQ(text.size(), 20000U * 100);
}

}  // namespace
