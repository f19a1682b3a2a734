// The behaviour of the scripted OpenXR runtime, from a text file with one statement per line. See README.md.
#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

struct OpenXrScript {
    struct View {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
    };

    /// A session state, delivered when the event queue is drained for time number `pass` (the first is 0).
    struct Event {
        int pass = 0;
        int state = 0;
    };

    /// What a hand does from frame number `frame` of the session on.
    struct HandChange {
        int frame = 0;
        std::string condition;  ///< away, failing, silent, bare, controller, or a source's number
    };

    std::string runtime = "Scripted Runtime";
    std::uint64_t major = 1, minor = 0, patch = 0;
    std::vector<std::string> extensions = {"XR_KHR_D3D11_enable", "XR_EXT_hand_tracking",
                                           "XR_EXT_hand_tracking_data_source"};
    std::set<std::string> missing;                ///< functions that do not exist
    std::map<std::string, std::int32_t> results;  ///< results of functions that do nothing
    std::map<std::string, std::string>
        fatal_failures;                  ///< by function; the kinds are those of tests/lab/fatal_failure.h
    std::set<std::string> nulls;         ///< functions that succeed but return a null handle
    std::set<std::string> unterminated;  ///< "runtime", "extensions": names that fill their field
    std::map<std::string, std::uint32_t> claims;  ///< "views", "extensions": the count in the first call
    std::map<std::string, std::uint32_t> growth;  ///< the same: entries that appear before the second call
    std::uint64_t system = 1;
    std::vector<View> views;
    std::string luid = "own";  ///< "own": the system's first adapter
    std::vector<Event> events;
    bool endless_events = false;
    int frame_milliseconds = 2;
    std::array<std::vector<HandChange>, 2> hands;  ///< left, right
    std::vector<std::string> mistakes;             ///< lines that are not valid statements

    bool Lacks(const std::string& function) const { return missing.count(function) != 0; }
    std::optional<std::int32_t> Result(const std::string& function) const;

    /// What `hand` (0 or 1) does in `frame`; "away" before its first change.
    std::string HandCondition(std::size_t hand, int frame) const;
};

OpenXrScript ReadOpenXrScript(std::istream& text);
