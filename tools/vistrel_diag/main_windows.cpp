#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/end_process.h"
#include "platform/library.h"
#include "platform/own_thread.h"
#include "platform/system_graphics.h"
#include "platform/utf8.h"
#include "tools/vistrel_diag/command_line.h"
#include "tools/vistrel_diag/guided_run.h"
#include "tools/vistrel_diag/report/console_state.h"
#include "tools/vistrel_diag/sections/depth_model/depth_model_task.h"
#include "tools/vistrel_diag/sections/headset/headset_query.h"
#include "tools/vistrel_diag/worker/worker_task.h"

namespace {

/// The tasks of a child process.
constexpr std::array kWorkerTasks = {WorkerTask{kHeadsetTask, CarryOutHeadsetTask},
                                     WorkerTask{kDepthModelTask, CarryOutDepthModelTask}};

}  // namespace

/// The exit code of a run is always 0: errors are in the report.
int wmain(int argument_count, wchar_t** argument_values) {
    NeverLoadFromCurrentDirectory();
    LoadSystemGraphics();
    std::vector<std::string> arguments;
    for (int i = 1; i < argument_count; ++i) {
        arguments.push_back(Utf8FromWide(argument_values[i]));
    }
    RunIfWorker(arguments, kWorkerTasks);
    const CommandLine command_line = ParseCommandLine(arguments);
    if (command_line.help) {
        PrintUsage();
    } else {
        RunOnOwnThread([&command_line] {
            const ConsoleState console;
            CarryOutRun(command_line.options);
        });
    }
    std::fflush(nullptr);
    EndProcess(0);
}
