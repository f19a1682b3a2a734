#include "tests/lab/machine/gpu_clock.h"

#include <gmock/gmock.h>
#include <windows.h>
// windows.h first
#include <d3d11.h>
#include <dxgi1_4.h>
#include <wrl/client.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/lab/machine/adapters.h"
#include "tests/lab/machine/clock.h"
#include "tests/lab/machine/devices.h"
#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/texture_memory.h"

namespace lab {
namespace {

using Microsoft::WRL::ComPtr;

class GpuClock : public ::testing::Test {
  protected:
    void SetUp() override {
        SetUpMachine("adapter Real\nadapter Scripted\n draws 500 megapixels per second\n");
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

/// One adapter of a machine with a scripted clock, with further lines of the scenario.
void SetUpOneGpu(const std::string& more) {
    SetUpMachine("clock scripted\nadapter Scripted\n draws 500 megapixels per second\n" + more);
}

TEST_F(GpuClock, ARampFollowsTheMachinesClock) {
    SetUpOneGpu(" clocks up from 50 percent over 200 ms\n");
    MakeDevice(0);
    PassTime(1'000'000);
    const std::int64_t start = MachineTime();
    const D3D11_VIEWPORT viewport = {0, 0, 1000, 500, 0, 1};
    context_->RSSetViewports(1, &viewport);
    const ComPtr<ID3D11Query> done = Query(D3D11_QUERY_EVENT);
    for (int i = 0; i < 150; ++i) {
        context_->Draw(4, 0);  // 1 ms at full speed.
    }
    context_->End(done.Get());
    BOOL answer = FALSE;
    PassTime(199'000);
    EXPECT_EQ(context_->GetData(done.Get(), &answer, sizeof(answer), 0), S_FALSE);
    PassTime(2'000);
    EXPECT_EQ(context_->GetData(done.Get(), &answer, sizeof(answer), 0), S_OK);
    EXPECT_TRUE(answer);
    EXPECT_EQ(MachineTime() - start, 201'000);
}

TEST_F(GpuClock, ReturnsDataLateOrNeverOrDisjoint) {
    SetUpOneGpu(" stamps 30 ms late\n");
    MakeDevice(0);
    const ComPtr<ID3D11Query> late = Query(D3D11_QUERY_TIMESTAMP);
    context_->End(late.Get());
    UINT64 stamp = 0;
    PassTime(29'000);
    EXPECT_EQ(context_->GetData(late.Get(), &stamp, sizeof(stamp), 0), S_FALSE);
    PassTime(1'000);
    EXPECT_EQ(context_->GetData(late.Get(), &stamp, sizeof(stamp), 0), S_OK);

    TheMachine().scenario.adapters[0].stamps_late_milliseconds = 0;
    TheMachine().scenario.adapters[0].stamp_trouble = StampTrouble::kNever;
    PassTime(3'600'000'000);
    EXPECT_EQ(context_->GetData(late.Get(), &stamp, sizeof(stamp), 0), S_FALSE);

    TheMachine().scenario.adapters[0].stamp_trouble = StampTrouble::kDisjoint;
    const ComPtr<ID3D11Query> clock = Query(D3D11_QUERY_TIMESTAMP_DISJOINT);
    context_->Begin(clock.Get());
    context_->End(clock.Get());
    D3D11_QUERY_DATA_TIMESTAMP_DISJOINT data = {};
    EXPECT_EQ(context_->GetData(clock.Get(), &data, sizeof(data), 0), S_OK);
    EXPECT_TRUE(data.Disjoint);
}

class TextureMemoryTest : public GpuClock {
  protected:
    ComPtr<ID3D11Texture2D> Texture(UINT side, const std::uint32_t* pixels = nullptr) const {
        D3D11_TEXTURE2D_DESC description = {};
        description.Width = side;
        description.Height = side;
        description.MipLevels = 1;
        description.ArraySize = 1;
        description.Format = DXGI_FORMAT_B8G8R8A8_UNORM;
        description.SampleDesc.Count = 1;
        description.BindFlags = D3D11_BIND_SHADER_RESOURCE;
        const D3D11_SUBRESOURCE_DATA data = {pixels, side * 4, 0};
        ComPtr<ID3D11Texture2D> texture;
        EXPECT_EQ(device_->CreateTexture2D(&description, pixels != nullptr ? &data : nullptr, &texture),
                  S_OK);
        return texture;
    }
};

TEST_F(TextureMemoryTest, IsFreedSomeTimeAfterTheFlush) {
    SetUpOneGpu(" memory falls 5 ms late\n");
    MakeDevice(0);
    EXPECT_EQ(TextureMemory(0), 0U);
    ComPtr<ID3D11Texture2D> texture = Texture(100);
    EXPECT_EQ(TextureMemory(0), 40'000U);
    texture.Reset();
    PassTime(1'000'000);
    EXPECT_EQ(TextureMemory(0), 40'000U);
    context_->Flush();
    PassTime(4'000);
    EXPECT_EQ(TextureMemory(0), 40'000U);
    PassTime(1'000);
    EXPECT_EQ(TextureMemory(0), 0U);
}

TEST_F(TextureMemoryTest, ABlackPictureIsDrawnAtItsOwnSpeed) {
    SetUpOneGpu(" draws black 1000 megapixels per second\n");
    MakeDevice(0);
    std::vector<std::uint32_t> pixels(100 * 100, 0xFF000000);
    pixels[0] = 0xFFFFFFFF;  // A pointer.
    const auto draw_with = [&] {
        ComPtr<ID3D11ShaderResourceView> view;
        device_->CreateShaderResourceView(Texture(100, pixels.data()).Get(), nullptr, &view);
        context_->PSSetShaderResources(0, 1, view.GetAddressOf());
        return TimeDraws(1000, 500, 1);
    };
    EXPECT_EQ(draw_with(), 500'000U);
    std::fill(pixels.begin(), pixels.end(), 0xFF0000FF);
    EXPECT_EQ(draw_with(), 1'000'000U);
}

TEST_F(TextureMemoryTest, MapFailsAsOftenAsTheScenarioSays) {
    SetUpOneGpu(" mapping fails 0x8007000E 2 times\n");
    MakeDevice(0);
    D3D11_TEXTURE2D_DESC description = {
        4, 4, 1, 1, DXGI_FORMAT_B8G8R8A8_UNORM, {1, 0}, D3D11_USAGE_STAGING, 0, D3D11_CPU_ACCESS_READ, 0};
    ComPtr<ID3D11Texture2D> texture;
    device_->CreateTexture2D(&description, nullptr, &texture);
    D3D11_MAPPED_SUBRESOURCE mapped = {};
    EXPECT_EQ(context_->Map(texture.Get(), 0, D3D11_MAP_READ, 0, &mapped), E_OUTOFMEMORY);
    EXPECT_EQ(context_->Map(texture.Get(), 0, D3D11_MAP_READ, 0, &mapped), E_OUTOFMEMORY);
    EXPECT_EQ(context_->Map(texture.Get(), 0, D3D11_MAP_READ, 0, &mapped), S_OK);
    context_->Unmap(texture.Get(), 0);
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
