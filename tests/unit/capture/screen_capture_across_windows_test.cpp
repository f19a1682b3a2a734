// Copying the images of a display on one GPU to a device on another.
#include <atomic>
#include <thread>
#include <utility>

#include "tests/unit/capture/screen_capture_test_base.h"

using testing::ElementsAre;

namespace {

constexpr const char* kLost = "[ScreenCaptureDxgi] Access lost. Reinitializing...\n";
constexpr const char* kRestored = "[ScreenCaptureDxgi] Duplication restored.\n";
constexpr const char* kUnnamedCross =
    "[ScreenCaptureDxgi]  is driven by Panel GPU while Vistrel renders on Fast GPU; capturing on the "
    "display's "
    "GPU and carrying each frame across.\n";
constexpr const char* kNotCarried =
    "[ScreenCaptureDxgi] Could not carry the frame from Panel GPU to Fast GPU; the picture will stop "
    "updating.\n";

class ScreenCaptureAcross : public ScreenCaptureTestBase {
  protected:
    void SetUp() override {
        ScreenCaptureTestBase::SetUp();
        DiagSettings::Instance().capture_draw_cursor = false;
        UseHybridLaptop();
    }
    void StartAcross() {
        ErrorsOf([&] { ASSERT_TRUE(Start()); });
    }
};

TEST_F(ScreenCaptureAcross, TheSecondDeviceIsKeptOnTheSameGpuAndRebuiltOnAnother) {
    lab::Adapter third;
    third.name = u"Third GPU";
    third.luid_low = 30;
    lab::TheMachine().scenario.adapters.push_back(third);
    const auto lose = [&] {
        PushResult(DXGI_ERROR_ACCESS_LOST);
        return ErrorsOf([&] { capture_->GetFrame(); });
    };
    const auto move_display = [&](std::size_t to) { Output(0).adapter = to; };
    const auto expect_picture = [&](std::uint32_t seed) {
        Push({.seed = seed});
        EXPECT_EQ(PixelsOf(capture_->GetFrame().Get()), ScriptedPixels({.seed = seed}));
    };
    EXPECT_EQ(ErrorsOf([&] { ASSERT_TRUE(Start()); }), kUnnamedCross);
    expect_picture(1);
    EXPECT_EQ(lose(), std::string(kLost) + kRestored) << "the device is kept, and nothing said about it";
    EXPECT_THAT(Desktop().devices_made, ElementsAre("Panel GPU"));
    expect_picture(2);

    move_display(2);
    EXPECT_EQ(lose(), std::string(kLost) +
                          "[ScreenCaptureDxgi]  is driven by Third GPU while Vistrel renders on Fast GPU; "
                          "capturing on the display's GPU and carrying each frame across.\n" +
                          kRestored);
    EXPECT_THAT(Desktop().devices_made, ElementsAre("Panel GPU", "Third GPU"));
    EXPECT_EQ(capture_->DisplayGpuName(), "Third GPU");
    expect_picture(3);

    move_display(1);
    EXPECT_EQ(lose(), std::string(kLost) + kRestored);
    EXPECT_FALSE(capture_->IsCrossAdapter());
    EXPECT_EQ(capture_->DisplayGpuName(), "Fast GPU");
    expect_picture(4);

    move_display(2);
    lose();
    EXPECT_THAT(Desktop().devices_made, ElementsAre("Panel GPU", "Third GPU", "Third GPU"));
    EXPECT_TRUE(capture_->IsCrossAdapter());
    expect_picture(5);
}

TEST_F(ScreenCaptureAcross, ASecondDeviceThatCannotBeMadeIsTriedAgain) {
    StartAcross();
    Adapter(0).luid_low = 40;  // Another adapter drives the display now.
    Adapter(0).device_fails = DXGI_ERROR_DEVICE_REMOVED;
    PushResult(DXGI_ERROR_ACCESS_LOST);
    EXPECT_EQ(ErrorsOf([&] { capture_->GetFrame(); }), kLost);
    EXPECT_THAT(capture_->LastError(), testing::HasSubstr("(HRESULT 0x887A0005)"));
    Adapter(0).device_fails.reset();
    PassMilliseconds(500);
    EXPECT_THAT(ErrorsOf([&] { capture_->GetFrame(); }), testing::EndsWith(kRestored));
    Adapter(0).luid_low = 50;
    Adapter(0).device_fails = DXGI_ERROR_DEVICE_REMOVED;
    PushResult(DXGI_ERROR_ACCESS_LOST);
    ErrorsOf([&] { capture_->GetFrame(); });
    Adapter(0).luid_low = 40;  // Back to the one before, whose device is gone.
    Adapter(0).device_fails.reset();
    PassMilliseconds(500);
    EXPECT_THAT(ErrorsOf([&] { capture_->GetFrame(); }), testing::EndsWith(kRestored));
    EXPECT_EQ(Desktop().devices_made.size(), 5U);
}

TEST_F(ScreenCaptureAcross, EveryPixelArrives) {
    StartAcross();
    for (const UINT width : {1U, 7U, 64U, 257U}) {
        const ScriptedFrame frame = {.width = width, .height = 31, .seed = width};
        Push(frame);
        const View view = capture_->GetFrame();
        EXPECT_EQ(PixelsOf(view.Get()), ScriptedPixels(frame)) << width;
        Microsoft::WRL::ComPtr<ID3D11Device> owner;
        view->GetDevice(&owner);
        EXPECT_EQ(owner.Get(), device_.Get()) << "the picture lies on the caller's device";
    }
}

TEST_F(ScreenCaptureAcross, RowPitchMayExceedTheWidth) {
    StartAcross();
    Desktop().extra_row_pitch = 52;
    Push({.width = 33, .seed = 8});
    EXPECT_EQ(PixelsOf(capture_->GetFrame().Get()), ScriptedPixels({.width = 33, .seed = 8}));
}

TEST_F(ScreenCaptureAcross, AFrameThatCannotBeMappedIsReportedOnce) {
    StartAcross();
    Push({});
    const View view = capture_->GetFrame();
    Desktop().map_result = DXGI_ERROR_DEVICE_REMOVED;
    for (int call = 0; call < 3; ++call) {
        Push({.seed = 2});
        EXPECT_EQ(ErrorsOf([&] { EXPECT_EQ(capture_->GetFrame().Get(), view.Get()); }),
                  call == 0 ? kNotCarried : "");
        EXPECT_TRUE(capture_->IsNewFrame());
    }
    Desktop().map_result = S_OK;
    EXPECT_EQ(PixelsOf(view.Get()), ScriptedPixels({})) << "the image before";
    Push({.seed = 3});
    capture_->GetFrame();
    EXPECT_EQ(PixelsOf(view.Get()), ScriptedPixels({.seed = 3}));
    Desktop().map_result = E_FAIL;
    Push({});
    EXPECT_EQ(ErrorsOf([&] { capture_->GetFrame(); }), "") << "once for the object";
    capture_->Shutdown();
    StartAcross();
    Push({});
    EXPECT_EQ(ErrorsOf([&] { capture_->GetFrame(); }), "") << "started anew or not";
    Desktop().map_result = S_OK;
}

TEST_F(ScreenCaptureAcross, AMissingStagingTextureIsReported) {
    StartAcross();
    Desktop().staging_textures_fail = true;
    Push({});
    EXPECT_EQ(ErrorsOf([&] { capture_->GetFrame(); }), kNotCarried);
    Desktop().staging_textures_fail = false;
    Push({.seed = 2});
    EXPECT_EQ(PixelsOf(capture_->GetFrame().Get()), ScriptedPixels({.seed = 2}));
}

TEST_F(ScreenCaptureAcross, AMissingContextIsReported) {
    Desktop().second_devices_lack_context = true;
    StartAcross();
    for (int call = 0; call < 2; ++call) {
        Push({});
        EXPECT_EQ(ErrorsOf([&] { capture_->GetFrame(); }), call == 0 ? kNotCarried : "");
    }
}

TEST_F(ScreenCaptureAcross, TwoThreadsShareOneObject) {
    int turn = 0;
    // Called under the object's lock, by either thread.
    Desktop().next_frame = [&turn]() -> ScriptedFrame {
        ++turn;
        PassMilliseconds(50);
        Desktop().timeouts.clear();
        if (turn % 17 == 0) {
            return {.result = DXGI_ERROR_ACCESS_LOST};
        }
        if (turn % 3 == 0) {
            return {.result = DXGI_ERROR_WAIT_TIMEOUT};
        }
        return {.width = turn % 11 == 0 ? 40U : 64U, .seed = static_cast<std::uint32_t>(turn)};
    };
    constexpr int kViews = 300;
    std::atomic<int> views = 0;
    ErrorsOf([&] {
        ASSERT_TRUE(Start());
        const auto render = [&] {
            while (views < kViews) {
                const View view = capture_->GetFrame();
                // Held while the other thread lets go of the picture or replaces it.
                if (view && DescriptionOf(view.Get()).Height == 48) {
                    ++views;
                }
            }
        };
        std::thread first(render);
        std::thread second(render);
        for (int round = 0; views < kViews; ++round) {
            capture_->IsNewFrame();
            capture_->LastFrameAgeMs();
            capture_->LastError();
            capture_->DisplayGpuName();
            if (round % 1000 == 999) {
                capture_->Shutdown();
                EXPECT_TRUE(Start());
            }
            std::this_thread::yield();
        }
        first.join();
        second.join();
    });
    EXPECT_GT(Desktop().frames_acquired, kViews / 4);
}

}  // namespace
