#include "tests/lab/machine/gpu_clock.h"

#include <gmock/gmock.h>
#include <windows.h>
// windows.h first
#include <d3d11.h>
#include <dxgi1_4.h>
#include <wrl/client.h>

#include <sstream>

#include "tests/lab/machine/adapters.h"
#include "tests/lab/machine/devices.h"
#include "tests/lab/machine/machine.h"

namespace lab {
namespace {

using Microsoft::WRL::ComPtr;

class GpuClock : public ::testing::Test {
  protected:
    void SetUp() override {
        std::istringstream scenario("adapter Real\nadapter Scripted\n draws 500 megapixels per second\n");
        SetUpMachine(ReadScenario(scenario));
    }

    void MakeDevice(UINT adapter_position) {
        ComPtr<IDXGIFactory1> factory;
        ComPtr<IDXGIAdapter1> adapter;
        SimulatedCreateDXGIFactory1(IID_PPV_ARGS(&factory));
        factory->EnumAdapters1(adapter_position, &adapter);
        SimulatedD3D11CreateDevice(adapter.Get(), D3D_DRIVER_TYPE_UNKNOWN, nullptr, 0, nullptr, 0,
                                   D3D11_SDK_VERSION, &device_, nullptr, &context_);
    }

    ComPtr<ID3D11Query> Query(D3D11_QUERY kind) const {
        const D3D11_QUERY_DESC description = {kind, 0};
        ComPtr<ID3D11Query> query;
        device_->CreateQuery(&description, &query);
        return query;
    }

    /// The nanoseconds that the scripted GPU takes for draws into a viewport of this size.
    UINT64 TimeDraws(float width, float height, int draws) const {
        const D3D11_VIEWPORT viewport = {0, 0, width, height, 0, 1};
        context_->RSSetViewports(1, &viewport);
        const ComPtr<ID3D11Query> start = Query(D3D11_QUERY_TIMESTAMP);
        const ComPtr<ID3D11Query> end = Query(D3D11_QUERY_TIMESTAMP);
        context_->End(start.Get());
        for (int i = 0; i < draws; ++i) {
            context_->Draw(4, 0);
        }
        context_->End(end.Get());
        return Stamp(end) - Stamp(start);
    }

    UINT64 Stamp(const ComPtr<ID3D11Query>& query) const {
        UINT64 stamp = 0;
        EXPECT_EQ(context_->GetData(query.Get(), &stamp, sizeof(stamp), 0), S_OK);
        return stamp;
    }

    ComPtr<ID3D11Device> device_;
    ComPtr<ID3D11DeviceContext> context_;
};

TEST_F(GpuClock, DrawsTakeAsLongAsTheScenarioSays) {
    MakeDevice(1);
    EXPECT_EQ(TimeDraws(1000, 500, 1), 1'000'000U);  // Half a megapixel at 500 a second: 1 ms.
    EXPECT_EQ(TimeDraws(1000, 500, 8), 8'000'000U);
    EXPECT_EQ(TimeDraws(1920, 1080, 1), 4'147'200U);
}

TEST_F(GpuClock, IsSteadyAndCountsNanoseconds) {
    MakeDevice(1);
    const ComPtr<ID3D11Query> query = Query(D3D11_QUERY_TIMESTAMP_DISJOINT);
    context_->Begin(query.Get());
    context_->End(query.Get());
    D3D11_QUERY_DATA_TIMESTAMP_DISJOINT data = {};
    EXPECT_EQ(context_->GetData(query.Get(), &data, sizeof(data), 0), S_OK);
    EXPECT_EQ(data.Frequency, 1'000'000'000U);
    EXPECT_FALSE(data.Disjoint);
}

TEST_F(GpuClock, HasNoStampBeforeTheQueryEnds) {
    MakeDevice(1);
    UINT64 stamp = 0;
    EXPECT_EQ(context_->GetData(Query(D3D11_QUERY_TIMESTAMP).Get(), &stamp, sizeof(stamp), 0), S_FALSE);
    const ComPtr<ID3D11Query> query = Query(D3D11_QUERY_TIMESTAMP);
    context_->End(query.Get());
    EXPECT_EQ(context_->GetData(query.Get(), &stamp, 4, 0), E_INVALIDARG);
}

TEST_F(GpuClock, LeavesOtherAdaptersAlone) {
    MakeDevice(1);
    MakeDevice(0);
    const ComPtr<ID3D11Query> query = Query(D3D11_QUERY_TIMESTAMP);
    context_->End(query.Get());
    UINT64 stamp = 0;
    while (context_->GetData(query.Get(), &stamp, sizeof(stamp), 0) == S_FALSE) {
        Sleep(1);
    }
    EXPECT_GT(stamp, 0U);
}

}  // namespace
}  // namespace lab
