#include <fstream>

#include "platform/open_file.h"
#include "settings/product_data.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/product_log/product_log_section.h"

void ReportProductLog() {
    Report::Section("WHAT VISTREL ITSELF LOGGED LAST RUN");
    const std::string path = ProductDataPath("vistrel_init_log.txt");
    std::ifstream log = OpenFileForReading(path);
    PrintProductLog(path, log.is_open() ? &log : nullptr);
}
