#include "tools/io/GrowingFile.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/tools/TemporaryFolder.h"
#include "tools/io/errors.h"

using namespace vextrace;
using namespace vextrace::tools;
namespace fs = std::filesystem;
using std::string;

namespace growingFileTest {

class GrowingFileTest : public testing::Test {
protected:
    GrowingFileTest() { folder.write("log", "$GPABC\n"); }

    // As another program does that opens it with >>.
    void appendAsAnother(const string& text) const {
        std::ofstream(folder.path("trace"), std::ios::binary | std::ios::app) << text;
    }

    string trace() const { return folder.content("trace"); }

    TemporaryFolder folder;
};

class Written : public GrowingFileTest {
protected:
    Written() : input(folder.path("log")), file(folder.path("trace"), ExistingFile::REFUSE, input) {
        EXPECT_EQ(file.write("0123456789"), 10U);
    }

    const InputFile input;
    GrowingFile file;
};

TEST_F(Written, TakesBackItsLastBytesBehindThoseOfAnother) {
    appendAsAnother("other");
    EXPECT_EQ(file.write("abcde"), 5U);
    file.takeBack(5);
    EXPECT_EQ(trace(), "0123456789other");
}

TEST_F(Written, TakesNothingBackWhereAnotherAppended) {
    appendAsAnother("other");
    file.takeBack(3);
    EXPECT_EQ(trace(), "0123456789other");
    EXPECT_EQ(file.write("abcde"), 5U);
    file.takeBack(6);
    EXPECT_EQ(trace(), "0123456789otherabcde");
}

TEST_F(Written, TakesBackNoMoreThanItWrote) {
    file.takeBack(11);
    EXPECT_EQ(trace(), "0123456789");
    file.takeBack(10);
    EXPECT_EQ(trace(), "");
}

TEST_F(Written, GoesOnAtTheNewEndOfAFileThatWasCut) {
    fs::resize_file(folder.path("trace"), 4);
    EXPECT_EQ(file.write("abc"), 3U);
    EXPECT_EQ(trace(), "0123abc");
    EXPECT_EQ(file.cutOff(), 6U);
    file.takeBack(8);
    EXPECT_EQ(trace(), "0123abc");
    file.takeBack(3);
    EXPECT_EQ(trace(), "0123");
}

TEST_F(Written, CountsWhatWasCutOffAtTheEnd) {
    fs::resize_file(folder.path("trace"), 0);
    file.close();
    EXPECT_EQ(file.cutOff(), 10U);
}

TEST_F(Written, MissesItsNameWhenItIsRemoved) {
    EXPECT_NO_THROW(file.requireName());
    fs::rename(folder.path("trace"), folder.path("renamed"));
    EXPECT_NO_THROW(file.requireName());
    fs::remove(folder.path("renamed"));
    try {
        file.close();
        FAIL() << "nothing was noticed";
    } catch (const DataError& error) {
        EXPECT_EQ(error.what(), folder.path("trace") + ": was removed while it was recorded");
    }
}

TEST_F(GrowingFileTest, LeavesAnotherFileThatBearsTheNameByThen) {
    const InputFile input(folder.path("log"));
    GrowingFile file(folder.path("trace"), ExistingFile::REFUSE, input);
    fs::rename(folder.path("trace"), folder.path("renamed"));
    folder.write("trace", "");
    file.close();
    EXPECT_TRUE(folder.exists("trace"));
}

TEST_F(GrowingFileTest, RefusesABlockDeviceUnlessToldTo) {
    const string disk = folder.makeBlockDevice("disk");
    if (disk.empty()) {
        GTEST_SKIP() << "no block device can be made here";
    }
    const InputFile input(folder.path("log"));
    try {
        const GrowingFile file(disk, ExistingFile::REFUSE, input);
        FAIL() << "it was opened";
    } catch (const UsageError& error) {
        EXPECT_EQ(error.what(), disk + ": exists; --append goes on behind it, --force replaces it");
    }
}

TEST(SinkTest, TellsFilesOfOneNumberOnTwoFileSystemsApart) {
    const FileStatus file = {FileStatus::Kind::REGULAR, 0, 1, 77, 0644};
    FileStatus other = file;
    EXPECT_TRUE(isOneOf(file, {other}));
    other.device = 2;
    EXPECT_FALSE(isOneOf(file, {other}));
    other = file;
    other.number = 78;
    EXPECT_FALSE(isOneOf(file, {other}));
}

}  // namespace growingFileTest
