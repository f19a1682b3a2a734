#include "tools/vistrel_report/masks.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

#include "tools/vistrel_diag/report/line_reading.h"
#include "tools/vistrel_report/headings.h"

namespace {

constexpr std::size_t kShortestName = 2;  // A shorter one stands within too many words.

bool IsWordByte(char byte) {
    return std::isalnum(static_cast<unsigned char>(byte)) != 0 || static_cast<unsigned char>(byte) >= 0x80;
}

/// Whether what is found at `position` stands for itself and is no part of a longer word.
bool IsWholeWord(std::string_view text, std::size_t position, std::size_t length) {
    const bool before = position > 0 && IsWordByte(text[position - 1]) && IsWordByte(text[position]);
    const std::size_t end = position + length;
    const bool after = end < text.size() && IsWordByte(text[end]) && IsWordByte(text[end - 1]);
    return !before && !after;
}

/// The name between "\Users\" and the next separator; empty without one.
std::string UserNameIn(std::string_view path) {
    std::string lowered(path);
    std::transform(lowered.begin(), lowered.end(), lowered.begin(), [](unsigned char byte) {
        return static_cast<char>(byte < 0x80 ? std::tolower(byte) : byte);
    });
    constexpr std::string_view kUsers = "\\users\\";
    const std::size_t users = lowered.find(kUsers);
    if (users == std::string::npos) {
        return {};
    }
    const std::size_t begin = users + kUsers.size();
    return std::string(path.substr(begin, path.find('\\', begin) - begin));
}

std::string FolderOf(const std::string& path) {
    const std::size_t end = path.find_last_of("\\/");
    return end == std::string::npos ? std::string() : path.substr(0, end);
}

bool HasNote(const Facts& facts, std::string_view kind) {
    return std::any_of(facts.notes.begin(), facts.notes.end(),
                       [kind](const NoteFact& note) { return note.kind == kind; });
}

/// The line of the first heading below `line`, or the number behind the last line.
LineNumber NextHeading(const Facts& facts, LineNumber line) {
    LineNumber next = facts.lines.empty() ? 0 : facts.lines.back().line + 1;
    for (const HeadingFact& heading : facts.headings) {
        if (heading.line > line) {
            next = std::min(next, heading.line);
        }
    }
    return next;
}

}  // namespace

const std::string& Masks::WordFor(std::string_view kind, const std::string& thing) {
    auto [place, is_new] = words_.try_emplace({std::string(kind), thing});
    if (is_new) {
        const std::size_t number = ++counts_[std::string(kind)];
        place->second = "<" + std::string(kind) + " " + std::to_string(number) + ">";
    }
    return place->second;
}

void Masks::CollectPath(const std::string& path) {
    const std::string folder = FolderOf(path);
    if (folder.size() > 2) {  // More than a drive.
        replacements_.emplace_back(folder, WordFor("folder", folder));
    }
    const std::string user = UserNameIn(path);
    if (user.size() >= kShortestName) {
        replacements_.emplace_back(user, WordFor("user", user));
    }
}

void Masks::Collect(const Facts& facts) {
    replacements_.clear();
    if (facts.folder && facts.folder->text.size() > 2) {
        replacements_.emplace_back(facts.folder->text, WordFor("folder", facts.folder->text));
        CollectPath(facts.folder->text + "\\");
    }
    for (const std::optional<TextFact>& path :
         {facts.settings.file, facts.settings.unreadable_file, facts.log_path}) {
        if (path) {
            CollectPath(path->text);
        }
    }
    if (!facts.folder) {  // The first lines are missing; a model's path is within that folder.
        for (const TextFact& line : facts.lines) {
            std::string path;
            if (LineScan(line.text).Text("Path tried      : ").Rest(path).Matches()) {
                CollectPath(path);
            }
        }
    }
    for (const OverrideFacts& choice : facts.overrides) {
        replacements_.emplace_back(choice.application, WordFor("application", choice.application));
        CollectPath(choice.application);
    }
    for (const SoftwareFacts* software : {&facts.software, &facts.software_in_two}) {
        if (software->foreground_title && !software->foreground_title->text.empty()) {
            replacements_.emplace_back(software->foreground_title->text,
                                       WordFor("title", software->foreground_title->text));
        }
        if (software->foreground_program && software->foreground_program->text.size() >= kShortestName) {
            replacements_.emplace_back(software->foreground_program->text,
                                       WordFor("program", software->foreground_program->text));
        }
    }
    std::stable_sort(replacements_.begin(), replacements_.end(), [](const auto& left, const auto& right) {
        return left.first.size() > right.first.size();
    });
}

void Masks::Replace(std::string& text) const {
    for (const auto& [thing, word] : replacements_) {
        std::size_t position = 0;
        while (!thing.empty() && (position = text.find(thing, position)) != std::string::npos) {
            if (IsWholeWord(text, position, thing.size())) {
                text.replace(position, thing.size(), word);
                position += word.size();
            } else {
                ++position;
            }
        }
    }
}

void Masks::MaskQuotedLines(Facts& facts) {
    const auto mask = [this, &facts](std::vector<TextFact>& quoted, std::string_view kind) {
        for (TextFact& fact : quoted) {
            fact.text = WordFor(kind, fact.text);
            if (TextFact* const line = FindLine(facts, fact.line)) {
                line->text = "  " + fact.text;
            }
        }
    };
    mask(facts.quoted_settings, "settings line");
    mask(facts.log_lines, "log line");
    MaskTitleLines(facts, facts.software.foreground_title);
    MaskTitleLines(facts, facts.software_in_two.foreground_title);
    MaskParserMessage(facts);
    if (HasNote(facts, "line_ends_lost")) {
        MaskQuotingSections(facts);
    }
    // A window title can hold line breaks; whatever no reading claims may be its rest.
    for (const LineNumber line : facts.not_understood) {
        if (TextFact* const unread = FindLine(facts, line)) {
            unread->text = WordFor("line", unread->text);
        }
    }
}

/// A title of several lines: no single line holds all of it.
void Masks::MaskTitleLines(Facts& facts, const std::optional<TextFact>& title) {
    if (!title || title->text.find('\n') == std::string::npos) {
        return;
    }
    TextFact* const first = FindLine(facts, title->line);
    if (first == nullptr) {
        return;
    }
    const std::string& word = WordFor("title", title->text);
    first->text.resize(std::min(first->text.find('"'), first->text.size()));
    first->text += "\"" + word;
    const auto more = std::count(title->text.begin(), title->text.end(), '\n');
    const TextFact* const end = facts.lines.data() + facts.lines.size();
    TextFact* line = first + 1;
    for (std::ptrdiff_t i = 0; i < more && line != end; ++i, ++line) {
        line->text = word;
    }
}

/// Why the settings file could not be parsed. The parser quotes what it read last, which can be of the
/// program that shares the file, and goes on below where that has line breaks.
void Masks::MaskParserMessage(Facts& facts) {
    TextFact* const told = FindLine(facts, facts.settings.parse_error_line);
    if (told == nullptr) {
        return;
    }
    const std::size_t quote = told->text.find('\'', told->text.find(" but could not be parsed: "));
    if (quote != std::string::npos) {
        const std::string& word = WordFor("file text", told->text.substr(quote));
        told->text.replace(quote, std::string::npos, word);
    }
    const LineNumber end = NextHeading(facts, told->line);
    for (TextFact& line : facts.lines) {
        if (line.line > facts.settings.parse_error_line && line.line < end && !line.text.empty()) {
            line.text = WordFor("file text", line.text);
        }
    }
}

/// Where line ends are lost, a line of these sections can hold any part of what they quote.
void Masks::MaskQuotingSections(Facts& facts) {
    for (const HeadingFact& heading : facts.headings) {
        if (heading.title != PartName(Part::GpuOverrides) &&
            heading.title != PartName(Part::SettingsVerbatim) &&
            heading.title != PartName(Part::ProductLog)) {
            continue;
        }
        const LineNumber end = NextHeading(facts, heading.line);
        for (TextFact& line : facts.lines) {
            if (line.line > heading.line && line.line < end && !line.text.empty()) {
                line.text = WordFor("line", line.text);
            }
        }
    }
}

/// A heading that is not the report's own is anybody's text, unless it is the same as one of them.
void Masks::MaskNote(NoteFact& note) const {
    constexpr std::string_view kQuote = "\"";
    const std::size_t begin = note.text.find(kQuote) + 1;
    const std::size_t end = note.text.rfind(kQuote);
    if (note.kind == "foreign_heading" && begin <= end && end != std::string::npos &&
        !IsReportTitle(std::string_view(note.text).substr(begin, end - begin))) {
        note.text.replace(begin, end - begin, "<heading>");
    }
    Replace(note.text);
}

void Masks::Mask(Facts& facts) {
    Collect(facts);
    MaskQuotedLines(facts);
    for (TextFact& line : facts.lines) {
        Replace(line.text);
    }
    for (NoteFact& note : facts.notes) {
        MaskNote(note);
    }
    for (HeadingFact& heading : facts.headings) {
        Replace(heading.title);
    }
    for (std::optional<TextFact>* fact :
         {&facts.folder, &facts.settings.file, &facts.settings.unreadable_file, &facts.log_path,
          &facts.software.foreground_title, &facts.software.foreground_program,
          &facts.software_in_two.foreground_title, &facts.software_in_two.foreground_program}) {
        if (*fact) {
            Replace((*fact)->text);
        }
    }
    for (OverrideFacts& choice : facts.overrides) {
        Replace(choice.application);
    }
}
