// Records for the parent why the worker process crashes, without a dialog and without a dump.
#pragma once

struct WorkerBlock;

/// From now on the process crashes without a dialog, and `block` receives the cause as far as Windows reports
/// it to the process. `block` must stay mapped. A stack overflow is covered for the calling thread only.
void RecordCrashesIn(WorkerBlock& block);

/// Ends the recording; the block may then be unmapped.
void StopRecordingCrashes();
