// A handler for abort.
#pragma once

/// From now on `handler` is called when code in the process calls abort, either that of this program's own C
/// runtime or that of Windows' (ucrtbase.dll), which has separate handlers. Null removes the handler. A
/// library with a statically linked C runtime has its own handlers and is not covered. May be called again,
/// after a library has installed its own handler instead.
void HandleAbort(void (*handler)(int signal));
