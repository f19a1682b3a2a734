#include "tools/vistrel_diag/sections/running_software/running_software_reading.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

namespace {

constexpr std::string_view kForeground = "Foreground app  : ";
constexpr std::string_view kBeforeTitle = "  \"";

/// How many lines the foreground application takes, which `lines` begin with: up to the last one that ends
/// with a quotation mark, for no other line of the section does. A title may hold line breaks and quotation
/// marks.
std::size_t ForegroundLines(SourceLines lines) {
    for (std::size_t i = lines.size(); i-- > 1;) {
        const std::size_t end = lines[i].text.find_last_not_of(" \t");
        if (end != std::string_view::npos && lines[i].text[end] == '"') {
            return i + 1;
        }
    }
    return 1;
}

/// Reads the foreground application, whose title may go on over several lines.
/// Returns how many lines it takes; 0 when `lines` does not begin with it.
std::size_t ReadForeground(SourceLines lines, RunningSoftwareInfo& software) {
    if (!BeginsLine(lines.front().text, kForeground)) {
        return 0;
    }
    std::string text(lines.front().text);
    const std::size_t count = ForegroundLines(lines);
    for (const SourceLine& line : lines.subspan(1, count - 1)) {
        text.append("\n").append(line.text);
    }
    ForegroundApplication application;
    if (!LineScan(text)
             .Text(kForeground)
             .UpTo(application.executable_name, kBeforeTitle)
             .UpToLast(application.title, "\"")
             .IsWhole()) {
        return 0;
    }
    software.foreground = std::move(application);
    return count;
}

constexpr std::string_view kWarning = "!! Vistrel IS RUNNING. That changes how to read everything below:";

/// Adds the warning to `unread`.
void AddWarning(SourceLines lines, UnreadLines& unread) {
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(unread),
                 [](const SourceLine& line) { return IsLine(line.text, kWarning); });
}

bool IsRestOfWarning(std::string_view line) {
    return IsLine(line, "!!   - screen capture will fail, because Vistrel already holds it") ||
           IsLine(line,
                  "!!   - the warp and inference timings are inflated by competing with it for the GPU") ||
           IsLine(line, "!! For clean timings, close Vistrel and run this again.");
}

/// A program that the section lists, by its name alone: others are never listed.
bool ReadNotable(std::string_view line, RunningSoftwareInfo& software) {
    std::string name;
    if (!LineScan(line).Text("  ").Rest(name).Matches()) {
        return false;
    }
    while (name.ends_with(' ')) {
        name.pop_back();
    }
    const std::vector<std::string> notable = NotablePrograms(ProcessSnapshot{RunningProcess{0, name}});
    if (notable.empty()) {
        return false;
    }
    software.notable.push_back(std::move(name));
    return true;
}

}  // namespace

std::size_t WindowTitleLines(SourceLines lines) {
    constexpr std::size_t kLongestTitle = 4096;
    if (lines.empty() || !BeginsLine(lines.front().text, kForeground)) {
        return 0;
    }
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < lines.size() && bytes <= kLongestTitle; ++i) {
        std::string_view text = lines[i].text;
        while (text.ends_with(' ') || text.ends_with('\t')) {
            text.remove_suffix(1);
        }
        bytes += text.size() + 1;
        const bool closed = i == 0 ? text.size() > kForeground.size() && text.ends_with('"') &&
                                         text.find('"') + 1 < text.size()
                                   : text.ends_with('"');
        if (closed) {
            return i + 1;
        }
    }
    return 1;
}

std::optional<RunningSoftwareReading> ReadRunningSoftwareSection(SourceLines lines, UnreadLines& unread) {
    RunningSoftwareReading reading;
    const std::size_t unread_before = unread.size();
    bool any = false;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const SourceLine& line = lines[i];
        bool understood = true;
        if (IsBlankLine(line.text)) {
            continue;
        }
        if (const std::size_t title =
                reading.software.foreground ? 0 : ReadForeground(lines.subspan(i), reading.software)) {
            reading.foreground_line = line.number;
            i += title - 1;
        } else if (IsLine(line.text, "Nothing notable - no Vistrel, no SteamVR, no capture software.")) {
            reading.nothing_notable_line = line.number;
        } else if (IsLine(line.text, kWarning)) {
            reading.warning_line = line.number;
        } else if (ReadNotable(line.text, reading.software)) {
            reading.notable_lines.push_back(line.number);
        } else if (!IsRestOfWarning(line.text)) {
            understood = false;
            unread.push_back(line);
        }
        any = any || understood;
    }
    const bool lists_product =
        std::any_of(reading.software.notable.begin(), reading.software.notable.end(), IsVistrelExecutable);
    if (reading.warning_line != 0 && !lists_product && unread.size() == unread_before) {
        // All programs are known, and the product is none of them. The warning is not the report's own.
        reading.warning_line = 0;
        AddWarning(lines, unread);
    }
    return any ? std::optional(std::move(reading)) : std::nullopt;
}
