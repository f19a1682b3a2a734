// The machine's time: real, or scripted so that waits cost nothing and what a program times comes out the
// same always.
#pragma once

#include <windows.h>

#include <cstdint>

namespace lab {

/// Chooses the clock. Scripted time passes by waiting (Sleep, PassTime) and by so many microseconds with
/// every reading of the clock, so that a program which waits for a moment by reading on gets there.
void StartClock(bool scripted, std::int64_t cost_of_reading = 2);

bool ClockIsScripted();

/// Makes the event by which a process that hangs on purpose (tests/lab/fatal_failure.h) tells the one that
/// waits for it, unless a parent on the same machine has made it. Its name goes to VISTREL_LAB_HANG.
void MakeHangEvent();

/// Microseconds since some fixed moment.
std::int64_t MachineTime();

/// The value of the performance counter at this MachineTime.
std::int64_t CounterAt(std::int64_t microseconds);

/// Lets time pass: really, or in the script alone.
void PassTime(std::int64_t microseconds);

// What a program on a machine with a scripted clock gets in place of the functions of these names.
BOOL WINAPI ScriptedQueryPerformanceCounter(LARGE_INTEGER* counter);
ULONGLONG WINAPI ScriptedGetTickCount64();
void WINAPI ScriptedSleep(DWORD milliseconds);
/// A wait with a limit takes real time, but for one that would last to its limit because a process of the
/// lab's hangs (AnnounceHang): that is over at once, and has taken its whole time in the script.
DWORD WINAPI ScriptedWaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all, DWORD milliseconds);

}  // namespace lab
