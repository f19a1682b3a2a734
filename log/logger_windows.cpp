// The one logger of the process, and the console that is adjusted when it is made.
#include "log/console_mode.h"
#include "log/logger.h"

Logger& Logger::instance() {
    struct ProcessLogger {
        ProcessLogger() { SwitchQuickEditOff(); }
        Logger logger;
    };
    static ProcessLogger process;
    return process.logger;
}
