// The process's only logger; the console mode is changed when it is created.
#include "log/logger.h"
#include "tools/vistrel_diag/report/console_mode.h"

Logger& Logger::instance() {
    struct ProcessLogger {
        ProcessLogger() { SwitchQuickEditOff(); }
        Logger logger;
    };
    static ProcessLogger process;
    return process.logger;
}
