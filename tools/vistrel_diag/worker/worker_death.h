// The worker's last moments: noting for the parent what it dies of, without a dialog and without a dump.
#pragma once

struct WorkerBlock;

/// From now on the process dies quietly of whatever kills it, and `block`, which stays mapped, tells what
/// that was as far as Windows lets the process know. For the calling thread, a stack overflow too.
void NoteDeathIn(WorkerBlock& block);

/// There is nothing to tell any more; the block may go.
void StopNotingDeath();
