#include "settings/settings_overlay.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace {

/// One key of the settings file and the field it belongs to.
struct Key {
    std::string name;
    std::variant<std::int32_t DiagSettings::*, float DiagSettings::*, bool DiagSettings::*> field;
};

/// In the order in which the product stores them.
const std::vector<Key>& Keys() {
    static const std::vector<Key> keys = {
        {"vistrel_image_algo", &DiagSettings::image_algo},
        {"vistrel_scale", &DiagSettings::scale},
        {"vistrel_f3d_search_steps", &DiagSettings::f3d_search_steps},
        {"vistrel_f3d_separation_pct", &DiagSettings::f3d_separation_pct},
        {"vistrel_f3d_depth_strength", &DiagSettings::f3d_depth_strength},
        {"vistrel_f3d_screen_depth", &DiagSettings::f3d_screen_depth},
        {"vistrel_f3d_popout_limit", &DiagSettings::f3d_popout_limit},
        {"vistrel_f3d_eye_balance", &DiagSettings::f3d_eye_balance},
        {"vistrel_f3d_edge_magnet", &DiagSettings::f3d_edge_magnet},
        {"vistrel_f3d_fill_smooth", &DiagSettings::f3d_fill_smooth},
        {"vistrel_f3d_debug_stage", &DiagSettings::f3d_debug_stage},
        {"vistrel_depth_model_quality", &DiagSettings::depth_model_quality},
        {"vistrel_ai_resolution", &DiagSettings::ai_resolution},
        {"vistrel_ai_fps_limit", &DiagSettings::ai_fps_limit},
        {"vistrel_ai_fps_auto", &DiagSettings::ai_fps_auto},
        {"vistrel_depth_mode", &DiagSettings::depth_mode},
        {"vistrel_reshade_enabled", &DiagSettings::reshade_enabled},
        {"vistrel_reshade_depth_invert", &DiagSettings::reshade_depth_invert},
        {"vistrel_pseudo_3d", &DiagSettings::pseudo_3d},
        {"vistrel_cinema_mode", &DiagSettings::cinema_mode},
        {"vistrel_optical_flow", &DiagSettings::optical_flow},
        {"vistrel_fsr3", &DiagSettings::fsr3},
        {"vistrel_gpu_frame_wait", &DiagSettings::gpu_frame_wait},
        {"vistrel_screen_shape", &DiagSettings::screen_shape},
        {"vistrel_depth_edge_restore", &DiagSettings::depth_edge_restore},
    };
    return keys;
}

/// All fields as text, those without a key too.
std::string Describe(const DiagSettings& settings) {
    std::ostringstream text;
    text.precision(9);
    for (const Key& key : Keys()) {
        text << key.name << " = ";
        std::visit([&](auto field) { text << settings.*field; }, key.field);
        text << "\n";
    }
    text << settings.log_to_console << settings.custom_model_path << settings.capture_draw_cursor
         << settings.eye_distance_mm << settings.steam_build;
    return text.str();
}

/// A value unlike the default of the key's field, in JSON and in the record.
std::string OtherValue(const Key& key, DiagSettings& settings) {
    const DiagSettings defaults;
    if (const auto* number = std::get_if<std::int32_t DiagSettings::*>(&key.field)) {
        settings.*(*number) = defaults.*(*number) + 7;
        return std::to_string(defaults.*(*number) + 7);
    }
    if (const auto* number = std::get_if<float DiagSettings::*>(&key.field)) {
        settings.*(*number) = 0.125F;
        return "0.125";
    }
    const auto flag = std::get<bool DiagSettings::*>(key.field);
    settings.*flag = !(defaults.*flag);
    return defaults.*flag ? "false" : "true";
}

/// Overlays `json`; the text of the failure, empty when there was none.
std::string Overlay(const std::string& json, DiagSettings& settings) {
    std::istringstream file(json);
    try {
        OverlaySettings(file, settings);
    } catch (const std::exception& error) {
        return error.what();
    }
    return "";
}

/// The record after `json`, which must be taken in full.
DiagSettings Overlaid(const std::string& json) {
    DiagSettings settings;
    EXPECT_EQ(Overlay(json, settings), "") << json;
    return settings;
}

/// The failure on `json`, which must leave every field at its default.
std::string FailureWithoutChange(const std::string& json) {
    DiagSettings settings;
    const std::string failure = Overlay(json, settings);
    EXPECT_NE(failure, "");
    EXPECT_EQ(Describe(settings), Describe(DiagSettings())) << json;
    return failure;
}

TEST(SettingsOverlay, AFileWithoutProductKeysChangesNothing) {
    EXPECT_EQ(Describe(Overlaid(R"({"osc_port": 9000, "tracking": {"vistrel_scale": 5}})")),
              Describe(DiagSettings()));
    EXPECT_EQ(Describe(Overlaid("{}")), Describe(DiagSettings()));
}

TEST(SettingsOverlay, EachKeySetsOnlyItsField) {
    ASSERT_EQ(Keys().size(), 25U);
    for (const Key& key : Keys()) {
        DiagSettings expected;
        const std::string value = OtherValue(key, expected);
        EXPECT_EQ(Describe(Overlaid("{\"" + key.name + "\": " + value + "}")), Describe(expected));
    }
}

TEST(SettingsOverlay, AllKeysTogetherSetAllFields) {
    DiagSettings expected;
    std::string json = "{ \"other\": null";
    for (const Key& key : Keys()) {
        json += ", \"" + key.name + "\": ";
        json += OtherValue(key, expected);
    }
    EXPECT_EQ(Describe(Overlaid(json + "}")), Describe(expected));
}

TEST(SettingsOverlay, KeysAreMatchedExactly) {
    EXPECT_EQ(Describe(Overlaid(R"({"Vistrel_scale": 2, "VISTREL_SCALE": 3, "vistrel_scale ": 4, "scale": 5,
                                    "vistrel_log_to_console": true, "vistrel_eye_distance_mm": 70,
                                    "vistrel_custom_model_path": "x", "vistrel_steam_build": true,
                                    "vistrel_capture_draw_cursor": false})")),
              Describe(DiagSettings()));
}

/// The failure at each key for values of a wrong type: keys before it have their new values, the key itself
/// and those after it do not.
TEST(SettingsOverlay, AValueOfAWrongTypeKeepsTheKeysBeforeIt) {
    for (std::size_t wrong = 0; wrong < Keys().size(); ++wrong) {
        const bool flag = std::holds_alternative<bool DiagSettings::*>(Keys()[wrong].field);
        std::vector<std::pair<std::string, std::string>> values = {
            {"null", "null"}, {"\"1\"", "string"}, {"[1]", "array"}, {"{\"a\": 1}", "object"}};
        if (flag) {
            values.insert(values.end(), {{"0", "number"}, {"1", "number"}, {"0.5", "number"}});
        }
        for (const auto& [value, kind] : values) {
            DiagSettings expected;
            std::string json;
            for (std::size_t i = 0; i < Keys().size(); ++i) {
                DiagSettings behind;
                json += i == 0 ? "{" : ", ";
                json += "\"" + Keys()[i].name + "\": ";
                json += i == wrong ? value : OtherValue(Keys()[i], i < wrong ? expected : behind);
            }
            DiagSettings settings;
            EXPECT_EQ(Overlay(json + "}", settings), "[json.exception.type_error.302] type must be " +
                                                         std::string(flag ? "boolean" : "number") +
                                                         ", but is " + kind);
            EXPECT_EQ(Describe(settings), Describe(expected)) << Keys()[wrong].name << " " << value;
        }
    }
}

TEST(SettingsOverlay, NumbersOfBothKindsConvertIntoEachOther) {
    EXPECT_EQ(Overlaid(R"({"vistrel_scale": 2})").scale, 2.0F);
    EXPECT_EQ(Overlaid(R"({"vistrel_scale": -3})").scale, -3.0F);
    EXPECT_EQ(Overlaid(R"({"vistrel_scale": 0.1})").scale, 0.1F);
    EXPECT_EQ(Overlaid(R"({"vistrel_f3d_search_steps": 12.0})").f3d_search_steps, 12);
}

TEST(SettingsOverlay, AFractionIsTruncatedForAnInt) {
    EXPECT_EQ(Overlaid(R"({"vistrel_f3d_search_steps": 12.99})").f3d_search_steps, 12);
    EXPECT_EQ(Overlaid(R"({"vistrel_f3d_search_steps": -12.99})").f3d_search_steps, -12);
    EXPECT_EQ(Overlaid(R"({"vistrel_f3d_search_steps": 1e-300})").f3d_search_steps, 0);
    EXPECT_EQ(Overlaid(R"({"vistrel_f3d_search_steps": 2147483647.9})").f3d_search_steps, 2147483647);
}

TEST(SettingsOverlay, BooleansConvertIntoNumbers) {
    EXPECT_EQ(Overlaid(R"({"vistrel_scale": true})").scale, 1.0F);
    EXPECT_EQ(Overlaid(R"({"vistrel_scale": false})").scale, 0.0F);
    EXPECT_EQ(Overlaid(R"({"vistrel_image_algo": true})").image_algo, 1);
    EXPECT_EQ(Overlaid(R"({"vistrel_image_algo": false})").image_algo, 0);
}

struct IntCase {
    const char* json;
    std::int32_t field;
};

constexpr std::int32_t kLargestInt = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kSmallestInt = std::numeric_limits<std::int32_t>::min();

/// Every int field, because each converts separately.
void ExpectInts(const std::vector<IntCase>& cases) {
    for (const Key& key : Keys()) {
        if (const auto* field = std::get_if<std::int32_t DiagSettings::*>(&key.field)) {
            for (const IntCase& one : cases) {
                EXPECT_EQ(Overlaid("{\"" + key.name + "\": " + one.json + "}").*(*field), one.field)
                    << key.name << " " << one.json;
            }
        }
    }
}

TEST(SettingsOverlay, AWholeNumberBeyondAnIntWrapsModulo2To32) {
    ExpectInts({{"2147483647", kLargestInt},
                {"-2147483648", kSmallestInt},
                {"2147483648", kSmallestInt},
                {"-2147483649", kLargestInt},
                {"4294967295", -1},
                {"4294967296", 0},
                {"4294967298", 2},
                {"-4294967298", -2},
                {"9223372036854775807", -1},
                {"-9223372036854775808", 0},
                {"18446744073709551615", -1}});
}

TEST(SettingsOverlay, AFractionOrExponentBeyondAnIntBecomesTheSmallestInt) {
    ExpectInts({{"2147483647.9", kLargestInt},
                {"-2147483648.9", kSmallestInt},
                {"2147483648.0", kSmallestInt},
                {"-2147483649.0", kSmallestInt},
                {"4294967298.0", kSmallestInt},
                {"3e9", kSmallestInt},
                {"-3e9", kSmallestInt},
                {"1e300", kSmallestInt},
                {"-1e300", kSmallestInt},
                {"2e9", 2000000000},
                // Without either, but too long for the library's whole numbers.
                {"18446744073709551616", kSmallestInt},
                {"-9223372036854775809", kSmallestInt}});
}

TEST(SettingsOverlay, ANumberBeyondAFloatBecomesInfinity) {
    constexpr float kMost = std::numeric_limits<float>::max();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const std::vector<std::pair<std::string, float>> cases = {
        {"3.4028235e38", kMost},
        {"3.4028235677973362e38", kMost},      // The last that rounds down,
        {"3.4028235677973366e38", kInfinity},  // half a step above the largest,
        {"3.5e38", kInfinity},
        {"1e300", kInfinity},
        {"1" + std::string(60, '0'), kInfinity},
        {"18446744073709551615", 18446744073709551616.0F},
        {"18446744073709551616", 18446744073709551616.0F},
        {"1e-300", 0.0F}};
    for (const Key& key : Keys()) {
        if (const auto* field = std::get_if<float DiagSettings::*>(&key.field)) {
            for (const auto& [json, expected] : cases) {
                EXPECT_EQ(Overlaid("{\"" + key.name + "\": " + json + "}").*(*field), expected) << json;
                EXPECT_EQ(Overlaid("{\"" + key.name + "\": -" + json + "}").*(*field), -expected) << json;
            }
        }
    }
}

TEST(SettingsOverlay, ANumberBeyondADoubleFails) {
    EXPECT_EQ(FailureWithoutChange(R"({"vistrel_scale": 1e999})"),
              "[json.exception.out_of_range.406] number overflow parsing '1e999'");
}

TEST(SettingsOverlay, TheLastOfTwoEqualKeysWins) {
    EXPECT_EQ(Overlaid(R"({"vistrel_scale": 2, "vistrel_scale": 3})").scale, 3.0F);
    EXPECT_EQ(Overlaid(R"({"vistrel_scale": "x", "vistrel_scale": 3})").scale, 3.0F);
}

TEST(SettingsOverlay, AValueThatIsNotAnObjectFailsAtTheFirstKey) {
    for (const auto& [json, kind] :
         std::vector<std::pair<std::string, std::string>>{{"[]", "array"},
                                                          {"[{\"vistrel_scale\": 2}]", "array"},
                                                          {"\"text\"", "string"},
                                                          {"5", "number"},
                                                          {"0.5", "number"},
                                                          {"true", "boolean"},
                                                          {"null", "null"}}) {
        EXPECT_EQ(FailureWithoutChange(json),
                  "[json.exception.type_error.306] cannot use value() with " + kind);
    }
}

TEST(SettingsOverlay, TextThatIsNotJsonFails) {
    EXPECT_EQ(
        FailureWithoutChange(""),
        "[json.exception.parse_error.101] parse error at line 1, column 1: attempting to parse an empty "
        "input; check that your input string or stream contains the expected JSON");
    EXPECT_EQ(FailureWithoutChange("{\"vistrel_scale\": 2"),
              "[json.exception.parse_error.101] parse error at line 1, column 20: syntax error while parsing "
              "object - unexpected end of input; expected '}'");
    for (const char* broken :
         {" \n", "{\"vistrel_scale\": 2,}", "{vistrel_scale: 2}", "{\"vistrel_scale\": NaN}",
          "{\"vistrel_scale\": 02}", "\x1A", "{\"vistrel_scale\": \"\xFF\"}", "{\"vistrel_scale\": 2\x1A}"}) {
        FailureWithoutChange(broken);
    }
    FailureWithoutChange(std::string("{\0}", 3));
}

TEST(SettingsOverlay, CommentsAreNotAccepted) {
    FailureWithoutChange("// settings\n{\"vistrel_scale\": 2}");
    FailureWithoutChange("{\"vistrel_scale\": 2 /* wide */}");
}

TEST(SettingsOverlay, TextAfterTheValueIsIgnored) {
    EXPECT_EQ(Overlaid("{\"vistrel_scale\": 2} and then { rubbish \x1A\xFF").scale, 2.0F);
    EXPECT_EQ(Overlaid("{\"vistrel_scale\": 2}{\"vistrel_scale\": 3}").scale, 2.0F);
    EXPECT_EQ(Overlaid("{\"vistrel_scale\": 2} // comment").scale, 2.0F);
}

TEST(SettingsOverlay, AByteOrderMarkIsSkipped) {
    EXPECT_EQ(Overlaid("\xEF\xBB\xBF{\"vistrel_scale\": 2}").scale, 2.0F);
    FailureWithoutChange("\xEF\xBB{\"vistrel_scale\": 2}");
    FailureWithoutChange(std::string("\xFF\xFE{\0}\0", 6));  // UTF-16 is not read.
}

TEST(SettingsOverlay, AStreamThatCannotBeReadFails) {
    class FailingFile : public std::streambuf {
        int_type underflow() override { throw std::runtime_error("read error"); }
    };
    FailingFile failing;
    std::istream file(&failing);
    DiagSettings settings;
    EXPECT_THROW(OverlaySettings(file, settings), std::runtime_error);
}

/// Far more levels than any stack could hold.
constexpr std::size_t kDeep = 100'000;

std::string Nested(const std::string& open, const std::string& close) {
    std::string text;
    for (std::size_t i = 0; i < kDeep; ++i) {
        text += open;
    }
    for (std::size_t i = 0; i < kDeep; ++i) {
        text += close;
    }
    return text;
}

TEST(SettingsOverlay, DeepNestingDoesNotOverflowTheStack) {
    EXPECT_EQ(Overlaid("{\"host\": " + Nested("[", "]") + ", \"vistrel_scale\": 2}").scale, 2.0F);
    EXPECT_EQ(FailureWithoutChange("{\"vistrel_image_algo\": " + Nested("[", "]") + "}"),
              "[json.exception.type_error.302] type must be number, but is array");
    EXPECT_EQ(FailureWithoutChange(Nested("[", "]")),
              "[json.exception.type_error.306] cannot use value() with array");
    FailureWithoutChange(std::string(kDeep, '['));  // Never closed.
    std::string objects;
    for (std::size_t i = 0; i < kDeep; ++i) {
        objects += "{\"a\":";
    }
    FailureWithoutChange(objects);
}

TEST(SettingsOverlay, AFileOfFiftyMegabytesIsRead) {
    std::string json = "{";
    const std::string text(1 << 20, 'x');
#ifdef __SANITIZE_ADDRESS__
    constexpr int kMegabytes = 5;  // Under the sanitizers fifty take half a minute.
#else
    constexpr int kMegabytes = 50;
#endif
    for (int i = 0; i < kMegabytes; ++i) {
        json += "\"host_" + std::to_string(i) + "\": \"" + text + "\", ";
    }
    EXPECT_EQ(Overlaid(json + "\"vistrel_scale\": 2}").scale, 2.0F);
}

}  // namespace
