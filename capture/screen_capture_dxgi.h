// Captures one monitor with desktop duplication.
#pragma once

#include <d3d11.h>
#include <dxgi1_2.h>
#include <wrl/client.h>

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

#include "capture/capture_pacing.h"
#include "capture/display_device.h"
#include "capture/frame_picture.h"
#include "capture/output_enumeration.h"

/// Hands each new image of a monitor to the caller as a texture on the caller's own device, even when another
/// GPU drives the monitor. Duplication that is lost (a mode change, a UAC prompt, the lock screen) is
/// recreated in GetFrame; the caller notices only that the picture does not change meanwhile.
///
/// Every operation may be called from any thread. The immediate context of the caller's device is used inside
/// Initialize, GetFrame and Shutdown; the caller must make sure that no other thread uses it during these
/// calls. Messages go to the standard error stream.
class ScreenCaptureDxgi {
  public:
    ScreenCaptureDxgi() = default;
    ~ScreenCaptureDxgi();
    ScreenCaptureDxgi(const ScreenCaptureDxgi&) = delete;
    ScreenCaptureDxgi& operator=(const ScreenCaptureDxgi&) = delete;

    /// Starts to capture the monitor with the device name `source_name` (UTF-8, such as \\.\DISPLAY2). When
    /// that is empty, it captures the first monitor of the GPU of `device`, or else the first one of any GPU.
    /// False on failure; LastError() then says why.
    bool Initialize(ID3D11Device* device, std::string_view source_name);

    /// The latest image, null before the first one. Waits only while there is no image yet: the first ten
    /// calls then wait up to 250 ms each. The view stays usable for as long as the caller holds it.
    Microsoft::WRL::ComPtr<ID3D11ShaderResourceView> GetFrame();

    /// Whether the last GetFrame got a new image.
    bool IsNewFrame() const;

    /// How old the last new image was when it arrived, in milliseconds.
    float LastFrameAgeMs() const;

    /// The performance counter when the last new image was presented; 0 when it came from a move of the
    /// pointer, not from a present.
    std::int64_t LastPresentTime() const;

    /// What the picture behind GetFrame's view shows.
    PictureContent Content() const;

    /// Whether the monitor is connected to another GPU than the caller's device's, and the names of both
    /// GPUs.
    bool IsCrossAdapter() const;
    std::string DisplayGpuName() const;
    std::string RenderGpuName() const;

    /// Why the last initialization failed, in words for the user.
    std::string LastError() const;

    /// Releases everything; Initialize may follow.
    void Shutdown();

  private:
    bool OpenDuplication();
    bool SelectOutput(AttachedOutputs::Interfaces& selected);
    bool ReadRenderAdapter(AdapterLuid& luid);
    bool PrepareDisplayDevice(const OutputRecord& record, IDXGIAdapter1* adapter,
                              const AdapterLuid& render_luid);
    bool EnsureDuplication();
    HRESULT ReadFrame();
    bool TakeFrame(ID3D11Texture2D* acquired);
    bool Fail(std::string reason);

    mutable std::recursive_mutex mutex_;
    Microsoft::WRL::ComPtr<ID3D11Device> render_device_;
    Microsoft::WRL::ComPtr<ID3D11DeviceContext> render_context_;
    DisplayDevice display_device_;
    Microsoft::WRL::ComPtr<IDXGIOutputDuplication> duplication_;
    FramePicture picture_;
    bool initialized_ = false;
    bool carry_failure_reported_ = false;  ///< once per object, even after another Initialize
    std::string display_gpu_name_;
    std::string render_gpu_name_;
    bool new_frame_ = false;
    float last_frame_age_ms_ = 0.0F;
    std::int64_t last_present_time_ = 0;
    std::string source_name_;
    std::int32_t output_left_ = 0;
    std::int32_t output_top_ = 0;
    FirstFrameWaits first_frame_waits_;
    RestoreClock restore_clock_;
    std::string last_error_;
};
