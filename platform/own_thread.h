// Runs a function on a thread of its own.
#pragma once

#include <functional>

/// Calls `work` on a new thread and waits until it returns. Calls it on the calling thread when no thread can
/// be created.
///
/// The C runtime's start-up code puts an exception handler around main that handles some hardware exceptions,
/// such as integer overflow, by repeating the same instruction forever. A new thread has no such handler:
/// there these exceptions reach the unhandled-exception filter like any other.
void RunOnOwnThread(const std::function<void()>& work);
