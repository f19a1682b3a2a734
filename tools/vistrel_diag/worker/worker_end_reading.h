// Reads back the words for how a worker process ended.
#pragma once

#include <optional>
#include <string_view>

#include "tools/vistrel_diag/worker/worker_end.h"

/// The record from which WorkerEndText made `text`. Only the code of a process that aborted or was ended is
/// not in the text. Empty when `text` is not such a text.
std::optional<WorkerEnd> ReadWorkerEnd(std::string_view text);
