#include "tools/io/InputFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <string>

#include "tests/tools/TemporaryFolder.h"
#include "tools/io/errors.h"

using namespace vextrace::tools;

namespace inputFileTest {

// A folder can be opened, but not read.
void failFromNowOn(const InputFile& input, const std::string& folder) {
    const int unreadable = open(folder.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(unreadable, 0);
    EXPECT_EQ(dup2(unreadable, input.descriptor()), input.descriptor());
    close(unreadable);
}

std::string errorOf(InputFile& input) {
    std::array<uint8_t, 4> bytes = {};
    try {
        input.read(bytes.data(), bytes.size());
    } catch (const ReadError& error) {
        return error.what();
    }
    return "none";
}

class InputFileTest : public testing::Test {
protected:
    InputFileTest() { folder.write("log", "0123456789"); }

    TemporaryFolder folder;
};

TEST_F(InputFileTest, NamesTheByteThatCannotBeRead) {
    InputFile input(folder.path("log"));
    std::array<uint8_t, 8> bytes = {};
    ASSERT_EQ(input.read(bytes.data(), bytes.size()), 8U);
    failFromNowOn(input, folder.path());
    EXPECT_EQ(errorOf(input), folder.path("log") + ": cannot be read on at byte 8: Is a directory");
}

TEST_F(InputFileTest, NamesTheByteThatCannotBeReadAfterItWentBack) {
    InputFile input(folder.path("log"));
    std::array<uint8_t, 8> bytes = {};
    ASSERT_EQ(input.read(bytes.data(), bytes.size()), 8U);
    ASSERT_TRUE(input.goBack(5));
    ASSERT_EQ(input.read(bytes.data(), 1), 1U);
    EXPECT_EQ(bytes[0], '3');
    failFromNowOn(input, folder.path());
    EXPECT_EQ(errorOf(input), folder.path("log") + ": cannot be read on at byte 4: Is a directory");
}

}  // namespace inputFileTest
