// Settings, log, headset and the GPU of the benchmark: see round_trip_machine_native_test.cpp.
#include <cmath>
#include <limits>
#include <sstream>

#include "tests/unit/tools/vistrel_report/round_trip.h"
#include "tools/vistrel_diag/sections/benchmark_setup/benchmark_setup_section.h"
#include "tools/vistrel_diag/sections/depth_model/depth_model_section.h"
#include "tools/vistrel_diag/sections/headset/headset_section.h"
#include "tools/vistrel_diag/sections/product_log/product_log_section.h"
#include "tools/vistrel_diag/sections/settings/settings_section.h"

namespace {

rc::Gen<DiagSettings> Settings() {
    return rc::gen::exec([] {
        DiagSettings settings;
        settings.image_algo = *rc::gen::inRange(-1, 5);
        settings.f3d_search_steps = *rc::gen::arbitrary<std::int32_t>();
        settings.depth_mode = *rc::gen::inRange(0, 3);
        settings.depth_model_quality = *rc::gen::inRange(-1, 14);
        settings.ai_resolution = *rc::gen::arbitrary<std::int32_t>();
        settings.ai_fps_limit = *rc::gen::oneOf(
            Float(0.0, 200.0), rc::gen::element(std::numeric_limits<float>::infinity(), 1e30F,
                                                std::numeric_limits<float>::quiet_NaN(), -5.0F));
        settings.ai_fps_auto = *rc::gen::arbitrary<bool>();
        settings.pseudo_3d = *rc::gen::arbitrary<bool>();
        settings.reshade_enabled = *rc::gen::arbitrary<bool>();
        settings.f3d_separation_pct = *rc::gen::oneOf(Float(1.3, 1.8), Float(-50.0, 200.0));
        settings.f3d_depth_strength = *rc::gen::oneOf(Float(0.04, 0.06), Float(-1.0, 4.0));
        settings.f3d_screen_depth = *Float(-1.0, 2.0);
        // Among 16384 to 32768 few scales print as both figures of the line do.
        settings.scale = *rc::gen::oneOf(Float(0.0, 3.0), Float(0.0, 1000.0), Float(16384.0, 32768.0));
        settings.cinema_mode = *rc::gen::arbitrary<bool>();
        settings.optical_flow = *rc::gen::arbitrary<bool>();
        settings.fsr3 = *rc::gen::arbitrary<bool>();
        settings.gpu_frame_wait = *rc::gen::arbitrary<bool>();
        return settings;
    });
}

}  // namespace

RC_GTEST_PROP(RoundTrip, SettingsInEffect, ()) {
    const DiagSettings settings = *Settings();
    const std::string path = *rc::gen::oneOf(rc::gen::just(std::string("(not found)")), Word());
    const auto print = [](const DiagSettings& record, const std::string& file) {
        return Printed([&] { PrintSettingsInEffect(record, file); });
    };
    const std::string text = print(settings, path);
    const SettingsInEffectReading reading = ReadBack(text, ReadSettingsInEffect);
    RC_ASSERT(print(reading.settings, reading.file_path) == text);
    RC_ASSERT(reading.file_path == path);
    RC_ASSERT(reading.settings.image_algo == settings.image_algo);
    RC_ASSERT(reading.settings.pseudo_3d == settings.pseudo_3d);
    RC_ASSERT((reading.settings.depth_mode == 1) == (settings.depth_mode == 1));
    RC_ASSERT(std::fabs(reading.settings.SeparationMm() - settings.SeparationMm()) <= 0.0502F);
}

RC_GTEST_PROP(RoundTrip, SettingsVerbatim, ()) {
    const std::string path = *Word() + ".json";
    const auto lines = *rc::gen::container<std::vector<std::string>>(
        rc::gen::map(Word(), [](const std::string& text) { return "\"vistrel_" + text; }));
    const auto print = [&path](const std::vector<std::string>& product_lines) {
        std::string file = "{\n";
        for (const std::string& line : product_lines) {
            file += "    " + line + "\n";
        }
        std::istringstream stream(file + "}\n");
        return Printed([&] { PrintSettingsVerbatim(path, &stream); });
    };
    const std::string text = print(lines);
    const SettingsVerbatimReading reading = ReadBack(text, ReadSettingsVerbatim);
    std::vector<std::string> read;
    for (const ReadText& quoted : reading.quoted) {
        read.push_back(quoted.text);
    }
    RC_ASSERT(read == lines);
    RC_ASSERT(reading.path == path);
    RC_ASSERT(print(read) == text);
    const std::string vanished = Printed([&path] { PrintSettingsVerbatim(path, nullptr); });
    const SettingsVerbatimReading reading_of_none = ReadBack(vanished, ReadSettingsVerbatim);
    RC_ASSERT(reading_of_none.path == path);
    RC_ASSERT(reading_of_none.not_opened_line == 1U);
}

RC_GTEST_PROP(RoundTrip, ProductLog, ()) {
    const std::string path = *Word() + "vistrel_init_log.txt";
    // No more than the section quotes: of a longer log it leaves out the first ones.
    constexpr int kMostLines = 40;
    const auto lines = *rc::gen::resize(
        kMostLines, rc::gen::container<std::vector<std::string>>(rc::gen::map(
                        Word(), [](const std::string& text) { return text + " ERROR " + text; })));
    const auto print = [&path](const std::vector<std::string>& log_lines) {
        std::string log;
        for (const std::string& line : log_lines) {
            log += line + "\n";
        }
        std::istringstream stream(log);
        return Printed([&] { PrintProductLog(path, &stream); });
    };
    const std::string text = print(lines);
    const ProductLogReading reading = ReadBack(text, ReadProductLogSection);
    std::vector<std::string> read;
    for (const ReadText& quoted : reading.quoted) {
        read.push_back(quoted.text);
    }
    RC_ASSERT(read == lines);
    RC_ASSERT(print(read) == text);
    RC_ASSERT((lines.empty() || reading.path == path));
    const ProductLogReading none =
        ReadBack(Printed([&path] { PrintProductLog(path, nullptr); }), ReadProductLogSection);
    RC_ASSERT(none.path == path);
    RC_ASSERT(none.no_log_line == 1U);
}

namespace {

rc::Gen<WorkerEnd> End() {
    return rc::gen::exec([] {
        WorkerEnd end;
        end.kind = *rc::gen::element(WorkerEnd::Kind::Crashed, WorkerEnd::Kind::Aborted,
                                     WorkerEnd::Kind::Exited, WorkerEnd::Kind::Lost, WorkerEnd::Kind::Silent);
        end.code = *rc::gen::oneOf(rc::gen::arbitrary<std::uint32_t>(),
                                   rc::gen::element<std::uint32_t>(0, 1, 255, 256, 0xC0000005, 0xC00000FD));
        end.module = *rc::gen::oneOf(rc::gen::just(std::string()), WordWithout("0x"));
        end.silent_seconds = *rc::gen::inRange(0, 1000);
        return end;
    });
}

}  // namespace

RC_GTEST_PROP(RoundTrip, LoadingTheRuntimeThatEnded, ()) {
    const WorkerEnd end = *End();
    const auto print = [](const WorkerEnd& ended) {
        return Printed([&] { PrintOnnxRuntimeLoadingEnded(ended); });
    };
    const std::string text = print(end);
    const DepthModelReading reading = ReadBack(text, ReadDepthModelSection);
    RC_ASSERT(reading.loading_ended.has_value());
    RC_ASSERT(print(*reading.loading_ended) == text);
    RC_ASSERT(reading.loading_ended->kind == end.kind);
}

RC_GTEST_PROP(RoundTrip, Headset, ()) {
    std::vector<GpuInfo> gpus(*rc::gen::inRange<std::size_t>(0, 3));
    for (std::size_t i = 0; i < gpus.size(); ++i) {
        gpus[i].index = static_cast<std::uint32_t>(i);
        gpus[i].name = *Word();
        gpus[i].luid.low = static_cast<std::uint32_t>(i);
    }
    std::vector<DisplayInfo> displays(*rc::gen::inRange<std::size_t>(0, 3));
    for (DisplayInfo& display : displays) {
        display.primary = *rc::gen::arbitrary<bool>();
        display.gpu = *rc::gen::inRange<std::int32_t>(-1, static_cast<std::int32_t>(gpus.size()));
    }
    HeadsetQuery query;
    query.runtime = *Word();
    query.eye_width = *rc::gen::element<std::uint32_t>(0, 1, 2016, 0xFFFFFFFF);
    query.eye_height = *rc::gen::element<std::uint32_t>(0, 2240, 0x80000000);
    query.luid_known = *rc::gen::arbitrary<bool>();
    query.adapter_luid = {*rc::gen::inRange<std::uint32_t>(0, 4), 0};
    query.stop = Maybe(rc::gen::element(HeadsetStop::NoLoader, HeadsetStop::NoEntryPoints,
                                        HeadsetStop::NoInstance, HeadsetStop::NoHeadset));
    query.worker_end = Maybe(End());
    const auto print = [&](const HeadsetQuery& answer) {
        return Printed([&] { PrintHeadsetSection(answer, gpus, displays); });
    };
    const std::string text = print(query);
    const HeadsetReading reading = ReadBack(text, ReadHeadsetSection);
    HeadsetQuery read;
    read.stop = reading.stop;
    read.worker_end = reading.worker_end;
    read.runtime = reading.runtime ? reading.runtime->text : "";
    read.eye_width = reading.eye_width.value_or(0);
    read.eye_height = reading.eye_height.value_or(0);
    read.luid_known = reading.required_gpu.has_value();
    read.adapter_luid = reading.required_gpu.value_or(RequiredGpuReading()).luid;
    RC_ASSERT(print(read) == text);
    RC_ASSERT(read.runtime == query.runtime);
    RC_ASSERT(read.luid_known == query.luid_known);
}

RC_GTEST_PROP(RoundTrip, BenchmarkSetup, ()) {
    std::vector<GpuInfo> gpus(*rc::gen::inRange<std::size_t>(0, 3));
    for (GpuInfo& gpu : gpus) {
        gpu.name = *Word();
    }
    const auto index = *rc::gen::inRange<std::int32_t>(-1, 4);
    const bool named = *rc::gen::arbitrary<bool>();
    const auto print = [&gpus](std::int32_t gpu, bool by_runtime) {
        return Printed([&] { PrintBenchmarkGpu(gpus, gpu, by_runtime); });
    };
    const std::string text = print(index, named);
    const BenchmarkSetupReading reading = ReadBack(text, ReadBenchmarkSetupSection);
    RC_ASSERT(print(reading.gpu, reading.named_by_runtime_line != 0) == text);
    RC_ASSERT(reading.gpu == index);
}
