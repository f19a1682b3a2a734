#include "platform/exception_name.h"

#include <algorithm>
#include <array>

namespace {

struct NamedException {
    std::uint32_t code;
    const char* name;
};

constexpr std::array kNamedExceptions = {
    NamedException{0x80000001, "guard page"},
    NamedException{0x80000002, "misaligned access"},
    NamedException{0x80000003, "breakpoint"},
    NamedException{0xC0000005, "access violation"},
    NamedException{0xC0000006, "page that could not be read from disk"},
    NamedException{0xC0000008, "invalid handle"},
    NamedException{0xC0000017, "out of memory"},
    NamedException{0xC000001D, "illegal instruction"},
    NamedException{0xC0000025, "exception that cannot be continued"},
    NamedException{0xC000008C, "array index out of bounds"},
    NamedException{0xC000008E, "floating-point division by zero"},
    NamedException{0xC0000090, "invalid floating-point operation"},
    NamedException{0xC0000091, "floating-point overflow"},
    NamedException{0xC0000094, "division by zero"},
    NamedException{0xC0000095, "integer overflow"},
    NamedException{0xC0000096, "privileged instruction"},
    NamedException{0xC00000FD, "stack overflow"},
    NamedException{0xC0000135, "missing DLL"},
    NamedException{0xC0000139, "missing entry point"},
    NamedException{0xC000013A, "Ctrl-C or closed window"},
    NamedException{0xC0000142, "DLL that failed to start"},
    NamedException{0xC0000374, "heap corruption"},
    // The name comes from its first use, a damaged stack; the C runtime's abort() also ends with it.
    NamedException{0xC0000409, "fail-fast"},
    NamedException{0xC0000417, "invalid parameter to the C runtime"},
    NamedException{0xC0000420, "assertion failure"},
    NamedException{0xC06D007E, "missing delay-loaded DLL"},
    NamedException{0xC06D007F, "missing delay-loaded function"},
    NamedException{0xE0434352, ".NET exception"},
    NamedException{0xE06D7363, "C++ exception"},
};

}  // namespace

const char* ExceptionName(std::uint32_t code) {
    const auto* const found =
        std::find_if(kNamedExceptions.begin(), kNamedExceptions.end(),
                     [code](const NamedException& exception) { return exception.code == code; });
    return found != kNamedExceptions.end() ? found->name : nullptr;
}
