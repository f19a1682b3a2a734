// Learning that the user logs off or the system shuts down. A console program that has loaded user32 (this
// one has, for its displays and cursor) gets no console event for either; only a window is told.
#pragma once

/// Calls `on_session_end` on another thread when the session ends. At most one watch at a time. Does nothing
/// when the hidden window or its thread cannot be made.
void WatchForSessionEnd(void (*on_session_end)());

/// Ends the watch and waits for its thread.
void StopWatchingForSessionEnd();
