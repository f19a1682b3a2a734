// The one logger of the process, and the console that is adjusted when it is made.
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
