// The process's end, past everybody's clean-up.
#pragma once

/// Ends the process at once with this exit code: no DLL's detach code runs, which in another vendor's driver
/// or runtime may crash or hang at the very end. What must be flushed is flushed before. In a build that
/// counts its lines it is an ordinary exit, for the counts are written there.
[[noreturn]] void EndProcess(unsigned exit_code);
