#include <gmock/gmock.h>
#include <windows.h>

#include <string>
#include <tuple>
#include <vector>

#include "tests/lab/openxr/openxr_lab.h"
#include "tests/unit/support/report_capture.h"
#include "tools/vistrel_diag/openxr/openxr_loader.h"
#include "tools/vistrel_diag/sections/displays/display_section.h"
#include "tools/vistrel_diag/sections/gpus/gpu_section.h"
#include "tools/vistrel_diag/sections/headset/headset_query.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* kHeadset = R"(
runtime SteamVR/OpenXR
version 2.9.6
view 2016 2240
view 2020 2244
luid 00000001:0000BEEF
)";

TEST(HeadsetQuery, StopsWithoutTheLoader) {
    const OpenXrLab lab(LabLoader::None);
    const HeadsetQuery query = QueryOpenXrHeadset();
    EXPECT_EQ(query.stop, HeadsetStop::NoLoader);
    EXPECT_EQ(query.runtime, "");
    EXPECT_FALSE(query.headset_found);
    EXPECT_FALSE(query.luid_known);
}

class LoaderWithoutEntryPoint : public testing::TestWithParam<LabLoader> {};

TEST_P(LoaderWithoutEntryPoint, IsNotUsed) {
    const OpenXrLab lab(GetParam());
    EXPECT_EQ(QueryOpenXrHeadset().stop, HeadsetStop::NoEntryPoints);
    EXPECT_NE(GetModuleHandleW(L"openxr_loader.dll"), nullptr);  // It stays, used or not.
}

INSTANTIATE_TEST_SUITE_P(HeadsetQuery, LoaderWithoutEntryPoint,
                         testing::Values(LabLoader::WithoutExports, LabLoader::WithoutCreate,
                                         LabLoader::WithoutFind));

TEST(HeadsetQuery, NeedsNoEnumerationOfExtensions) {
    const OpenXrLab lab(LabLoader::WithoutEnumerate);
    lab.SetScript(kHeadset);
    EXPECT_TRUE(QueryOpenXrHeadset().headset_found);
}

/// Common to the genuine loader and to the replacement that exposes the same runtime without it.
class HeadsetQueryBehind : public testing::TestWithParam<LabLoader> {
  protected:
    HeadsetQuery Query(const std::string& script) const {
        lab_.SetScript(script);
        const HeadsetQuery query = QueryOpenXrHeadset();
        EXPECT_THAT(lab_.Log(), Not(HasSubstr("WRONG")));
        return query;
    }

    const OpenXrLab lab_{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Loaders, HeadsetQueryBehind,
                         testing::Values(LabLoader::Genuine, LabLoader::StandIn));

TEST_P(HeadsetQueryBehind, ReadsEverything) {
    const HeadsetQuery query = Query(kHeadset);
    EXPECT_TRUE(query.headset_found);
    EXPECT_EQ(query.runtime, "SteamVR/OpenXR 2.9.6");
    EXPECT_TRUE(query.luid_known);
    EXPECT_EQ(query.adapter_luid, (AdapterLuid{0xBEEF, 1}));
    EXPECT_EQ(query.eye_width, 2016U);
    EXPECT_EQ(query.eye_height, 2240U);
    EXPECT_EQ(query.stop, std::nullopt);
    EXPECT_THAT(lab_.Log(), StartsWith("loaded, XR_LOADER_DEBUG=none\n"));
    EXPECT_THAT(lab_.Log(), HasSubstr(R"(
xrCreateInstance vistrel_diag 1.0.34 XR_KHR_D3D11_enable
xrGetInstanceProperties
xrGetSystem
xrEnumerateViewConfigurationViews count
xrEnumerateViewConfigurationViews list
xrGetD3D11GraphicsRequirementsKHR
xrDestroyInstance
)"));
}

TEST_P(HeadsetQueryBehind, ReportsEachAnswerAsItIsFound) {
    lab_.SetScript(kHeadset);
    std::vector<std::string> told;
    QueryOpenXrHeadset([&told](const HeadsetQuery& query) {
        told.push_back(query.runtime + (query.eye_width != 0 ? ", eyes" : "") +
                       (query.luid_known ? ", adapter" : ""));
    });
    EXPECT_THAT(told, testing::ElementsAre("SteamVR/OpenXR 2.9.6", "SteamVR/OpenXR 2.9.6, eyes",
                                           "SteamVR/OpenXR 2.9.6, eyes, adapter",
                                           "SteamVR/OpenXR 2.9.6, eyes, adapter"));
}

TEST_P(HeadsetQueryBehind, LeavesTheLoaderInTheProcess) {
    Query(kHeadset);
    EXPECT_NE(GetModuleHandleW(L"openxr_loader.dll"), nullptr);
    EXPECT_TRUE(QueryOpenXrHeadset().headset_found);
}

TEST_P(HeadsetQueryBehind, InstanceRefused) {
    const HeadsetQuery query = Query("result xrCreateInstance -2");
    EXPECT_EQ(query.stop, HeadsetStop::NoInstance);
    EXPECT_EQ(query.stop_result, XR_ERROR_RUNTIME_FAILURE);
    EXPECT_EQ(query.runtime, "");
    EXPECT_FALSE(query.headset_found);
}

TEST_P(HeadsetQueryBehind, NoHeadset) {
    for (const char* statement : {"result xrGetSystem -35", "system 0", "missing xrGetSystem"}) {
        SCOPED_TRACE(statement);
        const HeadsetQuery query = Query(kHeadset + std::string(statement));
        EXPECT_EQ(query.stop, HeadsetStop::NoHeadset);
        EXPECT_EQ(query.runtime, "SteamVR/OpenXR 2.9.6");
        EXPECT_FALSE(query.headset_found);
        EXPECT_FALSE(query.luid_known);
        EXPECT_EQ(query.eye_width, 0U);
        EXPECT_THAT(lab_.Log(), HasSubstr("xrDestroyInstance\n"));
        EXPECT_THAT(lab_.Log(), Not(HasSubstr("Requirements")));
    }
}

TEST_P(HeadsetQueryBehind, RuntimeUnknown) {
    for (const char* statement : {"result xrGetInstanceProperties -2", "missing xrGetInstanceProperties"}) {
        SCOPED_TRACE(statement);
        const HeadsetQuery query = Query(kHeadset + std::string(statement));
        EXPECT_EQ(query.runtime, "");
        EXPECT_TRUE(query.headset_found);
        EXPECT_EQ(query.eye_width, 2016U);
        EXPECT_EQ(query.stop, std::nullopt);
    }
}

TEST_P(HeadsetQueryBehind, EyeSizeUnknown) {
    for (const char* statement :
         {"result xrEnumerateViewConfigurationViews -2", "missing xrEnumerateViewConfigurationViews",
          "claim views 0", "grow views 1"}) {
        SCOPED_TRACE(statement);
        const HeadsetQuery query = Query(kHeadset + std::string(statement));
        EXPECT_EQ(query.eye_width, 0U);
        EXPECT_EQ(query.eye_height, 0U);
        EXPECT_TRUE(query.luid_known);
        EXPECT_TRUE(query.headset_found);
        EXPECT_EQ(query.stop, std::nullopt);
    }
}

TEST_P(HeadsetQueryBehind, NoViews) {
    const HeadsetQuery query = Query("");
    EXPECT_EQ(query.eye_width, 0U);
    EXPECT_TRUE(query.headset_found);
    EXPECT_THAT(lab_.Log(), Not(HasSubstr("xrEnumerateViewConfigurationViews list")));
}

TEST_P(HeadsetQueryBehind, AdapterUnknown) {
    for (const char* statement :
         {"result xrGetD3D11GraphicsRequirementsKHR -2", "missing xrGetD3D11GraphicsRequirementsKHR"}) {
        SCOPED_TRACE(statement);
        const HeadsetQuery query = Query(kHeadset + std::string(statement));
        EXPECT_FALSE(query.luid_known);
        EXPECT_TRUE(query.headset_found);
        EXPECT_EQ(query.eye_height, 2240U);
        EXPECT_EQ(query.stop, std::nullopt);
    }
}

TEST_P(HeadsetQueryBehind, NegativeHighHalfOfTheLuid) {
    EXPECT_EQ(Query("luid FFFFFFFF:80000000").adapter_luid, (AdapterLuid{0x80000000, -1}));
}

TEST_P(HeadsetQueryBehind, RejectsMillionsOfViews) {
    EXPECT_EQ(Query(kHeadset + std::string("claim views 4294967295")).eye_width, 2016U);
    EXPECT_EQ(Query(kHeadset + std::string("claim views 5000000\ngrow views 4999998")).eye_width, 0U);
}

TEST_P(HeadsetQueryBehind, UnterminatedRuntimeName) {
    EXPECT_EQ(Query("runtime Garbage\nunterminated runtime").runtime,
              "Garbage" + std::string(128 - 7, 'x') + " 1.0.0");
}

TEST(HeadsetQuery, TreatsANullInstanceAsAFailure) {
    const OpenXrLab lab(LabLoader::StandIn);
    lab.SetScript("null xrCreateInstance");
    EXPECT_EQ(QueryOpenXrHeadset().stop, HeadsetStop::NoInstance);
}

TEST(HeadsetQuery, WorksWithoutDestroyInstance) {
    const OpenXrLab lab(LabLoader::StandIn);  // The genuine loader brings a function of its own.
    lab.SetScript(kHeadset + std::string("missing xrDestroyInstance"));
    EXPECT_TRUE(QueryOpenXrHeadset().headset_found);
    EXPECT_THAT(lab.Log(), Not(HasSubstr("xrDestroyInstance")));
}

TEST(HeadsetQuery, StopsWithoutARuntime) {
    const OpenXrLab lab(LabLoader::Genuine, false);
    EXPECT_EQ(QueryOpenXrHeadset().stop, HeadsetStop::NoInstance);
}

/// A script of tests/lab/openxr/headsets with the report that belongs to it, on a hybrid laptop.
class HeadsetGolden : public testing::TestWithParam<std::tuple<LabLoader, std::string>> {
  protected:
    void SetUp() override {
        GpuInfo discrete;
        discrete.name = "NVIDIA GeForce RTX 4060 Laptop GPU";
        discrete.luid = {0xA001, 0};
        GpuInfo integrated;
        integrated.index = 1;
        integrated.name = "Intel(R) UHD Graphics";
        integrated.luid = {0xA002, 0};
        DisplayInfo panel;
        panel.primary = true;
        panel.gpu = 1;
        SetGpuList({discrete, integrated});
        SetDisplayList({panel});
    }
    void TearDown() override {
        SetGpuList({});
        SetDisplayList({});
    }
};

TEST_P(HeadsetGolden, Report) {
    const auto& [loader, scenario] = GetParam();
    const OpenXrLab lab(loader);
    const std::string file = "tests/lab/openxr/headsets/" + scenario;
    lab.SetScript(ReadSourceFile(file + ".txt"));
    const ReportCapture report;
    ReportHeadsetSection(QueryOpenXrHeadset());
    EXPECT_EQ(report.Text(), ReadSourceFile(file + ".report"));
}

INSTANTIATE_TEST_SUITE_P(Scenarios, HeadsetGolden,
                         testing::Combine(testing::Values(LabLoader::Genuine, LabLoader::StandIn),
                                          testing::Values("awake", "other_gpu", "unknown_gpu", "asleep",
                                                          "refused", "no_views")),
                         [](const auto& instance) {
                             return std::get<1>(instance.param) +
                                    (std::get<0>(instance.param) == LabLoader::Genuine ? "_genuine"
                                                                                       : "_stand_in");
                         });

}  // namespace
