// The processes of the machine at one moment.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// One process of a snapshot.
struct RunningProcess {
    std::uint32_t id = 0;
    std::string executable_name;  ///< UTF-8, no folder, spelled as the process reports it
};

/// The processes in the order in which the system lists them.
using ProcessSnapshot = std::vector<RunningProcess>;

/// Every process that is running now. Empty when the system provides no snapshot.
std::optional<ProcessSnapshot> TakeProcessSnapshot();
