#include "tools/vistrel_diag/openxr/openxr_loader.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "tests/lab/openxr/openxr_lab.h"
#include "tools/vistrel_diag/sections/hand_tracking/hand_tracking_section.h"
#include "tools/vistrel_diag/sections/headset/headset_query.h"

namespace {

std::wstring LoaderDebug() {
    std::array<wchar_t, 64> value = {};
    return {value.data(),
            GetEnvironmentVariableW(L"XR_LOADER_DEBUG", value.data(), static_cast<DWORD>(value.size()))};
}

bool Loaded() {
    return GetModuleHandleW(L"openxr_loader.dll") != nullptr;
}

TEST(OpenXrLoader, SwitchesDiagnosticsOffForTheRestOfTheProcess) {
    const OpenXrLab lab(LabLoader::None);
    ASSERT_EQ(LoaderDebug(), L"");
    { const OpenXrLoader loader; }
    EXPECT_EQ(LoaderDebug(), L"none");
}

TEST(OpenXrLoader, OverridesWhatTheUserSet) {
    const OpenXrLab lab(LabLoader::None);
    SetEnvironmentVariableW(L"XR_LOADER_DEBUG", L"all");
    const OpenXrLoader loader;
    EXPECT_FALSE(loader);
    EXPECT_EQ(LoaderDebug(), L"none");
}

TEST(OpenXrLoader, UnloadsWithTheObjectUnlessKeptLoaded) {
    const OpenXrLab lab(LabLoader::Genuine);
    for (int i = 0; i < 3; ++i) {
        {
            const OpenXrLoader loader;
            EXPECT_TRUE(loader);
            EXPECT_NE(loader.EntryPoint<PFN_xrCreateInstance>("xrCreateInstance"), nullptr);
            EXPECT_EQ(loader.EntryPoint<PFN_xrCreateInstance>("xrNoSuchFunction"), nullptr);
            EXPECT_TRUE(Loaded());
        }
        EXPECT_FALSE(Loaded());
    }
    {
        OpenXrLoader loader;
        loader.StayLoaded();
    }
    EXPECT_TRUE(Loaded());
}

TEST(OpenXrLoader, CanBeLoadedAgainAfterUnloading) {
    for (int i = 0; i < 10; ++i) {
        const OpenXrLab lab(i % 3 == 1 ? LabLoader::StandIn : LabLoader::Genuine);
        lab.SetScript("view 100 200");
        EXPECT_EQ(QueryOpenXrHeadset().eye_width, 100U);
        if (i % 2 == 0) {
            OpenXrLab::UnloadLoader();
            EXPECT_FALSE(Loaded());
        }
        EXPECT_EQ(QueryOpenXrHeadset().eye_height, 200U);
    }
}

/// The console output of a query that finds no runtime, about which the loader prints a lot.
std::string Printed(const wchar_t* loader_debug) {
    const OpenXrLab lab(LabLoader::Genuine, false);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    if (loader_debug != nullptr) {
        SetEnvironmentVariableW(L"XR_LOADER_DEBUG", loader_debug);
        const HMODULE library = LoadLibraryW(L"openxr_loader.dll");
        CreateOpenXrInstance(
            reinterpret_cast<PFN_xrCreateInstance>(GetProcAddress(library, "xrCreateInstance")), {});
        FreeLibrary(library);
    } else {
        QueryOpenXrHeadset();
    }
    return testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();
}

TEST(OpenXrLoader, TheLoaderPrintsNothing) {
    EXPECT_EQ(Printed(nullptr), "");
    EXPECT_NE(Printed(L"all"), "");  // It would.
}

}  // namespace
