// The machine's time: real, or scripted, so that waits take no real time and every measurement gives the same
// result.
#pragma once

#include <windows.h>

#include <cstdint>

namespace lab {

/// Selects the clock. Scripted time advances through waits (Sleep, PassTime) and by a fixed number of
/// microseconds with every reading of the clock, so that a program that polls the clock makes progress.
void StartClock(bool scripted, std::int64_t cost_of_reading = 2);

bool ClockIsScripted();

/// Creates the event with which a process that hangs on purpose (tests/lab/fatal_failure.h) notifies the
/// process that waits for it, unless a parent on the same machine has created it. Its name is in
/// VISTREL_LAB_HANG.
void MakeHangEvent();

/// Microseconds since a fixed moment.
std::int64_t MachineTime();

/// The value of the performance counter at this MachineTime.
std::int64_t CounterAt(std::int64_t microseconds);

/// Lets time pass: in reality, or only in the script.
void PassTime(std::int64_t microseconds);

// Replacements for the functions of these names on a machine with a scripted clock.
BOOL WINAPI ScriptedQueryPerformanceCounter(LARGE_INTEGER* counter);
ULONGLONG WINAPI ScriptedGetTickCount64();
void WINAPI ScriptedSleep(DWORD milliseconds);
/// A wait with a timeout takes real time, except when it would time out because a process of the lab hangs
/// (AnnounceHang): then it returns at once, after its whole timeout in scripted time.
DWORD WINAPI ScriptedWaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds);

}  // namespace lab
