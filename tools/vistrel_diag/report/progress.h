// Progress for the user at a real console: what is being measured now and how far it has got. It is shown on
// one line that the next output replaces, in the window's title, and on the taskbar where the terminal
// supports that. It is never written to the report, a pipe or a file. Only the thread that prints the report
// calls these functions.
#pragma once

#include <string>
#include <string_view>

namespace Progress {

/// An activity that takes long and has no steps, for example "Asking the OpenXR runtime". `what` begins with
/// a capital letter and ends without dots. The screen is redrawn only when something has changed, so a loop
/// may call these functions as often as it likes.
void Show(std::string_view what);

/// Step `step` of `count`, counted from 1; `detail` names it: Show("Depth model", 5, 12, "the largest").
void Show(std::string_view what, int step, int count, std::string_view detail = {});

/// An activity of known duration. Whole seconds are shown, so a loop that calls this changes the screen once
/// a second.
void ShowSecondsLeft(std::string_view what, double seconds_left, double seconds_in_all);

/// Nothing is being measured. A new section, a prompt and the end of the run call this themselves.
void Clear();

enum class Taskbar { Nothing, Busy, Part };

/// Where progress is shown in addition to the line from the console's writer (SetConsoleWriter).
struct Display {
    int (*columns)();                                 ///< the current width of the console's window
    void (*set_title)(std::string_view title);        ///< UTF-8
    void (*set_taskbar)(Taskbar state, int percent);  ///< `percent` is used with Part only
};

/// From now on progress is shown on `display`. Null, the initial state, shows it nowhere. The caller owns
/// `display` and keeps it alive until another one is set.
void SetDisplay(const Display* display);

}  // namespace Progress
