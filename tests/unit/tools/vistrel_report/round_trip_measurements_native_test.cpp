// Capture, warp and depth models: see round_trip_machine_native_test.cpp.
#include "tests/unit/tools/vistrel_report/round_trip.h"
#include "tools/vistrel_diag/sections/capture/capture_section.h"
#include "tools/vistrel_diag/sections/depth_model/depth_model_section.h"
#include "tools/vistrel_diag/sections/warp/warp_section.h"

// ---- Measurements

namespace {

rc::Gen<CaptureMeasurement> Capture() {
    return rc::gen::exec([] {
        CaptureMeasurement measurement;
        measurement.ok = *rc::gen::weightedElement<bool>({{4, true}, {1, false}});
        if (!measurement.ok) {
            measurement.error = *Word();
            return measurement;
        }
        measurement.width = *rc::gen::arbitrary<std::uint32_t>();
        measurement.height = *rc::gen::arbitrary<std::uint32_t>();
        measurement.new_frames = *rc::gen::inRange<std::uint32_t>(0, 100'000);
        measurement.seconds = *rc::gen::oneOf(rc::gen::just(0.0), Between(0.0, 0.02), Between(0.0, 60.0));
        measurement.cross_adapter = *rc::gen::arbitrary<bool>();
        measurement.capture_gpu_name = *Word();
        measurement.pixels.resize(*rc::gen::inRange<std::size_t>(0, 2));
        return measurement;
    });
}

}  // namespace

RC_GTEST_PROP(RoundTrip, Capture, ()) {
    const CaptureMeasurement measurement = *Capture();
    const auto print = [](const CaptureMeasurement& record) {
        return Printed([&] { PrintCaptureSection(record); });
    };
    const std::string text = print(measurement);
    const CaptureReading reading = ReadBack(text, ReadCaptureSection);
    RC_ASSERT(print(reading.measurement) == text);
    RC_ASSERT(reading.measurement.ok == measurement.ok);
    RC_ASSERT(reading.measurement.error == measurement.error);
    RC_ASSERT(reading.measurement.new_frames == measurement.new_frames);
}

RC_GTEST_PROP(RoundTrip, GameFrameRate, ()) {
    const CaptureMeasurement measurement = *Capture();
    const auto print = [](const CaptureMeasurement& record) {
        return Printed([&] { PrintGameFrameRate(record); });
    };
    const std::string text = print(measurement);
    const CaptureReading reading = ReadBack(text, ReadGameFrameRate);
    RC_ASSERT(print(reading.measurement) == text);
    RC_ASSERT(reading.measurement.width == measurement.width);
}

RC_GTEST_PROP(RoundTrip, Warp, ()) {
    const auto rows = *rc::gen::container<std::vector<WarpRowReading>>(rc::gen::exec([] {
        WarpRowReading row;
        row.width = *rc::gen::inRange(1, 100'000);
        row.height = *rc::gen::inRange(1, 100'000);
        row.label = *rc::gen::element<std::string>("your desktop (what runs today)", "1440p", "1080p");
        row.gpu_ms = *Milliseconds();
        row.vram_mb = *rc::gen::oneOf(Between(0.0, 4000.0), rc::gen::just(17592186044414.0));
        return row;
    }));
    const auto print = [](const std::vector<WarpRowReading>& table) {
        return Printed([&table] {
            PrintWarpTableHeader();
            for (const WarpRowReading& row : table) {
                WarpTiming timing;
                timing.gpu_ms = row.gpu_ms;
                timing.vram_mb = row.vram_mb;
                PrintWarpRow({row.width, row.height, row.label}, timing);
            }
        });
    };
    const std::string text = print(rows);
    const WarpReading reading = ReadBack(text, ReadWarpSection);
    RC_ASSERT(print(reading.rows) == text);
}

RC_GTEST_PROP(RoundTrip, AWarpThatDoesNotCompile, ()) {
    const std::string error = *rc::gen::map(Word(), [](std::string text) { return text + "\n" + text; });
    const std::string text = Printed([&error] { PrintWarpShaderFailure(error); });
    const WarpReading reading = ReadBack(text, ReadWarpSection);
    RC_ASSERT(reading.shader_error.has_value());
    RC_ASSERT(reading.shader_error->text == error);
}

namespace {

ModelTiming Timing(const std::string& name, std::int32_t width, std::int32_t height) {
    ModelTiming timing;
    timing.name = name;
    timing.ok = *rc::gen::weightedElement<bool>({{3, true}, {1, false}});
    if (timing.ok) {
        timing.width = width;
        timing.height = height;
        timing.median_ms = *Milliseconds();
        timing.min_ms = *Milliseconds();
        timing.max_ms = *Milliseconds();
    } else {
        timing.error = *Word() + *rc::gen::element<std::string>("", "\nand more");
        timing.path_tried = *Word();
    }
    return timing;
}

}  // namespace

RC_GTEST_PROP(RoundTrip, OneDepthModel, ()) {
    DiagSettings settings;
    settings.depth_model_quality = *rc::gen::inRange(-1, 12);
    settings.custom_model_path = *rc::gen::element<std::string>("", "C:\\m.onnx");
    ModelTiming timing;
    const auto print = [](const DiagSettings& record, const ModelTiming& result) {
        DepthModelTimers timers;
        timers.preset = [&result](const DepthModelPreset&) { return result; };
        timers.custom = [&result](const std::string&, std::int32_t) { return result; };
        return Printed([&] { PrintConfiguredModel(record, timers); });
    };
    const DepthModelPreset* const preset = FindDepthModelPreset(settings.depth_model_quality);
    timing =
        Timing(preset != nullptr ? preset->display_name : "custom model", *rc::gen::inRange(-5, 2000), 518);
    const std::string text = print(settings, timing);
    const DepthModelReading reading = ReadBack(text, ReadDepthModelSection);
    if (reading.no_custom_path_line != 0) {
        RC_ASSERT(reading.models.empty());
        return;
    }
    RC_ASSERT(reading.models.size() == 1U);
    settings.custom_model_path = "known";
    RC_ASSERT(print(settings, reading.models.front().timing) == text);
    RC_ASSERT(reading.models.front().timing.error == timing.error);
    RC_ASSERT(reading.models.front().timing.width == timing.width);
}

RC_GTEST_PROP(RoundTrip, AllDepthModels, ()) {
    const auto quality = *rc::gen::inRange(-1, 12);
    std::vector<ModelTiming> timings;
    for (const DepthModelPreset& preset : DepthModelPresets()) {
        timings.push_back(Timing(preset.display_name, preset.input_width, preset.input_height));
    }
    const auto print = [](std::int32_t configured, const std::vector<ModelTiming>& results) {
        DepthModelTimers timers;
        std::size_t next = 0;
        timers.preset = [&](const DepthModelPreset&) { return results.at(next++); };
        return Printed([&] { PrintAllModels(configured, timers); });
    };
    const std::string text = print(quality, timings);
    const DepthModelReading reading = ReadBack(text, ReadDepthModelSection);
    std::vector<ModelTiming> read;
    std::int32_t configured = -1;
    for (const ModelReading& model : reading.models) {
        configured = model.configured ? static_cast<std::int32_t>(read.size()) : configured;
        read.push_back(model.timing);
    }
    RC_ASSERT(read.size() == timings.size());
    RC_ASSERT(print(configured, read) == text);
    for (std::size_t i = 0; i < read.size(); ++i) {
        RC_ASSERT(read[i].error == timings[i].error);
        RC_ASSERT(read[i].name == timings[i].name);
    }
}
