#include "platform/long_path.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Filled(const std::string& start, std::size_t length) {
    return start + std::string(length - start.size(), 'x');
}

TEST(OpenablePath, DoesNotChangeAShortPath) {
    EXPECT_EQ(OpenablePath(""), "");
    EXPECT_EQ(OpenablePath("vistrel_diag_report.txt"), "vistrel_diag_report.txt");
    EXPECT_EQ(OpenablePath(Filled("C:\\", 259)), Filled("C:\\", 259));
    EXPECT_EQ(OpenablePath(Filled("\\\\server\\share\\", 259)), Filled("\\\\server\\share\\", 259));
}

TEST(OpenablePath, ConvertsALongPathToTheFormWithoutALimit) {
    EXPECT_EQ(OpenablePath(Filled("C:\\a\\", 260)), "\\\\?\\" + Filled("C:\\a\\", 260));
    EXPECT_EQ(OpenablePath(Filled("x:/a\\", 300)), "\\\\?\\" + Filled("x:\\a\\", 300));
    EXPECT_EQ(OpenablePath(Filled("\\\\server\\share\\", 300)),
              "\\\\?\\UNC\\" + Filled("\\\\server\\share\\", 300).substr(2));
}

TEST(OpenablePath, DoesNotChangeALongPathThatIsRelativeOrHasAPrefix) {
    for (const char* start : {"folder\\", "C:folder\\", "\\folder\\", "\\\\?\\C:\\", "\\\\.\\C:\\"}) {
        EXPECT_EQ(OpenablePath(Filled(start, 400)), Filled(start, 400));
    }
}

TEST(OpenablePath, UsesBackslashesAfterThePrefix) {
    EXPECT_EQ(OpenablePath("\\\\?\\C:\\folder\\a/b/c.onnx"), "\\\\?\\C:\\folder\\a\\b\\c.onnx");
    EXPECT_EQ(OpenablePath("\\\\?\\UNC\\server/share"), "\\\\?\\UNC\\server\\share");
}

TEST(OpenablePath, DoesNotChangeALongPathThroughAParentFolder) {
    for (const char* start : {"C:\\a\\..\\", "C:/a/../", "\\\\server\\share\\a\\..\\"}) {
        EXPECT_EQ(OpenablePath(Filled(start, 400)), Filled(start, 400));
    }
    EXPECT_EQ(OpenablePath(Filled("C:\\a..\\..b\\", 300)), "\\\\?\\" + Filled("C:\\a..\\..b\\", 300));
}

}  // namespace
