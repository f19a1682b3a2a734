#include "tests/lab/machine/scenario.h"

#include <gmock/gmock.h>

#include <sstream>

namespace lab {
namespace {

using ::testing::ElementsAre;
using ::testing::Optional;

Scenario Read(const std::string& text) {
    std::istringstream stream(text);
    return ReadScenario(stream);
}

std::string ErrorOf(const std::string& text) {
    try {
        Read(text);
    } catch (const ScenarioError& error) {
        return error.what();
    }
    return "no error";
}

TEST(Scenario, AnEmptyTextIsAnEmptyMachine) {
    const Scenario scenario = Read("# nothing here\n\n   \n");
    EXPECT_TRUE(scenario.adapters.empty());
    EXPECT_TRUE(scenario.displays.empty());
    EXPECT_FALSE(scenario.scripted_clock);
    EXPECT_FALSE(scenario.factory_fails);
}

TEST(Scenario, ReadsTheMachine) {
    const Scenario scenario = Read(
        "clock scripted\nfactory fails 0x887A0004\ndevice fails 0x80004005\nadapters end with 0x887A0005\n"
        "cursor null at -3,4\nprogram at \\\\server\\a share\\program.exe\n");
    EXPECT_TRUE(scenario.scripted_clock);
    EXPECT_THAT(scenario.factory_fails, Optional(0x887A0004U));
    EXPECT_THAT(scenario.device_fails, Optional(0x80004005U));
    EXPECT_THAT(scenario.adapters_end_with, Optional(0x887A0005U));
    EXPECT_EQ(scenario.program_path, "\\\\server\\a share\\program.exe");
    EXPECT_TRUE(scenario.cursor.showing);
    EXPECT_TRUE(scenario.cursor.null_handle);
    EXPECT_EQ(scenario.cursor.x, -3);
    EXPECT_EQ(scenario.cursor.y, 4);
}

TEST(Scenario, ReadsAnAdapter) {
    const Scenario scenario = Read(
        "adapter NVIDIA  GeForce # a comment\n  vendor 0x10DE\n  luid FFFFFFFF:0000A001\n  dedicated 8018 "
        "MB\n"
        "  shared 2 MB\n  memory 3 MB of 4 MB\n  reserved 5 MB\n"
        "  draws 800 megapixels per second\n  software\n  without IDXGIAdapter3\n"
        "  outputs end with 0x1\n  enumeration fails 0x2\n  description fails 0x3\n  device fails 0x4\n");
    ASSERT_EQ(scenario.adapters.size(), 1U);
    const Adapter& adapter = scenario.adapters[0];
    EXPECT_EQ(adapter.name, u"NVIDIA GeForce");
    EXPECT_EQ(adapter.vendor, 0x10DEU);
    EXPECT_EQ(adapter.luid_high, -1);
    EXPECT_EQ(adapter.luid_low, 0xA001U);
    EXPECT_EQ(adapter.dedicated_bytes, 8018ULL * 1024 * 1024);
    EXPECT_EQ(adapter.shared_bytes, 2ULL * 1024 * 1024);
    EXPECT_EQ(adapter.used_bytes, 3ULL * 1024 * 1024);
    EXPECT_EQ(adapter.budget_bytes, 4ULL * 1024 * 1024);
    EXPECT_EQ(adapter.reserved_bytes, 5ULL * 1024 * 1024);
    EXPECT_THAT(adapter.draw_rate, Optional(800));
    EXPECT_TRUE(adapter.software);
    EXPECT_TRUE(adapter.without_adapter3);
    EXPECT_THAT(adapter.outputs_end_with, Optional(1U));
    EXPECT_THAT(adapter.enumeration_fails, Optional(2U));
    EXPECT_THAT(adapter.description_fails, Optional(3U));
    EXPECT_THAT(adapter.device_fails, Optional(4U));
    EXPECT_FALSE(adapter.memory_fails);
}

TEST(Scenario, AnAdapterMayHaveNoNameAndFailItsMemoryQuery) {
    const Scenario scenario = Read("adapter\n  memory fails 0x887A0005\n");
    EXPECT_EQ(scenario.adapters[0].name, u"");
    EXPECT_THAT(scenario.adapters[0].memory_fails, Optional(0x887A0005U));
}

TEST(Scenario, EveryOutputIsADisplayInTheOrderOfTheText) {
    const Scenario scenario = Read(
        "display \\\\.\\DISPLAYV1\n  mirror\n  detached\n"
        "adapter A\n  output \\\\.\\DISPLAY1\n    size 640x480\n    at -640,7\n    rate 75\n    primary\n"
        "  rotated 90\n    mode fails\n"
        "adapter B\n  output \\\\.\\DISPLAY2\n  output \\\\.\\DISPLAY3\n    without IDXGIOutput1\n");
    ASSERT_EQ(scenario.displays.size(), 4U);
    EXPECT_TRUE(scenario.displays[0].mirror);
    EXPECT_FALSE(scenario.displays[0].attached);
    const Display& second = scenario.displays[1];
    EXPECT_EQ(second.name, u"\\\\.\\DISPLAY1");
    EXPECT_EQ(second.size, (Size{640, 480}));
    EXPECT_EQ(second.left, -640);
    EXPECT_EQ(second.top, 7);
    EXPECT_EQ(second.refresh_rate, 75);
    EXPECT_TRUE(second.primary);
    EXPECT_TRUE(second.mode_fails);
    ASSERT_EQ(scenario.outputs.size(), 3U);
    EXPECT_EQ(scenario.outputs[0].adapter, 0U);
    EXPECT_EQ(scenario.outputs[0].display, 1U);
    EXPECT_EQ(scenario.outputs[0].rotation, 90);
    EXPECT_EQ(scenario.outputs[2].adapter, 1U);
    EXPECT_EQ(scenario.outputs[2].display, 3U);
    EXPECT_TRUE(scenario.outputs[2].without_output1);
    EXPECT_FALSE(scenario.adapters[1].without_adapter3);
}

TEST(Scenario, ReadsHowAnOutputIsDuplicated) {
    const Scenario scenario = Read(
        "adapter A\n output D\n  frames 144 per second\n  format bgra-typeless\n  picture desktop\n"
        "  refuses 0x80070005 3 times\n  acquiring fails 0x887A0001 for 9 ms\n"
        "  lost after 30 frames\n   size 800x600\n   format fp16\n   moves to 0\n   refuses 0x887A0022 for "
        "700 ms\n"
        "  lost after 500 ms\n   unplugged\n");
    const Output& output = scenario.outputs.at(0);
    EXPECT_EQ(output.frames.rate, 144);
    EXPECT_EQ(output.format, PixelFormat::kBgraTypeless);
    EXPECT_EQ(output.picture, Picture::kDesktop);
    ASSERT_TRUE(output.refusal);
    EXPECT_EQ(output.refusal->result, 0x80070005U);
    EXPECT_THAT(output.refusal->times, Optional(3));
    ASSERT_TRUE(output.acquiring);
    EXPECT_EQ(output.acquiring->result, 0x887A0001U);
    EXPECT_THAT(output.acquiring->milliseconds, Optional(9));
    ASSERT_EQ(output.losses.size(), 2U);
    const Loss& first = output.losses[0];
    EXPECT_THAT(first.after_frames, Optional(30));
    EXPECT_THAT(first.size, Optional(Size{800, 600}));
    EXPECT_THAT(first.format, Optional(PixelFormat::kHalfFloat));
    EXPECT_THAT(first.adapter, Optional(std::size_t{0}));
    EXPECT_THAT(first.refusal->milliseconds, Optional(700));
    EXPECT_FALSE(first.unplugged);
    EXPECT_THAT(output.losses[1].after_milliseconds, Optional(500));
    EXPECT_TRUE(output.losses[1].unplugged);
}

TEST(Scenario, ReadsTheFaultsOfAGpu) {
    const Scenario scenario = Read(
        "loads Z:\\a folder\\b.dll\nadapter A\n draws 800 megapixels per second\n"
        " draws black 900 megapixels per second\n clocks up from 33 percent over 200 ms\n"
        " stamps 70 ms late\n memory falls 5 ms late\n memory drifts 3 MB\n mapping fails 0x8007000E 2 "
        "times\n"
        "adapter B\n stamps disjoint\nadapter C\n stamps never\n");
    EXPECT_EQ(scenario.library, "Z:\\a folder\\b.dll");
    ASSERT_EQ(scenario.adapters.size(), 3U);
    const Adapter& adapter = scenario.adapters[0];
    EXPECT_THAT(adapter.draw_rate, Optional(800));
    EXPECT_THAT(adapter.black_draw_rate, Optional(900));
    ASSERT_TRUE(adapter.ramp);
    EXPECT_EQ(adapter.ramp->from_percent, 33);
    EXPECT_EQ(adapter.ramp->milliseconds, 200);
    EXPECT_EQ(adapter.stamps_late_milliseconds, 70);
    EXPECT_THAT(adapter.memory_falls_milliseconds, Optional(5));
    EXPECT_EQ(adapter.memory_drift_bytes, 3ULL * 1024 * 1024);
    ASSERT_TRUE(adapter.mapping);
    EXPECT_EQ(adapter.mapping->result, 0x8007000EU);
    EXPECT_THAT(adapter.mapping->times, Optional(2));
    EXPECT_EQ(adapter.stamp_trouble, StampTrouble::kNone);
    EXPECT_EQ(scenario.adapters[1].stamp_trouble, StampTrouble::kDisjoint);
    EXPECT_EQ(scenario.adapters[2].stamp_trouble, StampTrouble::kNever);
}

TEST(Scenario, ReadsHdrPointerAndBlankImages) {
    const Scenario scenario = Read(
        "adapter A\n output D\n  hdr\n  first image blank\n  pointer moves 125 per second\n"
        "  frames 10 per second\n");
    const Output& output = scenario.outputs.at(0);
    EXPECT_TRUE(output.hdr);
    EXPECT_TRUE(output.frames.first_blank);
    EXPECT_EQ(output.frames.pointer_rate, 125);
    EXPECT_EQ(output.frames.rate, 10);
}

TEST(Scenario, ReadsFatalFailures) {
    const Scenario scenario = Read("hang CopyResource at call 3\ncrash DuplicateOutput\nadapter A\n");
    ASSERT_EQ(scenario.fatal_failures.size(), 2U);
    EXPECT_EQ(scenario.fatal_failures.at("CopyResource").kind, "hang");
    EXPECT_EQ(scenario.fatal_failures.at("CopyResource").call, 3);
    EXPECT_EQ(scenario.fatal_failures.at("DuplicateOutput").kind, "crash");
    EXPECT_EQ(scenario.fatal_failures.at("DuplicateOutput").call, 1);
}

TEST(Scenario, ReadsStillAndNever) {
    EXPECT_EQ(Read("adapter A\n output D\n frames still\n").outputs[0].frames.rate, 0);
    EXPECT_FALSE(Read("adapter A\n output D\n frames still\n").outputs[0].frames.never);
    EXPECT_TRUE(Read("adapter A\n output D\n frames never\n").outputs[0].frames.never);
}

TEST(Scenario, ReportsWhichLineIsInvalidAndWhy) {
    EXPECT_EQ(ErrorOf("\nadaptor A\n"), "line 2: 'adaptor' is not understood here");
    EXPECT_EQ(ErrorOf("output D\n"), "line 1: an output needs an adapter above it");
    EXPECT_EQ(ErrorOf("lost after 3 frames\n"), "line 1: a loss needs an output above it");
    EXPECT_EQ(ErrorOf("adapter A\n vendor 10DE\n"), "line 2: '10DE' is not a code like 0x887A0004");
    EXPECT_EQ(ErrorOf("adapter A\n vendor\n"), "line 2: a code is missing");
    EXPECT_EQ(ErrorOf("adapter A\n software yes\n"), "line 2: 'yes' is one word too many");
    EXPECT_EQ(ErrorOf("adapter A\n dedicated 8x MB\n"), "line 2: '8x' is not an amount of memory");
    EXPECT_EQ(ErrorOf("adapter A\n dedicated 8 GB\n"), "line 2: 'MB' is expected instead of 'GB'");
    EXPECT_EQ(ErrorOf("adapter A\n without IDXGIOutput1\n"),
              "line 2: only an output can be without IDXGIOutput1");
    EXPECT_EQ(ErrorOf("adapter A\n output D\n frames 0 per second\n"), "line 3: a rate of 0 is none");
    EXPECT_EQ(ErrorOf("adapter A\n clocks up from 0 percent over 200 ms\n"),
              "line 2: a clock goes up from 1 to 100 percent, over 1 ms or more");
    EXPECT_EQ(ErrorOf("adapter A\n output D\n size 800\n"), "line 3: '800' is not a size like 1920x1080");
    EXPECT_EQ(ErrorOf("adapter A\n output D\n lost after 3 frames\n  moves to 1\n"),
              "an output moves to an adapter that the scenario does not have");
}

}  // namespace
}  // namespace lab
