// What a report says, for the rules, charts, tables and comparisons: one record per report, each fact with
// its line number. What the report does not say is empty.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A line of the report, counted from 1 as in an editor; 0 means none.
using LineNumber = std::size_t;

/// The parts of a report, in its order. Sections that part 2 repeats are parts of their own.
enum class Part {
    Opening,
    RunningSoftware,
    Machine,
    Gpus,
    Displays,
    GpuOverrides,
    Injection,
    Settings,
    SettingsVerbatim,
    ProductLog,
    Headset,
    BenchmarkSetup,
    Capture,
    Warp,
    DepthModel,
    PartTwo,
    RunningSoftwareTwo,
    VramTwo,
    HeadsetTwo,
    HandTracking,
    GameFrameRate,
    Verdict,
};
inline constexpr std::size_t kPartCount = static_cast<std::size_t>(Part::Verdict) + 1;

/// The part's name for readers: the section's title, with "part 2" before those that part 2 repeats.
std::string_view PartName(Part part);

/// A text and its line.
struct TextFact {
    std::string text;
    LineNumber line = 0;
};

struct SoftwareFacts {
    std::vector<TextFact> programs;
    std::optional<TextFact> foreground_program;
    std::optional<TextFact> foreground_title;
    LineNumber product_running_line = 0;  ///< of the warning; 0 when the product is not running
};

struct MachineFacts {
    std::optional<TextFact> windows;
    std::optional<std::int64_t> build;
    std::optional<TextFact> processor;
    std::optional<std::int64_t> logical_processors;
    std::optional<double> memory_gb;
    std::optional<double> free_memory_gb;
    LineNumber memory_line = 0;
    std::optional<TextFact> gpu_scheduling;  ///< "ENABLED", "disabled", "not set (driver default)", ...
};

struct MemoryUse {
    double used_mb = 0.0;
    double budget_mb = 0.0;
    LineNumber line = 0;
    bool out_of_headroom = false;  ///< the report says so
};

struct GpuFacts {
    std::int64_t number = 0;  ///< the number after "GPU"
    std::string name;
    std::string vendor;
    bool software = false;
    LineNumber line = 0;
    std::optional<double> dedicated_mb;
    std::optional<double> shared_mb;
    std::vector<std::string> displays;
    std::optional<MemoryUse> memory;         ///< in part 1
    std::optional<MemoryUse> memory_in_two;  ///< with the game running
};

struct DisplayFacts {
    std::string name;
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t refresh_hz = 0;
    bool primary = false;
    std::int64_t gpu = -1;
    std::string gpu_name;
    LineNumber line = 0;
};

struct OverrideFacts {
    std::string application;
    std::string choice;
    LineNumber line = 0;
};

struct SettingsFacts {
    std::optional<TextFact> product_version;
    std::optional<TextFact> file;     ///< as printed; may be "(not found)"
    LineNumber defaults_line = 0;     ///< of the warning that the defaults are measured: no file was found
    LineNumber parse_error_line = 0;  ///< the file could not be parsed
    std::optional<TextFact> unreadable_file;  ///< its path then, on the same line
    std::optional<TextFact> depth_source;
    std::optional<TextFact> depth_model;
    std::optional<double> ai_rate_limit;
    std::optional<bool> stereo_enabled;
    std::optional<double> separation_mm;
    std::optional<double> depth_strength;
    LineNumber stereo_off_line = 0;  ///< this and the next two: warnings about a picture without depth
    LineNumber separation_line = 0;
    LineNumber depth_strength_line = 0;
};

struct HeadsetFacts {
    std::optional<TextFact> runtime;
    std::optional<TextFact> message;  ///< why the query stopped early
    std::optional<std::int64_t> eye_width;
    std::optional<std::int64_t> eye_height;
    std::optional<std::int64_t> required_gpu;  ///< -1: not among those listed
    std::string required_gpu_name;
    LineNumber required_gpu_line = 0;
    LineNumber cross_gpu_line = 0;  ///< of the note that frames cross between two GPUs
};

struct BenchmarkFacts {
    std::optional<std::int64_t> gpu;
    std::string gpu_name;
    LineNumber gpu_line = 0;
    LineNumber guessed_line = 0;      ///< the runtime named no adapter
    std::optional<TextFact> failure;  ///< of D3D11CreateDevice
};

struct CaptureFacts {
    std::optional<TextFact> failure;  ///< the quoted advice
    std::optional<std::int64_t> width;
    std::optional<std::int64_t> height;
    LineNumber size_line = 0;
    std::optional<TextFact> other_gpu;  ///< the GPU that frames come from, when it is not the benchmark GPU
    std::optional<double> fps;
    LineNumber fps_line = 0;
    LineNumber not_read_back_line = 0;
};

struct WarpRow {
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::string label;
    double milliseconds = 0.0;
    double vram_mb = 0.0;
    LineNumber line = 0;
};

struct WarpFacts {
    std::vector<WarpRow> rows;
    std::vector<TextFact> failures;  ///< of single sizes
    LineNumber shader_failure_line = 0;
};

struct ModelRow {
    std::string name;
    std::optional<double> median_ms;  ///< empty when it could not be timed
    double min_ms = 0.0;
    double max_ms = 0.0;
    std::string error;
    bool configured = false;
    LineNumber line = 0;
};

struct ModelFacts {
    std::vector<ModelRow> rows;
    LineNumber runtime_missing_line = 0;  ///< onnxruntime.dll is not next to the tool
    LineNumber no_custom_model_line = 0;
};

struct HandFacts {
    std::optional<bool> hand_tracking;
    std::optional<bool> data_source;
    LineNumber data_source_line = 0;
    std::optional<TextFact> stop;        ///< why the hands were not watched
    std::optional<TextFact> conclusion;  ///< the closing line
    bool told_apart = false;             ///< the conclusion says that they are told apart
};

struct ShareRow {
    std::int64_t refresh_hz = 0;
    double warp_ms_per_second = 0.0;
    std::optional<double> ai_percent;
    std::optional<double> reshade_percent;
    LineNumber line = 0;
};

struct VerdictFacts {
    std::vector<ShareRow> shares;
    bool reshade_mode = false;         ///< the verdict is for ReShade mode
    std::optional<double> model_rate;  ///< inferences per second
    LineNumber model_too_slow_line = 0;
    std::optional<double> share;  ///< of the GPU, in percent, at 90 Hz in that mode
    LineNumber share_line = 0;
    LineNumber not_measured_line = 0;  ///< the warp could not be measured
};

/// A run or a section that ended early.
struct BrokenOff {
    std::string section;
    std::string cause;  ///< in the report's words
    LineNumber line = 0;
    bool crashed = true;  ///< false when it was ended by the user or by Windows
};

/// What was changed in the report on its way to us, or what is missing.
struct NoteFact {
    std::string_view kind;  ///< one word: "wrapped", "cut_off", ...
    std::string text;       ///< a sentence; may quote the report
    LineNumber line = 0;
};

/// One of the report's own headings.
struct HeadingFact {
    std::string title;
    LineNumber line = 0;
};

struct Facts {
    std::string name;  ///< of the report: its file name, or the name of the input
    std::optional<std::string> report_version;
    std::optional<TextFact> folder;
    std::array<bool, kPartCount> present{};
    LineNumber part_two_skipped_line = 0;

    SoftwareFacts software;
    SoftwareFacts software_in_two;
    MachineFacts machine;
    std::vector<GpuFacts> gpus;
    LineNumber gpu_list_failure_line = 0;
    std::vector<DisplayFacts> displays;
    std::vector<OverrideFacts> overrides;
    std::vector<TextFact> proxy_dlls;
    std::vector<TextFact> reshade_files;
    SettingsFacts settings;
    std::vector<TextFact> quoted_settings;
    std::vector<TextFact> log_lines;
    std::optional<TextFact> log_path;
    LineNumber log_missing_line = 0;
    LineNumber log_without_start_line = 0;
    std::vector<LineNumber> unread_file_lines;  ///< "could not be read to its end"
    HeadsetFacts headset;
    HeadsetFacts headset_in_two;
    BenchmarkFacts benchmark;
    CaptureFacts capture;
    CaptureFacts game;  ///< part 2's frame rate of the game
    WarpFacts warp;
    ModelFacts models;
    HandFacts hands;
    VerdictFacts verdict;
    std::optional<BrokenOff> cut_short;
    std::vector<BrokenOff> broken_sections;

    std::vector<TextFact> lines;        ///< the whole text as found, one entry per line, empty lines included
    std::vector<HeadingFact> headings;  ///< in the order of the report
    std::vector<LineNumber> not_understood;  ///< lines that no reading function understood
    std::vector<NoteFact> notes;  ///< from the reading: what was repaired, what does not belong to the report

    bool Has(Part part) const { return present[static_cast<std::size_t>(part)]; }
};

/// The line with that number, or null.
const TextFact* FindLine(const Facts& facts, LineNumber number);
TextFact* FindLine(Facts& facts, LineNumber number);

/// The GPU with that number, or null.
const GpuFacts* FindGpu(const Facts& facts, std::int64_t number);

/// The last part that asked about the headset, or null.
const HeadsetFacts* LastHeadset(const Facts& facts);

/// The last part in which the runtime named the GPU that the headset requires; without one the last part that
/// asked, or null.
const HeadsetFacts* HeadsetWithGpu(const Facts& facts);

/// The primary display (the last one when there are several), or null.
const DisplayFacts* PrimaryDisplay(const Facts& facts);

/// Whether the settings take depth from ReShade, so that the product runs no model.
bool DepthIsFromReShade(const Facts& facts);

/// How many GPUs are hardware.
std::size_t HardwareGpuCount(const Facts& facts);

/// The row of the desktop's size, or null when that was not timed: it comes first if it is there.
const WarpRow* DesktopWarp(const Facts& facts);

/// The model that the settings name, or null when the report has no row for it.
const ModelRow* ConfiguredModel(const Facts& facts);

/// A key that is the same for all reports of one machine: sixteen hexadecimal digits, computed from the
/// processor, the memory, and the GPUs' names and sizes. Empty when the report has none of these. Two
/// machines of the same configuration have the same key.
std::string MachineKey(const Facts& facts);
