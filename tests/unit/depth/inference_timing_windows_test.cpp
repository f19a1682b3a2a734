// TimeDepthModel from the file on disk to the DLL: the runtime is a fake beside this program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <delayimp.h>

#include <filesystem>
#include <fstream>

#include "depth/inference_timing.h"
#include "depth/onnx_runtime_loader.h"
#include "platform/utf8.h"
#include "tests/lab/onnx/counting_runtime.h"

namespace {

using ::testing::Contains;

template <typename Function>
Function StandInEntry(const char* name) {
    return reinterpret_cast<Function>(GetProcAddress(LoadLibraryW(L"onnxruntime.dll"), name));
}

/// The state of the fake in the loaded DLL, not of the one linked into this program.
CountingRuntime& Account() {
    return *StandInEntry<CountingRuntime* (*)()>("StandInAccount")();
}

class TimeDepthModelTest : public ::testing::Test {
  protected:
    TimeDepthModelTest() {
        Account() = {};
        std::filesystem::create_directories(folder_ / L"models");
        std::ofstream(folder_ / L"models" / L"a.onnx") << "anything";
        std::ofstream(folder_ / L"models" / L"a_fp16.onnx") << "anything";
    }
    ~TimeDepthModelTest() override {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    std::string Folder() const { return Utf8FromWide(folder_.wstring()); }

    ModelTiming Time(const std::wstring& model_path, int gpu_index = 0) const {
        return TimeDepthModel(Folder(), model_path, "A model", 256, 128, 2, gpu_index);
    }

    /// "fp16" is in the folder's name too, where it has no meaning.
    const std::filesystem::path folder_ = std::filesystem::temp_directory_path() /
                                          (L"fp16 \x00DCn\x00EF " + std::to_wstring(GetCurrentProcessId()));
};

TEST_F(TimeDepthModelTest, TimesTheFileInTheFolder) {
    const ModelTiming timing = Time(L"models/a_fp16.onnx");
    EXPECT_TRUE(timing.ok);
    EXPECT_EQ(timing.error, "");
    EXPECT_EQ(timing.name, "A model");
    EXPECT_EQ(timing.path_tried, Folder() + "\\models/a_fp16.onnx");
    EXPECT_EQ(timing.width, 16);
    EXPECT_EQ(timing.height, 8);
    EXPECT_LE(timing.min_ms, timing.median_ms);
    EXPECT_LE(timing.median_ms, timing.max_ms);
    EXPECT_EQ(Account().calls["Run"], kWarmUpRuns + 2);
}

TEST_F(TimeDepthModelTest, LooksForFp16OnlyInTheModelsPath) {
    Time(L"models/a.onnx");
    EXPECT_EQ(Account().calls["AddSessionConfigEntry"], 0);
    Time(L"models/a_fp16.onnx");
    EXPECT_EQ(Account().calls["AddSessionConfigEntry"], 1);
}

TEST_F(TimeDepthModelTest, ReportsAMissingFile) {
    const ModelTiming timing = Time(L"models/b.onnx");
    EXPECT_FALSE(timing.ok);
    EXPECT_EQ(timing.error, "model file not found");
    EXPECT_EQ(timing.name, "A model");
    EXPECT_EQ(timing.path_tried, Folder() + "\\models/b.onnx");
    EXPECT_EQ(timing.width, 256);
    EXPECT_EQ(timing.height, 128);
    EXPECT_TRUE(Account().sequence.empty());
}

TEST_F(TimeDepthModelTest, UsesThePathUnchangedWithoutAFolder) {
    const std::wstring path = (folder_ / L"models" / L"a.onnx").wstring();
    const ModelTiming timing = TimeDepthModel("", path, "", 256, 128, 2, 0);
    EXPECT_TRUE(timing.ok);
    EXPECT_EQ(timing.name, "custom");
    EXPECT_EQ(timing.path_tried, Utf8FromWide(path));
}

TEST_F(TimeDepthModelTest, MeasuresOnTheGivenGpuOrTheFirst) {
    Time(L"models/a.onnx", 2);
    EXPECT_THAT(Account().arguments, Contains("device 2"));
    Account() = {};
    Time(L"models/a.onnx", -1);
    EXPECT_THAT(Account().arguments, Contains("device 0"));
}

TEST_F(TimeDepthModelTest, RequestsTheTableOncePerProcess) {
    Time(L"models/a.onnx");
    Time(L"models/a.onnx");
    EXPECT_EQ(StandInEntry<int (*)()>("StandInTableRequests")(), 1);
}

TEST_F(TimeDepthModelTest, HandlesAnotherCompilersExceptionFromTheDll) {
    Account().failing_entry = "Run";
    Account().failing_call = 4;
    Account().throws = true;
    const ModelTiming timing = Time(L"models/a.onnx");
    EXPECT_FALSE(timing.ok);
    EXPECT_EQ(timing.error, "the runtime's own words");
    for (const auto& [kind, count] : Account().alive) {
        EXPECT_EQ(count, 0) << kind;
    }
}

/// Raises what the delay-load helper of Visual C++ raises for an import that is described at `place`, and
/// returns the function it would go on with.
FARPROC RaiseMissingImport(DWORD error, const void* place) {
    DelayLoadInfo import = {};
    import.cb = sizeof import;
    import.pidd = static_cast<PCImgDelayDescr>(place);
    import.szDll = "DirectML.dll";
    const ULONG_PTR parameter = reinterpret_cast<ULONG_PTR>(&import);
    RaiseException(VcppException(ERROR_SEVERITY_ERROR, error), 0, 1, &parameter);
    return import.pfnCur;
}

/// A place inside the loaded runtime.
const void* InTheRuntime() {
    LoadOnnxRuntimeModule();
    return StandInEntry<const void*>("StandInAccount");
}

LONG CALLBACK AnswerAtLast(EXCEPTION_POINTERS* raised) {
    const DWORD code = raised->ExceptionRecord->ExceptionCode;
    return code == 0xE0000001 || (code & 0xFFFF0000) == 0xC06D0000 ? EXCEPTION_CONTINUE_EXECUTION
                                                                   : EXCEPTION_CONTINUE_SEARCH;
}

class DelayLoadGuardTest : public ::testing::Test {
  protected:
    ~DelayLoadGuardTest() override { RemoveVectoredExceptionHandler(last_); }

    void* last_ = AddVectoredExceptionHandler(0, AnswerAtLast);
};

TEST_F(DelayLoadGuardTest, MakesAMissingImportOfTheRuntimeAFailingCall) {
    for (const DWORD error : {DWORD{ERROR_MOD_NOT_FOUND}, DWORD{ERROR_PROC_NOT_FOUND}}) {
        const DelayLoadGuard guard;
        const FARPROC stand_in = RaiseMissingImport(error, InTheRuntime());
        ASSERT_NE(stand_in, nullptr);
        EXPECT_TRUE(FAILED(reinterpret_cast<HRESULT (*)()>(stand_in)()));
    }
}

TEST_F(DelayLoadGuardTest, IgnoresTheImportsOfOtherModules) {
    const DelayLoadGuard guard;
    InTheRuntime();
    static const int in_this_program = 0;
    EXPECT_EQ(RaiseMissingImport(ERROR_MOD_NOT_FOUND, &in_this_program), nullptr);
    EXPECT_EQ(RaiseMissingImport(ERROR_MOD_NOT_FOUND, nullptr), nullptr);
}

TEST_F(DelayLoadGuardTest, IgnoresOtherExceptions) {
    {
        const DelayLoadGuard guard;
        EXPECT_EQ(RaiseMissingImport(ERROR_INVALID_PARAMETER, InTheRuntime()), nullptr);
        RaiseException(0xE0000001, 0, 0, nullptr);
    }
    EXPECT_EQ(RaiseMissingImport(ERROR_MOD_NOT_FOUND, InTheRuntime()), nullptr);  // The guard is gone.
}

}  // namespace
