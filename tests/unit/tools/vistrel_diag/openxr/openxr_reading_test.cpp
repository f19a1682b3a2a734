#include "tools/vistrel_diag/openxr/openxr_reading.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr std::int32_t kSizeInsufficient = -11;  // XR_ERROR_SIZE_INSUFFICIENT

TEST(OpenXrName, EndsAtTheFirstZeroOrWithTheField) {
    const char terminated[8] = {'a', 'b', '\0', 'c', 'd', '\0', 'e', 'f'};
    EXPECT_EQ(OpenXrName(terminated), "ab");
    const char full[3] = {'x', 'y', 'z'};
    EXPECT_EQ(OpenXrName(full), "xyz");
    const char empty[2] = {'\0', 'a'};
    EXPECT_EQ(OpenXrName(empty), "");
}

TEST(OpenXrRuntimeText, HasNameAndVersion) {
    EXPECT_EQ(OpenXrRuntimeText("SteamVR/OpenXR", 0x0002'0009'00000006), "SteamVR/OpenXR 2.9.6");
    EXPECT_EQ(OpenXrRuntimeText("", 0), " 0.0.0");
    EXPECT_EQ(OpenXrRuntimeText("Max", std::numeric_limits<std::uint64_t>::max()),
              "Max 65535.65535.4294967295");
    EXPECT_EQ(OpenXrRuntimeText("100%s %n", 0), "100%s %n 0.0.0");
}

TEST(OpenXrRuntimeText, IsAlwaysUtf8) {
    EXPECT_EQ(OpenXrRuntimeText("B\xC3\xBC"
                                "cher",
                                0),
              "B\xC3\xBC"
              "cher 0.0.0");
    EXPECT_EQ(OpenXrRuntimeText("B\xFC"
                                "cher",
                                0),
              "B\xEF\xBF\xBD"
              "cher 0.0.0");
    EXPECT_EQ(OpenXrRuntimeText("cut \xE2\x82", 0), "cut \xEF\xBF\xBD 0.0.0");
}

/// A runtime that says `claimed` first and then has `real` entries: 0, 1, 2, ...
struct FakeList {
    std::uint32_t claimed = 0;
    std::uint32_t real = 0;
    std::uint32_t capacity_offered = 0;

    std::int32_t operator()(std::uint32_t capacity, std::uint32_t* count, int* elements) {
        *count = elements == nullptr ? claimed : real;
        if (elements == nullptr) {
            return capacity == 0 ? 0 : -1;
        }
        capacity_offered = capacity;
        if (capacity < real) {
            return kSizeInsufficient;
        }
        for (std::uint32_t i = 0; i < real; ++i) {
            elements[i] = static_cast<int>(i);
        }
        return 0;
    }
};

std::vector<int> Enumerate(FakeList& list) {
    return EnumerateOpenXr(-7, [&](std::uint32_t capacity, std::uint32_t* count, int* elements) {
        return list(capacity, count, elements);
    });
}

TEST(EnumerateOpenXr, QueriesTheCountAndThenTheList) {
    FakeList list = {3, 3};
    EXPECT_EQ(Enumerate(list), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(list.capacity_offered, 3U);
}

TEST(EnumerateOpenXr, MakesNoSecondCallForAnEmptyList) {
    FakeList list = {0, 3};
    EXPECT_TRUE(Enumerate(list).empty());
    EXPECT_EQ(list.capacity_offered, 0U);
}

TEST(EnumerateOpenXr, AListThatGrewIsUnknown) {
    FakeList list = {3, 4};
    EXPECT_TRUE(Enumerate(list).empty());
}

TEST(EnumerateOpenXr, AListThatShrankEndsInEmptyEntries) {
    FakeList list = {3, 1};
    EXPECT_EQ(Enumerate(list), (std::vector<int>{0, -7, -7}));
}

TEST(EnumerateOpenXr, NeverOffersMoreThanTheLimit) {
    FakeList list = {std::numeric_limits<std::uint32_t>::max(), 2};
    EXPECT_EQ(Enumerate(list).size(), kMostOpenXrEntries);
    EXPECT_EQ(list.capacity_offered, kMostOpenXrEntries);
    list = {5'000'000, 5'000'000};
    EXPECT_TRUE(Enumerate(list).empty());
}

TEST(EnumerateOpenXr, IgnoresTheCountOfAFailedCall) {
    const auto fails = [](std::uint32_t, std::uint32_t* count, int*) {
        *count = 5;
        return -1;
    };
    EXPECT_TRUE(EnumerateOpenXr(0, fails).empty());
}

}  // namespace
