// The run from the banner to "Press Enter to close.": every section once, in one fixed order.
#pragma once

#include "tools/vistrel_diag/command_line.h"

/// Carries out the whole run on the calling thread and writes the report file. A failing step does not end
/// the run early.
void CarryOutRun(const RunOptions& options);
