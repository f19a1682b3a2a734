// Read access to the registry.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/unique_handle.h"

/// One value of a key as text. The stored type is ignored.
struct RegistryValue {
    std::string name;  ///< UTF-8; empty for the key's default value
    std::string text;  ///< UTF-8; see TextFromRegistryData
};

/// A key opened for reading, closed with the object.
class RegistryKey {
  public:
    /// Values whose text needs more bytes than this cannot be read by ReadText.
    static constexpr std::size_t kLongestText = 512;
    /// Limits of ReadValues: a name in UTF-16 units (with its zero), data in bytes.
    static constexpr std::size_t kLongestName = 512;
    static constexpr std::size_t kLongestData = 1024;

    /// `root` is one of the predefined keys. The object converts to false when the key does not exist or may
    /// not be read.
    RegistryKey(HKEY root, const wchar_t* path);

    explicit operator bool() const { return static_cast<bool>(key_); }

    /// The value as text, whatever its type. Empty when it is missing or longer than kLongestText.
    std::optional<std::string> ReadText(const wchar_t* name) const;

    /// A value stored as a 32-bit number. Empty when it is missing or of any other type or size.
    std::optional<std::uint32_t> ReadNumber(const wchar_t* name) const;

    /// The key's values in the order in which Windows lists them, up to the first one that cannot be read for
    /// any reason, such as a name or data beyond the limits.
    std::vector<RegistryValue> ReadValues() const;

  private:
    struct KeyTraits {
        using Handle = HKEY;
        static Handle Invalid() { return nullptr; }
        static void Close(Handle key) { RegCloseKey(key); }
    };

    UniqueHandle<KeyTraits> key_{nullptr};
};
