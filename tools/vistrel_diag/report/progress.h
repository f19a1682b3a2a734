// What is being measured now and how far it is, for the person at a real console: on one line that the next
// output replaces, in the window's title, and on the taskbar where the terminal shows progress there. It
// never reaches the report, a pipe or a file. Only the thread that prints the report calls these functions.
#pragma once

#include <string>
#include <string_view>

namespace Progress {

/// What takes long and cannot be divided, "Asking the OpenXR runtime" for example. `what` begins with a
/// capital letter and has no dots behind it. Nothing is drawn again when nothing has changed, so that a loop
/// may call these functions as often as it likes.
void Show(std::string_view what);

/// Step `step` of `count`, counted from 1; `detail` names it: Show("Depth model", 5, 12, "the largest").
void Show(std::string_view what, int step, int count, std::string_view detail = {});

/// What takes a known time. Whole seconds are shown, so that a loop which calls this changes the screen once
/// a second.
void ShowSecondsLeft(std::string_view what, double seconds_left, double seconds_in_all);

/// Nothing is being measured. A new section, a prompt and the run's end do this by themselves.
void Clear();

enum class Taskbar { Nothing, Busy, Part };

/// Where progress is shown, beside the line that the console's writer shows (SetConsoleWriter).
struct Display {
    int (*columns)();                                 ///< how many the console's window has now
    void (*set_title)(std::string_view title);        ///< UTF-8
    void (*set_taskbar)(Taskbar state, int percent);  ///< `percent` belongs to Part
};

/// From now on progress is shown there. Null: nowhere, which is so at the start. `display` is the caller's
/// and lives until another one is set.
void SetDisplay(const Display* display);

}  // namespace Progress
