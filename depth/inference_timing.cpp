#include "depth/inference_timing.h"

#include <array>
#include <stdexcept>
#include <vector>

#include "depth/onnx_runtime.h"
#include "platform/format.h"
#include "platform/utf8.h"

namespace {

constexpr std::int64_t kColourChannels = 3;

OrtOwner<OrtEnv> MakeEnvironment(const OrtApi& api) {
    auto environment = MakeOrt(api, api.ReleaseEnv, api.CreateEnv, ORT_LOGGING_LEVEL_ERROR, "vistrel_diag");
    CallOrt(api, api.SetLanguageProjection, environment.get(), ORT_PROJECTION_CPLUSPLUS);
    return environment;
}

/// The session options that the product uses, with DirectML attached.
OrtOwner<OrtSessionOptions> MakeOptions(const OnnxRuntime& runtime, const InferenceRequest& request) {
    const OrtApi& api = *runtime.api;
    auto options = MakeOrt(api, api.ReleaseSessionOptions, api.CreateSessionOptions);
    CallOrt(api, api.SetSessionGraphOptimizationLevel, options.get(), ORT_ENABLE_ALL);
    if (request.half_precision) {
        // The product does the same: this fusion breaks the layer norms of its half-precision models.
        CallOrt(api, api.AddSessionConfigEntry, options.get(), "optimization.disable_specified_optimizers",
                "SimplifiedLayerNormFusion");
    }
    // DirectML supports neither memory patterns nor parallel execution.
    CallOrt(api, api.DisableMemPattern, options.get());
    CallOrt(api, api.SetSessionExecutionMode, options.get(), ORT_SEQUENTIAL);

    const OrtOwner<OrtStatus> refused(runtime.append_directml(options.get(), request.device_id),
                                      api.ReleaseStatus);
    if (refused) {
        throw std::runtime_error("DirectML execution provider could not be attached");
    }
    return options;
}

/// Frees a name with the allocator that allocated it.
struct NameDeleter {
    OrtAllocator* allocator;
    void operator()(char* name) const { allocator->Free(allocator, name); }
};
using OrtName = std::unique_ptr<char, NameDeleter>;

using NameEntry = OrtStatus*(ORT_API_CALL*)(const OrtSession*, std::size_t, OrtAllocator*, char**);

/// The name of the session's first input or output; `entry` selects which.
OrtName FirstName(const OrtApi& api, NameEntry entry, const OrtSession* session, OrtAllocator* allocator) {
    char* name = nullptr;
    OrtStatus* const status = entry(session, 0, allocator, &name);
    OrtName owner(name, NameDeleter{allocator});
    ThrowOnFailure(api, status);
    return owner;
}

/// The dimensions that the model declares for its first input, -1 for a dynamic one. Empty when that input is
/// not a tensor.
std::vector<std::int64_t> InputDimensions(const OrtApi& api, const OrtSession* session) {
    const auto type = MakeOrt(api, api.ReleaseTypeInfo, api.SessionGetInputTypeInfo, session, 0U);
    const OrtTensorTypeAndShapeInfo* shape = nullptr;  // Belongs to `type`.
    CallOrt(api, api.CastTypeInfoToTensorInfo, type.get(), &shape);
    if (shape == nullptr) {
        return {};
    }
    std::size_t count = 0;
    CallOrt(api, api.GetDimensionsCount, shape, &count);
    std::vector<std::int64_t> dimensions(count);
    CallOrt(api, api.GetDimensions, shape, dimensions.data(), count);
    return dimensions;
}

/// Determines the input's size: the model's own if it declares one, otherwise the one that `timing` already
/// has.
void SettleInputSize(const std::vector<std::int64_t>& dimensions, ModelTiming& timing) {
    std::int64_t width = timing.width;
    std::int64_t height = timing.height;
    if (dimensions.size() == 4 && dimensions[2] >= 1 && dimensions[3] >= 1) {
        height = dimensions[2];
        width = dimensions[3];
    }
    if (!IsUsableInputSize(width, height)) {
        throw std::length_error(FormatText("an input of %lldx%lld pixels cannot be timed",
                                           static_cast<long long>(width), static_cast<long long>(height)));
    }
    timing.width = static_cast<std::int32_t>(width);
    timing.height = static_cast<std::int32_t>(height);
}

/// The times of the recorded runs, in milliseconds.
std::vector<double> RunSession(const OrtApi& api, OrtSession* session, const char* input_name,
                               const char* output_name, const ModelTiming& timing,
                               const InferenceRequest& request, const TickClock& clock) {
    const auto memory =
        MakeOrt(api, api.ReleaseMemoryInfo, api.CreateCpuMemoryInfo, OrtArenaAllocator, OrtMemTypeDefault);
    const std::array<std::int64_t, 4> shape = {1, kColourChannels, timing.height, timing.width};
    std::vector<float> picture =
        MakeInputPattern(static_cast<std::size_t>(kColourChannels) * static_cast<std::size_t>(timing.height) *
                         static_cast<std::size_t>(timing.width));
    OrtOwner<OrtValue> input(nullptr, api.ReleaseValue);
    InferenceSteps steps;
    steps.wrap_input = [&] {
        if (request.before_each) {
            request.before_each();
        }
        input = MakeOrt(api, api.ReleaseValue, api.CreateTensorWithDataAsOrtValue, memory.get(),
                        static_cast<void*>(picture.data()), picture.size() * sizeof(float), shape.data(),
                        shape.size(), ONNX_TENSOR_ELEMENT_DATA_TYPE_FLOAT);
    };
    steps.run = [&] {
        const OrtValue* const given = input.get();
        MakeOrt(api, api.ReleaseValue, api.Run, session, nullptr, &input_name, &given, 1U, &output_name, 1U);
    };
    steps.release_input = [&] { input.reset(); };
    return TimeIterations(request.runs, clock, steps);
}

}  // namespace

void MeasureInference(const OnnxRuntime& runtime, const InferenceRequest& request, const TickClock& clock,
                      ModelTiming& timing) {
    const OrtApi& api = *runtime.api;
    const auto environment = MakeEnvironment(api);
    const auto options = MakeOptions(runtime, request);
    const auto session = MakeOrt(api, api.ReleaseSession, api.CreateSession, environment.get(),
                                 request.model_file.c_str(), options.get());

    OrtAllocator* allocator = nullptr;  // Owned by the runtime, never released.
    CallOrt(api, api.GetAllocatorWithDefaultOptions, &allocator);
    const OrtName input_name = FirstName(api, api.SessionGetInputName, session.get(), allocator);
    const OrtName output_name = FirstName(api, api.SessionGetOutputName, session.get(), allocator);
    SettleInputSize(InputDimensions(api, session.get()), timing);

    const std::optional<TimingFigures> figures = FiguresOf(
        RunSession(api, session.get(), input_name.get(), output_name.get(), timing, request, clock));
    if (!figures) {
        timing.error = "no timed runs completed";
        return;
    }
    timing.median_ms = figures->median;
    timing.min_ms = figures->min;
    timing.max_ms = figures->max;
    timing.ok = true;
}

void AttemptTiming(ModelTiming& timing, const std::function<void()>& attempt) {
    try {
        attempt();
    } catch (const Ort::Exception& failure) {
        timing.error = "onnxruntime: " + ValidUtf8(failure.what());
    } catch (const std::exception& failure) {
        timing.error = ValidUtf8(failure.what());
    } catch (...) {
        timing.error = "an exception of unknown kind";
    }
}
