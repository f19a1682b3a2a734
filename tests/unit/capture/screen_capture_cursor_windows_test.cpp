// The pointer on a captured image.
#include "tests/unit/capture/screen_capture_test_base.h"

using testing::IsEmpty;

namespace {

class ScreenCaptureCursor : public ScreenCaptureTestBase {
  protected:
    void SetUp() override {
        ScreenCaptureTestBase::SetUp();
        UseMachine(R"(
cursor at 1930,-90
adapter Fast GPU
  output A
  output B
    at 1920,-100
)");
    }

    static lab::Cursor& Cursor() { return lab::TheMachine().scenario.cursor; }
};

TEST_F(ScreenCaptureCursor, IsDrawnAtItsPositionOnTheMonitor) {
    ASSERT_TRUE(Start("B"));
    Push({});
    const View view = capture_->GetFrame();
    ASSERT_EQ(Desktop().drawn_icons.size(), 1U);
    const ScriptedDesktop::DrawnIcon& icon = Desktop().drawn_icons[0];
    EXPECT_EQ(icon.x, 10);
    EXPECT_EQ(icon.y, 10);
    EXPECT_EQ(icon.icon, LoadCursorW(nullptr, IDC_ARROW));
    EXPECT_EQ(icon.width, 0);
    EXPECT_EQ(icon.height, 0);
    EXPECT_EQ(icon.step, 0U);
    EXPECT_EQ(icon.brush, nullptr);
    EXPECT_EQ(icon.flags, 7U);
    const std::vector<std::uint8_t> plain = ScriptedPixels({});
    const std::vector<std::uint8_t> drawn = PixelsOf(view.Get());
    ASSERT_EQ(drawn.size(), plain.size());
    int changed = 0;
    for (std::size_t pixel = 0; pixel < plain.size() / 4; ++pixel) {
        if (!std::equal(&plain[pixel * 4], &plain[pixel * 4] + 3, &drawn[pixel * 4])) {
            ++changed;
            EXPECT_GE(pixel % 64, 10U);
            EXPECT_GE(pixel / 64, 10U);
        }
    }
    EXPECT_GT(changed, 20) << "an arrow is to be seen";
}

TEST_F(ScreenCaptureCursor, FallsOutsideThePictureOnAnotherMonitor) {
    ASSERT_TRUE(Start("A"));
    Push({});
    const View view = capture_->GetFrame();
    ASSERT_EQ(Desktop().drawn_icons.size(), 1U);
    EXPECT_EQ(Desktop().drawn_icons[0].x, 1930);
    EXPECT_EQ(Desktop().drawn_icons[0].y, -90);
    EXPECT_EQ(PixelsOf(view.Get()), ScriptedPixels({}));
}

TEST_F(ScreenCaptureCursor, IsDrawnOnEveryNewImage) {
    ASSERT_TRUE(Start("B"));
    for (int image = 0; image < 3; ++image) {
        Push({});
        capture_->GetFrame();
        Cursor().x += 100;
    }
    ASSERT_EQ(Desktop().drawn_icons.size(), 3U);
    EXPECT_EQ(Desktop().drawn_icons[2].x, 210);
}

TEST_F(ScreenCaptureCursor, IsDrawnOnlyAfterANewImage) {
    ASSERT_TRUE(Start("B"));
    capture_->GetFrame();
    Push({});
    capture_->GetFrame();
    capture_->GetFrame();
    EXPECT_EQ(Desktop().drawn_icons.size(), 1U);
}

TEST_F(ScreenCaptureCursor, IsDrawnOnlyWhenVisible) {
    ASSERT_TRUE(Start("B"));
    const auto expect_plain = [&](const char* why) {
        Push({});
        EXPECT_EQ(PixelsOf(capture_->GetFrame().Get()), ScriptedPixels({})) << why;
    };
    Cursor().showing = false;
    expect_plain("hidden");
    Cursor().suppressed = true;
    expect_plain("suppressed by touch");
    Cursor() = {.query_fails = true};
    expect_plain("no answer");
    Cursor() = {.null_handle = true};
    expect_plain("no shape");
    Cursor() = {};
    DiagSettings::Instance().capture_draw_cursor = false;
    expect_plain("not wanted");
    EXPECT_THAT(Desktop().drawn_icons, IsEmpty());
}

TEST_F(ScreenCaptureCursor, IsNotDrawnOnATextureWithoutGdiSupport) {
    ASSERT_TRUE(Start("B"));
    Push({.format = DXGI_FORMAT_R8G8B8A8_TYPELESS});
    EXPECT_EQ(PixelsOf(capture_->GetFrame().Get()), ScriptedPixels({}));
    EXPECT_THAT(Desktop().drawn_icons, IsEmpty());
}

TEST_F(ScreenCaptureCursor, IsDrawnOnAPictureCopiedAcrossGpus) {
    UseHybridLaptop();
    Cursor() = {.x = 1930, .y = -90};
    lab::TheMachine().scenario.displays[0].left = 1920;
    ErrorsOf([&] { ASSERT_TRUE(Start()); });
    Push({});
    capture_->GetFrame();
    ASSERT_EQ(Desktop().drawn_icons.size(), 1U);
    EXPECT_EQ(Desktop().drawn_icons[0].x, 10);
}

}  // namespace
