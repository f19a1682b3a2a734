// The input that a test types at the console.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>

/// Standard input contains exactly `typed`, and then its end. The underlying file is removed with the object.
class ConsoleInput {
  public:
    explicit ConsoleInput(std::string_view typed)
        : path_(std::filesystem::path(testing::TempDir()) /
                // The same test may be running in another program.
                ("console_input_" + std::to_string(std::random_device{}()))) {
        std::ofstream(path_, std::ios::binary)
            .write(typed.data(), static_cast<std::streamsize>(typed.size()));
        opened_ = std::freopen(path_.string().c_str(), "r", stdin) != nullptr;
        EXPECT_TRUE(opened_) << path_;
    }
    ConsoleInput(const ConsoleInput&) = delete;
    ConsoleInput& operator=(const ConsoleInput&) = delete;
    ~ConsoleInput() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }

  private:
    std::filesystem::path path_;
    bool opened_ = false;
};
