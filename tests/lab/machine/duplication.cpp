#include "tests/lab/machine/duplication.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include "tests/lab/machine/clock.h"
#include "tests/lab/machine/devices.h"
#include "tests/lab/machine/frame_guard.h"
#include "tests/lab/machine/frame_schedule.h"
#include "tests/lab/machine/frame_textures.h"
#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/simulated_object.h"
#include "tests/lab/machine/statistics.h"

namespace lab {
namespace {

using Microsoft::WRL::ComPtr;

constexpr std::int64_t kMicrosecondsPerMillisecond = 1'000;
constexpr std::int64_t kCostOfAcquiring = 100;  // microseconds of scripted time

class SimulatedDuplication final : public SimulatedDxgiObject<IDXGIOutputDuplication> {
  public:
    SimulatedDuplication(std::size_t output, FrameTextures textures)
        : SimulatedDxgiObject(Counts().live_duplications),
          output_(output),
          textures_(std::move(textures)),
          began_(MachineTime()) {
        State().duplicated = true;
        ++Counts().made_duplications;
    }
    ~SimulatedDuplication() override {
        State().duplicated = false;
        SeeImages(Elapsed());
        if (held_) {
            ++Counts().frames_never_released;
        }
    }

    void STDMETHODCALLTYPE GetDesc(DXGI_OUTDUPL_DESC* description) override {
        *description = {};
        description->ModeDesc.Width = textures_.Dimensions().width;
        description->ModeDesc.Height = textures_.Dimensions().height;
        description->ModeDesc.Format = textures_.Format();
        description->Rotation = DXGI_MODE_ROTATION_IDENTITY;
    }

    HRESULT STDMETHODCALLTYPE AcquireNextFrame(UINT timeout, DXGI_OUTDUPL_FRAME_INFO* info,
                                               IDXGIResource** resource) override {
        InjectFailure("AcquireNextFrame");
        ++Counts().acquire_calls;
        if (info == nullptr || resource == nullptr) {
            return E_INVALIDARG;
        }
        *resource = nullptr;
        if (held_) {
            ++Counts().acquires_without_release;
            return DXGI_ERROR_INVALID_CALL;
        }
        if (ClockIsScripted()) {
            PassTime(kCostOfAcquiring);
        }
        if (FailsNow()) {
            return static_cast<HRESULT>(Script().acquiring->result);
        }
        WaitForChange(timeout);
        if (LoseIfDue()) {
            return DXGI_ERROR_ACCESS_LOST;
        }
        const std::int64_t fresh = SeeImages(Elapsed());
        const bool pointer_moved = SeePointerMoves(Elapsed());
        if (fresh == 0 && !pointer_moved) {
            ++Counts().acquire_timeouts;
            return DXGI_ERROR_WAIT_TIMEOUT;
        }
        return Deliver(fresh, info, resource);
    }

    HRESULT STDMETHODCALLTYPE ReleaseFrame() override {
        if (!held_) {
            ++Counts().releases_without_frame;
            return DXGI_ERROR_INVALID_CALL;
        }
        ++Counts().releases;
        MarkFrame(held_.Get(), false);
        held_.Reset();
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE GetFrameDirtyRects(UINT, RECT*, UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetFrameMoveRects(UINT, DXGI_OUTDUPL_MOVE_RECT*, UINT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetFramePointerShape(UINT, void*, UINT*,
                                                   DXGI_OUTDUPL_POINTER_SHAPE_INFO*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE MapDesktopSurface(DXGI_MAPPED_RECT*) override { return DXGI_ERROR_UNSUPPORTED; }
    HRESULT STDMETHODCALLTYPE UnMapDesktopSurface() override { return DXGI_ERROR_INVALID_CALL; }

  private:
    const Output& Script() const { return TheMachine().scenario.outputs[output_]; }
    OutputState& State() const { return TheMachine().outputs[output_]; }
    std::int64_t Elapsed() const { return MachineTime() - began_; }

    const Loss* NextLoss() const {
        const std::size_t passed = State().losses_passed;
        return passed < Script().losses.size() ? &Script().losses[passed] : nullptr;
    }

    /// Waits until there is something to answer, at most as long as the program is willing to.
    void WaitForChange(UINT timeout) const {
        constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();
        const std::int64_t deadline = Elapsed() + timeout * kMicrosecondsPerMillisecond;
        std::int64_t change = ImageTime(Script().frames, seen_ + 1).value_or(kNever);
        change = std::min(change, PointerMoveTime(Script().frames, moves_seen_ + 1).value_or(kNever));
        if (const Loss* const loss = NextLoss(); loss != nullptr && loss->after_milliseconds) {
            change = std::min(change, *loss->after_milliseconds * kMicrosecondsPerMillisecond);
        }
        if (lost_ || (NextLoss() != nullptr && LossIsDue(*NextLoss(), delivered_, Elapsed()))) {
            return;
        }
        PassTime(std::min(change, deadline) - Elapsed());
    }

    bool FailsNow() {
        const std::optional<Refusal>& failure = Script().acquiring;
        const bool fails = failure && StillRefuses(*failure, failed_, Elapsed());
        failed_ += fails ? 1 : 0;
        return fails;
    }

    bool LoseIfDue() {
        const Loss* const loss = NextLoss();
        if (!lost_ && loss != nullptr && LossIsDue(*loss, delivered_, Elapsed())) {
            ApplyLoss(State(), *loss);
            ++Counts().access_losses;
            lost_ = true;
        }
        return lost_;
    }

    /// Counts the images shown since the last look at them, and says how many these are.
    std::int64_t SeeImages(std::int64_t elapsed) {
        const std::int64_t fresh =
            lost_ ? 0 : std::max<std::int64_t>(ImagesShown(Script().frames, elapsed) - seen_, 0);
        seen_ += fresh;
        Counts().frames_shown += static_cast<long>(fresh);
        return fresh;
    }

    /// Whether the pointer has moved since the last look.
    bool SeePointerMoves(std::int64_t elapsed) {
        const std::int64_t moves = lost_ ? moves_seen_ : PointerMoves(Script().frames, elapsed);
        return std::exchange(moves_seen_, moves) < moves;
    }

    /// `fresh` images that nobody has acquired yet; with none of them, an update of the pointer alone.
    HRESULT Deliver(std::int64_t fresh, DXGI_OUTDUPL_FRAME_INFO* info, IDXGIResource** resource) {
        const bool blank = Script().frames.first_blank && seen_ == 1;
        const bool pointer_only = fresh == 0 || blank;
        const ComPtr<ID3D11Texture2D> texture = pointer_only ? textures_.Current() : textures_.Next();
        const HRESULT result =
            texture->QueryInterface(__uuidof(IDXGIResource), reinterpret_cast<void**>(resource));
        if (FAILED(result)) {
            return result;
        }
        MarkFrame(texture.Get(), true);
        held_ = texture;
        *info = {};
        if (fresh == 0) {
            ++Counts().pointer_updates;
        } else {
            ++delivered_;
            ++Counts().frames_delivered;
            Counts().frames_merged += static_cast<long>(fresh - 1);
        }
        if (pointer_only) {
            info->LastMouseUpdateTime.QuadPart = CounterAt(MachineTime());
            return S_OK;
        }
        info->AccumulatedFrames = static_cast<UINT>(fresh);
        info->LastPresentTime.QuadPart = CounterAt(began_ + ImageTime(Script().frames, seen_).value_or(0));
        return S_OK;
    }

    std::size_t output_;
    FrameTextures textures_;
    std::int64_t began_;
    std::int64_t seen_ = 0;
    std::int64_t moves_seen_ = 0;
    std::int64_t delivered_ = 0;
    int failed_ = 0;
    bool lost_ = false;
    ComPtr<ID3D11Texture2D> held_;
};

}  // namespace

HRESULT DuplicateDesktop(std::size_t output, IUnknown* device, IDXGIOutputDuplication** duplication) {
    if (device == nullptr || duplication == nullptr) {
        return E_INVALIDARG;
    }
    *duplication = nullptr;
    OutputState& state = TheMachine().outputs[output];
    if (DeviceAdapterPosition(device) != state.adapter) {
        ++Counts().duplications_refused;
        return E_INVALIDARG;
    }
    if (const std::optional<ResultCode> refusal = RefuseNow(state)) {
        ++Counts().duplications_refused;
        return static_cast<HRESULT>(*refusal);
    }
    if (state.duplicated) {
        ++Counts().duplications_refused;
        return E_INVALIDARG;
    }
    ComPtr<ID3D11Device> d3d_device;
    HRESULT result = device->QueryInterface(IID_PPV_ARGS(&d3d_device));
    FrameTextures textures;
    if (SUCCEEDED(result)) {
        result = textures.Create(output, d3d_device.Get());
    }
    if (SUCCEEDED(result)) {
        *duplication = new SimulatedDuplication(output, std::move(textures));
    }
    return result;
}

}  // namespace lab
