#include "tools/vistrel_diag/sections/depth_model/depth_model_reading.h"

#include <cstddef>
#include <string_view>
#include <utility>

#include "depth/depth_model_presets.h"
#include "tools/vistrel_diag/worker/worker_end_reading.h"

namespace {

constexpr std::string_view kYours = "<- YOURS";

bool ReadIntroduction(const SourceLine& line, DepthModelReading& reading) {
    std::int32_t gpu = 0;
    std::string name;
    if (!reading.gpu && LineScan(line.text)
                            .Text("Measured on     : GPU ")
                            .Whole(gpu)
                            .Text(" (")
                            .UpToLast(name, ")")
                            .IsWhole()) {
        reading.gpu = gpu;
        reading.gpu_name = std::move(name);
        reading.gpu_line = line.number;
        return true;
    }
    return ReadFixedLine(
               line,
               "Depth comes from ReShade on this setup, so no model runs. Timing the configured model "
               "anyway, for reference if AI mode is ever used.",
               reading.reshade_line) ||
           ReadFixedLine(line, "onnxruntime.dll is not next to this exe, so inference cannot be timed.",
                         reading.runtime_missing_line) ||
           IsLine(line.text,
                  "Put vistrel_diag.exe in the Vistrel install folder (the one with Vistrel.exe and "
                  "onnxruntime.dll) and run it again.") ||
           ReadFixedLine(
               line,
               "Quality is set to Custom but no custom model path is stored - the app would have no model "
               "to load here either.",
               reading.no_custom_path_line) ||
           ReadFixedLine(line, "MODEL                         median ms        min        max",
                         reading.table_line) ||
           IsLine(line.text,
                  "Re-run without --no-models to time every preset and see what the cheaper ones would cost "
                  "here.");
}

bool ReadLoadingEnded(const SourceLine& line, DepthModelReading& reading) {
    std::string end;
    if (reading.loading_ended ||
        !LineScan(line.text).Text("!! Loading onnxruntime.dll ").UpToLast(end, ".").IsWhole()) {
        return false;
    }
    reading.loading_ended = ReadWorkerEnd(end);
    reading.loading_ended_line = reading.loading_ended ? line.number : 0;
    return reading.loading_ended.has_value();
}

ModelReading& OnlyModel(DepthModelReading& reading) {
    if (reading.models.empty()) {
        reading.models.emplace_back().configured = true;
    }
    return reading.models.front();
}

/// "NAME (WIDTHxHEIGHT)", or the name alone when it could not be timed: the next line shows
/// which.
bool ReadModel(const SourceLine& line, DepthModelReading& reading) {
    std::string name;
    if (reading.model_line != 0 || reading.table_line != 0 ||
        !LineScan(line.text).Text("Model           : ").Rest(name).Matches()) {
        return false;
    }
    OnlyModel(reading).timing.name = std::move(name);
    reading.model_line = line.number;
    return true;
}

void TakeSizeFromName(ModelTiming& timing) {
    std::string name;
    std::int32_t width = 0;
    std::int32_t height = 0;
    if (LineScan(timing.name).UpToLast(name, " (").Whole(width).Text("x").Whole(height).Text(")").IsWhole()) {
        timing.name = std::move(name);
        timing.width = width;
        timing.height = height;
    }
}

bool ReadInference(const SourceLine& line, DepthModelReading& reading) {
    double median = 0.0;
    double least = 0.0;
    double most = 0.0;
    std::int32_t runs = 0;
    if (reading.runs || !LineScan(line.text)
                             .Text("Inference       : ")
                             .Number(median)
                             .Text(" ms median (")
                             .Number(least)
                             .Text(" min, ")
                             .Number(most)
                             .Text(" max) over ")
                             .Whole(runs)
                             .Text(" runs")
                             .IsWhole()) {
        return false;
    }
    ModelReading& model = OnlyModel(reading);
    TakeSizeFromName(model.timing);
    model.timing.ok = true;
    model.timing.median_ms = median;
    model.timing.min_ms = least;
    model.timing.max_ms = most;
    model.line = line.number;
    reading.runs = runs;
    return true;
}

bool ReadFailure(const SourceLine& line, DepthModelReading& reading) {
    std::string text;
    if (LineScan(line.text).Text("Could not time it: ").Rest(text).Matches()) {
        ModelReading& model = OnlyModel(reading);
        model.timing.error = std::move(text);
        model.line = line.number;
        return true;
    }
    if (reading.path_line == 0 && LineScan(line.text).Text("Path tried      : ").Rest(text).Matches()) {
        OnlyModel(reading).timing.path_tried = std::move(text);
        reading.path_line = line.number;
        return true;
    }
    return false;
}

const DepthModelPreset* PresetThatBegins(std::string_view line) {
    for (const DepthModelPreset& preset : DepthModelPresets()) {
        if (BeginsLine(line, preset.display_name)) {
            return &preset;
        }
    }
    return nullptr;
}

/// A row of the table. `open_error` is where an error goes on that takes several lines.
bool ReadRow(const SourceLine& line, DepthModelReading& reading, std::string*& open_error) {
    const DepthModelPreset* const preset = reading.table_line != 0 ? PresetThatBegins(line.text) : nullptr;
    if (preset == nullptr) {
        return false;
    }
    ModelReading model;
    ModelTiming& timing = model.timing;
    timing.name = preset->display_name;
    model.line = line.number;
    std::string rest;
    if (LineScan(line.text)
            .Text(timing.name)
            .Text(" ")
            .Number(timing.median_ms)
            .Text(" ")
            .Number(timing.min_ms)
            .Text(" ")
            .Number(timing.max_ms)
            .Blanks()
            .Rest(rest)
            .Matches()) {
        model.configured = IsLine(rest, kYours);
        timing.ok = model.configured || IsBlankLine(rest);
    }
    if (!timing.ok) {
        timing = {};
        timing.name = preset->display_name;
        if (!LineScan(line.text)
                 .Text(timing.name)
                 .Text(" ")
                 .Blanks()
                 .Text("-  (")
                 .Rest(timing.error)
                 .Matches()) {
            return false;
        }
    }
    reading.models.push_back(std::move(model));
    open_error = reading.models.back().timing.ok ? nullptr : &reading.models.back().timing.error;
    return true;
}

/// An error in the table is in parentheses: it ends with the line that ends with the closing one.
void CloseError(std::string& error, std::string*& open_error) {
    std::string_view text(error);
    while (text.ends_with(' ')) {
        text.remove_suffix(1);
    }
    if (text.ends_with(')')) {
        error.resize(text.size() - 1);
        open_error = nullptr;
    }
}

}  // namespace

std::optional<DepthModelReading> ReadDepthModelSection(SourceLines lines, UnreadLines& unread) {
    DepthModelReading reading;
    std::string* open_error = nullptr;
    const bool any = ReadEachLine(lines, unread, [&](const SourceLine& line) {
        if (ReadRow(line, reading, open_error)) {
            if (open_error != nullptr) {
                CloseError(*open_error, open_error);
            }
            return true;
        }
        if (ReadLoadingEnded(line, reading) || ReadIntroduction(line, reading) || ReadModel(line, reading) ||
            ReadInference(line, reading)) {
            open_error = nullptr;
            return true;
        }
        if (ReadFailure(line, reading)) {
            open_error = reading.path_line == 0 ? &reading.models.front().timing.error : nullptr;
            return true;
        }
        if (open_error == nullptr) {
            return false;
        }
        open_error->append("\n").append(line.text);
        if (reading.table_line != 0) {
            CloseError(*open_error, open_error);
        }
        return true;
    });
    return any ? std::optional(std::move(reading)) : std::nullopt;
}
