#include "tests/lab/machine/machine.h"

#include <sstream>
#include "tests/lab/fatal_failure.h"

#include "tests/lab/machine/clock.h"
#include "tests/lab/machine/frame_schedule.h"

namespace lab {

std::vector<std::size_t> Machine::OutputsOf(std::size_t adapter) const {
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        if (outputs[i].adapter == adapter && !outputs[i].unplugged) {
            positions.push_back(i);
        }
    }
    return positions;
}

Machine& TheMachine() {
    // Never destroyed: the program may use its adapters until the very end.
    static Machine* const machine = new Machine;
    return *machine;
}

void SetUpMachine(const Scenario& scenario) {
    StartClock(scenario.scripted_clock);
    Machine& machine = TheMachine();
    machine.scenario = scenario;
    machine.outputs.clear();
    machine.calls_by_function.clear();
    machine.duplicated.clear();
    machine.memory_readings = 0;
    for (const Output& output : scenario.outputs) {
        OutputState state;
        state.adapter = output.adapter;
        state.size = scenario.displays[output.display].size;
        state.format = output.format;
        if (output.refusal) {
            BeginRefusal(state, *output.refusal);
        }
        machine.outputs.push_back(state);
    }
}

void SetUpMachine(const std::string& scenario_text) {
    std::istringstream stream(scenario_text);
    SetUpMachine(ReadScenario(stream));
}

void BeginRefusal(OutputState& output, const Refusal& refusal) {
    output.refusal = refusal;
    output.refusing_since = MachineTime();
    output.refused = 0;
}

std::optional<ResultCode> RefuseNow(OutputState& output) {
    if (!output.refusal ||
        !StillRefuses(*output.refusal, output.refused, MachineTime() - output.refusing_since)) {
        return {};
    }
    ++output.refused;
    return output.refusal->result;
}

void InjectFailure(const std::string& function) {
    Machine& machine = TheMachine();
    const auto found = machine.scenario.fatal_failures.find(function);
    if (found != machine.scenario.fatal_failures.end() &&
        ++machine.calls_by_function[function] == found->second.call) {
        FailFatally(found->second.kind);
    }
}

void ApplyLoss(OutputState& output, const Loss& loss) {
    ++output.losses_passed;
    output.size = loss.size.value_or(output.size);
    output.format = loss.format.value_or(output.format);
    output.adapter = loss.adapter.value_or(output.adapter);
    output.unplugged = output.unplugged || loss.unplugged;
    if (loss.refusal) {
        BeginRefusal(output, *loss.refusal);
    }
}

}  // namespace lab
