#include "platform/library.h"

#include <gtest/gtest.h>

namespace {

TEST(FindSystemFunction, FindsAFunctionOfADllInTheSystemFolder) {
    const LibraryFunction found = FindSystemFunction(L"kernel32.dll", "GetTickCount64");
    EXPECT_EQ(found.function, GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "GetTickCount64"));
    EXPECT_EQ(found.missing, S_OK);
}

TEST(FindSystemFunction, TellsThatThereIsNoSuchDll) {
    const LibraryFunction found = FindSystemFunction(L"no_such_library.dll", "GetTickCount64");
    EXPECT_EQ(found.function, nullptr);
    EXPECT_EQ(found.missing, HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND));
}

TEST(FindSystemFunction, TellsThatTheDllLacksTheFunction) {
    const LibraryFunction found = FindSystemFunction(L"kernel32.dll", "NoSuchFunction");
    EXPECT_EQ(found.function, nullptr);
    EXPECT_EQ(found.missing, HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND));
}

TEST(FindSystemFunction, LeavesTheErrorModeAsItWas) {
    const DWORD before = GetThreadErrorMode();
    FindSystemFunction(L"no_such_library.dll", "GetTickCount64");
    EXPECT_EQ(GetThreadErrorMode(), before);
}

}  // namespace
