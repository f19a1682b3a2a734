// Does the timing of a depth model add any overhead? The same model, in the same process, timed alternately
// by the tool and by a bare call of the runtime's C interface: one iteration each, so that both run under the
// same conditions.
//
//     model_timing_bench MODEL WIDTH HEIGHT [RUNS]
//
// onnxruntime.dll and DirectML.dll are beside the program. The model has one float32 input of 1 x 3 x HEIGHT
// x WIDTH.
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/ratio.h"
#include "depth/inference_timing.h"
#include "depth/onnx_runtime_loader.h"
#include "platform/stopwatch.h"
#include "platform/utf8.h"

namespace {

// On a busy machine two sessions of one model may differ for their whole lifetime: only the middle one of
// several pairs is meaningful.
constexpr Closeness kCloseness = {0.005, 9, 45};

struct Model {
    std::wstring path;
    std::int32_t width;
    std::int32_t height;
};

[[noreturn]] void GiveUp(const char* text) {
    std::fprintf(stderr, "model_timing_bench: %s\n", text);
    std::exit(1);
}

void Must(const OrtApi& api, OrtStatus* status) {
    if (status != nullptr) {
        GiveUp(api.GetErrorMessage(status));
    }
}

/// The benchmark's own session, set up like the tool's but without any of the tool's code. Its objects exist
/// until the process ends.
class BareSession {
  public:
    BareSession(const OnnxRuntime& runtime, const Model& model)
        : api_(*runtime.api),
          shape_{1, 3, model.height, model.width},
          picture_(MakeInputPattern(std::size_t{3} * model.width * model.height)) {
        OrtEnv* env = nullptr;
        OrtSessionOptions* options = nullptr;
        OrtAllocator* allocator = nullptr;
        Must(api_, api_.CreateEnv(ORT_LOGGING_LEVEL_ERROR, "bench", &env));
        Must(api_, api_.CreateSessionOptions(&options));
        Must(api_, api_.SetSessionGraphOptimizationLevel(options, ORT_ENABLE_ALL));
        Must(api_, api_.DisableMemPattern(options));
        Must(api_, api_.SetSessionExecutionMode(options, ORT_SEQUENTIAL));
        Must(api_, runtime.append_directml(options, 0));
        Must(api_, api_.CreateSession(env, model.path.c_str(), options, &session_));
        Must(api_, api_.GetAllocatorWithDefaultOptions(&allocator));
        Must(api_, api_.SessionGetInputName(session_, 0, allocator, &input_name_));
        Must(api_, api_.SessionGetOutputName(session_, 0, allocator, &output_name_));
        Must(api_, api_.CreateCpuMemoryInfo(OrtArenaAllocator, OrtMemTypeDefault, &memory_));
    }

    /// Ticks of one inference.
    std::int64_t RunOnce() {
        OrtValue* input = nullptr;
        OrtValue* output = nullptr;
        Must(api_,
             api_.CreateTensorWithDataAsOrtValue(memory_, picture_.data(), picture_.size() * sizeof(float),
                                                 shape_, 4, ONNX_TENSOR_ELEMENT_DATA_TYPE_FLOAT, &input));
        LARGE_INTEGER start;
        LARGE_INTEGER end;
        QueryPerformanceCounter(&start);
        Must(api_, api_.Run(session_, nullptr, &input_name_, &input, 1, &output_name_, 1, &output));
        api_.ReleaseValue(output);
        QueryPerformanceCounter(&end);
        api_.ReleaseValue(input);
        return end.QuadPart - start.QuadPart;
    }

  private:
    const OrtApi& api_;
    std::int64_t shape_[4];
    std::vector<float> picture_;
    OrtSession* session_ = nullptr;
    OrtMemoryInfo* memory_ = nullptr;
    char* input_name_ = nullptr;
    char* output_name_ = nullptr;
};

struct Medians {
    double tool_ms;
    double bare_ms;
};

/// Runs the tool's timing with a clock that runs the bare session at the end of each iteration.
Medians TimeTurnAbout(const Model& model, int runs) {
    const OnnxRuntime& runtime = LoadedOnnxRuntime();
    BareSession bare(runtime, model);
    std::vector<double> bare_ms;
    int readings = 0;
    TickClock clock = {PerformanceTicks, PerformanceFrequency()};
    clock.now = [&] {
        const std::int64_t ticks = PerformanceTicks();
        const bool ends_an_iteration = ++readings % 2 == 0;
        if (ends_an_iteration) {
            bare_ms.push_back(static_cast<double>(bare.RunOnce()) * 1000.0 /
                              static_cast<double>(clock.frequency));
        }
        return ticks;
    };
    ModelTiming timing;
    timing.width = model.width;
    timing.height = model.height;
    AttemptTiming(timing, [&] { MeasureInference(runtime, {model.path, false, runs, 0}, clock, timing); });
    if (!timing.ok) {
        GiveUp(timing.error.c_str());
    }
    bare_ms.erase(bare_ms.begin(), bare_ms.begin() + kWarmUpRuns);
    return {timing.median_ms, FiguresOf(bare_ms)->median};
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        GiveUp("MODEL WIDTH HEIGHT [RUNS]");
    }
    const Model model = {WideFromUtf8(argv[1]), std::atoi(argv[2]), std::atoi(argv[3])};
    const int runs = argc > 4 ? std::max(1, std::atoi(argv[4])) : 101;
    const MiddleRatio middle = TakePairs(kCloseness, [&] {
        const Medians medians = TimeTurnAbout(model, runs);
        std::printf("tool %.3f ms, bare %.3f ms (medians of %d runs)\n", medians.tool_ms, medians.bare_ms,
                    runs);
        return medians.tool_ms / medians.bare_ms;
    });
    PrintRatio("inference " + std::to_string(model.width) + "x" + std::to_string(model.height) + ", median",
               "bare loop over the C interface", middle, {0.98, 1.02});
    return 0;
}
