#include <windows.h>

#include <string>

#include "platform/long_path.h"
#include "platform/utf8.h"
#include "tools/vistrel_diag/report/report.h"
#include "tools/vistrel_diag/sections/injection/injection_section.h"

bool FileExistsBeside(std::string_view folder, std::string_view name) {
    const std::string path = OpenablePath(std::string(folder) + "\\" + std::string(name));
    // The wide function: before Windows 10 1903 the narrow one does not accept UTF-8, whatever the manifest
    // says.
    return GetFileAttributesW(WideFromUtf8(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::optional<InjectedFiles> ProbeInjectedFiles(std::string_view tool_folder) {
    if (tool_folder.empty()) {
        return std::nullopt;
    }
    return FindInjectedFiles([tool_folder](const char* name) { return FileExistsBeside(tool_folder, name); });
}

void ReportInjectionSection(std::string_view tool_folder) {
    Report::Section("INJECTED INTO VISTREL'S OWN FOLDER");
    PrintInjectionSection(ProbeInjectedFiles(tool_folder));
}
