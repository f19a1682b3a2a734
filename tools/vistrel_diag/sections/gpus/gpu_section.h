// The GPUs of the machine: the report's section about them, and the list that the rest of the run uses.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/luid.h"
#include "platform/video_memory.h"

struct IDXGIAdapter1;

/// One graphics adapter.
struct GpuInfo {
    std::uint32_t index = 0;  ///< in DXGI's enumeration; the number after "GPU" in the report
    std::string name;         ///< UTF-8
    AdapterLuid luid;
    std::uint64_t dedicated_video_memory = 0;  ///< bytes
    std::uint64_t shared_system_memory = 0;    ///< bytes
    std::uint32_t vendor_id = 0;               ///< PCI
    bool software = false;
    std::vector<std::string> displays;  ///< device names of the outputs it drives, in output order
    std::shared_ptr<IDXGIAdapter1> adapter;
};

/// The adapters in enumeration order. Empty before ReportGpuSection, and when DXGI could not be reached.
const std::vector<GpuInfo>& GpuList();

/// Sets the list; for the section and for tests.
void SetGpuList(std::vector<GpuInfo> gpus);

/// An adapter with its memory at one moment; `memory` is empty where Windows does not report it.
struct ProbedGpu {
    GpuInfo gpu;
    std::optional<VideoMemoryUse> memory;
};

struct GpuInventory {
    bool factory_created = false;
    std::vector<ProbedGpu> gpus;  ///< only adapters that could be described
};

/// Functions that are called with each part of the inventory as soon as it is found. Each may be empty.
struct GpuVisitor {
    std::function<void(const GpuInfo& gpu)> described;
    std::function<void(const VideoMemoryUse& memory)> memory_found;  ///< for the adapter described last
};

GpuInventory ProbeGpus(const GpuVisitor& visitor = {});

/// The vendor's name as it is printed, "?" for an unknown PCI vendor id. Static storage.
const char* VendorName(std::uint32_t vendor_id);

/// In the report a megabyte is 1024 kilobytes of 1024 bytes.
inline constexpr double kBytesPerMegabyte = 1048576.0;

/// The percentage of the budget above which a GPU is nearly full.
inline constexpr double kHeadroomPercent = 90.0;

/// The memory in use in percent of the budget; 0 without a budget.
double BudgetPercent(const VideoMemoryUse& memory);

/// Print one adapter, and its memory where Windows reports it.
void PrintGpu(const GpuInfo& gpu);
void PrintGpuMemory(const VideoMemoryUse& memory);

/// Prints the end of the section, after all adapters or when they could not be enumerated.
void PrintGpuSectionEnd(const GpuInventory& inventory);

/// Reports the adapters, each as soon as it is found, because a driver may crash on the next one. Fills
/// GpuList. Called once, before anything that reads the list.
void ReportGpuSection();

/// Reads the current memory of the listed adapters.
std::vector<ProbedGpu> ProbeVram();
void PrintVramLines(const char* label, const std::vector<ProbedGpu>& gpus);

/// Reports the memory of the hardware GPUs at the moment that `label` (UTF-8) names.
void ReportVramLines(const char* label);
