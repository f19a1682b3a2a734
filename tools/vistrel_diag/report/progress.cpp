#include "tools/vistrel_diag/report/progress.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "tools/vistrel_diag/report/console.h"

namespace Progress {
namespace {

constexpr const char* kProgramTitle = "Vistrel diagnostic";

struct State {
    const Display* display = nullptr;
    std::string title;
    Taskbar taskbar = Taskbar::Nothing;
    int percent = 0;
};

State& Now() {
    static State state;
    return state;
}

void SetTitle(const std::string& title) {
    if (Now().title != title) {
        Now().title = title;
        Now().display->set_title(title);
    }
}

void SetTaskbar(Taskbar taskbar, int percent) {
    if (Now().taskbar != taskbar || Now().percent != percent) {
        Now().taskbar = taskbar;
        Now().percent = percent;
        Now().display->set_taskbar(taskbar, percent);
    }
}

void ShowText(const std::string& text, Taskbar taskbar, int percent) {
    if (Now().display == nullptr) {
        return;
    }
    SetTitle(std::string(kProgramTitle) + " - " + text);
    SetTaskbar(taskbar, percent);
    // A line as wide as the window would wrap, and a wrapped line cannot be overwritten.
    const int columns = std::max(Now().display->columns() - 1, 0);
    ShowTransientLine(("  " + text + " ...").substr(0, static_cast<std::size_t>(columns)));
}

/// The part of `whole` that is done, in percent; 0 when it cannot be calculated.
int Percent(double done, double whole) {
    const double percent = 100.0 * done / whole;
    return percent > 0.0 ? static_cast<int>(std::min(percent, 100.0)) : 0;
}

}  // namespace

void Show(std::string_view what) {
    ShowText(std::string(what), Taskbar::Busy, 0);
}

void Show(std::string_view what, int step, int count, std::string_view detail) {
    std::string text = std::string(what) + " " + std::to_string(step) + " of " + std::to_string(count);
    if (!detail.empty()) {
        text += ": " + std::string(detail);
    }
    ShowText(text, Taskbar::Part, Percent(step - 1, count));
}

void ShowSecondsLeft(std::string_view what, double seconds_left, double seconds_in_all) {
    constexpr double kLongest = 86400.0;
    const double left = seconds_left > 0.0 ? std::min(seconds_left, kLongest) : 0.0;
    const int whole_seconds = static_cast<int>(std::ceil(left));
    // Whole seconds here as well, so that the bar changes together with the line.
    ShowText(std::string(what) + ", " + std::to_string(whole_seconds) + " s left", Taskbar::Part,
             Percent(seconds_in_all - whole_seconds, seconds_in_all));
}

void Clear() {
    if (Now().display == nullptr) {
        return;
    }
    ShowTransientLine("");
    SetTaskbar(Taskbar::Nothing, 0);
    SetTitle(kProgramTitle);
}

void SetDisplay(const Display* display) {
    if (Now().display != nullptr) {
        Clear();
    }
    Now() = State{};
    Now().display = display;
    Clear();
}

}  // namespace Progress
