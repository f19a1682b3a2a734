#include <windows.h>

#include <algorithm>

#include "depth/inference_timing.h"
#include "depth/onnx_runtime_loader.h"
#include "platform/long_path.h"
#include "platform/stopwatch.h"
#include "platform/utf8.h"

ModelTiming UntimedModel(const std::string& tool_folder, const std::wstring& model_path,
                         const std::string& display_name, std::int32_t width, std::int32_t height) {
    ModelTiming timing;
    timing.name = display_name.empty() ? "custom" : display_name;
    timing.path_tried =
        Utf8FromWide(tool_folder.empty() ? model_path : WideFromUtf8(tool_folder) + L'\\' + model_path);
    timing.width = width;
    timing.height = height;
    return timing;
}

ModelTiming TimeDepthModel(const std::string& tool_folder, const std::wstring& model_path,
                           const std::string& display_name, std::int32_t width, std::int32_t height, int runs,
                           int gpu_index, const std::function<void()>& before_each) {
    ModelTiming timing = UntimedModel(tool_folder, model_path, display_name, width, height);
    const std::wstring model_file = WideFromUtf8(OpenablePath(timing.path_tried));
    if (GetFileAttributesW(model_file.c_str()) == INVALID_FILE_ATTRIBUTES) {
        timing.error = "model file not found";
        return timing;
    }

    const InferenceRequest request = {model_file, IsHalfPrecisionModel(model_path), runs,
                                      std::max(0, gpu_index), before_each};
    AttemptTiming(timing, [&] {
        const DelayLoadGuard guard;
        MeasureInference(LoadedOnnxRuntime(), request, {PerformanceTicks, PerformanceFrequency()}, timing);
    });
    return timing;
}
