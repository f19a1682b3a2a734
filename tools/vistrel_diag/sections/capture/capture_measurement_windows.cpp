#include "tools/vistrel_diag/sections/capture/capture_measurement.h"

#include <d3d11.h>
#include <wrl/client.h>

#include <utility>

#include "capture/frame_description.h"
#include "capture/screen_capture_dxgi.h"
#include "platform/stopwatch.h"
#include "tools/vistrel_diag/report/progress.h"

using Microsoft::WRL::ComPtr;

namespace {

ComPtr<ID3D11Texture2D> TextureBehind(ID3D11ShaderResourceView* view) {
    ComPtr<ID3D11Resource> resource;
    view->GetResource(&resource);
    ComPtr<ID3D11Texture2D> texture;
    if (!resource || FAILED(resource.As(&texture))) {
        return nullptr;
    }
    return texture;
}

/// The pixels of `texture`; empty when they cannot be read or are not four bytes each.
std::vector<std::uint8_t> ReadBack(ID3D11Device* device, ID3D11DeviceContext* context,
                                   ID3D11Texture2D* texture, const D3D11_TEXTURE2D_DESC& description) {
    if (!HasFourByteChannels(description.Format)) {
        return {};
    }
    const D3D11_TEXTURE2D_DESC wanted = ReadBackDescription(description);
    ComPtr<ID3D11Texture2D> copy;
    if (FAILED(device->CreateTexture2D(&wanted, nullptr, &copy))) {
        return {};
    }
    context->CopyResource(copy.Get(), texture);
    D3D11_MAPPED_SUBRESOURCE mapped = {};
    if (FAILED(context->Map(copy.Get(), 0, D3D11_MAP_READ, 0, &mapped))) {
        return {};
    }
    std::vector<std::uint8_t> pixels =
        PackRows(mapped.pData, mapped.RowPitch, std::size_t{description.Width} * 4, description.Height);
    context->Unmap(copy.Get(), 0);
    return pixels;
}

/// Whether the capture's picture should be read back, given that the pixels read so far show `kept`. Windows
/// may deliver a black first image that no present produced; the first presented image replaces it.
bool IsBetter(PictureContent offered, PictureContent kept) {
    return offered != PictureContent::Nothing &&
           (kept == PictureContent::Nothing ||
            (kept == PictureContent::Unpresented && offered == PictureContent::Desktop));
}

/// Adds the result of one GetFrame call to the measurement. `kept` is what the measurement's pixels show.
void CountFrame(ID3D11Device* device, ID3D11DeviceContext* context, ScreenCaptureDxgi& capture,
                CaptureMeasurement& measurement, PictureContent& kept) {
    const ComPtr<ID3D11ShaderResourceView> view = capture.GetFrame();
    ++measurement.calls;
    if (!view) {
        return;
    }
    const bool is_new = capture.IsNewFrame();
    measurement.new_frames += is_new ? 1 : 0;
    const PictureContent offered = capture.Content();
    const bool wants_pixels = is_new && IsBetter(offered, kept);
    if (measurement.width != 0 && !wants_pixels) {
        return;
    }
    const ComPtr<ID3D11Texture2D> texture = TextureBehind(view.Get());
    if (!texture) {
        return;
    }
    D3D11_TEXTURE2D_DESC description = {};
    texture->GetDesc(&description);
    if (measurement.width == 0) {
        measurement.width = description.Width;
        measurement.height = description.Height;
    }
    // If the desktop has changed its size since the first image, there is no picture of the reported size.
    if (wants_pixels && description.Width == measurement.width && description.Height == measurement.height) {
        std::vector<std::uint8_t> pixels = ReadBack(device, context, texture.Get(), description);
        if (!pixels.empty()) {
            measurement.pixels = std::move(pixels);
            kept = offered;
        }
    }
}

}  // namespace

CaptureMeasurement MeasureCaptureRate(ID3D11Device* device, ID3D11DeviceContext* context, double seconds) {
    CaptureMeasurement measurement;
    ScreenCaptureDxgi capture;
    if (!capture.Initialize(device, "")) {
        measurement.error = capture.LastError();
        if (measurement.error.empty()) {
            measurement.error = "screen capture could not be started";
        }
        return measurement;
    }
    measurement.cross_adapter = capture.IsCrossAdapter();
    measurement.capture_gpu_name = capture.DisplayGpuName();

    PictureContent kept = PictureContent::Nothing;
    const Stopwatch stopwatch;
    while (measurement.seconds < seconds) {
        // Drawn once a second: an idle desktop counts it as a frame, like the blinking cursor.
        Progress::ShowSecondsLeft("Capturing the desktop", seconds - measurement.seconds, seconds);
        CountFrame(device, context, capture, measurement, kept);
        measurement.seconds = stopwatch.Seconds();
    }
    Progress::Clear();
    capture.Shutdown();

    measurement.ok = measurement.width >= 1;
    if (!measurement.ok) {
        measurement.error = "the capture started but never produced a frame";
    }
    return measurement;
}
