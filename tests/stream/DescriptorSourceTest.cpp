#include "libvexstream/DescriptorSource.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <memory>
#include <string>
#include <system_error>

using namespace vextrace;

namespace {

std::string readOf(ByteSource& source, size_t room) {
    std::string bytes(room, '\0');
    bytes.resize(source.read(reinterpret_cast<uint8_t*>(bytes.data()), room));
    return bytes;
}

}  // namespace

TEST(DescriptorSourceTest, PassesOverBytesOfAFile) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::tmpfile(), &std::fclose);
    ASSERT_NE(file, nullptr);
    const int fd = fileno(file.get());
    ASSERT_EQ(write(fd, "0123456789", 10), 10);
    ASSERT_EQ(lseek(fd, 1, SEEK_SET), 1);
    DescriptorSource source(fd);
    EXPECT_EQ(source.skip(4), 4U);
    EXPECT_EQ(readOf(source, 2), "56");
    EXPECT_EQ(source.skip(4), 3U);
    EXPECT_EQ(source.skip(4), 0U);
    EXPECT_EQ(readOf(source, 2), "");
}

TEST(DescriptorSourceTest, PassesOverBytesOfAPipe) {
    std::array<int, 2> ends = {};
    ASSERT_EQ(pipe(ends.data()), 0);
    ASSERT_EQ(write(ends[1], "0123456789", 10), 10);
    close(ends[1]);
    DescriptorSource source(ends[0]);
    EXPECT_EQ(source.skip(4), 4U);
    EXPECT_EQ(readOf(source, 2), "45");
    EXPECT_EQ(source.skip(5), 4U);
    close(ends[0]);
}

TEST(DescriptorSourceTest, SaysWhyItCannotBeReadOn) {
    DescriptorSource source(-1);
    try {
        readOf(source, 1);
        FAIL();
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::bad_file_descriptor);
    }
    EXPECT_THROW(source.skip(1), std::system_error);
}
