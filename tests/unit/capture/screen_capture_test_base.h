// What the tests of the screen capture share: a scripted machine, and the proof that nothing of it leaks.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "capture/screen_capture_dxgi.h"
#include "settings/diag_settings.h"
#include "tests/unit/support/fake_desktop.h"

class ScreenCaptureTestBase : public testing::Test {
  protected:
    using View = Microsoft::WRL::ComPtr<ID3D11ShaderResourceView>;

    void SetUp() override {
        ResetMachine();
        device_ = RenderDevice();
        ASSERT_NE(device_.Get(), nullptr);
        capture_ = std::make_unique<ScreenCaptureDxgi>();
    }

    void TearDown() override {
        capture_.reset();
        Machine().counter.reset();  // The test framework takes the time as well.
        EXPECT_EQ(Machine().frames_acquired, Machine().frames_released);
        EXPECT_THAT(Machine().misuses, testing::IsEmpty());
        EXPECT_EQ(LiveFakeObjects(), 0);
        device_.Reset();
        EXPECT_FALSE(DevicesAreStillReferenced());
        DiagSettings::Instance() = DiagSettings();
    }

    /// A laptop: the panel hangs on the first adapter, Vistrel renders on the second, which has no display.
    void UseHybridLaptop() {
        Machine().adapters = {{.name = L"Panel GPU",
                               .luid = {.LowPart = 20, .HighPart = 0},
                               .outputs = {{.name = L"\\\\.\\DISPLAY1"}}},
                              {.name = L"Fast GPU", .luid = {.LowPart = 10, .HighPart = 0}}};
        Machine().render_adapter = 1;
        UseRenderDevice();
    }

    void UseRenderDevice() {
        device_ = RenderDevice();
        ASSERT_NE(device_.Get(), nullptr);
    }

    bool Start(const char* source_name = "") { return capture_->Initialize(device_.Get(), source_name); }

    /// What the error stream gets while `action` runs.
    static std::string ErrorsOf(const std::function<void()>& action) {
        testing::internal::CaptureStderr();
        action();
        return testing::internal::GetCapturedStderr();
    }

    /// Why Initialize fails; also checks that the error stream says the same.
    std::string FailureOf(const char* source_name = "") {
        bool started = true;
        const std::string errors = ErrorsOf([&] { started = Start(source_name); });
        EXPECT_FALSE(started);
        EXPECT_EQ(errors, "[ScreenCaptureDxgi] " + capture_->LastError() + "\n");
        return capture_->LastError();
    }

    static void Push(const FakeFrame& frame) { Machine().frames.push_back(frame); }
    static void PushResult(HRESULT result) { Machine().frames.push_back({.result = result}); }

    Microsoft::WRL::ComPtr<ID3D11Device> device_;
    std::unique_ptr<ScreenCaptureDxgi> capture_;
};
