#include <d3d11.h>
#include <dxgi.h>

#include "render/stereo_warp_shader.h"
#include "tools/vistrel_diag/report/console.h"
#include "tools/vistrel_diag/report/progress.h"
#include "tools/vistrel_diag/report/report.h"
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
    PrintWarpTableHeader();
    std::vector<WarpTiming> timings;
    const std::vector<WarpSize> sizes = WarpSizes(SizeOfDesktop(capture, DisplayList()));
    int step = 0;
    for (const WarpSize& size : sizes) {
        ConsolePrint("  measuring %dx%d ...\r", size.width, size.height);
        FlushConsole();
        // At a real console this takes the line's place.
        Progress::Show("Warp at size", ++step, static_cast<int>(sizes.size()),
                       FormatText("%dx%d", size.width, size.height));
        const WarpTiming timing =
            TimeStereoWarp(device, context, adapter, shader, size.width, size.height, frame);
        ConsolePrint("%35s\r", "");
        if (timing.ok) {
            PrintWarpRow(size, timing);
            timings.push_back(timing);
        }
    }
    return timings;
}
