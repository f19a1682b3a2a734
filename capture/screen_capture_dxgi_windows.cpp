#include "capture/screen_capture_dxgi.h"

#include <utility>

#include "capture/acquired_frame.h"
#include "capture/capture_messages.h"
#include "capture/cursor_painter.h"
#include "platform/stopwatch.h"
#include "platform/utf8.h"
#include "settings/diag_settings.h"

using Microsoft::WRL::ComPtr;

static_assert(DuplicationResult::kNotCurrentlyAvailable ==
              static_cast<std::uint32_t>(DXGI_ERROR_NOT_CURRENTLY_AVAILABLE));
static_assert(DuplicationResult::kAccessDenied == static_cast<std::uint32_t>(E_ACCESSDENIED));
static_assert(DuplicationResult::kUnsupported == static_cast<std::uint32_t>(DXGI_ERROR_UNSUPPORTED));

namespace {

std::string NameOr(std::string name, const char* when_empty) {
    return name.empty() ? when_empty : std::move(name);
}

}  // namespace

ScreenCaptureDxgi::~ScreenCaptureDxgi() {
    Shutdown();
}

bool ScreenCaptureDxgi::Initialize(ID3D11Device* device, std::string_view source_name) {
    const std::lock_guard lock(mutex_);
    initialized_ = false;
    duplication_.Reset();
    if (render_device_.Get() != device) {
        // Objects of an earlier device cannot be used with this one.
        picture_.Release();
        first_frame_waits_.Reset();
    }
    render_device_ = device;
    source_name_ = source_name;
    render_context_.Reset();
    if (device != nullptr) {
        device->GetImmediateContext(&render_context_);
    }
    if (!OpenDuplication()) {
        WriteCaptureMessage(last_error_);
        return false;
    }
    initialized_ = true;
    return true;
}

bool ScreenCaptureDxgi::OpenDuplication() {
    AttachedOutputs::Interfaces selected;
    if (!SelectOutput(selected)) {
        return false;
    }
    ComPtr<IDXGIOutput1> output;
    if (FAILED(selected.output.As(&output))) {
        return Fail(CaptureMessage::kNoOutput1);
    }
    duplication_.Reset();
    const HRESULT result = output->DuplicateOutput(display_device_.Device(), &duplication_);
    if (FAILED(result)) {
        duplication_.Reset();
        return Fail(DuplicationFailureMessage(static_cast<std::uint32_t>(result), display_gpu_name_));
    }
    return true;
}

bool ScreenCaptureDxgi::SelectOutput(AttachedOutputs::Interfaces& selected) {
    AdapterLuid render_luid;
    if (!ReadRenderAdapter(render_luid)) {
        return false;
    }
    ComPtr<IDXGIFactory1> factory;
    if (FAILED(CreateDXGIFactory1(IID_PPV_ARGS(&factory)))) {
        return Fail(CaptureMessage::kNoFactory);
    }
    const AttachedOutputs attached = EnumerateOutputs(factory.Get());
    const auto position = ChooseOutput(attached.records, render_luid, source_name_);
    if (!position) {
        return Fail(source_name_.empty()
                        ? CaptureMessage::kNoDisplay
                        : NotAttachedMessage(source_name_, JoinDeviceNames(attached.records)));
    }
    const OutputRecord& record = attached.records[*position];
    output_left_ = record.left;
    output_top_ = record.top;
    display_gpu_name_ = NameOr(record.adapter_name, kUnnamedDisplayGpu);
    selected = attached.interfaces[*position];
    return PrepareDisplayDevice(record, selected.adapter.Get(), render_luid);
}

bool ScreenCaptureDxgi::ReadRenderAdapter(AdapterLuid& luid) {
    ComPtr<IDXGIDevice> device;
    if (!render_device_ || FAILED(render_device_.As(&device))) {
        return Fail(CaptureMessage::kNoDxgiDevice);
    }
    ComPtr<IDXGIAdapter> adapter;
    DXGI_ADAPTER_DESC description = {};
    if (FAILED(device->GetAdapter(&adapter)) || FAILED(adapter->GetDesc(&description))) {
        return Fail(CaptureMessage::kNoDxgiAdapter);
    }
    render_gpu_name_ = NameOr(Utf8FromWideArray(description.Description), kUnnamedRenderGpu);
    luid = LuidOf(description.AdapterLuid);
    return true;
}

bool ScreenCaptureDxgi::PrepareDisplayDevice(const OutputRecord& record, IDXGIAdapter1* adapter,
                                             const AdapterLuid& render_luid) {
    if (record.adapter_luid == render_luid) {
        display_device_.ShareRenderDevice(render_device_.Get(), render_context_.Get(), render_luid);
        return true;
    }
    if (display_device_.IsSecondDeviceOn(record.adapter_luid)) {
        return true;
    }
    const HRESULT result = display_device_.CreateSecondDevice(adapter, record.adapter_luid);
    if (FAILED(result)) {
        return Fail(SecondDeviceFailureMessage(source_name_, display_gpu_name_, render_gpu_name_,
                                               static_cast<std::uint32_t>(result)));
    }
    WriteCaptureMessage(CrossAdapterMessage(source_name_, display_gpu_name_, render_gpu_name_));
    return true;
}

ComPtr<ID3D11ShaderResourceView> ScreenCaptureDxgi::GetFrame() {
    const std::lock_guard lock(mutex_);
    new_frame_ = false;
    if (EnsureDuplication() && ReadFrame() == DXGI_ERROR_ACCESS_LOST) {
        WriteCaptureMessage(CaptureMessage::kAccessLost);
        duplication_.Reset();
        restore_clock_.AllowAtOnce();
        EnsureDuplication();
    }
    return picture_.View();
}

HRESULT ScreenCaptureDxgi::ReadFrame() {
    AcquiredFrame frame(duplication_.Get());
    const HRESULT result = frame.Acquire(first_frame_waits_.NextTimeoutMs(picture_.Texture() != nullptr));
    if (FAILED(result)) {
        return result;
    }
    new_frame_ = true;
    last_present_time_ = frame.PresentTicks();
    if (last_present_time_ != 0) {
        last_frame_age_ms_ = FrameAgeMs(PerformanceTicks(), last_present_time_, PerformanceFrequency())
                                 .value_or(last_frame_age_ms_);
    }
    if (frame.Texture() != nullptr && TakeFrame(frame.Texture())) {
        picture_.NoteImage(last_present_time_ != 0);
    }
    if (picture_.Texture() != nullptr && DiagSettings::Instance().capture_draw_cursor) {
        DrawCursorOn(picture_.Texture(), output_left_, output_top_);
    }
    return result;
}

bool ScreenCaptureDxgi::EnsureDuplication() {
    if (duplication_) {
        return true;
    }
    if (!initialized_ || !render_device_ || !restore_clock_.AllowAttempt(GetTickCount64())) {
        return false;
    }
    if (!OpenDuplication()) {
        return false;
    }
    // The desktop may have a different size or format now.
    picture_.Release();
    display_device_.ReleaseStaging();
    first_frame_waits_.Reset();
    WriteCaptureMessage(CaptureMessage::kRestored);
    return true;
}

bool ScreenCaptureDxgi::TakeFrame(ID3D11Texture2D* acquired) {
    D3D11_TEXTURE2D_DESC description = {};
    acquired->GetDesc(&description);
    if (!picture_.Fit(render_device_.Get(), description)) {
        return false;
    }
    if (!display_device_.IsCrossAdapter()) {
        render_context_->CopyResource(picture_.Texture(), acquired);
        return true;
    }
    const bool carried = display_device_.Carry(acquired, render_context_.Get(), picture_.Texture());
    if (!carried && !std::exchange(carry_failure_reported_, true)) {
        WriteCaptureMessage(CarryFailureMessage(display_gpu_name_, render_gpu_name_));
    }
    return carried;
}

bool ScreenCaptureDxgi::Fail(std::string reason) {
    last_error_ = std::move(reason);
    return false;
}

bool ScreenCaptureDxgi::IsNewFrame() const {
    const std::lock_guard lock(mutex_);
    return new_frame_;
}

float ScreenCaptureDxgi::LastFrameAgeMs() const {
    const std::lock_guard lock(mutex_);
    return last_frame_age_ms_;
}

std::int64_t ScreenCaptureDxgi::LastPresentTime() const {
    const std::lock_guard lock(mutex_);
    return last_present_time_;
}

PictureContent ScreenCaptureDxgi::Content() const {
    const std::lock_guard lock(mutex_);
    return picture_.Content();
}

bool ScreenCaptureDxgi::IsCrossAdapter() const {
    const std::lock_guard lock(mutex_);
    return display_device_.IsCrossAdapter();
}

std::string ScreenCaptureDxgi::DisplayGpuName() const {
    const std::lock_guard lock(mutex_);
    return display_gpu_name_;
}

std::string ScreenCaptureDxgi::RenderGpuName() const {
    const std::lock_guard lock(mutex_);
    return render_gpu_name_;
}

std::string ScreenCaptureDxgi::LastError() const {
    const std::lock_guard lock(mutex_);
    return last_error_;
}

void ScreenCaptureDxgi::Shutdown() {
    const std::lock_guard lock(mutex_);
    if (duplication_) {
        // No frame is held between two GetFrame calls; ReleaseFrame then returns an error, which does no
        // harm.
        duplication_->ReleaseFrame();
    }
    picture_.Release();
    duplication_.Reset();
    display_device_.Release();
    render_context_.Reset();
    render_device_.Reset();
    display_gpu_name_.clear();
    render_gpu_name_.clear();
    new_frame_ = false;
    last_present_time_ = 0;
    first_frame_waits_.Reset();
    restore_clock_.AllowAtOnce();
    initialized_ = false;
}
