// Are the warp's milliseconds true? The GPU's stamps against the wall clock of the very same batches, each
// finished before it begins and forced to finish at its end.
//
// Run it in an install folder, whose warp shader it draws with.
#include <d3d11.h>
#include <wrl/client.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/ratio.h"
#include "platform/stopwatch.h"
#include "render/stereo_warp_shader.h"
#include "tests/unit/support/scripted_com.h"
#include "tools/vistrel_diag/sections/warp/warp_timing.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr Closeness kCloseness = {0.01, 9, 27};

[[noreturn]] void GiveUp(const std::string& text) {
    std::fprintf(stderr, "warp_timing_bench: %s\n", text.c_str());
    std::exit(1);
}

/// Times the batches that are drawn between a Begin and the next End of a time-stamp clock. One at a time.
class BatchWatch {
  public:
    BatchWatch(ID3D11Device* device, ID3D11DeviceContext* context) : methods_(context) {
        current_ = this;
        const D3D11_QUERY_DESC event = {D3D11_QUERY_EVENT, 0};
        if (FAILED(device->CreateQuery(&event, &finished_))) {
            GiveUp("no event query");
        }
        draw_ = methods_.Replace(13, &Draw);
        begin_ = methods_.Replace(27, &Begin);
        end_ = methods_.Replace(28, &End);
    }
    ~BatchWatch() { current_ = nullptr; }
    BatchWatch(const BatchWatch&) = delete;
    BatchWatch& operator=(const BatchWatch&) = delete;

    /// Milliseconds of a frame, the middle one of the last three batches.
    double FrameMs() {
        if (batch_ms_.size() < 3) {
            GiveUp("fewer than three batches were timed");
        }
        std::sort(batch_ms_.end() - 3, batch_ms_.end());
        return batch_ms_[batch_ms_.size() - 2];
    }

  private:
    static bool IsClock(ID3D11Asynchronous* query) {
        D3D11_QUERY_DESC description = {};
        static_cast<ID3D11Query*>(query)->GetDesc(&description);
        return description.Query == D3D11_QUERY_TIMESTAMP_DISJOINT;
    }

    static void STDMETHODCALLTYPE Draw(ID3D11DeviceContext* context, UINT count, UINT first) {
        ++current_->eyes_;
        current_->draw_(context, count, first);
    }
    static void STDMETHODCALLTYPE Begin(ID3D11DeviceContext* context, ID3D11Asynchronous* query) {
        current_->Finish(context);
        current_->eyes_ = 0;
        current_->watch_ = Stopwatch();
        current_->begin_(context, query);
    }
    static void STDMETHODCALLTYPE End(ID3D11DeviceContext* context, ID3D11Asynchronous* query) {
        current_->end_(context, query);
        if (IsClock(query)) {
            current_->Finish(context);
            current_->batch_ms_.push_back(current_->watch_.Seconds() * 1000.0 * 2.0 / current_->eyes_);
        }
    }

    void Finish(ID3D11DeviceContext* context) {
        end_(context, finished_.Get());
        context->Flush();
        BOOL done = FALSE;
        while (context->GetData(finished_.Get(), &done, sizeof(done), 0) != S_OK) {
            Sleep(0);
        }
    }

    static inline BatchWatch* current_ = nullptr;
    ContextMethods methods_;
    decltype(&Draw) draw_ = nullptr;
    decltype(&Begin) begin_ = nullptr;
    decltype(&End) end_ = nullptr;
    ComPtr<ID3D11Query> finished_;
    Stopwatch watch_;
    int eyes_ = 0;
    std::vector<double> batch_ms_;
};

void Measure(ID3D11Device* device, ID3D11DeviceContext* context, const StereoWarpShader& shader, int width,
             int height) {
    const MiddleRatio middle = TakePairs(kCloseness, [&] {
        BatchWatch watch(device, context);
        const WarpTiming timing = TimeStereoWarp(device, context, nullptr, shader, width, height, {});
        if (!timing.ok) {
            GiveUp("the warp could not be timed");
        }
        std::printf("%dx%d: stamps %.3f ms, wall clock %.3f ms\n", width, height, timing.gpu_ms,
                    watch.FrameMs());
        return timing.gpu_ms / watch.FrameMs();
    });
    PrintRatio("warp " + std::to_string(width) + "x" + std::to_string(height) + ", GPU milliseconds",
               "wall clock, forced to finish", middle, {0.95, 1.05});
}

}  // namespace

int main() {
    ComPtr<ID3D11Device> device;
    ComPtr<ID3D11DeviceContext> context;
    if (FAILED(D3D11CreateDevice(nullptr, D3D_DRIVER_TYPE_HARDWARE, nullptr, 0, nullptr, 0, D3D11_SDK_VERSION,
                                 &device, nullptr, &context))) {
        GiveUp("no Direct3D 11 device");
    }
    StereoWarpShader shader;
    if (!shader.Load(device.Get())) {
        GiveUp(shader.LastError());
    }
    Measure(device.Get(), context.Get(), shader, 960, 540);
    Measure(device.Get(), context.Get(), shader, 1280, 720);
    return 0;
}
