#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/statistics.h"
#include "tests/unit/support/report_capture.h"
#include "tools/vistrel_diag/sections/gpus/gpu_section.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class GpuProbe : public testing::Test {
  protected:
    ~GpuProbe() override {
        SetGpuList({});
        EXPECT_EQ(lab::Counts().LiveObjects(), 0);
    }

    static void UseMachine(const char* scenario) {
        lab::SetUpMachine(scenario);
        lab::RestartCounts();
    }
    static lab::Adapter& Adapter(std::size_t position) { return Scenario().adapters.at(position); }
    static lab::Scenario& Scenario() { return lab::TheMachine().scenario; }
};

TEST_F(GpuProbe, KeepsWhatAnAdapterDescribes) {
    UseMachine(R"(
adapter Gräfik
  vendor 0x1002
  luid FFFFFFFE:0000CAFE
  dedicated 8192 MB
  shared 16384 MB
  output \\.\DISPLAY1
  output
  output \\.\DISPLAY3
)");
    Adapter(0).budget_bytes = 1000;
    Adapter(0).used_bytes = 100;
    Adapter(0).reserved_bytes = 10;

    const GpuInventory inventory = ProbeGpus();
    EXPECT_TRUE(inventory.factory_created);
    ASSERT_EQ(inventory.gpus.size(), 1U);
    const GpuInfo& gpu = inventory.gpus[0].gpu;
    EXPECT_EQ(gpu.index, 0U);
    EXPECT_EQ(gpu.name,
              "Gr\xC3\xA4"
              "fik");
    EXPECT_EQ(gpu.luid, (AdapterLuid{0xCAFE, -2}));
    EXPECT_EQ(gpu.dedicated_video_memory, 8ULL << 30);
    EXPECT_EQ(gpu.shared_system_memory, 16ULL << 30);
    EXPECT_EQ(gpu.vendor_id, 0x1002U);
    EXPECT_FALSE(gpu.software);
    EXPECT_THAT(gpu.displays, ElementsAre(R"(\\.\DISPLAY1)", "", R"(\\.\DISPLAY3)"));
    EXPECT_TRUE(gpu.adapter);
    ASSERT_TRUE(inventory.gpus[0].memory);
    EXPECT_EQ(inventory.gpus[0].memory->usage, 100U);
    EXPECT_EQ(inventory.gpus[0].memory->budget, 1000U);
    EXPECT_EQ(inventory.gpus[0].memory->reservation, 10U);
}

TEST_F(GpuProbe, KeepsTheTextAroundAnUnpairedSurrogateInAName) {
    UseMachine("adapter A\n output B\n");
    Adapter(0).name = u"GPU \xD83D!";
    Scenario().displays[0].name = u"\xDE00 DISPLAY";
    const GpuInventory inventory = ProbeGpus();
    ASSERT_EQ(inventory.gpus.size(), 1U);
    EXPECT_EQ(inventory.gpus[0].gpu.name, "GPU \xEF\xBF\xBD!");
    EXPECT_THAT(inventory.gpus[0].gpu.displays, ElementsAre("\xEF\xBF\xBD DISPLAY"));
}

TEST_F(GpuProbe, RecognisesSoftwareByTheSecondBitOfTheFlags) {
    UseMachine(R"(
adapter a
  software
adapter b
  remote
adapter c
  remote
  software
)");
    const GpuInventory inventory = ProbeGpus();
    ASSERT_EQ(inventory.gpus.size(), 3U);
    EXPECT_TRUE(inventory.gpus[0].gpu.software);
    EXPECT_FALSE(inventory.gpus[1].gpu.software);
    EXPECT_TRUE(inventory.gpus[2].gpu.software);
}

TEST_F(GpuProbe, ReadsAnUnterminatedNameOnlyToTheEndOfItsField) {
    UseMachine("adapter A\n output B\n");
    Adapter(0).name = std::u16string(200, u'x');
    Scenario().displays[0].name = std::u16string(50, u'y');
    const GpuInventory inventory = ProbeGpus();
    ASSERT_EQ(inventory.gpus.size(), 1U);
    EXPECT_EQ(inventory.gpus[0].gpu.name, std::string(128, 'x'));
    EXPECT_THAT(inventory.gpus[0].gpu.displays, ElementsAre(std::string(32, 'y')));
}

TEST_F(GpuProbe, SkipsAnAdapterWithoutADescriptionButCountsIt) {
    UseMachine("adapter a\nadapter b\n description fails 0x80004005\nadapter c\n");
    ReportGpuSection();
    ASSERT_EQ(GpuList().size(), 2U);
    EXPECT_EQ(GpuList()[1].index, 2U);
    EXPECT_EQ(GpuList()[1].name, "c");
}

TEST_F(GpuProbe, SkipsAnOutputWithoutADescription) {
    UseMachine("adapter a\n output one\n output two\n  description fails 0x80004005\n output three\n");
    EXPECT_THAT(ProbeGpus().gpus.at(0).gpu.displays, ElementsAre("one", "three"));
}

TEST_F(GpuProbe, FindsNothingWithoutAFactory) {
    UseMachine("factory fails 0x887A0004\n");
    const ReportCapture report;
    ReportGpuSection();
    EXPECT_EQ(report.Text(), R"(
== GPUs ==========================================================
!! CreateDXGIFactory1 failed - cannot enumerate GPUs.
)");
    EXPECT_THAT(GpuList(), IsEmpty());
    EXPECT_EQ(lab::Counts().enumerations, 0);
}

TEST_F(GpuProbe, StopsAtAnyFailure) {
    for (const HRESULT end : {DXGI_ERROR_NOT_FOUND, DXGI_ERROR_INVALID_CALL, E_FAIL, E_OUTOFMEMORY}) {
        UseMachine("adapter a\n output one\n");
        Scenario().adapters_end_with = end;
        Adapter(0).outputs_end_with = end;
        const GpuInventory inventory = ProbeGpus();
        ASSERT_EQ(inventory.gpus.size(), 1U);
        EXPECT_THAT(inventory.gpus[0].gpu.displays, ElementsAre("one"));
        EXPECT_EQ(lab::Counts().enumerations, 4);
    }
}

TEST_F(GpuProbe, StopsAtAnAdapterThatCannotBeEnumerated) {
    UseMachine(R"(
adapter a
  output one
  output two
    enumeration fails 0x80004005
  output three
adapter b
  enumeration fails 0x80004005
adapter c
)");
    const GpuInventory inventory = ProbeGpus();
    ASSERT_EQ(inventory.gpus.size(), 1U);
    EXPECT_THAT(inventory.gpus[0].gpu.displays, ElementsAre("one"));
}

TEST_F(GpuProbe, StopsAtASuccessWithoutAnObject) {
    UseMachine("adapters end with 0x00000000\nadapter a\n  outputs end with 0x00000000\n");
    EXPECT_EQ(ProbeGpus().gpus.size(), 1U);
    EXPECT_EQ(lab::Counts().enumerations, 3);
}

TEST_F(GpuProbe, OmitsTheMemoryWithoutMemoryAccounting) {
    UseMachine(R"(
adapter a
  luid 00000000:00000000
  without IDXGIAdapter3
adapter b
  luid 00000000:00000000
  memory fails 0x887A0005
)");
    const ReportCapture report;
    ReportGpuSection();
    EXPECT_EQ(report.Text(), R"(
== GPUs ==========================================================
GPU 0           : a [?]
  VRAM          : 0 MB dedicated, 0 MB shared system
  LUID          : 00000000:00000000
  Displays      : NONE attached to this GPU
GPU 1           : b [?]
  VRAM          : 0 MB dedicated, 0 MB shared system
  LUID          : 00000000:00000000
  Displays      : NONE attached to this GPU

NOTE: more than one hardware GPU is present. Which one drives the monitor decides whether capture is a local copy or a bus transfer.
)");
}

TEST_F(GpuProbe, ListKeepsTheAdaptersAlive) {
    UseMachine("adapter a\nadapter b\n");
    ReportGpuSection();
    EXPECT_EQ(lab::Counts().LiveObjects(), 2);
    SetGpuList({});
    EXPECT_EQ(lab::Counts().LiveObjects(), 0);
}

TEST_F(GpuProbe, ReadsTheCurrentVram) {
    UseMachine(R"(
adapter software
  software
adapter failing
  memory fails 0x80004005
adapter old
  without IDXGIAdapter3
adapter card
  memory 901 MB of 1000 MB
)");
    ReportGpuSection();

    const ReportCapture report;
    ReportVramLines("while the game is running");
    EXPECT_EQ(report.Text(), "VRAM while the game is running:\n  GPU 3 card" + std::string(31, ' ') +
                                 "901 MB of 1000 MB  (90%)   <<< OUT OF HEADROOM\n");
}

TEST(VideoMemory, IsUnknownWithoutAnAdapter) {
    EXPECT_FALSE(QueryLocalVideoMemory(nullptr));
}

}  // namespace
