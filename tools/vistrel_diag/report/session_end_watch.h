// Notification that the user logs off or the system shuts down. A console program that has loaded user32
// (this one has, for its displays and cursor) gets no console event for either; only a window receives a
// message.
#pragma once

enum class SessionEnd {
    LogOffOrShutDown,     ///< Windows ends the process soon afterwards
    ClosedForAnotherOne,  ///< the Restart Manager closes only this program, for an installer or an update
};

/// Calls `on_session_end` on another thread when the session ends, or when the process is asked to end as if
/// it did. The callback should end the process. At most one watch at a time. Does nothing when the hidden
/// window or its thread cannot be made.
void WatchForSessionEnd(void (*on_session_end)(SessionEnd end));

/// Ends the watch and waits for its thread.
void StopWatchingForSessionEnd();
