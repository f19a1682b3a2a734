#include "tools/vistrel_diag/sections/warp/warp_timing.h"

#include <d3d11.h>

#include <optional>

#include "platform/stopwatch.h"
#include "platform/video_memory.h"
#include "settings/diag_settings.h"
#include "tools/vistrel_diag/sections/warp/d3d11_timestamp_queries.h"
#include "tools/vistrel_diag/sections/warp/frame_sampling.h"
#include "tools/vistrel_diag/sections/warp/gpu_warm_up.h"
#include "tools/vistrel_diag/sections/warp/settled_video_memory.h"
#include "tools/vistrel_diag/sections/warp/warp_frame.h"
#include "tools/vistrel_diag/sections/warp/warp_resources.h"

namespace {

constexpr int kWarmUpFrames = 4;

/// Bytes; 0 when unknown.
std::uint64_t UsedVideoMemory(IDXGIAdapter1* adapter) {
    return QueryLocalVideoMemory(adapter).value_or(VideoMemoryUse{}).usage;
}

/// Draws with the resources of one eye size, on a screen of the settings' size.
class WarpFrames {
  public:
    WarpFrames(ID3D11Device& device, ID3D11DeviceContext& context, const WarpResources& resources,
               const StereoWarpShader& shader, LongWait* long_wait)
        : device_(device), context_(context), resources_(resources), shader_(shader), long_wait_(long_wait) {}

    void Draw() {
        DrawWarpFrame(context_, resources_, shader_, screen_size_);
        ++drawn_;
    }

    /// As GpuTimeFrames.
    double Time(int frames) {
        D3D11TimestampQueries queries(device_, context_, long_wait_);
        return GpuTimeFrames(queries, frames, [this] { Draw(); });
    }

    int Drawn() const { return drawn_; }

  private:
    ID3D11Device& device_;
    ID3D11DeviceContext& context_;
    const WarpResources& resources_;
    const StereoWarpShader& shader_;
    LongWait* long_wait_;
    float screen_size_ = DiagSettings::Instance().ScreenMetres();
    int drawn_ = 0;
};

/// Bound objects stay alive, and released ones exist until the next flush: both would count as memory in use
/// when the next size is measured.
void UnbindAndFlush(ID3D11DeviceContext& context) {
    context.ClearState();
    context.Flush();
}

std::optional<double> SampleWarpFrames(ID3D11DeviceContext& context, WarpFrames& frames) {
    for (int frame = 0; frame < kWarmUpFrames; ++frame) {
        frames.Draw();
    }
    context.Flush();
    return SampleFrameTime([&frames](int count) { return frames.Time(count); });
}

/// All of TimeStereoWarp except unbinding what it leaves bound.
WarpTiming TimeInOwnResources(ID3D11Device& device, ID3D11DeviceContext& context, IDXGIAdapter1* adapter,
                              const StereoWarpShader& shader, std::int32_t width, std::int32_t height,
                              const FrameView& frame, LongWait* long_wait) {
    WarpTiming timing;
    timing.width = width;
    timing.height = height;

    WarpResources resources;
    const std::uint64_t before = SettledVideoMemory(device, context, adapter);
    timing.failure = CreateWarpTextures(device, frame, width, height, resources);
    if (timing.failure) {
        return timing;
    }
    timing.vram_mb = VideoMemoryTakenMb(before, UsedVideoMemory(adapter));

    timing.failure = CreateWarpStates(device, width, height, resources);
    if (timing.failure) {
        return timing;
    }
    timing.depth_map_failure = DrawDepthMap(device, context, resources);
    WarpFrames frames(device, context, resources, shader, long_wait);
    const std::optional<double> frame_ms = SampleWarpFrames(context, frames);
    if (!frame_ms) {
        timing.failure = WarpFailure{WarpStop::NoUsableTime, {}};
        return timing;
    }
    timing.gpu_ms = *frame_ms;
    timing.ok = true;
    return timing;
}

void WarmUpInOwnResources(ID3D11Device& device, ID3D11DeviceContext& context, const StereoWarpShader& shader,
                          std::int32_t width, std::int32_t height, const FrameView& frame,
                          LongWait* long_wait) {
    WarpResources resources;
    if (CreateWarpTextures(device, frame, width, height, resources) ||
        CreateWarpStates(device, width, height, resources)) {
        return;  // The timing of this size will fail in the same way and report it.
    }
    DrawDepthMap(device, context, resources);
    WarpFrames frames(device, context, resources, shader, long_wait);
    const Stopwatch stopwatch;
    WarmUpSteps steps;
    steps.draw = [&frames](int count) -> std::optional<double> {
        const int drawn = frames.Drawn();
        const double frame_ms = frames.Time(count);
        return frames.Drawn() == drawn ? std::nullopt : std::optional(frame_ms);
    };
    steps.now = [&stopwatch] { return stopwatch.Seconds() * 1000.0; };
    WarmUpGpu(steps);
}

}  // namespace

void WarmUpWarp(ID3D11Device* device, ID3D11DeviceContext* context, const StereoWarpShader& shader,
                std::int32_t width, std::int32_t height, const FrameView& frame, LongWait* long_wait) {
    WarmUpInOwnResources(*device, *context, shader, width, height, frame, long_wait);
    UnbindAndFlush(*context);
}

WarpTiming TimeStereoWarp(ID3D11Device* device, ID3D11DeviceContext* context, IDXGIAdapter1* adapter,
                          const StereoWarpShader& shader, std::int32_t width, std::int32_t height,
                          const FrameView& frame, LongWait* long_wait) {
    WarpTiming timing =
        TimeInOwnResources(*device, *context, adapter, shader, width, height, frame, long_wait);
    UnbindAndFlush(*context);
    return timing;
}
