#include "tests/lab/console/console_script.h"

#include <functional>
#include <map>
#include <string_view>

namespace lab {
namespace {

[[noreturn]] void Reject(const std::string& what) {
    throw ConsoleScriptError(what);
}

std::uint32_t Number(const std::string& text) {
    std::size_t used = 0;
    unsigned long number = 0;
    try {
        number = std::stoul(text, &used, 0);
    } catch (const std::logic_error&) {
        Reject("no number: " + text);
    }
    if (used != text.size() || number > 0xFFFFFFFFUL) {
        Reject("no number: " + text);
    }
    return static_cast<std::uint32_t>(number);
}

/// Decodes a backslash sequence and removes it from the front.
char TakeEscaped(std::string_view& text) {
    const char kind = text.size() > 1 ? text[1] : '\0';
    if (kind == 'r' || kind == '\\') {
        text.remove_prefix(2);
        return kind == 'r' ? '\r' : '\\';
    }
    if (kind != 'x' || text.size() < 4) {
        Reject("unknown escape in " + std::string(text));
    }
    const auto byte = static_cast<char>(Number("0x" + std::string(text.substr(2, 2))));
    text.remove_prefix(4);
    return byte;
}

std::string Unescaped(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        if (text.front() == '\\') {
            result += TakeEscaped(text);
        } else {
            result += text.front();
            text.remove_prefix(1);
        }
    }
    return result;
}

int Milliseconds(const std::string& text) {
    constexpr std::string_view kUnit = " ms";
    if (!text.ends_with(kUnit)) {
        Reject("no milliseconds: " + text);
    }
    return static_cast<int>(Number(text.substr(0, text.size() - kUnit.size())));
}

using Statement = std::function<void(ConsoleScript& script, const std::string& rest)>;

Statement Step(ConsoleStep::Kind kind) {
    return [kind](ConsoleScript& script, const std::string& rest) {
        const bool takes_text = kind == ConsoleStep::Kind::kSees || kind == ConsoleStep::Kind::kTypes;
        if (takes_text == rest.empty()) {
            Reject(takes_text ? "a text is missing" : "nothing belongs behind it: " + rest);
        }
        script.steps.push_back({kind, Unescaped(rest)});
    };
}

template <typename Member>
Statement NumberOf(Member ConsoleScript::*member) {
    return [member](ConsoleScript& script, const std::string& rest) {
        script.*member = static_cast<Member>(Number(rest));
    };
}

Statement Flag(bool ConsoleScript::*member, bool value) {
    return [member, value](ConsoleScript& script, const std::string& rest) {
        if (!rest.empty()) {
            Reject("nothing belongs behind it: " + rest);
        }
        script.*member = value;
    };
}

const std::map<std::string, Statement>& Statements() {
    static const std::map<std::string, Statement> statements = {
        {"input mode", NumberOf(&ConsoleScript::input_mode)},
        {"output mode", NumberOf(&ConsoleScript::output_mode)},
        {"code page", NumberOf(&ConsoleScript::code_page)},
        {"columns", NumberOf(&ConsoleScript::columns)},
        {"processes", NumberOf(&ConsoleScript::processes)},
        {"title", [](ConsoleScript& script, const std::string& rest) { script.title = Unescaped(rest); }},
        {"handlers after",
         [](ConsoleScript& script, const std::string& rest) {
             script.handlers_after_milliseconds = Milliseconds(rest);
         }},
        {"without virtual terminal", Flag(&ConsoleScript::virtual_terminal, false)},
        {"with times", Flag(&ConsoleScript::clock_is_shown, true)},
        {"sees", Step(ConsoleStep::Kind::kSees)},
        {"reads", Step(ConsoleStep::Kind::kReads)},
        {"types", Step(ConsoleStep::Kind::kTypes)},
        {"presses Ctrl-C", Step(ConsoleStep::Kind::kCtrlC)},
        {"clicks", Step(ConsoleStep::Kind::kClicks)},
        {"closes", Step(ConsoleStep::Kind::kCloses)},
    };
    return statements;
}

void ReadStatement(const std::string& line, ConsoleScript& script) {
    for (const auto& [name, statement] : Statements()) {
        if (line == name) {
            statement(script, "");
            return;
        }
        if (line.starts_with(name + " ")) {
            statement(script, line.substr(name.size() + 1));
            return;
        }
    }
    Reject("unknown statement: " + line);
}

}  // namespace

ConsoleScript ReadConsoleScript(std::istream& file) {
    ConsoleScript script;
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        if (line.empty() || line.front() == '#') {
            continue;
        }
        try {
            ReadStatement(line, script);
        } catch (const ConsoleScriptError& error) {
            throw ConsoleScriptError("line " + std::to_string(number) + ": " + error.what());
        }
    }
    return script;
}

}  // namespace lab
