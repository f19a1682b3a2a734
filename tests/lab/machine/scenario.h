// A scenario: the description of a simulated machine, read from a text file. Includes no Windows header.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace lab {

/// A result code of Windows, by its bit pattern.
using ResultCode = std::uint32_t;

struct Size {
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    friend bool operator==(const Size&, const Size&) = default;
};

enum class PixelFormat { kBgra, kBgraTypeless, kRgba, kRgbaTypeless, kHalfFloat };

enum class Picture { kPattern, kDesktop };

/// Duplicating the desktop fails. Without `times` and `milliseconds` it always fails.
struct Refusal {
    ResultCode result = 0;
    std::optional<int> times;
    std::optional<int> milliseconds;
};

/// One loss of the duplication, and what has changed when it is restored.
struct Loss {
    std::optional<int> after_frames;
    std::optional<int> after_milliseconds;
    std::optional<Size> size;
    std::optional<PixelFormat> format;
    std::optional<std::size_t> adapter;
    std::optional<Refusal> refusal;
    bool unplugged = false;
};

/// How often the desktop changes.
struct Frames {
    /// Per second; 0 is a still desktop, which delivers only its first image.
    double rate = 60;
    bool never = false;
    /// No present produced the first image: it is black, and only the pointer is new.
    bool first_blank = false;
    /// Pointer moves per second; each is a separate update if there is no new image.
    double pointer_rate = 0;
};

/// An entry in the desktop's list of display devices.
struct Display {
    std::u16string name;
    Size size;
    int left = 0;
    int top = 0;
    int refresh_rate = 60;
    bool primary = false;
    bool attached = true;
    bool mirror = false;
    bool mode_fails = false;
};

/// An output of an adapter.
struct Output {
    std::size_t adapter = 0;  ///< position in Scenario::adapters
    std::size_t display = 0;  ///< position in Scenario::displays
    int rotation = 0;         ///< degrees
    std::optional<ResultCode> enumeration_fails;
    std::optional<ResultCode> description_fails;
    bool without_output1 = false;
    std::optional<Refusal> refusal;
    std::optional<Refusal> acquiring;  ///< AcquireNextFrame, counted from the start of the duplication
    Frames frames;
    PixelFormat format = PixelFormat::kBgra;
    bool hdr = false;
    Picture picture = Picture::kPattern;
    std::vector<Loss> losses;
};

/// The GPU's clock rises under load and drops when it is idle.
struct ClockRamp {
    int from_percent = 100;  ///< percent of full speed, after a long idle time
    int milliseconds = 0;    ///< of load to reach full speed, and of idle time to reach the lowest
};

enum class StampTrouble { kNone, kDisjoint, kNever };

struct Adapter {
    std::u16string name;  ///< of any length, may contain an unpaired surrogate as from a driver
    std::uint32_t vendor = 0;
    std::uint32_t luid_low = 0;
    std::int32_t luid_high = 0;
    std::uint64_t dedicated_bytes = 0;
    std::uint64_t shared_bytes = 0;
    std::uint64_t used_bytes = 0;
    std::uint64_t budget_bytes = 0;
    std::uint64_t reserved_bytes = 0;
    /// Megapixels per second in scripted time; empty to use the real GPU's time.
    std::optional<int> draw_rate;
    std::optional<int> black_draw_rate;                ///< the same while the shader's first texture is black
    std::optional<ClockRamp> ramp;                     ///< only with a draw_rate
    StampTrouble stamp_trouble = StampTrouble::kNone;  ///< only with a draw_rate
    int stamps_late_milliseconds = 0;                  ///< only with a draw_rate
    /// Textures count as memory in use until this long after the flush that follows their release.
    std::optional<int> memory_falls_milliseconds;
    std::uint64_t memory_drift_bytes = 0;  ///< added to every other reading of the use
    std::optional<Refusal> mapping;        ///< ID3D11DeviceContext::Map, on a device of this adapter
    bool software = false;
    bool remote = false;  ///< of a Remote Desktop session
    bool without_adapter3 = false;
    std::optional<ResultCode> enumeration_fails;
    std::optional<ResultCode> description_fails;
    std::optional<ResultCode> memory_fails;
    std::optional<ResultCode> device_fails;
    std::optional<ResultCode> outputs_end_with;
};

struct Cursor {
    bool query_fails = false;
    bool showing = true;
    bool suppressed = false;  ///< by touch input; neither shown nor hidden then
    bool null_handle = false;
    int x = 100;
    int y = 100;
};

/// A call that crashes the program.
struct FatalFailure {
    std::string kind;  ///< see tests/lab/fatal_failure.h
    int call = 1;      ///< at which call it happens
};

struct Scenario {
    std::vector<Adapter> adapters;
    std::vector<Output> outputs;
    std::vector<Display> displays;  ///< in the order of their listing
    Cursor cursor;
    std::string program_path;  ///< the program's own path as Windows reports it; empty: the real one
    std::string library;       ///< a DLL that other software has loaded into the process; may be empty
    bool scripted_clock = false;
    std::optional<ResultCode> factory_fails;
    std::optional<ResultCode> device_fails;
    std::optional<ResultCode> adapters_end_with;
    std::map<std::string, FatalFailure> fatal_failures;  ///< by the function that fails
};

/// An invalid line; the message contains the line and the reason.
struct ScenarioError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Reads a whole scenario. Throws ScenarioError at the first invalid line.
Scenario ReadScenario(std::istream& text);

}  // namespace lab
