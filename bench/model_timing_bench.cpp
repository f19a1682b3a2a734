// Does the timing of a depth model add any overhead? The same model, timed alternately by the tool's code in
// a worker process, with its signs of life, and by bare calls of the runtime's C interface in this process:
// one iteration each, so that both run under the same conditions.
//
//     model_timing_bench MODEL WIDTH HEIGHT [RUNS]
//
// onnxruntime.dll and DirectML.dll are beside the program. The model has one float32 input of 1 x 3 x HEIGHT
// x WIDTH.
#include <windows.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bench/ratio.h"
#include "depth/inference_timing.h"
#include "depth/onnx_runtime_loader.h"
#include "platform/stopwatch.h"
#include "platform/unique_handle.h"
#include "platform/utf8.h"
#include "tools/vistrel_diag/sections/depth_model/depth_model_task.h"
#include "tools/vistrel_diag/worker/worker.h"
#include "tools/vistrel_diag/worker/worker_task.h"

namespace {

// On a busy machine two sessions of one model may differ for their whole lifetime: only the middle one of
// several pairs is meaningful. It is to be known to half of what it may differ from 1.
constexpr Closeness kCloseness = {0.01, 9, 99};

constexpr std::string_view kTask = "time";
constexpr std::chrono::seconds kLongestSilence{120};

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

/// An event that tells one process to run its next iteration. Both processes open it by its name.
class Turn {
  public:
    explicit Turn(const std::string& name)
        : event_(CreateEventA(nullptr, /*manual reset*/ FALSE, FALSE, name.c_str())) {
        if (!event_) {
            GiveUp("no event");
        }
    }

    void Give() const { SetEvent(event_.get()); }

    void Await() const {
        const std::chrono::milliseconds longest = kLongestSilence;
        if (WaitForSingleObject(event_.get(), static_cast<DWORD>(longest.count())) != WAIT_OBJECT_0) {
            GiveUp("the other process runs no iteration");
        }
    }

  private:
    KernelHandle event_;
};

struct Turns {
    explicit Turns(const std::string& name) : tool(name + ".tool"), bare(name + ".bare") {}

    Turn tool;
    Turn bare;
};

/// The benchmark's own session, set up like the tool's but without any of the tool's code.
class BareSession {
  public:
    BareSession(const OnnxRuntime& runtime, const Model& model)
        : api_(*runtime.api),
          shape_{1, 3, model.height, model.width},
          picture_(MakeInputPattern(std::size_t{3} * model.width * model.height)) {
        OrtSessionOptions* options = nullptr;
        OrtAllocator* allocator = nullptr;
        Must(api_, api_.CreateEnv(ORT_LOGGING_LEVEL_ERROR, "bench", &env_));
        Must(api_, api_.CreateSessionOptions(&options));
        Must(api_, api_.SetSessionGraphOptimizationLevel(options, ORT_ENABLE_ALL));
        Must(api_, api_.DisableMemPattern(options));
        Must(api_, api_.SetSessionExecutionMode(options, ORT_SEQUENTIAL));
        Must(api_, runtime.append_directml(options, 0));
        Must(api_, api_.CreateSession(env_, model.path.c_str(), options, &session_));
        Must(api_, api_.GetAllocatorWithDefaultOptions(&allocator));
        Must(api_, api_.SessionGetInputName(session_, 0, allocator, &input_name_));
        Must(api_, api_.SessionGetOutputName(session_, 0, allocator, &output_name_));
        Must(api_, api_.CreateCpuMemoryInfo(OrtArenaAllocator, OrtMemTypeDefault, &memory_));
        api_.ReleaseSessionOptions(options);
    }
    BareSession(const BareSession&) = delete;
    BareSession& operator=(const BareSession&) = delete;
    /// The two names are not freed.
    ~BareSession() {
        api_.ReleaseValue(input_);
        api_.ReleaseMemoryInfo(memory_);
        api_.ReleaseSession(session_);
        api_.ReleaseEnv(env_);
    }

    /// Ticks of one inference. The input is released before the next one, not at the end: so both sides do
    /// the same between the switch of processes, which leaves cold caches, and their inference.
    std::int64_t RunOnce() {
        api_.ReleaseValue(input_);
        input_ = nullptr;
        OrtValue* output = nullptr;
        Must(api_,
             api_.CreateTensorWithDataAsOrtValue(memory_, picture_.data(), picture_.size() * sizeof(float),
                                                 shape_, 4, ONNX_TENSOR_ELEMENT_DATA_TYPE_FLOAT, &input_));
        LARGE_INTEGER start;
        LARGE_INTEGER end;
        QueryPerformanceCounter(&start);
        Must(api_, api_.Run(session_, nullptr, &input_name_, &input_, 1, &output_name_, 1, &output));
        api_.ReleaseValue(output);
        QueryPerformanceCounter(&end);
        return end.QuadPart - start.QuadPart;
    }

  private:
    const OrtApi& api_;
    std::int64_t shape_[4];
    std::vector<float> picture_;
    OrtEnv* env_ = nullptr;
    OrtSession* session_ = nullptr;
    OrtMemoryInfo* memory_ = nullptr;
    OrtValue* input_ = nullptr;
    char* input_name_ = nullptr;
    char* output_name_ = nullptr;
};

/// The worker's task: runs the tool's timing with a clock that lets the bare loop run at the end of each
/// iteration.
void TimeAsTheTool(const WorkerMessage& request, WorkerChannel& channel) {
    ModelTiming timing;
    timing.width = static_cast<std::int32_t>(request.Integer("width").value_or(0));
    timing.height = static_cast<std::int32_t>(request.Integer("height").value_or(0));
    const int runs = static_cast<int>(request.Integer("runs").value_or(0));
    const Turns turns(request.Text("turns").value_or(""));
    int readings = 0;
    TickClock clock = {PerformanceTicks, PerformanceFrequency()};
    clock.now = [&] {
        const std::int64_t ticks = PerformanceTicks();
        const bool ends_an_iteration = ++readings % 2 == 0;
        if (ends_an_iteration) {
            turns.bare.Give();
            turns.tool.Await();
        }
        return ticks;
    };
    const std::filesystem::path model = WideFromUtf8(request.Text("model").value_or(""));
    AttemptTiming(timing, [&] {
        MeasureInference(LoadedOnnxRuntime(), {model, false, runs, 0, [&channel] { channel.GiveSign(); }},
                         clock, timing);
    });
    channel.Tell(MessageOf(timing));
    if (!timing.ok) {
        GiveUp(timing.error.c_str());
    }
}

struct Medians {
    double tool_ms;
    double bare_ms;
};

/// On a busy machine Wine fails to start a process once in several hundred times.
std::unique_ptr<Worker> StartWorker(const WorkerMessage& request) {
    constexpr int kAttempts = 3;
    std::unique_ptr<Worker> worker;
    for (int i = 0; i < kAttempts && !worker; ++i) {
        worker = Worker::Start(kTask, request, kLongestSilence);
    }
    if (!worker) {
        GiveUp("no worker process");
    }
    return worker;
}

/// Each with a new session, the tool's in a new process.
Medians TimeTurnAbout(const Model& model, int runs) {
    const std::string name = "vistrel-bench-" + std::to_string(GetCurrentProcessId());
    const Turns turns(name);
    BareSession bare(LoadedOnnxRuntime(), model);
    const WorkerMessage request = WorkerMessage()
                                      .SetText("model", Utf8FromWide(model.path))
                                      .SetInteger("width", model.width)
                                      .SetInteger("height", model.height)
                                      .SetInteger("runs", runs)
                                      .SetText("turns", name);
    const std::unique_ptr<Worker> worker = StartWorker(request);
    std::vector<double> bare_ms;
    for (int i = 0; i < runs + kWarmUpRuns; ++i) {
        turns.bare.Await();
        bare_ms.push_back(static_cast<double>(bare.RunOnce()) * 1000.0 /
                          static_cast<double>(PerformanceFrequency()));
        turns.tool.Give();
    }
    bare_ms.erase(bare_ms.begin(), bare_ms.begin() + kWarmUpRuns);
    const std::optional<WorkerMessage> answer = worker->Next();
    if (!answer || !answer->Truth("ok")) {
        GiveUp("no answer from the worker process");
    }
    while (worker->Next()) {
    }
    return {ModelTimingOf(*answer).median_ms, FiguresOf(bare_ms)->median};
}

constexpr std::array kTasks = {WorkerTask{kTask, TimeAsTheTool}};

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (IsWorkerCommandLine(arguments)) {
        return RunAsWorker(arguments, kTasks);
    }
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
