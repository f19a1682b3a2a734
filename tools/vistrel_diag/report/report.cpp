#include "tools/vistrel_diag/report/report.h"

#include <atomic>
#include <cstdarg>
#include <filesystem>
#include <forward_list>
#include <fstream>
#include <string>

#include "platform/long_path.h"
#include "tools/vistrel_diag/report/console.h"
#include "tools/vistrel_diag/report/progress.h"

namespace Report {
namespace {

constexpr std::size_t kHeaderRuleColumns = 62;  // The title and the rule after it together.

KeptText& Kept() {
    static KeptText text;
    return text;
}

/// The current section's title, for readers on other threads. A reader may keep a title indefinitely, so a
/// published title is never modified or freed.
class PublishedTitle {
  public:
    void Set(std::string_view title) {
        titles_.emplace_front(title);
        published_.store(titles_.front().c_str(), std::memory_order_release);
    }
    const char* Get() const { return published_.load(std::memory_order_acquire); }

  private:
    std::forward_list<std::string> titles_;
    std::atomic<const char*> published_ = "";
};

PublishedTitle& SectionTitle() {
    static PublishedTitle title;
    return title;
}

/// `text` with every line break, bare or after a carriage return, written as `line_break`.
std::string WithLineBreaks(std::string_view text, std::string_view line_break) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') {
            continue;
        }
        if (text[i] == '\n') {
            result += line_break;
        } else {
            result += text[i];
        }
    }
    return result;
}

std::atomic<bool>& FoundSomething() {
    static std::atomic<bool> found = false;
    return found;
}

std::atomic<void (*)()>& SectionListener() {
    static std::atomic<void (*)()> listener = nullptr;
    return listener;
}

void AddLine(const std::string& line) {
    ConsolePrint("%s\n", WithLineBreaks(line, "\n").c_str());
    FlushConsole();
    Kept().Append(WithLineBreaks(line, "\r\n") + "\r\n");
}

}  // namespace

void Line(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::string line = FormatBoundedV(kLongestLine, format, arguments);
    va_end(arguments);
    AddLine(line);
    if (!line.empty() && *CurrentSection() != '\0') {
        FoundSomething() = true;
    }
}

bool HasFindings() {
    return FoundSomething();
}

void EnterSection(std::string_view title) {
    Progress::Clear();
    SectionTitle().Set(title);
    if (const auto listener = SectionListener().load(); listener != nullptr) {
        listener();
    }
}

void SetSectionListener(void (*listener)()) {
    SectionListener() = listener;
}

void Section(std::string_view title) {
    const std::size_t rule = title.size() < kHeaderRuleColumns ? kHeaderRuleColumns - title.size() : 0;
    EnterSection(title);
    AddLine("");
    AddLine("== " + std::string(title) + " " + std::string(rule, '='));
}

const KeptText& Text() {
    return Kept();
}

const char* CurrentSection() {
    return SectionTitle().Get();
}

std::string FilePath(std::string_view tool_folder) {
    return tool_folder.empty() ? std::string(kFileName) : std::string(tool_folder) + "\\" + kFileName;
}

WrittenFile WriteFile(std::string_view tool_folder) {
    const std::string path = FilePath(tool_folder);
    // The wide path accepts every folder name; binary, because the line ends are already in the text.
    const std::string openable = OpenablePath(path);
    std::ofstream file(std::filesystem::path(std::u8string(openable.begin(), openable.end())),
                       std::ios::binary | std::ios::trunc);
    if (!file) {
        ConsolePrint("\n!! Could not write the report file. Copy the text above instead.\n");
        return {false, false, path};
    }
    const std::string text = Kept().Copy();
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.close();  // Flushes the buffer, which may also fail on a full disk.
    if (!file) {
        ConsolePrint("\n!! Could not write the whole report file. Copy the text above instead.\n");
        return {true, false, path};
    }
    ConsolePrint(
        "\n=====================================================\n"
        " Done. Report written to:\n"
        "   %s\n"
        "\n"
        " Please send that one file.\n"
        "=====================================================\n",
        path.c_str());
    return {true, true, path};
}

}  // namespace Report
