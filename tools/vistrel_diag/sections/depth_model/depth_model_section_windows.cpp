#include "tools/vistrel_diag/sections/depth_model/depth_model_section.h"

#include <chrono>
#include <memory>

#include "depth/onnx_runtime_loader.h"
#include "platform/utf8.h"
#include "settings/diag_settings.h"
#include "tools/vistrel_diag/report/progress.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/depth_model/depth_model_task.h"
#include "tools/vistrel_diag/worker/worker.h"

namespace {

/// On a slow integrated GPU the first session compiles its shaders for a minute; no call takes two.
constexpr std::chrono::seconds kLongestSilence{120};

constexpr const char* kCustomName = "custom model";

ModelTiming TimePreset(const DepthModelRequest& request, const DepthModelPreset& preset,
                       const std::function<void()>& before_each = {}) {
    return TimeDepthModel(request.tool_folder, preset.model_path, preset.display_name, preset.input_width,
                          preset.input_height, kTimedInferences, request.gpu_index, before_each);
}

ModelTiming TimeCustom(const DepthModelRequest& request, const std::function<void()>& before_each = {}) {
    return TimeDepthModel("", WideFromUtf8(request.custom->path), kCustomName, request.custom->size,
                          request.custom->size, kTimedInferences, request.gpu_index, before_each);
}

ModelTiming Untimed(const DepthModelRequest& request) {
    if (request.custom) {
        return UntimedModel("", WideFromUtf8(request.custom->path), kCustomName, request.custom->size,
                            request.custom->size);
    }
    const DepthModelPreset& preset = DepthModelPresets().at(request.first_preset);
    return UntimedModel(request.tool_folder, preset.model_path, preset.display_name, preset.input_width,
                        preset.input_height);
}

/// Every model that the section times, in order.
DepthModelRequest WholeRequest(std::string_view tool_folder, bool all_presets, int gpu_index,
                               const DiagSettings& settings) {
    DepthModelRequest request;
    request.tool_folder = tool_folder;
    request.gpu_index = gpu_index;
    if (all_presets) {
        request.preset_count = static_cast<int>(DepthModelPresets().size());
    } else if (FindDepthModelPreset(settings.depth_model_quality) != nullptr) {
        request.first_preset = settings.depth_model_quality;
        request.preset_count = 1;
    } else if (!settings.custom_model_path.empty()) {
        request.custom = {settings.custom_model_path, settings.ai_resolution};
    }
    return request;
}

/// Times models in a worker process and starts a new one after each crash or timeout. Uses this process when
/// none can be started.
class ModelTimer {
  public:
    explicit ModelTimer(DepthModelRequest request) : request_(std::move(request)) {}
    ModelTimer(const ModelTimer&) = delete;
    ModelTimer& operator=(const ModelTimer&) = delete;
    /// Waits for the worker to end, which it does right after its last answer.
    ~ModelTimer() {
        while (worker_ && worker_->Next()) {
        }
    }

    /// Whether onnxruntime.dll can be loaded. If a worker ended while loading it, Ended() returns how.
    bool LoadRuntime() {
        StartWorker();
        if (!worker_) {
            return LoadOnnxRuntimeModule();
        }
        const std::optional<WorkerMessage> answer = worker_->Next();
        ended_ = worker_->End();
        return answer && answer->Truth(kRuntimeLoaded);
    }

    const std::optional<WorkerEnd>& Ended() const { return ended_; }

    /// The timing of the next model of the request.
    ModelTiming TimeNext() {
        if (!worker_) {
            StartWorker();
        }
        ModelTiming timing = worker_ ? FromWorker() : InThisProcess();
        ++request_.first_preset;
        --request_.preset_count;
        return timing;
    }

  private:
    void StartWorker() { worker_ = Worker::Start(kDepthModelTask, MessageOf(request_), kLongestSilence); }

    ModelTiming FromWorker() {
        while (const std::optional<WorkerMessage> message = worker_->Next()) {
            if (message->Text("name")) {
                return ModelTimingOf(*message);
            }
        }
        ModelTiming timing = Untimed(request_);
        timing.error =
            worker_->End() ? WorkerEndText(*worker_->End()) : "its process ended without an answer";
        worker_.reset();
        return timing;
    }

    ModelTiming InThisProcess() const {
        return request_.custom ? TimeCustom(request_)
                               : TimePreset(request_, DepthModelPresets().at(request_.first_preset));
    }

    DepthModelRequest request_;  ///< the models that have not been timed yet
    std::unique_ptr<Worker> worker_;
    std::optional<WorkerEnd> ended_;
};

}  // namespace

void CarryOutDepthModelTask(const WorkerMessage& message, WorkerChannel& channel) {
    const bool loaded = LoadOnnxRuntimeModule();
    channel.Tell(WorkerMessage().SetTruth(kRuntimeLoaded, loaded));
    if (!loaded) {
        return;
    }
    const DepthModelRequest request = DepthModelRequestOf(message);
    const std::function<void()> sign = [&channel] { channel.GiveSign(); };
    for (int i = 0; i < request.preset_count; ++i) {
        const DepthModelPreset* const preset = FindDepthModelPreset(request.first_preset + i);
        channel.Tell(MessageOf(preset != nullptr ? TimePreset(request, *preset, sign) : ModelTiming()));
    }
    if (request.custom) {
        channel.Tell(MessageOf(TimeCustom(request, sign)));
    }
}

ModelTiming ReportDepthModelSection(std::string_view tool_folder, bool all_presets, int gpu_index) {
    Report::Section("DEPTH MODEL INFERENCE");
    const DiagSettings& settings = DiagSettings::Instance();
    ModelTimer timer(WholeRequest(tool_folder, all_presets, gpu_index, settings));
    Progress::Show("Loading ONNX Runtime");
    if (!timer.LoadRuntime()) {
        if (timer.Ended()) {
            PrintOnnxRuntimeLoadingEnded(*timer.Ended());
        } else {
            PrintOnnxRuntimeMissing();
        }
        return {};
    }
    PrintDepthModelIntroduction(settings.depth_mode, gpu_index);

    DepthModelTimers timers;
    timers.preset = [&timer](const DepthModelPreset& /*the next*/) { return timer.TimeNext(); };
    timers.custom = [&timer](const std::string& /*the next*/, std::int32_t /*its*/) {
        return timer.TimeNext();
    };
    return all_presets ? PrintAllModels(settings.depth_model_quality, timers)
                       : PrintConfiguredModel(settings, timers);
}
