#include <d3d11.h>
#include <dxgi.h>

#include "platform/stopwatch.h"
#include "render/stereo_warp_shader.h"
#include "tools/vistrel_diag/report/console.h"
#include "tools/vistrel_diag/report/progress.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/warp/long_wait.h"
#include "tools/vistrel_diag/sections/warp/warp_section.h"

std::vector<WarpTiming> ReportWarpSection(ID3D11Device* device, ID3D11DeviceContext* context,
                                          IDXGIAdapter1* adapter, const CaptureMeasurement& capture) {
    Report::Section("STEREO WARP COST  (both eyes, one headset frame)");
    StereoWarpShader shader;
    if (!shader.Load(device)) {
        PrintWarpShaderFailure(shader.LastError());
        return {};
    }
    const FrameView frame = {capture.pixels, static_cast<std::int32_t>(capture.width),
                             static_cast<std::int32_t>(capture.height)};
    const std::vector<WarpSize> sizes = WarpSizes(SizeOfDesktop(capture, DisplayList()));
    const Stopwatch stopwatch;
    LongWait long_wait([&stopwatch] { return stopwatch.Seconds(); }, PrintWaitForGpu);
    // A GPU leaves its idle clocks only after some time under load. Without this the first row would be
    // measured at a lower clock than the others.
    Progress::Show("Warming up the GPU");
    WarmUpWarp(device, context, shader, sizes.front().width, sizes.front().height, frame, &long_wait);
    PrintWarpTableHeader();
    std::vector<WarpTiming> timings;
    int step = 0;
    for (const WarpSize& size : sizes) {
        ConsolePrint("  measuring %dx%d ...\r", size.width, size.height);
        FlushConsole();
        // On a real console this replaces the line.
        Progress::Show("Warp at size", ++step, static_cast<int>(sizes.size()),
                       FormatText("%dx%d", size.width, size.height));
        const WarpTiming timing =
            TimeStereoWarp(device, context, adapter, shader, size.width, size.height, frame, &long_wait);
        PrintWarpFailures(timing);
        ConsolePrint("%35s\r", "");
        if (timing.ok) {
            PrintWarpRow(size, timing);
            timings.push_back(timing);
        }
    }
    return timings;
}
