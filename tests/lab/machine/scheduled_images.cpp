#include "tests/lab/machine/scheduled_images.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include "tests/lab/machine/clock.h"
#include "tests/lab/machine/frame_schedule.h"
#include "tests/lab/machine/frame_textures.h"
#include "tests/lab/machine/machine.h"
#include "tests/lab/machine/statistics.h"

namespace lab {
namespace {

using Microsoft::WRL::ComPtr;

constexpr std::int64_t kMicrosecondsPerMillisecond = 1'000;
constexpr std::int64_t kCostOfAcquiring = 100;  // microseconds of scripted time

class ScheduledImages final : public ImageSource {
  public:
    ScheduledImages(std::size_t output, FrameTextures textures)
        : output_(output), textures_(std::move(textures)), began_(MachineTime()) {}
    ~ScheduledImages() override { SeeImages(Elapsed()); }

    DXGI_MODE_DESC Mode() const override {
        DXGI_MODE_DESC mode = {};
        mode.Width = textures_.Dimensions().width;
        mode.Height = textures_.Dimensions().height;
        mode.Format = textures_.Format();
        return mode;
    }

    FoundImage Next(UINT timeout) override {
        if (ClockIsScripted()) {
            PassTime(kCostOfAcquiring);
        }
        if (FailsNow()) {
            return {static_cast<HRESULT>(Script().acquiring->result)};
        }
        WaitForChange(timeout);
        if (LoseIfDue()) {
            return {DXGI_ERROR_ACCESS_LOST};
        }
        const std::int64_t fresh = SeeImages(Elapsed());
        const bool pointer_moved = SeePointerMoves(Elapsed());
        if (fresh == 0 && !pointer_moved) {
            return {DXGI_ERROR_WAIT_TIMEOUT};
        }
        return Deliver(fresh);
    }

  private:
    const Output& Script() const { return TheMachine().scenario.outputs[output_]; }
    OutputState& State() const { return TheMachine().outputs[output_]; }
    std::int64_t Elapsed() const { return MachineTime() - began_; }

    const Loss* NextLoss() const {
        const std::size_t passed = State().losses_passed;
        return passed < Script().losses.size() ? &Script().losses[passed] : nullptr;
    }

    /// Waits until there is something to return, but not beyond the program's timeout.
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

    /// Counts the images shown since the last call and returns their number.
    std::int64_t SeeImages(std::int64_t elapsed) {
        const std::int64_t fresh =
            lost_ ? 0 : std::max<std::int64_t>(ImagesShown(Script().frames, elapsed) - seen_, 0);
        seen_ += fresh;
        Counts().frames_shown += static_cast<long>(fresh);
        return fresh;
    }

    /// Whether the pointer has moved since the last call.
    bool SeePointerMoves(std::int64_t elapsed) {
        const std::int64_t moves = lost_ ? moves_seen_ : PointerMoves(Script().frames, elapsed);
        return std::exchange(moves_seen_, moves) < moves;
    }

    /// `fresh` images that have not been acquired yet; if there are none, only a pointer update.
    FoundImage Deliver(std::int64_t fresh) {
        const bool blank = Script().frames.first_blank && seen_ == 1;
        const bool pointer_only = fresh == 0 || blank;
        const ComPtr<ID3D11Texture2D> texture = pointer_only ? textures_.Current() : textures_.Next();
        FoundImage image;
        image.result = texture.As(&image.resource);
        if (FAILED(image.result)) {
            return image;
        }
        if (fresh == 0) {
            ++Counts().pointer_updates;
        } else {
            ++delivered_;
            ++Counts().frames_delivered;
            Counts().frames_merged += static_cast<long>(fresh - 1);
        }
        if (pointer_only) {
            image.info.LastMouseUpdateTime.QuadPart = CounterAt(MachineTime());
            return image;
        }
        image.info.AccumulatedFrames = static_cast<UINT>(fresh);
        image.info.LastPresentTime.QuadPart =
            CounterAt(began_ + ImageTime(Script().frames, seen_).value_or(0));
        return image;
    }

    std::size_t output_;
    FrameTextures textures_;
    std::int64_t began_;
    std::int64_t seen_ = 0;
    std::int64_t moves_seen_ = 0;
    std::int64_t delivered_ = 0;
    int failed_ = 0;
    bool lost_ = false;
};

}  // namespace

HRESULT MakeScheduledImages(std::size_t output, ID3D11Device* device, std::unique_ptr<ImageSource>& source) {
    FrameTextures textures;
    const HRESULT result = textures.Create(output, device);
    if (SUCCEEDED(result)) {
        source = std::make_unique<ScheduledImages>(output, std::move(textures));
    }
    return result;
}

}  // namespace lab
