#include "tests/lab/machine/fault_points.h"

#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/lab/machine/fault_failures.h"
#include "tests/lab/machine/fault_thunk.h"

namespace lab {
namespace {

// More calls of one function than any run of the tool makes, except in an endless loop.
constexpr std::size_t kMostCallsNoted = 100'000;

struct Call {
    std::uint32_t site = 0;
    bool failed = false;
};

struct FaultPoint {
    std::string name;
    Failure failure;
    std::uint64_t count = 0;
    std::vector<Call> calls;
};

struct Order {
    std::string name;
    std::uint64_t number = 0;
    bool and_all_that_follow = false;
};

struct Faults {
    bool watched = false;
    Order order;
    std::string calls_file;
    std::recursive_mutex mutex;
    std::map<std::string, FaultPoint, std::less<>> points;
    std::map<std::pair<FaultPoint*, void*>, void*> thunks;
    std::set<void*> watched_slots;
};

/// Never destroyed: other threads of the program may call until the end.
Faults& TheFaults() {
    static auto* const faults = new Faults;
    return *faults;
}

struct ImageRange {
    std::uintptr_t begin = 0;
    std::uintptr_t size = 0;
};

ImageRange ProgramImage() {
    const auto begin = reinterpret_cast<std::uintptr_t>(GetModuleHandleW(nullptr));
    const auto* const dos_header = reinterpret_cast<const IMAGE_DOS_HEADER*>(begin);
    const auto* const headers =
        reinterpret_cast<const IMAGE_NT_HEADERS*>(begin + static_cast<std::uintptr_t>(dos_header->e_lfanew));
    return {begin, headers->OptionalHeader.SizeOfImage};
}

/// Only calls from the program's own image count, not those between libraries.
bool Decide(void* point_address, const void* caller, std::uint64_t* result) {
    static const ImageRange image = ProgramImage();
    const std::uintptr_t site = reinterpret_cast<std::uintptr_t>(caller) - image.begin;
    if (site >= image.size) {
        return false;
    }
    const DWORD last_error = GetLastError();
    Faults& faults = TheFaults();
    bool fails = false;
    auto& point = *static_cast<FaultPoint*>(point_address);
    {
        const std::scoped_lock lock(faults.mutex);
        ++point.count;
        const Order& order = faults.order;
        fails = order.name == point.name &&
                (order.and_all_that_follow ? point.count >= order.number : point.count == order.number);
        if (point.calls.size() < kMostCallsNoted) {
            point.calls.push_back({static_cast<std::uint32_t>(site), fails});
        }
    }
    *result = point.failure.result;
    SetLastError(fails && point.failure.last_error != 0 ? point.failure.last_error : last_error);
    return fails;
}

void* Thunk(std::string_view name, const Failure& failure, void* function) {
    Faults& faults = TheFaults();
    const std::scoped_lock lock(faults.mutex);
    FaultPoint& point = faults.points[std::string(name)];
    point.name = name;
    point.failure = failure;
    void*& thunk = faults.thunks[{&point, function}];
    if (thunk == nullptr) {
        thunk = MakeFaultThunk(Decide, &point, function);
    }
    return thunk;
}

std::string EnvironmentText(const char* name) {
    const char* const text = std::getenv(name);
    return text == nullptr ? "" : text;
}

}  // namespace

void SetUpFaults() {
    Faults& faults = TheFaults();
    faults.calls_file = EnvironmentText("VISTREL_LAB_CALLS");
    const std::string process = EnvironmentText("VISTREL_LAB_PROCESS");
    if (!faults.calls_file.empty() && !process.empty()) {
        faults.calls_file += "." + process;
    }
    const bool concerned = process == EnvironmentText("VISTREL_LAB_FAULT_PROCESS");
    std::istringstream order(concerned ? EnvironmentText("VISTREL_LAB_FAULT") : "");
    std::string extent;
    order >> faults.order.name >> faults.order.number >> extent;
    faults.order.and_all_that_follow = extent == "on";
    faults.watched = !faults.calls_file.empty() || !faults.order.name.empty();
}

bool FaultsAreWatched() {
    return TheFaults().watched;
}

void* WatchedFunction(std::string_view name, void* function) {
    const Failure* const failure = FaultsAreWatched() ? FailureOf(name) : nullptr;
    return failure != nullptr ? Thunk(name, *failure, function) : function;
}

void WatchMethods(void* object, std::initializer_list<WatchedMethod> methods) {
    Faults& faults = TheFaults();
    if (!faults.watched || object == nullptr) {
        return;
    }
    const std::scoped_lock lock(faults.mutex);
    void** const table = *static_cast<void***>(object);
    for (const WatchedMethod& method : methods) {
        void** const slot = table + method.slot;
        if (!faults.watched_slots.insert(slot).second) {
            continue;
        }
        DWORD protection = 0;
        VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &protection);
        *slot = Thunk(method.name, kMethodFailure, *slot);
        VirtualProtect(slot, sizeof(*slot), protection, &protection);
    }
}

void WriteCalls() {
    Faults& faults = TheFaults();
    if (faults.calls_file.empty()) {
        return;
    }
    std::FILE* const file = std::fopen(faults.calls_file.c_str(), "wb");
    if (file == nullptr) {
        return;
    }
    for (const auto& [name, point] : faults.points) {
        for (std::size_t i = 0; i < point.calls.size(); ++i) {
            std::fprintf(file, "%s %zu %08x %s\n", name.c_str(), i + 1, point.calls[i].site,
                         point.calls[i].failed ? "failed" : "done");
        }
    }
    std::fclose(file);
}

}  // namespace lab
