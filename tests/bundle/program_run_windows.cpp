#include <fstream>
#include <sstream>

#include "platform/unique_handle.h"
#include "tests/bundle/program_run.h"
#include "tests/lab/launcher/command_line_text.h"

namespace {

namespace fs = std::filesystem;

UniqueFileHandle OpenInherited(const fs::path& path, DWORD access, DWORD how) {
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    return UniqueFileHandle(CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                        how, FILE_ATTRIBUTE_NORMAL, nullptr));
}

/// Ends every program in it when it is closed.
KernelHandle MakeJob() {
    KernelHandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof(limits));
    return job;
}

}  // namespace

std::string FileBytes(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

ProgramRun RunProgram(const fs::path& program, const std::vector<std::wstring>& arguments,
                      const fs::path& folder, const fs::path& output_file, DWORD timeout_ms) {
    ProgramRun run;
    std::wstring command_line = lab::QuotedArgument(program.native());
    for (const std::wstring& argument : arguments) {
        command_line += L" " + lab::QuotedArgument(argument);
    }
    const KernelHandle job = MakeJob();
    {
        const UniqueFileHandle input = OpenInherited(L"NUL", GENERIC_READ, OPEN_EXISTING);
        const UniqueFileHandle output = OpenInherited(output_file, GENERIC_WRITE, CREATE_ALWAYS);
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = input.get();
        startup.hStdOutput = startup.hStdError = output.get();
        PROCESS_INFORMATION information = {};
        if (CreateProcessW(program.c_str(), command_line.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED,
                           nullptr, folder.c_str(), &startup, &information) == FALSE) {
            run.exit_code = GetLastError();
            return run;
        }
        run.started = true;
        const KernelHandle process(information.hProcess);
        const KernelHandle thread(information.hThread);
        AssignProcessToJobObject(job.get(), process.get());
        ResumeThread(thread.get());
        if (WaitForSingleObject(process.get(), timeout_ms) != WAIT_OBJECT_0) {
            run.timed_out = true;
            TerminateJobObject(job.get(), 1);
            WaitForSingleObject(process.get(), INFINITE);
        }
        GetExitCodeProcess(process.get(), &run.exit_code);
    }
    run.output = FileBytes(output_file);
    return run;
}
