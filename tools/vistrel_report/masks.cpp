#include "tools/vistrel_report/masks.h"

#include <algorithm>
#include <cctype>

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
    for (const std::optional<TextFact>& path : {facts.settings.file, facts.log_path}) {
        if (path) {
            CollectPath(path->text);
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
    // A window title can hold line breaks; whatever no reading claims may be its rest.
    for (const LineNumber line : facts.not_understood) {
        if (TextFact* const unread = FindLine(facts, line)) {
            unread->text = WordFor("line", unread->text);
        }
    }
}

void Masks::Mask(Facts& facts) {
    Collect(facts);
    MaskQuotedLines(facts);
    for (TextFact& line : facts.lines) {
        Replace(line.text);
    }
    for (NoteFact& note : facts.notes) {
        Replace(note.text);
    }
    for (HeadingFact& heading : facts.headings) {
        Replace(heading.title);
    }
    for (std::optional<TextFact>* fact :
         {&facts.folder, &facts.settings.file, &facts.log_path, &facts.software.foreground_title,
          &facts.software.foreground_program, &facts.software_in_two.foreground_title,
          &facts.software_in_two.foreground_program}) {
        if (*fact) {
            Replace((*fact)->text);
        }
    }
    for (OverrideFacts& choice : facts.overrides) {
        Replace(choice.application);
    }
}
