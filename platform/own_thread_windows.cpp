#include <windows.h>

#include "platform/own_thread.h"
#include "platform/unique_handle.h"

namespace {

DWORD WINAPI CallWork(void* work) {
    (*static_cast<const std::function<void()>*>(work))();
    return 0;
}

}  // namespace

void RunOnOwnThread(const std::function<void()>& work) {
    const KernelHandle thread(
        CreateThread(nullptr, 0, CallWork, const_cast<std::function<void()>*>(&work), 0, nullptr));
    if (!thread) {
        work();
        return;
    }
    // The thread uses objects on this thread's stack, so it must end first, even if a wait fails.
    DWORD exit_code = STILL_ACTIVE;
    while (WaitForSingleObject(thread.get(), INFINITE) != WAIT_OBJECT_0 &&
           GetExitCodeThread(thread.get(), &exit_code) != FALSE && exit_code == STILL_ACTIVE) {
        SwitchToThread();  // Windows does not fail this wait on a valid handle, so polling costs nothing.
    }
}
