// Starts a program of the bundle and waits for it.
#pragma once

#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

struct ProgramRun {
    bool started = false;
    bool timed_out = false;  ///< killed, with every program that it had started
    DWORD exit_code = 0;
    std::string output;  ///< its output and error stream together, as bytes
};

/// Runs `program` in `folder` with an empty input. Its output overwrites `output_file`.
ProgramRun RunProgram(const std::filesystem::path& program, const std::vector<std::wstring>& arguments,
                      const std::filesystem::path& folder, const std::filesystem::path& output_file,
                      DWORD timeout_ms);

/// The whole file as bytes; empty when it cannot be read.
std::string FileBytes(const std::filesystem::path& path);
