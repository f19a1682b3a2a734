// The report's section about files in the tool's own folder that make Windows load foreign code into the
// product.
#pragma once

#include <functional>
#include <optional>
#include <string_view>
#include <vector>

/// The names that were found; each list is in the order of the search.
struct InjectedFiles {
    std::vector<const char*> proxy_dlls;     ///< named like a system library, so loaded in its place
    std::vector<const char*> reshade_files;  ///< what a ReShade installation leaves: files, one folder
};

/// Calls `exists` with every suspicious name.
InjectedFiles FindInjectedFiles(const std::function<bool(const char* name)>& exists);

/// Whether `folder` (UTF-8, no trailing separator) contains a file or folder of that name. False when that
/// cannot be determined.
bool FileExistsBeside(std::string_view folder, std::string_view name);

/// Searches `tool_folder` (UTF-8, no trailing separator). Empty when the folder is not known (an empty text).
std::optional<InjectedFiles> ProbeInjectedFiles(std::string_view tool_folder);

void PrintInjectionSection(const std::optional<InjectedFiles>& found);

/// Reports what ProbeInjectedFiles finds.
void ReportInjectionSection(std::string_view tool_folder);
