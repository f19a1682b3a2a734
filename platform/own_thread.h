// Running something on a thread of its own.
#pragma once

#include <functional>

/// Calls `work` on a new thread and waits for its end; on the calling thread when no thread can be made.
///
/// The C runtime's start-up code puts a frame around main that answers some exceptions of hardware, an
/// integer overflow among them, by trying the same instruction again, for ever. A thread of its own has no
/// such frame: there they reach the unhandled-exception filter like any other.
void RunOnOwnThread(const std::function<void()>& work);
