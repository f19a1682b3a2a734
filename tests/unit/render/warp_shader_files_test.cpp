#include "render/warp_shader_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>

namespace {

using ::testing::ElementsAre;

TEST(WarpShaderCandidates, LooksBesideThenThreeLevelsUpThenHere) {
    EXPECT_THAT(WarpShaderCandidates("C:\\Vistrel"),
                ElementsAre("C:\\Vistrel\\vistrel\\shaders\\stereo_warp.hlsl",
                            "C:\\Vistrel\\..\\..\\..\\vistrel\\shaders\\stereo_warp.hlsl",
                            "vistrel\\shaders\\stereo_warp.hlsl"));
}

TEST(WarpShaderCandidates, LooksOnlyHereWithoutAFolder) {
    EXPECT_THAT(WarpShaderCandidates(""), ElementsAre("vistrel\\shaders\\stereo_warp.hlsl"));
}

class ReadWholeFileTest : public testing::Test {
  protected:
    ReadWholeFileTest() {
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
    }
    ~ReadWholeFileTest() override { std::filesystem::remove_all(folder_); }

    std::string Path(const char8_t* name) const {
        const std::u8string path = (folder_ / name).u8string();
        return {path.begin(), path.end()};
    }

    std::string Written(const char8_t* name, const std::string& contents) const {
        std::ofstream(folder_ / name, std::ios::binary) << contents;
        return Path(name);
    }

  private:
    // The same program may be running elsewhere.
    std::filesystem::path folder_ = std::filesystem::temp_directory_path() /
                                    ("warp_shader_files_test_" + std::to_string(std::random_device{}()));
};

TEST_F(ReadWholeFileTest, ReadsEveryByte) {
    const std::string contents("line\r\nnext\n\x1a\0\xff end", 19);
    std::string text = "old";
    EXPECT_TRUE(ReadWholeFile(Written(u8"shader.hlsl", contents), text));
    EXPECT_EQ(text, contents);
}

TEST_F(ReadWholeFileTest, ReadsAFileWithANonAsciiName) {
    std::string text;
    EXPECT_TRUE(ReadWholeFile(Written(u8"Ünïcødé 深度.hlsl", "x"), text));
    EXPECT_EQ(text, "x");
}

TEST_F(ReadWholeFileTest, AnEmptyFileCountsAsMissing) {
    std::string text = "old";
    EXPECT_FALSE(ReadWholeFile(Written(u8"empty.hlsl", ""), text));
    EXPECT_EQ(text, "");
}

TEST_F(ReadWholeFileTest, AMissingFileOrAFolderReturnsNothing) {
    std::string text = "old";
    EXPECT_FALSE(ReadWholeFile(Path(u8"missing.hlsl"), text));
    EXPECT_EQ(text, "");
    EXPECT_FALSE(ReadWholeFile(Path(u8""), text));
}

}  // namespace
