#include "platform/registry_text.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(RegistryText, EndsAtTheFirstZero) {
    EXPECT_EQ(TextFromRegistryData(Bytes{'a', 0, 'b', 0, 0, 0, 'c', 0}), "ab");
}

TEST(RegistryText, NeedNotBeTerminated) {
    EXPECT_EQ(TextFromRegistryData(Bytes{'a', 0, 'b', 0}), "ab");
    Bytes whole_buffer;
    for (int i = 0; i < 256; ++i) {
        whole_buffer.insert(whole_buffer.end(), {'x', 0});
    }
    EXPECT_EQ(TextFromRegistryData(whole_buffer), std::string(256, 'x'));
}

TEST(RegistryText, IgnoresHalfAUnit) {
    EXPECT_EQ(TextFromRegistryData(Bytes{'a', 0, 'b'}), "a");
    EXPECT_EQ(TextFromRegistryData(Bytes{'a'}), "");
}

TEST(RegistryText, IsEmptyForNoData) {
    EXPECT_EQ(TextFromRegistryData({}), "");
    EXPECT_EQ(TextFromRegistryData(Bytes{0, 0, 'a', 0}), "");
}

TEST(RegistryText, IsLittleEndianUtf16) {
    EXPECT_EQ(TextFromRegistryData(Bytes{0xDC, 0x00, 0x22, 0x21, 0x3D, 0xD8, 0x00, 0xDE}),
              "\xC3\x9C\xE2\x84\xA2\xF0\x9F\x98\x80");
}

TEST(RegistryText, KeepsTheTextAroundAnUnpairedSurrogate) {
    EXPECT_EQ(TextFromRegistryData(Bytes{'a', 0, 0x3D, 0xD8}), "a\xEF\xBF\xBD");
    EXPECT_EQ(TextFromRegistryData(Bytes{0x00, 0xDE, 'a', 0}),
              "\xEF\xBF\xBD"
              "a");
}

}  // namespace
