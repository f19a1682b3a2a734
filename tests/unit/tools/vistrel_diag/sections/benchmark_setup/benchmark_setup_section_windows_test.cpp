#include "tools/vistrel_diag/sections/benchmark_setup/benchmark_device.h"

#include <gtest/gtest.h>

#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/statistics.h"
#include "tests/unit/support/report_capture.h"
#include "tools/vistrel_diag/sections/gpus/gpu_section.h"

namespace {

/// The last arguments of D3D11CreateDevice, and its result.
struct DeviceCall {
    HRESULT answer = S_OK;
    int count = 0;
    IDXGIAdapter* adapter = nullptr;
    D3D_DRIVER_TYPE driver_type = {};
    bool default_levels = false;
    UINT flags = 1;
    UINT sdk_version = 0;
};

DeviceCall& LastCall() {
    static DeviceCall call;
    return call;
}

}  // namespace

extern "C" HRESULT WINAPI D3D11CreateDevice(IDXGIAdapter* adapter, D3D_DRIVER_TYPE driver_type,
                                            HMODULE software, UINT flags, const D3D_FEATURE_LEVEL* levels,
                                            UINT level_count, UINT sdk_version, ID3D11Device** device,
                                            D3D_FEATURE_LEVEL* level, ID3D11DeviceContext** context) {
    DeviceCall& call = LastCall();
    ++call.count;
    call.adapter = adapter;
    call.driver_type = driver_type;
    call.default_levels = levels == nullptr && level_count == 0 && software == nullptr && level != nullptr;
    call.flags = flags;
    call.sdk_version = sdk_version;
    *device = nullptr;
    *context = nullptr;
    return call.answer;
}

namespace {

constexpr const char* kThreeGpus = R"(
adapter small
  luid 00000000:0000000A
  dedicated 100 MB
adapter large
  luid 00000000:00000014
  dedicated 300 MB
adapter other
  luid 00000000:0000001E
  dedicated 200 MB
)";

class BenchmarkSetup : public testing::Test {
  protected:
    BenchmarkSetup() {
        lab::SetUpMachine(kThreeGpus);
        lab::RestartCounts();
    }
    ~BenchmarkSetup() override {
        SetGpuList({});
        EXPECT_EQ(lab::Counts().LiveObjects(), 0);
        LastCall() = {};
    }

    /// The report's lines about the set-up, after the inventory was taken.
    std::string LinesFor(const std::optional<AdapterLuid>& required) {
        const ReportCapture report;
        const BenchmarkDevice benchmark = ReportBenchmarkSetup(required);
        index_ = benchmark.gpu.index;
        EXPECT_EQ(benchmark.gpu.adapter.get(), LastCall().adapter);
        EXPECT_EQ(benchmark.factory != nullptr, required.has_value() && !Scenario().factory_fails);
        return report.Text();
    }

    static lab::Scenario& Scenario() { return lab::TheMachine().scenario; }

    std::int32_t index_ = -2;
};

constexpr const char* kHeader = "\n== BENCHMARK SETUP ===============================================\n";
constexpr const char* kNamed =
    "  chosen the way Vistrel chooses it: the adapter the OpenXR runtime requires.\n";
constexpr const char* kUnnamed =
    "  chosen as the largest hardware GPU. The runtime did not name a required adapter (no headset awake), "
    "so "
    "Vistrel's real choice could not be read - turn the headset on and re-run to check for the cross-adapter "
    "case.\n";

TEST_F(BenchmarkSetup, TakesTheAdapterTheRuntimeRequires) {
    ReportGpuSection();
    EXPECT_EQ(LinesFor(AdapterLuid{30, 0}),
              std::string(kHeader) + "Benchmark GPU   : GPU 2 (other)\n" + kNamed);
    EXPECT_EQ(index_, 2);
    EXPECT_EQ(LastCall().driver_type, D3D_DRIVER_TYPE_UNKNOWN);
}

TEST_F(BenchmarkSetup, MatchesBothHalvesOfTheLuid) {
    ReportGpuSection();
    LinesFor(AdapterLuid{30, 1});
    EXPECT_EQ(index_, 1);
}

TEST_F(BenchmarkSetup, TakesTheLargestWhenTheRuntimeNamesNone) {
    ReportGpuSection();
    EXPECT_EQ(LinesFor(std::nullopt), std::string(kHeader) + "Benchmark GPU   : GPU 1 (large)\n" + kUnnamed);
    EXPECT_EQ(index_, 1);
}

TEST_F(BenchmarkSetup, TakesTheLargestWhenTheNamedOneIsGoneButReportsItAsNamed) {
    ReportGpuSection();
    EXPECT_EQ(LinesFor(AdapterLuid{99, 0}),
              std::string(kHeader) + "Benchmark GPU   : GPU 1 (large)\n" + kNamed);
}

TEST_F(BenchmarkSetup, TakesTheLargestWhenThereIsNoFactory) {
    ReportGpuSection();
    Scenario().factory_fails = E_FAIL;
    EXPECT_EQ(LinesFor(AdapterLuid{30, 0}),
              std::string(kHeader) + "Benchmark GPU   : GPU 1 (large)\n" + kNamed);
}

TEST_F(BenchmarkSetup, StopsAtAFailingEnumeration) {
    ReportGpuSection();
    Scenario().adapters[1].enumeration_fails = E_FAIL;
    lab::RestartCounts();
    LinesFor(AdapterLuid{30, 0});
    EXPECT_EQ(index_, 1);
    EXPECT_EQ(lab::Counts().enumerations, 2);
}

TEST_F(BenchmarkSetup, SkipsAnAdapterWithoutADescription) {
    Scenario().adapters[1].description_fails = E_FAIL;
    ReportGpuSection();
    // Found at index 2; the list has only two entries.
    EXPECT_EQ(LinesFor(AdapterLuid{30, 0}),
              std::string(kHeader) + "Benchmark GPU   : GPU 2 (default)\n" + kNamed);
}

TEST_F(BenchmarkSetup, UsesTheSystemsDefaultWithoutAnyGpu) {
    lab::SetUpMachine("");
    ReportGpuSection();
    EXPECT_EQ(LinesFor(std::nullopt),
              std::string(kHeader) + "Benchmark GPU   : GPU -1 (default)\n" + kUnnamed);
    EXPECT_EQ(LastCall().adapter, nullptr);
    EXPECT_EQ(LastCall().driver_type, D3D_DRIVER_TYPE_HARDWARE);
}

TEST_F(BenchmarkSetup, CreatesADeviceWithDefaultLevelsAndNoFlags) {
    ReportGpuSection();
    LinesFor(std::nullopt);
    EXPECT_EQ(LastCall().count, 1);
    EXPECT_TRUE(LastCall().default_levels);
    EXPECT_EQ(LastCall().flags, 0U);
    EXPECT_EQ(LastCall().sdk_version, 7U);
}

TEST_F(BenchmarkSetup, ReportsADeviceThatCannotBeCreated) {
    ReportGpuSection();
    LastCall().answer = DXGI_ERROR_UNSUPPORTED;
    EXPECT_EQ(LinesFor(std::nullopt), std::string(kHeader) + "Benchmark GPU   : GPU 1 (large)\n" + kUnnamed +
                                          "!! D3D11CreateDevice failed (0x887A0004). Cannot benchmark.\n");
}

}  // namespace
