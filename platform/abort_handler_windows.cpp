#include "platform/abort_handler.h"

#include <windows.h>

#include <csignal>

namespace {

using SignalHandler = void (*)(int);
using SignalFunction = SignalHandler (*)(int signal, SignalHandler handler);

/// The signal() of ucrtbase.dll, which stays loaded. Null on a system without it.
SignalFunction UniversalSignal() {
    static const SignalFunction function = [] {
        HMODULE library = LoadLibraryExW(L"ucrtbase.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
        return library == nullptr ? nullptr
                                  : reinterpret_cast<SignalFunction>(GetProcAddress(library, "signal"));
    }();
    return function;
}

}  // namespace

void HandleAbort(void (*handler)(int signal)) {
    const SignalHandler chosen = handler != nullptr ? handler : SIG_DFL;
    std::signal(SIGABRT, chosen);
    if (const SignalFunction universal_signal = UniversalSignal(); universal_signal != nullptr) {
        universal_signal(SIGABRT, chosen);  // The same number in both, 22.
    }
}
