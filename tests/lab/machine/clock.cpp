#include "tests/lab/machine/clock.h"

#include <atomic>

#include "tests/lab/machine/statistics.h"

namespace lab {
namespace {

constexpr std::int64_t kMicrosecondsPerMillisecond = 1'000;
constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;
constexpr std::int64_t kCostOfReading = 2;  // microseconds of scripted time

bool scripted_clock = false;
std::atomic<std::int64_t> scripted_time = kMicrosecondsPerSecond;

std::int64_t CounterFrequency() {
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return frequency.QuadPart;
}

}  // namespace

void StartClock(bool scripted) {
    scripted_clock = scripted;
}

bool ClockIsScripted() {
    return scripted_clock;
}

std::int64_t MachineTime() {
    if (scripted_clock) {
        return scripted_time;
    }
    LARGE_INTEGER counter;
    QueryPerformanceCounter(&counter);
    const std::int64_t frequency = CounterFrequency();
    return counter.QuadPart / frequency * kMicrosecondsPerSecond +
           counter.QuadPart % frequency * kMicrosecondsPerSecond / frequency;
}

std::int64_t CounterAt(std::int64_t microseconds) {
    const std::int64_t frequency = CounterFrequency();
    return microseconds / kMicrosecondsPerSecond * frequency +
           microseconds % kMicrosecondsPerSecond * frequency / kMicrosecondsPerSecond;
}

void PassTime(std::int64_t microseconds) {
    if (microseconds <= 0) {
        return;
    }
    if (scripted_clock) {
        scripted_time += microseconds;
    } else {
        Sleep(static_cast<DWORD>((microseconds + kMicrosecondsPerMillisecond - 1) /
                                 kMicrosecondsPerMillisecond));
    }
}

BOOL WINAPI ScriptedQueryPerformanceCounter(LARGE_INTEGER* counter) {
    scripted_time += kCostOfReading;
    counter->QuadPart = CounterAt(scripted_time);
    return TRUE;
}

ULONGLONG WINAPI ScriptedGetTickCount64() {
    scripted_time += kCostOfReading;
    return static_cast<ULONGLONG>(scripted_time / kMicrosecondsPerMillisecond);
}

void WINAPI ScriptedSleep(DWORD milliseconds) {
    Counts().slept_milliseconds += static_cast<long>(milliseconds);
    scripted_time += static_cast<std::int64_t>(milliseconds) * kMicrosecondsPerMillisecond;
    SwitchToThread();
}

}  // namespace lab
