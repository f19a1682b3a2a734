// The images that the screen capture delivers: waits, losses, sizes, formats and ages.
#include "tests/unit/capture/screen_capture_test_base.h"

using testing::ElementsAre;

namespace {

class ScreenCaptureFrames : public ScreenCaptureTestBase {
  protected:
    /// Most tests are about what is delivered, not about the pointer.
    void SetUp() override {
        ScreenCaptureTestBase::SetUp();
        DiagSettings::Instance().capture_draw_cursor = false;
    }
};

constexpr const char* kLost = "[ScreenCaptureDxgi] Access lost. Reinitializing...\n";
constexpr const char* kRestored = "[ScreenCaptureDxgi] Duplication restored.\n";
TEST_F(ScreenCaptureFrames, DistinguishesNewImagesFromUnchangedOnes) {
    ASSERT_TRUE(Start());
    Push({.seed = 3});
    const View first = capture_->GetFrame();
    EXPECT_TRUE(capture_->IsNewFrame());
    EXPECT_EQ(PixelsOf(first.Get()), ScriptedPixels({.seed = 3}));
    EXPECT_EQ(capture_->GetFrame().Get(), first.Get()) << "nothing new: the image before stays";
    EXPECT_FALSE(capture_->IsNewFrame());
    Push({.seed = 4});
    EXPECT_EQ(capture_->GetFrame().Get(), first.Get()) << "the same texture with another picture";
    EXPECT_TRUE(capture_->IsNewFrame());
    EXPECT_EQ(PixelsOf(first.Get()), ScriptedPixels({.seed = 4}));
}

TEST_F(ScreenCaptureFrames, WaitsOnlyForTheFirstImage) {
    ASSERT_TRUE(Start());
    EXPECT_EQ(capture_->GetFrame().Get(), nullptr);
    Push({});
    capture_->GetFrame();
    capture_->GetFrame();
    EXPECT_THAT(Desktop().timeouts, ElementsAre(250, 250, 0));
}

TEST_F(ScreenCaptureFrames, WaitsTenTimesForADesktopWithoutAnImage) {
    ASSERT_TRUE(Start());
    for (int call = 0; call < 12; ++call) {
        EXPECT_EQ(capture_->GetFrame().Get(), nullptr);
    }
    EXPECT_THAT(Desktop().timeouts, ElementsAre(250, 250, 250, 250, 250, 250, 250, 250, 250, 250, 0, 0));
}

TEST_F(ScreenCaptureFrames, OtherAcquireErrorsChangeNothing) {
    ASSERT_TRUE(Start());
    Push({});
    const View view = capture_->GetFrame();
    PushResult(DXGI_ERROR_INVALID_CALL);
    PushResult(DXGI_ERROR_DEVICE_REMOVED);
    for (int call = 0; call < 2; ++call) {
        EXPECT_EQ(ErrorsOf([&] { EXPECT_EQ(capture_->GetFrame().Get(), view.Get()); }), "");
        EXPECT_FALSE(capture_->IsNewFrame());
    }
    EXPECT_EQ(DuplicatedOutputs().size(), 1U);
}

TEST_F(ScreenCaptureFrames, LossIsRestoredAtOnce) {
    ASSERT_TRUE(Start());
    Push({});
    const View before = capture_->GetFrame();
    PushResult(DXGI_ERROR_ACCESS_LOST);
    EXPECT_EQ(ErrorsOf([&] { capture_->GetFrame(); }), std::string(kLost) + kRestored);
    EXPECT_FALSE(capture_->IsNewFrame());
    EXPECT_EQ(DuplicatedOutputs().size(), 2U);
    EXPECT_EQ(capture_->GetFrame().Get(), nullptr) << "the picture is made anew from the first image";
    Push({.width = 32, .height = 20, .seed = 9});
    const View after = capture_->GetFrame();
    EXPECT_TRUE(capture_->IsNewFrame());
    EXPECT_EQ(PixelsOf(after.Get()), ScriptedPixels({.width = 32, .height = 20, .seed = 9}));
    EXPECT_EQ(PixelsOf(before.Get()), ScriptedPixels({})) << "a view that the caller holds stays usable";
}

TEST_F(ScreenCaptureFrames, RestoreIsTriedAtMostEvery500Milliseconds) {
    ASSERT_TRUE(Start());
    Push({});
    const View view = capture_->GetFrame();
    RefuseDuplication(0, E_ACCESSDENIED);
    PushResult(DXGI_ERROR_ACCESS_LOST);
    EXPECT_EQ(ErrorsOf([&] { EXPECT_EQ(capture_->GetFrame().Get(), view.Get()); }), kLost);
    EXPECT_EQ(DuplicatedOutputs().size(), 2U) << "once at once";
    EXPECT_EQ(
        capture_->LastError(),
        "Screen capture was denied. A UAC prompt or the lock screen owns the desktop right now; dismiss "
        "it and press Start again.");
    const auto duplications_after = [&](std::int64_t milliseconds) {
        PassMilliseconds(milliseconds);
        EXPECT_EQ(ErrorsOf([&] { EXPECT_EQ(capture_->GetFrame().Get(), view.Get()); }), "")
            << "silent while lost";
        EXPECT_FALSE(capture_->IsNewFrame());
        return DuplicatedOutputs().size();
    };
    EXPECT_EQ(duplications_after(0), 2U);
    EXPECT_EQ(duplications_after(499), 2U);
    EXPECT_EQ(duplications_after(1), 3U);
    EXPECT_EQ(duplications_after(499), 3U);
    EXPECT_EQ(duplications_after(1000), 4U);
    EXPECT_EQ(PixelsOf(view.Get()), ScriptedPixels({}));
    RefuseDuplication(0, S_OK);
    PassMilliseconds(500);
    Push({.seed = 7});
    EXPECT_EQ(ErrorsOf([&] { EXPECT_EQ(PixelsOf(capture_->GetFrame().Get()), ScriptedPixels({.seed = 7})); }),
              kRestored);
    EXPECT_TRUE(capture_->IsNewFrame());
}

TEST_F(ScreenCaptureFrames, ALossSoonAfterARestoreIsRestoredAtOnceToo) {
    ASSERT_TRUE(Start());
    for (int loss = 0; loss < 3; ++loss) {
        PushResult(DXGI_ERROR_ACCESS_LOST);
        EXPECT_EQ(ErrorsOf([&] { capture_->GetFrame(); }), std::string(kLost) + kRestored);
    }
    EXPECT_EQ(DuplicatedOutputs().size(), 4U);
}

TEST_F(ScreenCaptureFrames, EveryRestoreMayWaitForItsFirstImageAgain) {
    ASSERT_TRUE(Start());
    for (int call = 0; call < 11; ++call) {
        capture_->GetFrame();
    }
    PushResult(DXGI_ERROR_ACCESS_LOST);
    ErrorsOf([&] { capture_->GetFrame(); });
    Desktop().timeouts.clear();
    for (int call = 0; call < 11; ++call) {
        capture_->GetFrame();
    }
    EXPECT_THAT(Desktop().timeouts, ElementsAre(250, 250, 250, 250, 250, 250, 250, 250, 250, 250, 0));
}

TEST_F(ScreenCaptureFrames, EveryRestoreChoosesTheDisplayAgain) {
    UseMachine("adapter Fast GPU\n output A\n output B\n");
    ASSERT_TRUE(Start());
    Output(0).unplugged = true;
    PushResult(DXGI_ERROR_ACCESS_LOST);
    ErrorsOf([&] { capture_->GetFrame(); });
    EXPECT_THAT(DuplicatedOutputs(), ElementsAre("A", "B"));
}

TEST_F(ScreenCaptureFrames, TheSizeMayChangeWithoutALoss) {
    ASSERT_TRUE(Start());
    Push({});
    const View before = capture_->GetFrame();
    Push({.width = 64, .height = 50, .seed = 2});
    const View after = capture_->GetFrame();
    EXPECT_NE(after.Get(), before.Get());
    EXPECT_EQ(PixelsOf(after.Get()), ScriptedPixels({.width = 64, .height = 50, .seed = 2}));
    EXPECT_EQ(PixelsOf(before.Get()), ScriptedPixels({}));
    Push({.width = 60, .height = 50, .seed = 3});
    EXPECT_EQ(PixelsOf(capture_->GetFrame().Get()), ScriptedPixels({.width = 60, .height = 50, .seed = 3}));
}

TEST_F(ScreenCaptureFrames, AFormatChangeWithoutALossGivesNoPicture) {
    for (const bool cross : {false, true}) {
        if (cross) {
            UseHybridLaptop();
        }
        ErrorsOf([&] { ASSERT_TRUE(Start()); });
        Push({});
        ASSERT_NE(capture_->GetFrame().Get(), nullptr);
        Push({.format = DXGI_FORMAT_R16G16B16A16_FLOAT});
        EXPECT_EQ(capture_->GetFrame().Get(), nullptr) << cross;
        Push({.format = DXGI_FORMAT_B8G8R8A8_TYPELESS, .seed = 5});
        EXPECT_EQ(PixelsOf(capture_->GetFrame().Get()), ScriptedPixels({.seed = 5})) << cross;
        capture_->Shutdown();
    }
}

struct FormatCase {
    DXGI_FORMAT delivered;
    DXGI_FORMAT picture;  ///< DXGI_FORMAT_UNKNOWN: none
    bool gdi;
};

class ScreenCaptureFormats : public ScreenCaptureFrames, public testing::WithParamInterface<FormatCase> {};

TEST_P(ScreenCaptureFormats, AreCapturedOnTheSameGpuAndAcrossGpus) {
    DiagSettings::Instance().capture_draw_cursor = true;
    for (const bool cross : {false, true}) {
        if (cross) {
            UseHybridLaptop();
        }
        ErrorsOf([&] { ASSERT_TRUE(Start()); });
        const ScriptedFrame frame = {.format = GetParam().delivered, .seed = 6};
        for (int call = 0; call < 2; ++call) {
            Push(frame);
            View view;
            EXPECT_EQ(ErrorsOf([&] { view = capture_->GetFrame(); }), "");
            EXPECT_TRUE(capture_->IsNewFrame());
            if (GetParam().picture == DXGI_FORMAT_UNKNOWN) {
                EXPECT_EQ(view.Get(), nullptr);
                continue;
            }
            ASSERT_NE(view.Get(), nullptr);
            const D3D11_TEXTURE2D_DESC description = DescriptionOf(view.Get());
            EXPECT_EQ(description.Format, GetParam().picture);
            EXPECT_EQ(description.MiscFlags, GetParam().gdi ? UINT{D3D11_RESOURCE_MISC_GDI_COMPATIBLE} : 0U);
            EXPECT_EQ(description.Usage, D3D11_USAGE_DEFAULT);
            EXPECT_EQ(description.BindFlags, UINT{D3D11_BIND_SHADER_RESOURCE | D3D11_BIND_RENDER_TARGET});
            EXPECT_EQ(description.CPUAccessFlags, 0U);
            EXPECT_EQ(PixelsOf(view.Get()), ScriptedPixels(frame));
        }
        EXPECT_EQ(Desktop().frames_released, 2 * (cross ? 2 : 1));
        capture_->Shutdown();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Desktops, ScreenCaptureFormats,
    testing::Values(FormatCase{DXGI_FORMAT_B8G8R8A8_UNORM, DXGI_FORMAT_B8G8R8A8_UNORM, true},
                    FormatCase{DXGI_FORMAT_B8G8R8A8_TYPELESS, DXGI_FORMAT_B8G8R8A8_UNORM, true},
                    FormatCase{DXGI_FORMAT_R8G8B8A8_TYPELESS, DXGI_FORMAT_R8G8B8A8_UNORM, false},
                    // Direct3D creates no texture in these formats that GDI could draw on, so there is no
                    // picture.
                    FormatCase{DXGI_FORMAT_R8G8B8A8_UNORM, DXGI_FORMAT_UNKNOWN, false},
                    FormatCase{DXGI_FORMAT_R16G16B16A16_FLOAT, DXGI_FORMAT_UNKNOWN, false}));

TEST_F(ScreenCaptureFrames, AResourceThatIsNotATextureIsIgnored) {
    ASSERT_TRUE(Start());
    Push({.has_texture = false});
    EXPECT_EQ(capture_->GetFrame().Get(), nullptr);
    EXPECT_TRUE(capture_->IsNewFrame());
    EXPECT_EQ(Desktop().frames_released, 1);
    Push({});
    Push({.has_texture = false});
    const View view = capture_->GetFrame();
    EXPECT_EQ(capture_->GetFrame().Get(), view.Get());
    EXPECT_EQ(PixelsOf(view.Get()), ScriptedPixels({}));
}

TEST_F(ScreenCaptureFrames, AViewThatCannotBeCreatedIsRetried) {
    ASSERT_TRUE(Start());
    Desktop().shader_views_fail = true;
    Push({});
    EXPECT_EQ(capture_->GetFrame().Get(), nullptr);
    Desktop().shader_views_fail = false;
    Push({.seed = 2});
    EXPECT_EQ(PixelsOf(capture_->GetFrame().Get()), ScriptedPixels({.seed = 2}));
}

TEST_F(ScreenCaptureFrames, ReportsTheAgeOfAnImage) {
    ASSERT_TRUE(Start());
    PassMilliseconds(90'000);
    const std::int64_t now = lab::CounterAt(lab::MachineTime());
    const std::int64_t millisecond = now - lab::CounterAt(lab::MachineTime() - 1000);
    const auto age_of = [&](std::int64_t present_ticks) {
        Push({.present_ticks = present_ticks});
        capture_->GetFrame();
        return capture_->LastFrameAgeMs();
    };
    EXPECT_EQ(age_of(0), 0.0F);
    EXPECT_EQ(age_of(now - 12 * millisecond), 12.0F);
    EXPECT_EQ(age_of(0), 12.0F) << "only the pointer moved";
    EXPECT_EQ(age_of(now + 1), 12.0F) << "presented in the future";
    EXPECT_EQ(age_of(now - 1000 * millisecond), 12.0F) << "too old to be true";
    EXPECT_EQ(age_of(now - 999 * millisecond), 999.0F);
    EXPECT_EQ(age_of(now), 0.0F);
}

TEST_F(ScreenCaptureFrames, ReportsTheLastPresentTimeAndThePicturesContent) {
    ASSERT_TRUE(Start());
    EXPECT_EQ(capture_->Content(), PictureContent::Nothing);
    Push({.seed = 1});
    capture_->GetFrame();
    EXPECT_EQ(capture_->LastPresentTime(), 0);
    EXPECT_EQ(capture_->Content(), PictureContent::Unpresented);
    Push({.seed = 2, .present_ticks = 77});
    capture_->GetFrame();
    EXPECT_EQ(capture_->LastPresentTime(), 77);
    EXPECT_EQ(capture_->Content(), PictureContent::Desktop);
    PushResult(DXGI_ERROR_WAIT_TIMEOUT);
    capture_->GetFrame();
    EXPECT_EQ(capture_->LastPresentTime(), 77) << "of the last new image";
    Push({.seed = 2});
    capture_->GetFrame();
    EXPECT_EQ(capture_->LastPresentTime(), 0) << "the pointer moved";
    EXPECT_EQ(capture_->Content(), PictureContent::Desktop);
    Push({.width = 32, .height = 16, .seed = 3});
    capture_->GetFrame();
    EXPECT_EQ(capture_->Content(), PictureContent::Unpresented) << "of a new size nothing has been presented";
    Push({.present_ticks = 99, .has_texture = false});
    capture_->GetFrame();
    EXPECT_EQ(capture_->Content(), PictureContent::Unpresented);
    capture_->Shutdown();
    EXPECT_EQ(capture_->LastPresentTime(), 0);
    EXPECT_EQ(capture_->Content(), PictureContent::Nothing);
}

}  // namespace
