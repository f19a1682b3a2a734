#include "tools/vistrel_diag/sections/headset/headset_query.h"

#include <gtest/gtest.h>

namespace {

HeadsetQuery ThereAndBack(const HeadsetQuery& query) {
    const std::string line = MessageOf(query).ToLine();
    return HeadsetQueryOf(WorkerMessage::FromLine(line).value());
}

TEST(HeadsetQueryMessage, RoundTripsEverything) {
    HeadsetQuery query;
    query.headset_found = true;
    query.runtime = "SteamVR/OpenXR 2.9.6";
    query.luid_known = true;
    query.adapter_luid = {0xFFFFFFFF, -1};
    query.eye_width = 0xFFFFFFFF;
    query.eye_height = 2240;
    query.stop = HeadsetStop::NoHeadset;
    query.stop_result = -35;
    const HeadsetQuery back = ThereAndBack(query);
    EXPECT_TRUE(back.headset_found);
    EXPECT_EQ(back.runtime, query.runtime);
    EXPECT_TRUE(back.luid_known);
    EXPECT_EQ(back.adapter_luid, query.adapter_luid);
    EXPECT_EQ(back.eye_width, query.eye_width);
    EXPECT_EQ(back.eye_height, query.eye_height);
    EXPECT_EQ(back.stop, query.stop);
    EXPECT_EQ(back.stop_result, query.stop_result);
    EXPECT_FALSE(back.worker_end.has_value());
}

TEST(HeadsetQueryMessage, RoundTripsAnEmptyRecord) {
    const HeadsetQuery back = ThereAndBack({});
    EXPECT_FALSE(back.headset_found);
    EXPECT_EQ(back.runtime, "");
    EXPECT_FALSE(back.luid_known);
    EXPECT_EQ(back.stop, std::nullopt);
}

TEST(HeadsetQueryMessage, IgnoresAnUnknownStop) {
    for (const std::int64_t stop : {-1, 4, 1000000}) {
        EXPECT_EQ(HeadsetQueryOf(WorkerMessage().SetInteger("stop", stop)).stop, std::nullopt);
    }
}

}  // namespace
