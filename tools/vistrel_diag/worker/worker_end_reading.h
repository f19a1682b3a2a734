// The way back from the words for how a worker process ended.
#pragma once

#include <optional>
#include <string_view>

#include "tools/vistrel_diag/worker/worker_end.h"

/// What WorkerEndText made `text` of. The print loses nothing but the code of a process that aborted or was
/// ended. Empty when it is no such text.
std::optional<WorkerEnd> ReadWorkerEnd(std::string_view text);
