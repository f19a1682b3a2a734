#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/support/fake_dxgi.h"
#include "tests/unit/support/report_capture.h"
#include "tools/vistrel_diag/sections/gpus/gpu_section.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

FakeAdapter Adapter(const wchar_t* name) {
    FakeAdapter adapter;
    adapter.name = name;
    return adapter;
}

class GpuProbe : public testing::Test {
  protected:
    ~GpuProbe() override {
        SetGpuList({});
        EXPECT_EQ(dxgi_.live_objects, 0);
        dxgi_ = {};
    }

    FakeDxgi& dxgi_ = FakeDxgi::Instance();
};

TEST_F(GpuProbe, KeepsWhatAnAdapterDescribes) {
    FakeAdapter adapter = Adapter(L"Gr\u00E4fik");
    adapter.luid = {0xCAFE, -2};
    adapter.dedicated_video_memory = 8ULL << 30;
    adapter.shared_system_memory = 16ULL << 30;
    adapter.vendor_id = 0x1002;
    adapter.outputs = {{L"\\\\.\\DISPLAY1"}, {L""}, {L"\\\\.\\DISPLAY3"}};
    adapter.memory = {1000, 100, 0, 10};
    dxgi_.adapters = {adapter};

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

TEST_F(GpuProbe, KeepsTheLettersAroundHalfACharacterInAName) {
    FakeAdapter adapter = Adapter(L"GPU \xD83D!");
    adapter.outputs = {{L"\xDE00 DISPLAY"}};
    dxgi_.adapters = {adapter};
    const GpuInventory inventory = ProbeGpus();
    ASSERT_EQ(inventory.gpus.size(), 1U);
    EXPECT_EQ(inventory.gpus[0].gpu.name, "GPU \xEF\xBF\xBD!");
    EXPECT_THAT(inventory.gpus[0].gpu.displays, ElementsAre("\xEF\xBF\xBD DISPLAY"));
}

TEST_F(GpuProbe, TellsSoftwareByTheSecondBitOfTheFlags) {
    dxgi_.adapters = {Adapter(L"a"), Adapter(L"b"), Adapter(L"c")};
    dxgi_.adapters[0].flags = DXGI_ADAPTER_FLAG_SOFTWARE;
    dxgi_.adapters[1].flags = DXGI_ADAPTER_FLAG_REMOTE;
    dxgi_.adapters[2].flags = DXGI_ADAPTER_FLAG_REMOTE | DXGI_ADAPTER_FLAG_SOFTWARE;
    const GpuInventory inventory = ProbeGpus();
    ASSERT_EQ(inventory.gpus.size(), 3U);
    EXPECT_TRUE(inventory.gpus[0].gpu.software);
    EXPECT_FALSE(inventory.gpus[1].gpu.software);
    EXPECT_TRUE(inventory.gpus[2].gpu.software);
}

TEST_F(GpuProbe, ReadsAnUnterminatedNameNoFurtherThanItsField) {
    FakeAdapter adapter = Adapter(std::wstring(200, L'x').c_str());
    adapter.outputs = {{std::wstring(50, L'y')}};
    dxgi_.adapters = {adapter};
    const GpuInventory inventory = ProbeGpus();
    ASSERT_EQ(inventory.gpus.size(), 1U);
    EXPECT_EQ(inventory.gpus[0].gpu.name, std::string(128, 'x'));
    EXPECT_THAT(inventory.gpus[0].gpu.displays, ElementsAre(std::string(32, 'y')));
}

TEST_F(GpuProbe, SkipsAnAdapterWithoutADescriptionButCountsIt) {
    dxgi_.adapters = {Adapter(L"a"), Adapter(L"b"), Adapter(L"c")};
    dxgi_.adapters[1].description = E_FAIL;
    ReportGpuSection();
    ASSERT_EQ(GpuList().size(), 2U);
    EXPECT_EQ(GpuList()[1].index, 2U);
    EXPECT_EQ(GpuList()[1].name, "c");
}

TEST_F(GpuProbe, SkipsAnOutputWithoutADescription) {
    dxgi_.adapters = {Adapter(L"a")};
    dxgi_.adapters[0].outputs = {{L"one"}, {L"two", S_OK, E_FAIL}, {L"three"}};
    EXPECT_THAT(ProbeGpus().gpus.at(0).gpu.displays, ElementsAre("one", "three"));
}

TEST_F(GpuProbe, WithoutAFactoryFindsNothing) {
    dxgi_.factory = DXGI_ERROR_UNSUPPORTED;
    const ReportCapture report;
    ReportGpuSection();
    EXPECT_EQ(report.Text(), R"(
== GPUs ==========================================================
!! CreateDXGIFactory1 failed - cannot enumerate GPUs.
)");
    EXPECT_THAT(GpuList(), IsEmpty());
    EXPECT_EQ(dxgi_.enumerations, 0);
}

TEST_F(GpuProbe, EndsTheWalkAtAnyFailure) {
    for (const HRESULT end : {DXGI_ERROR_NOT_FOUND, DXGI_ERROR_INVALID_CALL, E_FAIL, E_OUTOFMEMORY}) {
        dxgi_.adapters = {Adapter(L"a")};
        dxgi_.adapters[0].outputs = {{L"one"}};
        dxgi_.behind_the_last = end;
        dxgi_.enumerations = 0;
        const GpuInventory inventory = ProbeGpus();
        ASSERT_EQ(inventory.gpus.size(), 1U);
        EXPECT_THAT(inventory.gpus[0].gpu.displays, ElementsAre("one"));
        EXPECT_EQ(dxgi_.enumerations, 4);
    }
}

TEST_F(GpuProbe, EndsTheWalkAtAnAdapterThatCannotBeHad) {
    dxgi_.adapters = {Adapter(L"a"), Adapter(L"b"), Adapter(L"c")};
    dxgi_.adapters[0].outputs = {{L"one"}, {L"two", E_FAIL}, {L"three"}};
    dxgi_.adapters[1].enumeration = E_FAIL;
    const GpuInventory inventory = ProbeGpus();
    ASSERT_EQ(inventory.gpus.size(), 1U);
    EXPECT_THAT(inventory.gpus[0].gpu.displays, ElementsAre("one"));
}

TEST_F(GpuProbe, EndsTheWalkAtASuccessWithoutAnObject) {
    dxgi_.adapters = {Adapter(L"a")};
    dxgi_.null_behind_the_last = true;
    EXPECT_EQ(ProbeGpus().gpus.size(), 1U);
    EXPECT_EQ(dxgi_.enumerations, 3);
}

TEST_F(GpuProbe, WithoutMemoryAccountingLeavesTheMemoryOut) {
    dxgi_.adapters = {Adapter(L"a"), Adapter(L"b")};
    dxgi_.adapters[0].accounts_memory = false;
    dxgi_.adapters[1].memory_query = DXGI_ERROR_DEVICE_REMOVED;
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
    dxgi_.adapters = {Adapter(L"a"), Adapter(L"b")};
    ReportGpuSection();
    EXPECT_EQ(dxgi_.live_objects, 2);
    SetGpuList({});
    EXPECT_EQ(dxgi_.live_objects, 0);
}

TEST_F(GpuProbe, VramIsWhatItIsNow) {
    FakeAdapter software = Adapter(L"software");
    software.flags = DXGI_ADAPTER_FLAG_SOFTWARE;
    FakeAdapter failing = Adapter(L"failing");
    failing.memory_query = E_FAIL;
    FakeAdapter old = Adapter(L"old");
    old.accounts_memory = false;
    FakeAdapter card = Adapter(L"card");
    card.memory = {1000ULL << 20, 901ULL << 20, 0, 0};
    dxgi_.adapters = {software, failing, old, card};
    ReportGpuSection();

    const ReportCapture report;
    ReportVramLines("while the game is running");
    EXPECT_EQ(report.Text(), "VRAM while the game is running:\n  GPU 3 card" + std::string(31, ' ') +
                                 "901 MB of 1000 MB  (90%)   <<< OUT OF HEADROOM\n");
}

TEST(VideoMemory, OfNoAdapterIsUnknown) {
    EXPECT_FALSE(QueryLocalVideoMemory(nullptr));
}

}  // namespace
