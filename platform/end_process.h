// Ends the process without running clean-up code.
#pragma once

/// Ends the process at once with this exit code: no DLL's detach code runs, because that of another vendor's
/// driver or runtime may crash or hang. The caller must flush its files first. In a coverage build this is an
/// ordinary exit, because the counts are written there.
[[noreturn]] void EndProcess(unsigned exit_code);
