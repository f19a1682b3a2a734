#include "platform/registry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

#include "tests/unit/support/registry_sandbox.h"

namespace {

template <typename Function>
Function SystemFunction(const char* name) {
    return reinterpret_cast<Function>(GetProcAddress(LoadLibraryW(L"advapi32.dll"), name));
}

}  // namespace

// What the program calls instead of the system's functions; they are the system's unless a test says
// otherwise.
extern "C" {
decltype(&RegQueryValueExW) __imp_RegQueryValueExW =
    SystemFunction<decltype(&RegQueryValueExW)>("RegQueryValueExW");
decltype(&RegEnumValueW) __imp_RegEnumValueW = SystemFunction<decltype(&RegEnumValueW)>("RegEnumValueW");
}

namespace {

using Bytes = std::vector<std::uint8_t>;

/// Makes a key read-only for its lifetime.
class ReadOnlyKey {
  public:
    ReadOnlyKey(HKEY root, const wchar_t* path) {
        EXPECT_EQ(RegOpenKeyExW(root, path, 0, KEY_ALL_ACCESS, &key_), ERROR_SUCCESS);
        Allow(KEY_READ);
        HKEY writable = nullptr;
        EXPECT_EQ(RegOpenKeyExW(root, path, 0, KEY_WRITE, &writable), ERROR_ACCESS_DENIED);
    }
    ~ReadOnlyKey() {
        Allow(KEY_ALL_ACCESS);
        RegCloseKey(key_);
    }
    ReadOnlyKey(const ReadOnlyKey&) = delete;
    ReadOnlyKey& operator=(const ReadOnlyKey&) = delete;

  private:
    void Allow(DWORD access) const {
        SID_IDENTIFIER_AUTHORITY world = {SECURITY_WORLD_SID_AUTHORITY};
        PSID everyone = nullptr;
        ASSERT_NE(AllocateAndInitializeSid(&world, 1, SECURITY_WORLD_RID, 0, 0, 0, 0, 0, 0, 0, &everyone),
                  FALSE);
        std::array<DWORD, 64> list = {};
        auto* const acl = reinterpret_cast<ACL*>(list.data());
        SECURITY_DESCRIPTOR descriptor = {};
        EXPECT_NE(InitializeAcl(acl, sizeof(list), ACL_REVISION), FALSE);
        EXPECT_NE(AddAccessAllowedAce(acl, ACL_REVISION, access, everyone), FALSE);
        EXPECT_NE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION), FALSE);
        EXPECT_NE(SetSecurityDescriptorDacl(&descriptor, TRUE, acl, FALSE), FALSE);
        EXPECT_EQ(RegSetKeySecurity(key_, DACL_SECURITY_INFORMATION, &descriptor), ERROR_SUCCESS);
        FreeSid(everyone);
    }

    HKEY key_ = nullptr;
};

class Registry : public testing::Test {
  protected:
    RegistrySandbox sandbox_{HKEY_CURRENT_USER};
};

TEST_F(Registry, AMissingKeyIsFalseAndEmpty) {
    const RegistryKey key(HKEY_CURRENT_USER, L"No\\Such\\Key");
    EXPECT_FALSE(key);
    EXPECT_FALSE(key.ReadText(L"x"));
    EXPECT_FALSE(key.ReadNumber(L"x"));
    EXPECT_TRUE(key.ReadValues().empty());
}

/// Most of HKEY_LOCAL_MACHINE is such for an ordinary user.
TEST_F(Registry, ReadsAReadOnlyKey) {
    sandbox_.WriteText(L"Key", L"Name", L"value");
    sandbox_.WriteNumber(L"Key", L"Number", 5);
    const ReadOnlyKey read_only(HKEY_CURRENT_USER, L"Key");
    const RegistryKey key(HKEY_CURRENT_USER, L"Key");
    EXPECT_TRUE(key);
    EXPECT_EQ(key.ReadText(L"Name"), "value");
    EXPECT_EQ(key.ReadNumber(L"Number"), 5U);
    EXPECT_EQ(key.ReadValues().size(), 2U);
}

TEST_F(Registry, ReadsText) {
    sandbox_.WriteText(L"Key", L"Name", L"Gr\u00FC\u00DFe");
    const RegistryKey key(HKEY_CURRENT_USER, L"Key");
    EXPECT_TRUE(key);
    EXPECT_EQ(key.ReadText(L"Name"),
              "Gr\xC3\xBC\xC3\x9F"
              "e");
    EXPECT_FALSE(key.ReadText(L"Other"));
}

TEST_F(Registry, ReadsTextUpTo512Bytes) {
    // Windows itself terminates what is written as REG_SZ.
    sandbox_.WriteText(L"Key", L"Fits", std::wstring(255, L'x'));
    sandbox_.WriteText(L"Key", L"TooLong", std::wstring(256, L'x'));
    sandbox_.WriteBytes(L"Key", L"Unterminated", REG_BINARY, [] {
        Bytes bytes;
        for (int i = 0; i < 256; ++i) {
            bytes.insert(bytes.end(), {'y', 0});
        }
        return bytes;
    }());
    const RegistryKey key(HKEY_CURRENT_USER, L"Key");
    EXPECT_EQ(key.ReadText(L"Fits"), std::string(255, 'x'));
    EXPECT_FALSE(key.ReadText(L"TooLong"));
    EXPECT_EQ(key.ReadText(L"Unterminated"), std::string(256, 'y'));
}

TEST_F(Registry, ReadsTextFromAnyTypeWithinItsBytes) {
    sandbox_.WriteBytes(L"Key", L"Binary", REG_BINARY, {'a', 0, 'b'});
    sandbox_.WriteBytes(L"Key", L"Empty", REG_SZ, {});
    sandbox_.WriteNumber(L"Key", L"Number", 'n');
    const RegistryKey key(HKEY_CURRENT_USER, L"Key");
    EXPECT_EQ(key.ReadText(L"Binary"), "a");
    EXPECT_EQ(key.ReadText(L"Empty"), "");
    EXPECT_EQ(key.ReadText(L"Number"), "n");
}

TEST_F(Registry, ReadsOnlyNumericValuesAsNumbers) {
    sandbox_.WriteNumber(L"Key", L"Number", 0xFFFFFFFF);
    sandbox_.WriteText(L"Key", L"Text", L"2");
    sandbox_.WriteBytes(L"Key", L"Binary", REG_BINARY, {2, 0, 0, 0});
    sandbox_.WriteBytes(L"Key", L"Wide", REG_QWORD, {2, 0, 0, 0, 0, 0, 0, 0});
    sandbox_.WriteBytes(L"Key", L"Short", REG_DWORD, {2, 0});
    sandbox_.WriteBytes(L"Key", L"Untyped", REG_NONE, {2, 0, 0, 0});
    const RegistryKey key(HKEY_CURRENT_USER, L"Key");
    EXPECT_EQ(key.ReadNumber(L"Number"), 0xFFFFFFFFU);
    EXPECT_FALSE(key.ReadNumber(L"Text"));
    EXPECT_FALSE(key.ReadNumber(L"Binary"));
    EXPECT_FALSE(key.ReadNumber(L"Wide"));
    EXPECT_FALSE(key.ReadNumber(L"Short"));
    EXPECT_FALSE(key.ReadNumber(L"Untyped"));
    EXPECT_FALSE(key.ReadNumber(L"Missing"));
}

TEST_F(Registry, ListsItsValues) {
    sandbox_.WriteText(L"Key", L"One", L"1");
    sandbox_.WriteText(L"Key", L"", L"default");
    sandbox_.WriteBytes(L"Key", L"Tw\u00F6", REG_BINARY, {'2', 0, '2'});
    std::vector<std::string> texts;
    for (const RegistryValue& value : RegistryKey(HKEY_CURRENT_USER, L"Key").ReadValues()) {
        texts.push_back(value.name + "=" + value.text);
    }
    EXPECT_THAT(texts, testing::UnorderedElementsAre("One=1", "=default", "Tw\xC3\xB6=2"));
}

TEST_F(Registry, ListsNothingOfAKeyWithoutValues) {
    sandbox_.MakeKey(L"Key");
    const RegistryKey key(HKEY_CURRENT_USER, L"Key");
    EXPECT_TRUE(key);
    EXPECT_TRUE(key.ReadValues().empty());
}

TEST_F(Registry, ListsUpToAValueBeyondTheLimits) {
    sandbox_.WriteBytes(L"Data", L"Fits", REG_BINARY, Bytes(1024, 'x'));
    sandbox_.WriteText(L"Name", std::wstring(511, L'n').c_str(), L"Fits");
    const auto data = RegistryKey(HKEY_CURRENT_USER, L"Data").ReadValues();
    ASSERT_EQ(data.size(), 1U);
    const auto name = RegistryKey(HKEY_CURRENT_USER, L"Name").ReadValues();
    ASSERT_EQ(name.size(), 1U);
    EXPECT_EQ(name[0].name, std::string(511, 'n'));

    sandbox_.WriteBytes(L"TooMuch", L"Data", REG_BINARY, Bytes(1025, 'x'));
    EXPECT_TRUE(RegistryKey(HKEY_CURRENT_USER, L"TooMuch").ReadValues().empty());
    sandbox_.WriteText(L"TooLong", std::wstring(512, L'n').c_str(), L"x");
    EXPECT_TRUE(RegistryKey(HKEY_CURRENT_USER, L"TooLong").ReadValues().empty());
}

TEST_F(Registry, DoesNotTrustASizeBeyondItsBuffer) {
    sandbox_.MakeKey(L"Key");
    const RegistryKey key(HKEY_CURRENT_USER, L"Key");
    const auto query =
        std::exchange(__imp_RegQueryValueExW,
                      [](HKEY, LPCWSTR, LPDWORD, LPDWORD, LPBYTE data, LPDWORD size) WINAPI -> LONG {
                          std::fill_n(data, *size, 'x');
                          *size = 0xFFFFFFFF;
                          return ERROR_SUCCESS;
                      });
    const auto text = key.ReadText(L"Name");
    __imp_RegQueryValueExW = query;
    ASSERT_TRUE(text);
    EXPECT_EQ(text->size(), 256U * 3);  // U+7878 has three bytes

    const auto enumerate = std::exchange(__imp_RegEnumValueW,
                                         [](HKEY, DWORD index, LPWSTR name, LPDWORD name_length, LPDWORD,
                                            LPDWORD, LPBYTE data, LPDWORD size) WINAPI -> LONG {
                                             if (index > 0) {
                                                 return ERROR_NO_MORE_ITEMS;
                                             }
                                             std::fill_n(name, *name_length, L'n');
                                             std::fill_n(data, *size, 'x');
                                             *name_length = 0xFFFFFFFF;
                                             *size = 0xFFFFFFFF;
                                             return ERROR_SUCCESS;
                                         });
    const auto values = key.ReadValues();
    __imp_RegEnumValueW = enumerate;
    ASSERT_EQ(values.size(), 1U);
    EXPECT_EQ(values[0].name, std::string(512, 'n'));
    EXPECT_EQ(values[0].text.size(), 512U * 3);
}

}  // namespace
