#include "tools/vistrel_diag/sections/warp/warp_timing.h"

#include <d3d11.h>

#include <optional>

#include "platform/video_memory.h"
#include "settings/diag_settings.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/warp/d3d11_timestamp_queries.h"
#include "tools/vistrel_diag/sections/warp/frame_sampling.h"
#include "tools/vistrel_diag/sections/warp/warp_frame.h"
#include "tools/vistrel_diag/sections/warp/warp_resources.h"

namespace {

constexpr int kWarmUpFrames = 4;

/// Bytes; 0 where they cannot be told.
std::uint64_t UsedVideoMemory(IDXGIAdapter1* adapter) {
    return QueryLocalVideoMemory(adapter).value_or(VideoMemoryUse{}).usage;
}

std::optional<double> SampleWarpFrames(ID3D11Device& device, ID3D11DeviceContext& context,
                                       const WarpResources& resources, const StereoWarpShader& shader) {
    const float screen_size = DiagSettings::Instance().ScreenMetres();
    const auto draw_frame = [&] { DrawWarpFrame(context, resources, shader, screen_size); };
    for (int frame = 0; frame < kWarmUpFrames; ++frame) {
        draw_frame();
    }
    context.Flush();
    return SampleFrameTime([&](int frames) {
        D3D11TimestampQueries queries(device, context);
        return GpuTimeFrames(queries, frames, draw_frame);
    });
}

WarpTiming TimeInOwnResources(ID3D11Device& device, ID3D11DeviceContext& context, IDXGIAdapter1* adapter,
                              const StereoWarpShader& shader, std::int32_t width, std::int32_t height,
                              const FrameView& frame) {
    WarpTiming timing;
    timing.width = width;
    timing.height = height;

    WarpResources resources;
    const std::uint64_t before = UsedVideoMemory(adapter);
    if (!CreateWarpTextures(device, frame, width, height, resources)) {
        return timing;
    }
    timing.vram_mb = VideoMemoryTakenMb(before, UsedVideoMemory(adapter));

    if (!CreateWarpStates(device, width, height, resources)) {
        return timing;
    }
    DrawDepthMap(device, context, resources);
    const std::optional<double> frame_ms = SampleWarpFrames(device, context, resources, shader);
    if (!frame_ms) {
        Report::Line("!! GPU timing produced nothing usable at %dx%d", width, height);
        return timing;
    }
    timing.gpu_ms = *frame_ms;
    timing.ok = true;
    return timing;
}

}  // namespace

WarpTiming TimeStereoWarp(ID3D11Device* device, ID3D11DeviceContext* context, IDXGIAdapter1* adapter,
                          const StereoWarpShader& shader, std::int32_t width, std::int32_t height,
                          const FrameView& frame) {
    const WarpTiming timing = TimeInOwnResources(*device, *context, adapter, shader, width, height, frame);
    // What is bound stays alive, and what is released lives on until the next flush: both would count as
    // memory in use when the next size is measured.
    context->ClearState();
    context->Flush();
    return timing;
}
