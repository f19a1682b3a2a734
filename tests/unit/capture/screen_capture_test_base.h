// Shared by the tests of the screen capture: a scripted desktop, and a check that nothing of it leaks.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "capture/screen_capture_dxgi.h"
#include "settings/diag_settings.h"
#include "tests/unit/support/scripted_desktop.h"

class ScreenCaptureTestBase : public testing::Test {
  protected:
    using View = Microsoft::WRL::ComPtr<ID3D11ShaderResourceView>;

    void SetUp() override {
        SetUpDesktop(kDesktopPc);
        UseRenderDevice(0);
        capture_ = std::make_unique<ScreenCaptureDxgi>();
    }

    void TearDown() override {
        capture_.reset();
        lab::StartClock(false);  // The test framework uses the clock as well.
        EXPECT_EQ(Desktop().frames_acquired, Desktop().frames_released);
        EXPECT_THAT(Desktop().misuses, testing::IsEmpty());
        EXPECT_EQ(lab::Counts().Violations(), 0) << lab::StatisticsText();
        EXPECT_EQ(LiveDxgiObjects(), 0);
        device_.Reset();
        EXPECT_FALSE(DevicesAreStillReferenced());
        DiagSettings::Instance() = DiagSettings();
    }

    static constexpr const char* kDesktopPc = R"(
adapter Fast GPU
  luid 00000001:0000000A
  output \\.\DISPLAY1
    size 64x48
)";

    /// A laptop: the panel is connected to the first adapter, Vistrel renders on the second, which has no
    /// display.
    void UseHybridLaptop() {
        UseMachine(R"(
adapter Panel GPU
  luid 00000000:00000014
  output \\.\DISPLAY1
    size 64x48
adapter Fast GPU
  luid 00000000:0000000A
)");
        UseRenderDevice(1);
    }

    /// Vistrel renders on the adapter at this position.
    void UseRenderDevice(std::size_t adapter) {
        device_ = RenderDevice(adapter);
        ASSERT_NE(device_.Get(), nullptr);
    }

    static lab::Adapter& Adapter(std::size_t position) {
        return lab::TheMachine().scenario.adapters.at(position);
    }
    static lab::OutputState& Output(std::size_t position) { return lab::TheMachine().outputs.at(position); }
    static void PassMilliseconds(std::int64_t milliseconds) { lab::PassTime(milliseconds * 1000); }

    bool Start(const char* source_name = "") { return capture_->Initialize(device_.Get(), source_name); }

    /// The error stream's output while `action` runs.
    static std::string ErrorsOf(const std::function<void()>& action) {
        testing::internal::CaptureStderr();
        action();
        return testing::internal::GetCapturedStderr();
    }

    /// The error of Initialize; also checks that the error stream has the same text.
    std::string FailureOf(const char* source_name = "") {
        bool started = true;
        const std::string errors = ErrorsOf([&] { started = Start(source_name); });
        EXPECT_FALSE(started);
        EXPECT_EQ(errors, "[ScreenCaptureDxgi] " + capture_->LastError() + "\n");
        return capture_->LastError();
    }

    static void Push(const ScriptedFrame& frame) { Desktop().frames.push_back(frame); }
    static void PushResult(HRESULT result) { Desktop().frames.push_back({.result = result}); }

    Microsoft::WRL::ComPtr<ID3D11Device> device_;
    std::unique_ptr<ScreenCaptureDxgi> capture_;
};
