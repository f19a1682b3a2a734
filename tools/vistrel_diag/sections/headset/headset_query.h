// Queries the OpenXR runtime, and passes the answers to another process.
#pragma once

#include <functional>

#include "tools/vistrel_diag/sections/headset/headset_section.h"
#include "tools/vistrel_diag/worker/worker_task.h"

/// Queries the OpenXR runtime through the loader, the one next to the executable if there is one. Always
/// returns a record: it says what went wrong, and keeps what was learnt before that. Calls `found` with the
/// record after each answer. The loader stays loaded.
HeadsetQuery QueryOpenXrHeadset(const std::function<void(const HeadsetQuery&)>& found = {});

/// Convert the record to a message and back. A value missing from the message keeps its default in the
/// record.
WorkerMessage MessageOf(const HeadsetQuery& query);
HeadsetQuery HeadsetQueryOf(const WorkerMessage& message);

inline constexpr std::string_view kHeadsetTask = "headset";

/// The worker's task of that name: queries the runtime, and sends the record after each answer.
void CarryOutHeadsetTask(const WorkerMessage& request, WorkerChannel& channel);
