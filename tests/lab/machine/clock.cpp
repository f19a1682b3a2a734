#include "tests/lab/machine/clock.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <string>

#include "tests/lab/fatal_failure.h"

#include "tests/lab/machine/statistics.h"

namespace lab {
namespace {

constexpr std::int64_t kMicrosecondsPerMillisecond = 1'000;
constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;

bool scripted_clock = false;
std::atomic<std::int64_t> scripted_cost = 0;  // microseconds of scripted time that a reading takes
std::atomic<std::int64_t> scripted_time = kMicrosecondsPerSecond;

HANDLE hang_event = nullptr;

std::int64_t CounterFrequency() {
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return frequency.QuadPart;
}

}  // namespace

void StartClock(bool scripted, std::int64_t cost_of_reading) {
    scripted_clock = scripted;
    scripted_cost = cost_of_reading;
}

bool ClockIsScripted() {
    return scripted_clock;
}

void MakeHangEvent() {
    if (GetEnvironmentVariableW(kHangVariable, nullptr, 0) == 0) {
        const std::wstring name = L"vistrel_lab_hang_" + std::to_wstring(GetCurrentProcessId());
        SetEnvironmentVariableW(kHangVariable, name.c_str());
        hang_event = CreateEventW(nullptr, FALSE, FALSE, name.c_str());
    }
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
    scripted_time += scripted_cost;
    counter->QuadPart = CounterAt(scripted_time);
    return TRUE;
}

ULONGLONG WINAPI ScriptedGetTickCount64() {
    scripted_time += scripted_cost;
    return static_cast<ULONGLONG>(scripted_time / kMicrosecondsPerMillisecond);
}

void WINAPI ScriptedSleep(DWORD milliseconds) {
    Counts().slept_milliseconds += static_cast<long>(milliseconds);
    scripted_time += static_cast<std::int64_t>(milliseconds) * kMicrosecondsPerMillisecond;
    SwitchToThread();
}

DWORD WINAPI ScriptedWaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all,
                                            DWORD milliseconds) {
    std::array<HANDLE, MAXIMUM_WAIT_OBJECTS> awaited = {};
    if (hang_event == nullptr || all != FALSE || milliseconds == INFINITE || count >= awaited.size()) {
        return WaitForMultipleObjects(count, handles, all, milliseconds);
    }
    std::copy_n(handles, count, awaited.begin());
    awaited[count] = hang_event;
    const DWORD what = WaitForMultipleObjects(count + 1, awaited.data(), FALSE, milliseconds);
    if (what != WAIT_OBJECT_0 + count) {
        return what;
    }
    PassTime(static_cast<std::int64_t>(milliseconds) * kMicrosecondsPerMillisecond);
    return WAIT_TIMEOUT;
}

}  // namespace lab
