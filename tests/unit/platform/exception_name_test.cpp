#include "platform/exception_name.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace {

TEST(ExceptionName, IsKnownForEveryListedCode) {
    const std::vector<std::pair<std::uint32_t, std::string>> names = {
        {0x80000001, "guard page"},
        {0x80000002, "misaligned access"},
        {0x80000003, "breakpoint"},
        {0xC0000005, "access violation"},
        {0xC0000006, "page that could not be read from disk"},
        {0xC0000008, "invalid handle"},
        {0xC0000017, "out of memory"},
        {0xC000001D, "illegal instruction"},
        {0xC0000025, "exception that cannot be continued"},
        {0xC000008C, "array index out of bounds"},
        {0xC000008E, "floating-point division by zero"},
        {0xC0000090, "invalid floating-point operation"},
        {0xC0000091, "floating-point overflow"},
        {0xC0000094, "division by zero"},
        {0xC0000095, "integer overflow"},
        {0xC0000096, "privileged instruction"},
        {0xC00000FD, "stack overflow"},
        {0xC0000135, "missing DLL"},
        {0xC0000139, "missing entry point"},
        {0xC000013A, "Ctrl-C or closed window"},
        {0xC0000142, "DLL that failed to start"},
        {0xC0000374, "heap corruption"},
        {0xC0000409, "fail-fast"},
        {0xC0000417, "invalid parameter to the C runtime"},
        {0xC0000420, "assertion failure"},
        {0xC06D007E, "missing delay-loaded DLL"},
        {0xC06D007F, "missing delay-loaded function"},
        {0xE0434352, ".NET exception"},
        {0xE06D7363, "C++ exception"},
    };
    for (const auto& [code, name] : names) {
        EXPECT_EQ(ExceptionName(code), name);
    }
}

TEST(ExceptionName, IsNullForAnyOtherCode) {
    EXPECT_EQ(ExceptionName(0), nullptr);
    EXPECT_EQ(ExceptionName(0xC0001234), nullptr);
}

}  // namespace
