// The simulated machine as it stands at this moment: the scenario, and what has changed in it since.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/lab/machine/scenario.h"

namespace lab {

/// An output now; a loss may have changed its size or format, moved it to another adapter or unplugged it.
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
    std::vector<std::size_t> duplicated;  ///< outputs that DuplicateOutput was called of, refused or not
    int memory_readings = 0;

    /// The positions of the outputs that an adapter drives now.
    std::vector<std::size_t> OutputsOf(std::size_t adapter) const;

    const Display& DisplayOf(std::size_t output) const {
        return scenario.displays[scenario.outputs[output].display];
    }
};

/// The machine that the program runs on. Its losses happen on the thread that captures.
Machine& TheMachine();

/// Replaces the machine by one that is as the scenario says, and starts its clock.
void SetUpMachine(const Scenario& scenario);

/// The same with the text of a scenario. Throws ScenarioError when it is not understood.
void SetUpMachine(const std::string& scenario_text);

/// The output refuses its duplication from now on.
void BeginRefusal(OutputState& output, const Refusal& refusal);

/// The result of refusing now, which is counted; empty when the output does not refuse (any more).
std::optional<ResultCode> RefuseNow(OutputState& output);

/// Counts this call of `function`, and makes it fail fatally when the scenario says so of this call.
void InjectFailure(const std::string& function);

/// Changes the output as its next loss says.
void ApplyLoss(OutputState& output, const Loss& loss);

}  // namespace lab
