// One report as records: what every finding rests on.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "tools/vistrel_diag/sections/gpus/gpu_reading.h"
#include "tools/vistrel_diag/sections/machine/machine_reading.h"
#include "tools/vistrel_diag/sections/running_software/running_software_reading.h"
#include "tools/vistrel_report/report_document.h"

/// A report read. A section that is not there, or of which nothing was understood, is empty. Everything is
/// owned but the lines not understood, which refer to the file that the document is from.
struct Reading {
    struct PartOne {
        std::optional<RunningSoftwareReading> running_software;
        std::optional<MachineReading> machine;
        std::optional<GpuReading> gpus;
    };
    struct PartTwo {
        std::optional<RunningSoftwareReading> running_software;
        std::optional<GameVideoMemoryReading> video_memory;
    };

    PartOne part_one;
    PartTwo part_two;
    std::vector<DocumentNote> notes;  ///< the document's
    UnreadLines not_understood;       ///< lines within the report that no reading claims
};

/// Never fails: what cannot be read is left out and, as far as there are lines of it, told as not understood.
Reading ReadReport(const ReportDocument& document);
