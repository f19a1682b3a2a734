#include "tests/unit/support/png_file.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(PngOf, EncodesOneRedPixelByteForByte) {
    const std::vector<std::uint8_t> red = {0, 0, 255, 255};
    const std::string expected(
        "\x89PNG\r\n\x1A\n"
        "\0\0\0\x0DIHDR\0\0\0\1\0\0\0\1\x08\x02\0\0\0\x90\x77\x53\xDE"
        "\0\0\0\x0FIDAT\x78\x01\x01\x04\0\xFB\xFF\0\xFF\0\0\x03\x01\x01\0\x8D\x1D\xE5\x82"
        "\0\0\0\0IEND\xAE\x42\x60\x82",
        8 + 25 + 27 + 12);
    EXPECT_EQ(PngOf(red, 1, 1), expected);
}

}  // namespace
