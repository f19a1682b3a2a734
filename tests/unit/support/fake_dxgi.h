// A scripted DXGI in place of the system's, for tests that link fake_dxgi.cpp.
#pragma once

#include <dxgi1_4.h>

#include <optional>
#include <string>
#include <vector>

struct FakeOutput {
    std::wstring name;
    HRESULT enumeration = S_OK;
    HRESULT description = S_OK;
};

struct FakeAdapter {
    std::wstring name;
    LUID luid = {};
    SIZE_T dedicated_video_memory = 0;
    SIZE_T shared_system_memory = 0;
    UINT vendor_id = 0;
    UINT flags = 0;
    std::vector<FakeOutput> outputs;
    bool accounts_memory = true;  ///< has IDXGIAdapter3
    HRESULT memory_query = S_OK;
    DXGI_QUERY_VIDEO_MEMORY_INFO memory = {};
    HRESULT enumeration = S_OK;
    HRESULT description = S_OK;
};

/// What the calls to DXGI answer from now on, and what they left behind.
struct FakeDxgi {
    HRESULT factory = S_OK;
    std::vector<FakeAdapter> adapters;
    HRESULT behind_the_last = DXGI_ERROR_NOT_FOUND;
    bool null_behind_the_last = false;  ///< success without an adapter or output there

    int live_objects = 0;
    int enumerations = 0;  ///< calls of EnumAdapters1 and EnumOutputs

    static FakeDxgi& Instance();
};
