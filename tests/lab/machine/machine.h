// The current state of the simulated machine: the scenario, and what has changed since the start.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/lab/machine/scenario.h"

namespace lab {

/// The current state of an output; a loss may have changed its size or format, moved it to another adapter or
/// unplugged it.
struct OutputState {
    std::size_t adapter = 0;
    Size size;
    PixelFormat format = PixelFormat::kBgra;
    bool unplugged = false;
    bool duplicated = false;
    std::size_t losses_passed = 0;
    std::optional<Refusal> refusal;
    std::int64_t refusing_since = 0;  ///< MachineTime
    int refused = 0;
};

struct Machine {
    Scenario scenario;
    std::vector<OutputState> outputs;  ///< one for each of the scenario's
    std::map<std::string, int> calls_by_function;
    std::vector<std::size_t> duplicated;  ///< outputs on which DuplicateOutput was called
    int memory_readings = 0;

    /// The positions of the outputs that an adapter drives now.
    std::vector<std::size_t> OutputsOf(std::size_t adapter) const;

    const Display& DisplayOf(std::size_t output) const {
        return scenario.displays[scenario.outputs[output].display];
    }
};

/// The machine that the program runs on. Losses occur on the thread that captures.
Machine& TheMachine();

/// Replaces the machine by the one in the scenario, and starts its clock.
void SetUpMachine(const Scenario& scenario);

/// The same from the text of a scenario. Throws ScenarioError if it is invalid.
void SetUpMachine(const std::string& scenario_text);

/// The output fails to be duplicated from now on.
void BeginRefusal(OutputState& output, const Refusal& refusal);

/// Counts one failure and returns it; empty when the output does not fail (any more).
std::optional<ResultCode> RefuseNow(OutputState& output);

/// Counts this call of `function`, and makes it fail fatally if the scenario says so.
void InjectFailure(const std::string& function);

/// Applies the output's next loss.
void ApplyLoss(OutputState& output, const Loss& loss);

}  // namespace lab
