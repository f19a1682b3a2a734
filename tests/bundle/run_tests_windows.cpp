// Runs everything in the test bundle and writes one summary:
//
//     run_tests.exe [BUNDLE_FOLDER]
//
// BUNDLE_FOLDER (the one above this program's unless given) holds bin\ and source\ as packaging/test-bundle
// lays them out. All files go to a folder of the user's temporary files, which is removed at the end; what
// remains is summary.txt, and the reports in reports\, in the bundle's folder. The exit code is 0 when
// nothing failed.
#include <windows.h>

#include <d3d11.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "platform/module_folder.h"
#include "platform/utf8.h"
#include "settings/product_data.h"
#include "tests/bundle/program_run.h"
#include "tests/bundle/report_comparison.h"
#include "tests/bundle/summary.h"

namespace {

namespace fs = std::filesystem;

constexpr DWORD kTimeoutMs = 300'000;  // As for the tests under Wine; the slowest takes a tenth of it.
constexpr const wchar_t* kReportName = L"vistrel_diag_report.txt";

// Tests of a whole ./test that are not in the bundle.
const std::vector<std::string> kNotHere = {
    "whole runs driven by Python: terminals, programs beside the tool, broken folders (Linux and Wine)",
    "the native build under sanitizers, clang-format, cppcheck and the lines of the report (Linux)",
    "the genuine ONNX Runtime with DirectML and its models (too large for the bundle)",
};

class Bundle {
  public:
    explicit Bundle(fs::path folder)
        : folder_(std::move(folder)),
          work_(fs::temp_directory_path() / ("vistrel_diag_tests_" + std::to_string(GetCurrentProcessId()))) {
        fs::create_directories(work_);
        fs::remove_all(folder_ / "reports");
        fs::create_directories(folder_ / "reports");
        SetEnvironmentVariableW(L"VISTREL_SOURCE_FOLDER", (folder_ / "source").c_str());
    }
    Bundle(const Bundle&) = delete;
    Bundle& operator=(const Bundle&) = delete;
    ~Bundle() {
        std::error_code still_in_use;
        fs::remove_all(work_, still_in_use);
    }

    fs::path Binary(const char* path) const { return folder_ / "bin" / path; }
    fs::path Source(const char* path) const { return folder_ / "source" / path; }
    const fs::path& Folder() const { return folder_; }
    const fs::path& Work() const { return work_; }

    ProgramRun Run(const fs::path& program, const std::vector<std::wstring>& arguments,
                   const fs::path& folder) const {
        return RunProgram(program, arguments, folder, work_ / "output.txt", kTimeoutMs);
    }

    void KeepReport(const fs::path& report, const std::string& name) const {
        std::error_code missing;
        fs::copy_file(report, folder_ / "reports" / (name + ".txt"), missing);
    }

  private:
    fs::path folder_;
    fs::path work_;
};

/// The error with which a program ended; empty for a normal end.
std::string ProblemOf(const ProgramRun& run) {
    std::ostringstream text;
    if (!run.started) {
        text << "It could not be started (error " << run.exit_code << ").\n";
    } else if (run.timed_out) {
        text << "It did not end within " << kTimeoutMs / 1000 << " s.\n";
    } else if (run.exit_code != 0) {
        text << "It ended with 0x" << std::hex << run.exit_code << ".\n";
    }
    return text.str();
}

// ---- The unit tests

std::vector<fs::path> TestPrograms(const Bundle& bundle) {
    std::vector<fs::path> programs;
    for (const char* folder : {"tests/unit", "tests/lab/onnx/whole"}) {
        for (const auto& entry : fs::directory_iterator(bundle.Binary(folder))) {
            const std::wstring name = entry.path().filename().wstring();
            if (name.ends_with(L"_windows_test.exe") || name == L"portable_tests.exe") {
                programs.push_back(entry.path());
            }
        }
    }
    std::sort(programs.begin(), programs.end());
    return programs;
}

bool UnderWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

/// Whether there is a desktop that shows windows; a service has none.
bool HasDesktop() {
    HDESK desktop = OpenInputDesktop(0, FALSE, DESKTOP_READOBJECTS);
    if (desktop == nullptr) {
        return false;
    }
    CloseDesktop(desktop);
    return GetSystemMetrics(SM_CXSCREEN) > 0;
}

bool HasHardwareDevice() {
    HMODULE d3d11 = LoadLibraryExW(L"d3d11.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    const auto create = reinterpret_cast<PFN_D3D11_CREATE_DEVICE>(GetProcAddress(d3d11, "D3D11CreateDevice"));
    return create != nullptr && SUCCEEDED(create(nullptr, D3D_DRIVER_TYPE_HARDWARE, nullptr, 0, nullptr, 0,
                                                 D3D11_SDK_VERSION, nullptr, nullptr, nullptr));
}

bool HasAdministratorsRights() {
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE) {
        return false;
    }
    TOKEN_ELEVATION elevation = {};
    DWORD size = 0;
    GetTokenInformation(token, TokenElevation, &elevation, sizeof(elevation), &size);
    CloseHandle(token);
    return elevation.TokenIsElevated != 0;
}

/// Why a test program cannot run on this machine; empty when it can.
std::string WhyNot(const std::string& program) {
    const auto is_one_of = [&](std::initializer_list<std::string_view> names) {
        return std::any_of(names.begin(), names.end(), [&](std::string_view name) {
            return program == std::string(name) + "_windows_test";
        });
    };
    if (is_one_of({"running_software_section", "desktop_to_warp"}) && !HasDesktop()) {
        return "there is no desktop to show windows on";
    }
    if (is_one_of({"desktop_to_warp", "stereo_warp_shader", "warp_frame", "warp_timing", "frame_description",
                   "duplication"}) &&
        !HasHardwareDevice()) {
        return "there is no GPU with Direct3D 11";
    }
    if (is_one_of({"openxr_loader", "headset_section", "hand_tracking_section"}) && !UnderWine() &&
        HasAdministratorsRights()) {
        return "the OpenXR loader takes no runtime of the tests' for a program with administrator's rights";
    }
    return {};
}

Step RunTestProgram(const Bundle& bundle, const fs::path& program) {
    const std::string name = program.stem().string();
    if (const std::string reason = WhyNot(name); !reason.empty()) {
        return {name, {{"the program as a whole", TestOutcome::Skipped, reason}}};
    }
    // The tests of the warp search for the product's shader where the product would be installed.
    const bool in_install = name.starts_with("warp_");
    const fs::path folder = bundle.Work() / name;
    fs::create_directories(folder);
    if (in_install) {
        fs::copy(bundle.Source("tests/lab/install"), folder, fs::copy_options::recursive);
    }
    const ProgramRun run = bundle.Run(program, {}, folder);
    Step step = {name, ReadGtestOutput(run.output)};
    const std::string problem = ProblemOf(run);
    const bool explained = std::any_of(step.tests.begin(), step.tests.end(), [](const TestResult& test) {
        return test.outcome == TestOutcome::Failed;
    });
    if (!problem.empty() && !explained) {
        step.tests.push_back({"the program as a whole", TestOutcome::Failed, problem + run.output});
    } else if (problem.empty() && step.tests.empty()) {
        step.tests.push_back({"the program as a whole", TestOutcome::Failed, "It ran no test.\n"});
    }
    return step;
}

// ---- Whole runs on simulated machines

struct GoldenCase {
    std::string name;
    bool product = false;
    std::vector<std::wstring> arguments;
};

std::vector<GoldenCase> GoldenCases(const Bundle& bundle) {
    std::ifstream file(bundle.Source("tests/system/golden/cases.txt"));
    std::vector<GoldenCase> cases;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        GoldenCase one;
        std::string kind;
        if (!(words >> one.name >> kind) || one.name == "#") {
            continue;
        }
        one.product = kind == "product";
        for (std::string word; words >> word;) {
            one.arguments.emplace_back(word.begin(), word.end());
        }
        cases.push_back(std::move(one));
    }
    return cases;
}

fs::path LayOutInstall(const Bundle& bundle, const std::string& name, bool product) {
    const fs::path install = bundle.Work() / name / "install";
    fs::create_directories(install);
    fs::copy_file(bundle.Binary("vistrel_diag.exe"), install / "vistrel_diag.exe");
    if (product) {
        fs::create_directories(install / "vistrel" / "shaders");
        fs::copy_file(bundle.Source("tests/system/data/trivial_warp.hlsl"),
                      install / "vistrel" / "shaders" / "stereo_warp.hlsl");
        fs::copy_file(bundle.Binary("tests/lab/onnx/whole/onnxruntime.dll"), install / "onnxruntime.dll");
        fs::copy(bundle.Binary("models"), install / "vistrel" / "virtual_monitor",
                 fs::copy_options::recursive);
    }
    return install;
}

/// Counts of the simulated machine that are zero after a clean run.
std::string WhatWasLeft(const fs::path& counts) {
    std::ifstream file(counts);
    std::string problems;
    bool read = false;
    std::string name;
    for (long long value = 0; file >> name >> value; read = true) {
        if (value != 0 && (name == "live_objects" || name == "violations" || name == "open_handles")) {
            problems += name + " " + std::to_string(value) + "\n";
        }
    }
    return read ? problems : "The simulated machine left no counts.\n";
}

/// Runs the tool on a simulated machine and returns the bytes of the report file. `problem` receives the
/// error of the run itself.
std::string RunScenario(const Bundle& bundle, const std::string& scenario, const fs::path& install,
                        const std::vector<std::wstring>& options, std::string& problem) {
    const fs::path counts = install.parent_path() / "counts.txt";
    SetEnvironmentVariableW(L"VISTREL_LAB_STATISTICS", counts.c_str());
    std::vector<std::wstring> arguments = {
        (bundle.Source("tests/lab/scenarios") / (scenario + ".txt")).wstring(),
        (install / "vistrel_diag.exe").wstring()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const ProgramRun run = bundle.Run(bundle.Binary("tests/lab/vistrel_lab.exe"), arguments, install);
    problem = ProblemOf(run);
    if (!problem.empty()) {
        problem += run.output;
    } else {
        problem = WhatWasLeft(counts);
    }
    bundle.KeepReport(install / kReportName, install.parent_path().filename().string());
    return FileBytes(install / kReportName);
}

/// Whether the user has settings or a log of the product, which every run of the tool looks for.
bool UserHasProductData() {
    std::error_code unreadable;
    const fs::path folder(WideFromUtf8(ProductDataFolder()));
    return fs::exists(folder, unreadable) && !fs::is_empty(folder, unreadable);
}

TestResult CompareWithGolden(const Bundle& bundle, const GoldenCase& one) {
    if (UserHasProductData()) {
        return {one.name, TestOutcome::Skipped, "this user has settings or a log of the product"};
    }
    const fs::path install = LayOutInstall(bundle, "golden-" + one.name, one.product);
    std::string problem;
    const std::string report = RunScenario(bundle, one.name, install, one.arguments, problem);
    const std::string golden = FileBytes(bundle.Source("tests/system/golden") / (one.name + ".txt"));
    for (const std::string& line : ReportDifferences(golden, report, Utf8FromWide(install.native()))) {
        problem += line + "\n";
    }
    return {one.name, problem.empty() ? TestOutcome::Passed : TestOutcome::Failed, problem};
}

TestResult ComesToItsEnd(const Bundle& bundle, const std::string& scenario) {
    const fs::path install = LayOutInstall(bundle, "scenario-" + scenario, true);
    std::string problem;
    const std::string report =
        RunScenario(bundle, scenario, install, {L"--quick", L"--capture-seconds", L"0.5"}, problem);
    for (const std::string& line : WhatIsMissing(report)) {
        problem += line + "\n";
    }
    return {scenario, problem.empty() ? TestOutcome::Passed : TestOutcome::Failed, problem};
}

std::vector<std::string> Scenarios(const Bundle& bundle) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(bundle.Source("tests/lab/scenarios"))) {
        names.push_back(entry.path().stem().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

// ---- The tool on this very machine

TestResult RunHere(const Bundle& bundle) {
    const fs::path install = LayOutInstall(bundle, "this-machine", true);
    fs::remove(install / "onnxruntime.dll");  // The fake runtime measures nothing.
    const ProgramRun run = bundle.Run(install / "vistrel_diag.exe", {L"--quick"}, install);
    std::string problem = ProblemOf(run);
    const std::string report = FileBytes(install / kReportName);
    bundle.KeepReport(install / kReportName, "this-machine");
    for (const std::string& line : WhatIsMissing(report)) {
        problem += line + "\n";
    }
    return {"vistrel_diag --quick", problem.empty() ? TestOutcome::Passed : TestOutcome::Failed, problem};
}

// ---- All of it

/// The real version of Windows; programs see a different one unless their manifest requests it.
std::string MachineName() {
    HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    using GetVersion = LONG(WINAPI*)(OSVERSIONINFOW*);
    using WineVersion = const char* (*)();
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    if (const auto get = reinterpret_cast<GetVersion>(GetProcAddress(ntdll, "RtlGetVersion"))) {
        get(&version);
    }
    std::ostringstream name;
    name << "Windows " << version.dwMajorVersion << "." << version.dwMinorVersion << "."
         << version.dwBuildNumber;
    if (const auto wine = reinterpret_cast<WineVersion>(GetProcAddress(ntdll, "wine_get_version"))) {
        name << " (Wine " << wine() << ")";
    }
    return name.str();
}

void Tell(const Step& step) {
    const auto failed = std::count_if(step.tests.begin(), step.tests.end(), [](const TestResult& test) {
        return test.outcome == TestOutcome::Failed;
    });
    std::printf("%-45s %4zu tests, %zd failed\n", step.name.c_str(), step.tests.size(),
                static_cast<std::ptrdiff_t>(failed));
    std::fflush(stdout);
}

Summary RunEverything(const Bundle& bundle) {
    Summary summary;
    const auto add = [&](Step step) {
        Tell(step);
        summary.Add(std::move(step));
    };
    for (const fs::path& program : TestPrograms(bundle)) {
        add(RunTestProgram(bundle, program));
    }
    SetEnvironmentVariableW(L"VISTREL_ONNX_STAND_IN", L"pixel-takes=60");
    Step golden = {"reports of simulated machines", {}};
    for (const GoldenCase& one : GoldenCases(bundle)) {
        golden.tests.push_back(CompareWithGolden(bundle, one));
    }
    add(std::move(golden));
    Step whole = {"whole runs on every simulated machine", {}};
    for (const std::string& scenario : Scenarios(bundle)) {
        whole.tests.push_back(ComesToItsEnd(bundle, scenario));
    }
    add(std::move(whole));
    SetEnvironmentVariableW(L"VISTREL_ONNX_STAND_IN", nullptr);
    add({"the tool on this machine", {RunHere(bundle)}});
    return summary;
}

fs::path LocalProductFolder() {
    wchar_t local[MAX_PATH] = {};
    GetEnvironmentVariableW(L"LOCALAPPDATA", local, MAX_PATH);
    return fs::path(local) / L"Vistrel";
}

int Run(const fs::path& folder) {
    const fs::path product_folder = LocalProductFolder();
    const bool product_folder_was_there = fs::exists(product_folder);
    bool passed = false;
    {
        const Bundle bundle(folder);
        const Summary summary = RunEverything(bundle);
        passed = summary.AllPassed();
        std::ofstream(folder / "summary.txt") << summary.Text(MachineName(), kNotHere);
    }
    if (!product_folder_was_there) {
        std::error_code not_empty;
        fs::remove(product_folder,
                   not_empty);  // The tool creates it if it does not exist, but never with files in it.
    }
    std::printf("\n%s See %s\n", passed ? "All passed." : "THERE ARE FAILURES.",
                (folder / "summary.txt").string().c_str());
    return passed ? 0 : 1;
}

}  // namespace

int wmain(int argument_count, wchar_t** arguments) {
    try {
        const fs::path own_folder(WideFromUtf8(ExecutableFolder()));
        return Run(argument_count > 1 ? fs::canonical(arguments[1]) : own_folder.parent_path());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "run_tests: %s\n", error.what());
        return 2;
    }
}
