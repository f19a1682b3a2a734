#include "tests/lab/openxr/openxr_script.h"

#include <istream>
#include <sstream>

#include "tests/lab/fatal_failure.h"

namespace {

/// The number of a session state; 0 for an unknown name.
int StateNumber(const std::string& name) {
    static const std::map<std::string, int> states = {
        {"idle", 1},    {"ready", 2},    {"synchronized", 3}, {"visible", 4},
        {"focused", 5}, {"stopping", 6}, {"loss_pending", 7}, {"exiting", 8},
    };
    const auto found = states.find(name);
    return found != states.end() ? found->second : 0;
}

std::string Rest(std::istringstream& line) {
    std::string rest;
    std::getline(line >> std::ws, rest);
    return rest.substr(0, rest.find_last_not_of(' ') + 1);
}

bool ReadHand(std::istringstream& line, OpenXrScript& script) {
    std::string side;
    OpenXrScript::HandChange change;
    if (!(line >> side >> change.frame >> change.condition) || (side != "left" && side != "right")) {
        return false;
    }
    script.hands[side == "left" ? 0 : 1].push_back(change);
    return true;
}

bool ReadEvent(std::istringstream& line, OpenXrScript& script) {
    OpenXrScript::Event event;
    std::string state;
    if (!(line >> event.pass >> state)) {
        return false;
    }
    event.state = StateNumber(state);
    script.events.push_back(event);
    return event.state != 0;
}

bool ReadVersion(std::istringstream& line, OpenXrScript& script) {
    char dot = 0;
    return static_cast<bool>(line >> script.major >> dot >> script.minor >> dot >> script.patch);
}

bool ReadExtensions(std::istringstream& line, OpenXrScript& script) {
    script.extensions.clear();
    for (std::string name; line >> name;) {
        script.extensions.push_back(name);
    }
    return true;
}

template <typename Value>
bool ReadNamed(std::istringstream& line, std::map<std::string, Value>& values) {
    std::string name;
    Value value = {};
    if (!(line >> name >> value)) {
        return false;
    }
    values[name] = value;
    return true;
}

bool ReadName(std::istringstream& line, std::set<std::string>& names) {
    std::string name;
    if (!(line >> name)) {
        return false;
    }
    names.insert(name);
    return true;
}

bool ReadFatalFailure(const std::string& failure, std::istringstream& line, OpenXrScript& script) {
    std::string function;
    if (!(line >> function)) {
        return false;
    }
    script.fatal_failures[function] = failure;
    return true;
}

bool ReadView(std::istringstream& line, OpenXrScript& script) {
    OpenXrScript::View view;
    if (!(line >> view.width >> view.height)) {
        return false;
    }
    script.views.push_back(view);
    return true;
}

bool ReadStatement(const std::string& keyword, std::istringstream& line, OpenXrScript& script) {
    if (keyword == "runtime") {
        script.runtime = Rest(line);
        return true;
    }
    if (keyword == "luid") {
        return static_cast<bool>(line >> script.luid);
    }
    if (keyword == "system") {
        return static_cast<bool>(line >> script.system);
    }
    if (keyword == "frame_milliseconds") {
        return static_cast<bool>(line >> script.frame_milliseconds);
    }
    if (keyword == "endless_events") {
        return script.endless_events = true;
    }
    if (lab::IsFatalFailure(keyword)) {
        return ReadFatalFailure(keyword, line, script);
    }
    return (keyword == "version" && ReadVersion(line, script)) ||
           (keyword == "extensions" && ReadExtensions(line, script)) ||
           (keyword == "missing" && ReadName(line, script.missing)) ||
           (keyword == "result" && ReadNamed(line, script.results)) ||
           (keyword == "null" && ReadName(line, script.nulls)) ||
           (keyword == "unterminated" && ReadName(line, script.unterminated)) ||
           (keyword == "claim" && ReadNamed(line, script.claims)) ||
           (keyword == "grow" && ReadNamed(line, script.growth)) ||
           (keyword == "view" && ReadView(line, script)) || (keyword == "event" && ReadEvent(line, script)) ||
           (keyword == "hand" && ReadHand(line, script));
}

}  // namespace

std::optional<std::int32_t> OpenXrScript::Result(const std::string& function) const {
    const auto found = results.find(function);
    return found != results.end() ? std::optional(found->second) : std::nullopt;
}

std::string OpenXrScript::HandCondition(std::size_t hand, int frame) const {
    std::string condition = "away";
    for (const HandChange& change : hands[hand]) {
        if (change.frame <= frame) {
            condition = change.condition;
        }
    }
    return condition;
}

OpenXrScript ReadOpenXrScript(std::istream& text) {
    OpenXrScript script;
    for (std::string whole; std::getline(text, whole);) {
        if (!whole.empty() && whole.back() == '\r') {
            whole.pop_back();
        }
        std::istringstream line(whole.substr(0, whole.find('#')));
        std::string keyword;
        if (line >> keyword && !ReadStatement(keyword, line, script)) {
            script.mistakes.push_back(whole);
        }
    }
    return script;
}
