#include "platform/open_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#ifdef _WIN32
#include <windows.h>
#endif

namespace {

/// A file that exists while the test runs.
class OpenFile : public testing::Test {
  protected:
    ~OpenFile() override { std::filesystem::remove_all(path_); }

    const std::string& Path() const { return path_; }

    /// What can be read of the file; "(closed)" when it does not open.
    std::string Read() const {
        std::ifstream file = OpenFileForReading(path_);
        if (!file.is_open()) {
            return "(closed)";
        }
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    std::string path_ =
        std::string("open_file_test.") + testing::UnitTest::GetInstance()->current_test_info()->name();
};

TEST_F(OpenFile, ReadsBytesUnchanged) {
    std::ofstream(Path(), std::ios::binary) << "a\r\nb\x1A" << '\0' << "\nc";
    EXPECT_EQ(Read(), std::string("a\r\nb\x1A\0\nc", 8));
}

TEST_F(OpenFile, FailsForAMissingFile) {
    EXPECT_EQ(Read(), "(closed)");
    EXPECT_FALSE(OpenFileForReading("").is_open());
}

TEST_F(OpenFile, OpensAFileThatIsBeingWritten) {
    std::ofstream writer(Path(), std::ios::binary);
    writer << "first" << std::flush;
    EXPECT_EQ(Read(), "first");
    writer << " second" << std::flush;
    EXPECT_EQ(Read(), "first second");
}

#ifdef _WIN32
/// Holds the file open for writing, sharing it with others as `share` says.
class Holder {
  public:
    Holder(const std::string& path, DWORD share)
        : file_(CreateFileA(path.c_str(), GENERIC_WRITE, share, nullptr, CREATE_ALWAYS, 0, nullptr)) {
        DWORD written = 0;
        EXPECT_TRUE(WriteFile(file_, "text", 4, &written, nullptr));
    }
    ~Holder() { CloseHandle(file_); }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

  private:
    HANDLE file_;
};

TEST_F(OpenFile, OpensAFileWhoseWriterSharesReading) {
    const Holder holder(Path(), FILE_SHARE_READ);
    EXPECT_EQ(Read(), "text");
}

TEST_F(OpenFile, FailsForAFileThatIsNotShared) {
    const Holder holder(Path(), 0);
    EXPECT_EQ(Read(), "(closed)");
}

TEST_F(OpenFile, FailsForAFolder) {
    std::filesystem::create_directory(Path());
    EXPECT_EQ(Read(), "(closed)");
}

TEST_F(OpenFile, FailsForANameThatIsNotUtf8) {
    EXPECT_FALSE(OpenFileForReading("\xFF.txt").is_open());
}
#endif

}  // namespace
