#include <gtest/gtest.h>

#include "platform/module_folder.h"

namespace {

TEST(FolderOfPath, IsThePartBeforeTheLastSeparator) {
    EXPECT_EQ(FolderOfPath("C:\\Program Files\\Vistrel\\vistrel_diag.exe"), "C:\\Program Files\\Vistrel");
    EXPECT_EQ(FolderOfPath("C:/Games/vistrel_diag.exe"), "C:/Games");
    EXPECT_EQ(FolderOfPath("C:\\Games/vistrel~1.exe"), "C:\\Games");
    EXPECT_EQ(FolderOfPath("C:\\Games\\"), "C:\\Games");
}

TEST(FolderOfPath, IsEmptyForABareName) {
    EXPECT_EQ(FolderOfPath("vistrel_diag.exe"), "");
    EXPECT_EQ(FolderOfPath(""), "");
}

}  // namespace
