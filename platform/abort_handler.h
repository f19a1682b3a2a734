// Being told when the process aborts.
#pragma once

/// `handler` is called when anything in the process calls abort: of this program's own C runtime, or of
/// Windows' (ucrtbase.dll), which keeps its handlers apart. Null: nobody is told any more. A library with a C
/// runtime inside itself has handlers of its own, out of reach. Can be called again, after a library has put
/// its own handler in that place.
void HandleAbort(void (*handler)(int signal));
