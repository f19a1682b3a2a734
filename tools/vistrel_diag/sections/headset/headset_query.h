// Asking the OpenXR runtime, and telling another process what it answered.
#pragma once

#include <functional>

#include "tools/vistrel_diag/sections/headset/headset_section.h"
#include "tools/vistrel_diag/worker/worker_task.h"

/// Asks the OpenXR runtime through the loader beside the executable. Never fails: what went wrong is in the
/// record, and what was learnt before that is kept. Calls `found` with the record after each answer. The
/// loader stays loaded.
HeadsetQuery QueryOpenXrHeadset(const std::function<void(const HeadsetQuery&)>& found = {});

/// The record as a message, and back. A message without a value leaves the record's as it is.
WorkerMessage MessageOf(const HeadsetQuery& query);
HeadsetQuery HeadsetQueryOf(const WorkerMessage& message);

inline constexpr std::string_view kHeadsetTask = "headset";

/// The worker's task of that name: asks, and tells the record after each answer.
void CarryOutHeadsetTask(const WorkerMessage& request, WorkerChannel& channel);
