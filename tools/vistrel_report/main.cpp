// vistrel_report: what is in the reports that vistrel_diag wrote.
#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "tools/vistrel_report/exit_status.h"
#include "tools/vistrel_report/report_options.h"
#include "tools/vistrel_report/report_program.h"

namespace {

/// What became of a command line: options, or a text and an exit status to end with.
struct ParsedOptions {
    std::optional<ReportOptions> options;
    std::string text;
    int exit_status = 0;
};

constexpr const char* kAbout =
    "Reads what vistrel_diag wrote and says what is in it.\n\n"
    "A REPORT is a file, a folder (every report in it), or - for standard input.";
constexpr const char* kAfter =
    "Exit status: 0 all was read, 1 an input was no report, 2 wrong options, or an output not written.";

/// What CLI11 fills.
struct Flags {
    bool reply = false;
    bool json = false;
    bool csv = false;
    bool list_rules = false;
    bool compare = false;
    bool to_page = false;
    bool explain = false;
    std::string page;
    std::string rule;
    std::string only;
};

void Describe(CLI::App& app, ReportOptions& options, Flags& flags) {
    app.footer(kAfter);
    app.add_option("REPORT", options.inputs, "Reports to read");
    auto* const what = app.add_option_group("What to write; without any of these, findings in plain text");
    what->add_flag("--reply", flags.reply, "A short answer to send to the user, with at most three requests");
    what->add_option("--html", flags.page,
                     "One self-contained page; into a folder: an index and a page for each report")
        ->type_name("PAGE|FOLDER");
    what->add_flag("--compare", flags.compare, "What changed from the first report to the second");
    what->add_flag("--json", flags.json, "One JSON object for each report, a line each");
    what->add_flag("--csv", flags.csv, "One row for each report");
    what->add_flag("--list-rules", flags.list_rules, "The rules: level, id, title");
    what->add_option("--explain", flags.rule, "What one rule says")->type_name("ID");
    what->require_option(0, 1);
    app.add_option("--only", flags.only, "Only findings of one level")
        ->type_name("LEVEL")
        ->check(CLI::IsMember({"untrusted", "explains", "contributes", "worth-knowing"}));
    app.add_flag("--mask", options.mask, "In text and page, put words in place of what may name a person");
    app.add_flag("--with-personal-data", options.with_personal_data,
                 "In JSON and CSV, keep what may name a person");
}

Task TaskOf(const Flags& flags) {
    if (flags.list_rules) {
        return Task::ListRules;
    }
    if (flags.explain) {
        return Task::Explain;
    }
    if (flags.compare) {
        return Task::Compare;
    }
    if (flags.json || flags.csv) {
        return flags.json ? Task::Json : Task::Csv;
    }
    if (flags.reply) {
        return Task::Reply;
    }
    return flags.to_page ? Task::Page : Task::Findings;
}

/// Empty when the options go together.
std::string Complaint(const ReportOptions& options) {
    const bool reads = options.task != Task::ListRules && options.task != Task::Explain;
    if (reads && options.inputs.empty()) {
        return "Which report? Name a file, a folder, or - for standard input.";
    }
    if (!reads && !options.inputs.empty()) {
        return "--list-rules and --explain read no report.";
    }
    if (options.task == Task::Compare && options.inputs.size() != 2) {
        return "--compare takes two reports: the old one and the new one.";
    }
    if (options.task == Task::Reply && options.inputs.size() != 1) {
        return "--reply takes one report.";
    }
    if (options.task == Task::Page && options.page.empty()) {
        return "Which page? --html takes the name of the file or folder to write.";
    }
    if (options.only && options.task != Task::Findings) {
        return "--only goes with findings in plain text.";
    }
    if (options.task == Task::Explain && FindRule(options.rule) == nullptr) {
        return "There is no rule \"" + options.rule + "\"; --list-rules names them.";
    }
    return {};
}

std::optional<Level> LevelOfName(const std::string& name) {
    for (const Level level : {Level::Untrusted, Level::Explains, Level::Contributes, Level::WorthKnowing}) {
        if (LevelName(level) == name) {
            return level;
        }
    }
    return {};
}

/// `arguments` without the program's own name, UTF-8.
ParsedOptions ParseReportOptions(std::vector<std::string> arguments) {
    ReportOptions options;
    Flags flags;
    CLI::App app(kAbout, "vistrel_report");
    Describe(app, options, flags);
    std::reverse(arguments.begin(), arguments.end());  // CLI11 takes them from the back.
    try {
        app.parse(arguments);
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        std::ostringstream complaint;
        const bool asked = app.exit(error, out, complaint) == 0;
        return {{}, out.str() + complaint.str(), asked ? ExitStatus::kRead : ExitStatus::kUsage};
    }
    flags.to_page = app.count("--html") > 0;  // The name can be empty, which is an error of its own.
    flags.explain = app.count("--explain") > 0;
    options.task = TaskOf(flags);
    options.page = flags.page;
    options.rule = flags.rule;
    options.only = LevelOfName(flags.only);
    const std::string complaint = Complaint(options);
    if (!complaint.empty()) {
        return {{}, complaint + "\nRun with --help for more information.\n", ExitStatus::kUsage};
    }
    return {options, {}, ExitStatus::kRead};
}

/// Bytes as they are: no line ends are changed, and Ctrl-Z ends no input.
void UseBinaryStreams() {
#ifdef _WIN32
    _setmode(_fileno(stdin), _O_BINARY);
    _setmode(_fileno(stdout), _O_BINARY);
#endif
}

}  // namespace

// On Windows the manifest makes UTF-8 the code page of the arguments.
int main(int argument_count, char** arguments) {
    try {
        UseBinaryStreams();
        std::ios::sync_with_stdio(false);
        const ParsedOptions parsed =
            ParseReportOptions({arguments + (argument_count > 0 ? 1 : 0), arguments + argument_count});
        if (!parsed.options) {
            (parsed.exit_status == ExitStatus::kRead ? std::cout : std::cerr) << parsed.text;
            return parsed.exit_status;
        }
        return RunReportProgram(*parsed.options, std::cin, std::cout, std::cerr);
    } catch (const std::exception& error) {
        std::cerr << "vistrel_report: " << error.what() << "\n";
        return ExitStatus::kUsage;
    }
}
