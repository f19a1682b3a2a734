#include "depth/inference_timing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

#include "tests/lab/onnx/counting_runtime.h"

namespace {

using ::testing::_;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Pair;

const std::vector<std::string> kEntriesBeforeTheRuns = {
    "CreateEnv",
    "SetLanguageProjection",
    "CreateSessionOptions",
    "SetSessionGraphOptimizationLevel",
    "AddSessionConfigEntry",
    "DisableMemPattern",
    "SetSessionExecutionMode",
    "AppendDirectMl",
    "CreateSession",
    "GetAllocatorWithDefaultOptions",
    "SessionGetInputName",
    "SessionGetOutputName",
    "SessionGetInputTypeInfo",
    "CastTypeInfoToTensorInfo",
    "GetDimensionsCount",
    "GetDimensions",
    "CreateCpuMemoryInfo",
};

/// A millisecond passes with every reading.
TickClock MillisecondClock() {
    return {[ticks = std::int64_t{0}]() mutable { return ++ticks; }, 1000};
}

class MeasureInferenceTest : public ::testing::Test {
  protected:
    MeasureInferenceTest() { TheCountingRuntime() = {}; }

    ModelTiming Measure(std::int32_t width = 256, std::int32_t height = 128) const {
        ModelTiming timing;
        timing.width = width;
        timing.height = height;
        AttemptTiming(timing, [&] {
            MeasureInference(CountingRuntimeEntries(), request_, MillisecondClock(), timing);
        });
        return timing;
    }

    CountingRuntime& runtime_ = TheCountingRuntime();
    InferenceRequest request_ = {"models/a_fp16.onnx", true, 2, 1};
};

TEST_F(MeasureInferenceTest, CallsTheRuntimeInTheProductsOrder) {
    EXPECT_TRUE(Measure().ok);
    std::vector<std::string> expected = kEntriesBeforeTheRuns;
    for (int i = 0; i < 5; ++i) {
        expected.insert(expected.end(), {"CreateTensorWithDataAsOrtValue", "Run"});
    }
    EXPECT_EQ(runtime_.sequence, expected);
}

TEST_F(MeasureInferenceTest, SetsTheSessionUpAsTheProductDoes) {
    Measure();
    runtime_.arguments.resize(10);
    EXPECT_THAT(runtime_.arguments,
                ElementsAre("level 3 id vistrel_diag", "projection 1", "optimization 99",
                            "optimization.disable_specified_optimizers=SimplifiedLayerNormFusion", "mode 0",
                            "device 1", "model models/a_fp16.onnx", "memory 1 0",
                            "run plain 1 [input 0] 1 [output 0]", "run plain 1 [input 0] 1 [output 0]"));
}

TEST_F(MeasureInferenceTest, AddsNoConfigurationEntryForFullPrecision) {
    request_.half_precision = false;
    EXPECT_TRUE(Measure().ok);
    EXPECT_EQ(runtime_.calls["AddSessionConfigEntry"], 0);
}

TEST_F(MeasureInferenceTest, FillsTheFigures) {
    const ModelTiming timing = Measure();
    EXPECT_TRUE(timing.ok);
    EXPECT_EQ(timing.error, "");
    EXPECT_EQ(timing.median_ms, 1.0);
    EXPECT_EQ(timing.min_ms, 1.0);
    EXPECT_EQ(timing.max_ms, 1.0);
}

TEST_F(MeasureInferenceTest, FeedsThePatternFromOneBuffer) {
    Measure();
    EXPECT_THAT(runtime_.tensor_shape, ElementsAre(1, 3, 8, 16));
    EXPECT_EQ(runtime_.tensor_values, MakeInputPattern(3 * 8 * 16));
    ASSERT_EQ(runtime_.tensor_data.size(), 5U);
    EXPECT_THAT(runtime_.tensor_data, Each(runtime_.tensor_data.front()));
}

TEST_F(MeasureInferenceTest, TakesTheSizeThatTheModelDeclares) {
    runtime_.input_dimensions = {1, 3, 294, 518};
    const ModelTiming timing = Measure(256, 256);
    EXPECT_TRUE(timing.ok);
    EXPECT_EQ(timing.width, 518);
    EXPECT_EQ(timing.height, 294);
    EXPECT_THAT(runtime_.tensor_shape, ElementsAre(1, 3, 294, 518));
}

TEST_F(MeasureInferenceTest, TakesTheGivenSizeWhenTheModelDeclaresNone) {
    const std::vector<std::vector<std::int64_t>> declared = {
        {-1, 3, -1, -1}, {1, 3, 294, -1}, {1, 3, -1, 518},     {1, 3, 0, 518},
        {1, 3, 294, 0},  {3, 294, 518},   {1, 1, 3, 294, 518}, {},
    };
    for (const std::vector<std::int64_t>& dimensions : declared) {
        runtime_ = {};
        runtime_.input_dimensions = dimensions;
        const ModelTiming timing = Measure();
        EXPECT_TRUE(timing.ok);
        EXPECT_EQ(timing.width, 256);
        EXPECT_EQ(timing.height, 128);
        EXPECT_THAT(runtime_.tensor_shape, ElementsAre(1, 3, 128, 256));
    }
}

TEST_F(MeasureInferenceTest, QueriesNoShapeOfAnInputThatIsNotATensor) {
    runtime_.input_is_tensor = false;
    EXPECT_TRUE(Measure().ok);
    EXPECT_EQ(runtime_.calls["GetDimensionsCount"], 0);
    EXPECT_THAT(runtime_.tensor_shape, ElementsAre(1, 3, 128, 256));
}

TEST_F(MeasureInferenceTest, AllocatesNoPictureOfAbsurdSize) {
    runtime_.input_dimensions = {1, 3, std::int64_t{1} << 40, std::int64_t{1} << 41};
    const ModelTiming timing = Measure();
    EXPECT_FALSE(timing.ok);
    EXPECT_EQ(timing.error, "an input of 2199023255552x1099511627776 pixels cannot be timed");
    EXPECT_EQ(timing.width, 256);
    EXPECT_EQ(timing.height, 128);
    EXPECT_EQ(runtime_.calls["CreateTensorWithDataAsOrtValue"], 0);
    EXPECT_EQ(AliveInCountingRuntime(), 0);
}

TEST_F(MeasureInferenceTest, RejectsAGivenSizeWithoutPixels) {
    runtime_.input_dimensions = {-1, 3, -1, -1};
    const ModelTiming timing = Measure(0, -518);
    EXPECT_FALSE(timing.ok);
    EXPECT_EQ(timing.error, "an input of 0x-518 pixels cannot be timed");
    EXPECT_EQ(AliveInCountingRuntime(), 0);
}

TEST_F(MeasureInferenceTest, ReportsThatNoRunWasRecorded) {
    request_.runs = 0;
    const ModelTiming timing = Measure();
    EXPECT_FALSE(timing.ok);
    EXPECT_EQ(timing.error, "no timed runs completed");
    EXPECT_EQ(AliveInCountingRuntime(), 0);
}

TEST_F(MeasureInferenceTest, UsesItsOwnTextForAFailedProvider) {
    runtime_.failing_entry = "AppendDirectMl";
    const ModelTiming timing = Measure();
    EXPECT_FALSE(timing.ok);
    EXPECT_EQ(timing.error, "DirectML execution provider could not be attached");
    EXPECT_EQ(runtime_.calls["CreateSession"], 0);
    EXPECT_EQ(runtime_.made["Status"], 1);
    EXPECT_EQ(AliveInCountingRuntime(), 0);
}

TEST_F(MeasureInferenceTest, ReleasesEverythingItMade) {
    EXPECT_TRUE(Measure().ok);
    EXPECT_THAT(runtime_.alive, Each(Pair(_, 0)));
    EXPECT_EQ(runtime_.made["Env"], 1);
    EXPECT_EQ(runtime_.made["SessionOptions"], 1);
    EXPECT_EQ(runtime_.made["Session"], 1);
    EXPECT_EQ(runtime_.made["Name"], 2);
    EXPECT_EQ(runtime_.made["TypeInfo"], 1);
    EXPECT_EQ(runtime_.made["MemoryInfo"], 1);
    EXPECT_EQ(runtime_.made["Value"], 10);  // An input and an output for each of 3 + 2 runs.
}

struct Failure {
    const char* entry;
    int call;
};

std::vector<Failure> EveryFailure() {
    std::vector<Failure> failures;
    for (const std::string& entry : kEntriesBeforeTheRuns) {
        if (entry != "AppendDirectMl") {
            failures.push_back({entry.c_str(), 1});
        }
    }
    for (const int call : {1, 4, 5}) {
        failures.push_back({"CreateTensorWithDataAsOrtValue", call});
        failures.push_back({"Run", call});
    }
    return failures;
}

class FailingRuntimeTest : public MeasureInferenceTest, public ::testing::WithParamInterface<Failure> {
  protected:
    FailingRuntimeTest() {
        runtime_.failing_entry = GetParam().entry;
        runtime_.failing_call = GetParam().call;
    }
};

TEST_P(FailingRuntimeTest, IsQuotedAndLeaksNothing) {
    const ModelTiming timing = Measure();
    EXPECT_FALSE(timing.ok);
    EXPECT_EQ(timing.error, "onnxruntime: the runtime's own words");
    EXPECT_EQ(runtime_.sequence.back(), GetParam().entry);  // Nothing was tried after the failure.
    EXPECT_EQ(AliveInCountingRuntime(), 0);
}

TEST_P(FailingRuntimeTest, LeaksNothingThatAFailingCallReturned) {
    runtime_.fails_late = true;
    EXPECT_EQ(Measure().error, "onnxruntime: the runtime's own words");
    EXPECT_EQ(AliveInCountingRuntime(), 0);
}

TEST_P(FailingRuntimeTest, MayThrowInstead) {
    runtime_.throws = true;
    const ModelTiming timing = Measure();
    EXPECT_FALSE(timing.ok);
    EXPECT_EQ(timing.error, "the runtime's own words");
    EXPECT_EQ(AliveInCountingRuntime(), 0);
}

INSTANTIATE_TEST_SUITE_P(AtEveryCall, FailingRuntimeTest, ::testing::ValuesIn(EveryFailure()),
                         [](const auto& failure) {
                             return std::string(failure.param.entry) + std::to_string(failure.param.call);
                         });

TEST_F(MeasureInferenceTest, HandlesAProviderThatThrows) {
    runtime_.failing_entry = "AppendDirectMl";
    runtime_.throws = true;
    EXPECT_EQ(Measure().error, "the runtime's own words");
    EXPECT_EQ(AliveInCountingRuntime(), 0);
}

TEST(AttemptTiming, QuotesTheRuntimeAfterItsName) {
    ModelTiming timing;
    AttemptTiming(timing, [] { throw Ort::Exception("bad graph"); });
    EXPECT_EQ(timing.error, "onnxruntime: bad graph");
}

TEST(AttemptTiming, QuotesOtherExceptionsWithoutAName) {
    ModelTiming timing;
    AttemptTiming(timing, [] { throw std::bad_alloc(); });
    EXPECT_EQ(timing.error, std::bad_alloc().what());
}

TEST(AttemptTiming, HandlesAThrownValueThatIsNotAnException) {
    ModelTiming timing;
    AttemptTiming(timing, [] { throw 7; });
    EXPECT_EQ(timing.error, "an exception of unknown kind");
}

TEST(AttemptTiming, ReplacesInvalidUtf8InAMessage) {
    ModelTiming timing;
    AttemptTiming(timing, [] { throw Ort::Exception("caf\xE9 f\xC3\xBCr \xF0\x9F"); });
    EXPECT_EQ(timing.error, "onnxruntime: caf\uFFFD f\u00FCr \uFFFD");
    AttemptTiming(timing, [] { throw std::runtime_error("\xFF"); });
    EXPECT_EQ(timing.error, "\uFFFD");
}

}  // namespace
