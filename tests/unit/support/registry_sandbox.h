// A test's own registry key that replaces one of the predefined keys.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// For its lifetime, this process sees an empty key instead of `root`; the key and everything written to it
/// are removed afterwards.
class RegistrySandbox {
  public:
    explicit RegistrySandbox(HKEY root) : root_(root) {
        name_ = L"Software\\VistrelDiagTest" + std::to_wstring(GetCurrentProcessId());
        RegDeleteTreeW(HKEY_CURRENT_USER, name_.c_str());  // Left by a test that was killed.
        EXPECT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, name_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                  &key_, nullptr),
                  ERROR_SUCCESS);
        EXPECT_EQ(RegOverridePredefKey(root_, key_), ERROR_SUCCESS);
    }
    RegistrySandbox(const RegistrySandbox&) = delete;
    RegistrySandbox& operator=(const RegistrySandbox&) = delete;
    ~RegistrySandbox() {
        RegOverridePredefKey(root_, nullptr);
        RegDeleteTreeW(key_, nullptr);
        RegCloseKey(key_);
        RegDeleteKeyW(HKEY_CURRENT_USER, name_.c_str());
    }

    void MakeKey(const wchar_t* path) { Write(path, nullptr, REG_NONE, nullptr, 0); }

    /// The text with its terminating zero.
    void WriteText(const wchar_t* path, const wchar_t* name, const std::wstring& text) {
        Write(path, name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
    }
    void WriteNumber(const wchar_t* path, const wchar_t* name, std::uint32_t number) {
        Write(path, name, REG_DWORD, &number, sizeof(number));
    }
    void WriteBytes(const wchar_t* path, const wchar_t* name, DWORD type,
                    const std::vector<std::uint8_t>& bytes) {
        Write(path, name, type, bytes.data(), bytes.size());
    }

  private:
    void Write(const wchar_t* path, const wchar_t* name, DWORD type, const void* data, std::size_t size) {
        HKEY key = nullptr;
        ASSERT_EQ(RegCreateKeyExW(key_, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
                  ERROR_SUCCESS);
        if (data != nullptr || type != REG_NONE) {
            EXPECT_EQ(
                RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size)),
                ERROR_SUCCESS);
        }
        RegCloseKey(key);
    }

    HKEY root_;
    HKEY key_ = nullptr;
    std::wstring name_;
};
