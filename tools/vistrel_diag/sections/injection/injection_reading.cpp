#include "tools/vistrel_diag/sections/injection/injection_reading.h"

#include <string>
#include <string_view>
#include <utility>

namespace {

/// The name as the section itself keeps it, in the list that it belongs to.
InjectedFiles FilesNamed(std::string_view name) {
    return FindInjectedFiles([name](const char* known) { return name == known; });
}

bool ReadFile(const SourceLine& line, InjectedFiles& found, InjectionReading& reading) {
    std::string name;
    if (LineScan(line.text)
            .Text("PROXY DLL      : ")
            .UpTo(name, " ")
            .Blanks()
            .Text("<- not ours")
            .IsWhole()) {
        const InjectedFiles known = FilesNamed(name);
        if (known.proxy_dlls.size() == 1) {
            found.proxy_dlls.push_back(known.proxy_dlls.front());
            reading.proxy_dll_lines.push_back(line.number);
            return true;
        }
    } else if (LineScan(line.text).Text("ReShade file   : ").Rest(name).Matches()) {
        const InjectedFiles known = FilesNamed(std::string_view(name).substr(0, name.find(' ')));
        if (known.reshade_files.size() == 1) {
            found.reshade_files.push_back(known.reshade_files.front());
            reading.reshade_file_lines.push_back(line.number);
            return true;
        }
    }
    return false;
}

bool ReadWarning(const SourceLine& line, InjectionReading& reading) {
    return ReadFixedLine(line,
                         ">>> Something is injecting itself into Vistrel. This is what to undo first, before "
                         "anything else in this report is worth reading.",
                         reading.warning_line) ||
           IsLine(
               line.text,
               ">>> ReShade belongs on the GAME, never on Vistrel.exe. Run the ReShade uninstaller against "
               "this folder, or delete the files listed above.") ||
           IsLine(line.text,
                  ">>> The symptom it produces is AI depth that runs and reports timings while no 3D ever "
                  "reaches the headset.");
}

}  // namespace

std::optional<InjectionReading> ReadInjectionSection(SourceLines lines, UnreadLines& unread) {
    InjectionReading reading;
    InjectedFiles found;
    const bool any = ReadEachLine(lines, unread, [&](const SourceLine& line) {
        return ReadFile(line, found, reading) || ReadWarning(line, reading) ||
               ReadFixedLine(line, "Cannot tell - the folder this is running from is not known.",
                             reading.cannot_tell_line) ||
               ReadFixedLine(line, "Nothing found. No proxy DLL and no ReShade files beside Vistrel.exe.",
                             reading.nothing_found_line);
    });
    if (reading.cannot_tell_line == 0) {
        reading.found = std::move(found);
    }
    return any ? std::optional(std::move(reading)) : std::nullopt;
}
