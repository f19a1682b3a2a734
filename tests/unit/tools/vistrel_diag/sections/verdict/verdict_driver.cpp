// Prints the verdict on inputs read from standard input, for verdict_reference.py.
//
// One input a line, fields separated by blanks: the number of warp costs, width, height and milliseconds of
// each, the model's milliseconds or "none", game rate, desktop rate, refresh rate, whether part 2 was run (0
// or 1), the FPS limit, the depth mode. Behind each verdict comes the line "@@".

#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>

#include "tools/vistrel_diag/report/console.h"
#include "tools/vistrel_diag/sections/verdict/verdict_section.h"

namespace {

std::string NextField(std::istream& fields) {
    std::string field;
    fields >> field;
    return field;
}

std::int32_t NextWhole(std::istream& fields) {
    return static_cast<std::int32_t>(std::strtol(NextField(fields).c_str(), nullptr, 10));
}

double NextNumber(std::istream& fields) {
    return std::strtod(NextField(fields).c_str(), nullptr);
}

VerdictInput InputFrom(std::istream& fields) {
    VerdictInput input;
    input.warp_costs.resize(NextWhole(fields));
    for (WarpCost& cost : input.warp_costs) {
        cost.width = NextWhole(fields);
        cost.height = NextWhole(fields);
        cost.milliseconds = NextNumber(fields);
    }
    const std::string model = NextField(fields);
    if (model != "none") {
        input.model_milliseconds = std::strtod(model.c_str(), nullptr);
    }
    input.game_fps = NextNumber(fields);
    input.desktop_fps = NextNumber(fields);
    input.refresh_hz = NextWhole(fields);
    input.part_two_run = NextWhole(fields) != 0;
    input.ai_fps_limit = static_cast<float>(NextNumber(fields));
    input.depth_mode = NextWhole(fields);
    return input;
}

}  // namespace

int main() {
    std::string line;
    while (std::getline(std::cin, line)) {
        std::istringstream fields(line);
        ReportVerdict(InputFrom(fields));
        ConsolePrint("@@\n");
    }
    return 0;
}
