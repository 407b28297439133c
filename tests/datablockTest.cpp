#include "libvexutil/datablock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <type_traits>
#include <vector>

using vextrace::byteArrayToUint32;
using vextrace::byteArrayToUint8;
using vextrace::uint32ToByteArray;
using vextrace::uint8ToByteArray;

namespace {

using Bytes = std::vector<uint8_t>;

// Every distance from an aligned address that an access of eight bytes can have.
constexpr size_t OFFSETS = 8;

Bytes withOffset(size_t offset, const Bytes& bytes) {
    Bytes shifted(offset + bytes.size() + 1, 0xEE);
    std::copy(bytes.begin(), bytes.end(), shifted.begin() + static_cast<std::ptrdiff_t>(offset));
    return shifted;
}

}  // namespace

TEST(DatablockTest, ReadsOneByte) {
    const uint8_t bytes[] = {0x12, 0x34};
    EXPECT_EQ(byteArrayToUint8(bytes), 0x12U);
    EXPECT_EQ(byteArrayToUint8(bytes + 1), 0x34U);
}

TEST(DatablockTest, Reads2BytesMostSignificantFirst) {
    const uint8_t bytes[] = {0x12, 0x34};
    EXPECT_EQ(byteArrayToUint16(bytes), 0x1234U);
}

TEST(DatablockTest, Reads4BytesMostSignificantFirst) {
    const uint8_t bytes[] = {0x12, 0x34, 0x56, 0x78};
    EXPECT_EQ(byteArrayToUint32(bytes), 0x12345678U);
}

TEST(DatablockTest, Reads8BytesMostSignificantFirst) {
    const uint8_t bytes[] = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08};
    EXPECT_EQ(byteArrayToUint64(bytes), 0x0102030405060708U);
}

TEST(DatablockTest, ReadsBytesAbove127AsUnsigned) {
    const uint8_t bytes[] = {0xFE, 0xDC, 0xBA, 0x98, 0x87, 0x96, 0xA5, 0xB4};
    EXPECT_EQ(byteArrayToUint8(bytes), 0xFEU);
    EXPECT_EQ(byteArrayToUint16(bytes), 0xFEDCU);
    EXPECT_EQ(byteArrayToUint32(bytes), 0xFEDCBA98U);
    EXPECT_EQ(byteArrayToUint64(bytes), 0xFEDCBA988796A5B4U);
}

TEST(DatablockTest, ReadsTheExtremes) {
    const Bytes zeros(8, 0x00);
    const Bytes ones(8, 0xFF);
    EXPECT_EQ(byteArrayToUint8(zeros.data()), 0U);
    EXPECT_EQ(byteArrayToUint8(ones.data()), 0xFFU);
    EXPECT_EQ(byteArrayToUint16(zeros.data()), 0U);
    EXPECT_EQ(byteArrayToUint16(ones.data()), 0xFFFFU);
    EXPECT_EQ(byteArrayToUint32(zeros.data()), 0U);
    EXPECT_EQ(byteArrayToUint32(ones.data()), 0xFFFFFFFFU);
    EXPECT_EQ(byteArrayToUint64(zeros.data()), 0U);
    EXPECT_EQ(byteArrayToUint64(ones.data()), 0xFFFFFFFFFFFFFFFFU);
}

TEST(DatablockTest, ReadsAtAnyAddress) {
    for (size_t offset = 0; offset < OFFSETS; ++offset) {
        const Bytes bytes = withOffset(offset, {0xF1, 0xE2, 0xD3, 0xC4, 0xB5, 0xA6, 0x97, 0x88});
        EXPECT_EQ(byteArrayToUint8(bytes.data() + offset), 0xF1U) << offset;
        EXPECT_EQ(byteArrayToUint16(bytes.data() + offset), 0xF1E2U) << offset;
        EXPECT_EQ(byteArrayToUint32(bytes.data() + offset), 0xF1E2D3C4U) << offset;
        EXPECT_EQ(byteArrayToUint64(bytes.data() + offset), 0xF1E2D3C4B5A69788U) << offset;
    }
}

TEST(DatablockTest, Writes1ByteAtAnyAddressAndNoOthers) {
    for (size_t offset = 0; offset < OFFSETS; ++offset) {
        Bytes bytes = withOffset(offset, Bytes(1, 0x55));
        uint8ToByteArray(0x9A, bytes.data() + offset);
        EXPECT_EQ(bytes, withOffset(offset, {0x9A})) << offset;
    }
}

TEST(DatablockTest, Writes2BytesAtAnyAddressAndNoOthers) {
    for (size_t offset = 0; offset < OFFSETS; ++offset) {
        Bytes bytes = withOffset(offset, Bytes(2, 0x55));
        uint16ToByteArray(0x9A8B, bytes.data() + offset);
        EXPECT_EQ(bytes, withOffset(offset, {0x9A, 0x8B})) << offset;
    }
}

TEST(DatablockTest, Writes4BytesAtAnyAddressAndNoOthers) {
    for (size_t offset = 0; offset < OFFSETS; ++offset) {
        Bytes bytes = withOffset(offset, Bytes(4, 0x55));
        uint32ToByteArray(0x9A8B7C6D, bytes.data() + offset);
        EXPECT_EQ(bytes, withOffset(offset, {0x9A, 0x8B, 0x7C, 0x6D})) << offset;
    }
}

TEST(DatablockTest, Writes8BytesAtAnyAddressAndNoOthers) {
    for (size_t offset = 0; offset < OFFSETS; ++offset) {
        Bytes bytes = withOffset(offset, Bytes(8, 0x55));
        uint64ToByteArray(0xF1E2D3C4B5A69788, bytes.data() + offset);
        EXPECT_EQ(bytes, withOffset(offset, {0xF1, 0xE2, 0xD3, 0xC4, 0xB5, 0xA6, 0x97, 0x88}))
            << offset;
    }
}

TEST(DatablockTest, WritesZerosOverOtherBytes) {
    Bytes bytes = withOffset(1, Bytes(8, 0x55));
    uint64ToByteArray(0, bytes.data() + 1);
    EXPECT_EQ(bytes, withOffset(1, Bytes(8, 0x00)));
    uint16ToByteArray(0xFFFF, bytes.data() + 4);
    EXPECT_EQ(bytes, withOffset(1, {0, 0, 0, 0xFF, 0xFF, 0, 0, 0}));
}

TEST(DatablockTest, ReadsAndWritesTheWidthThatItsNameTells) {
    EXPECT_TRUE((std::is_same_v<decltype(byteArrayToUint8(nullptr)), uint8_t>));
    EXPECT_TRUE((std::is_same_v<decltype(byteArrayToUint16(nullptr)), uint16_t>));
    EXPECT_TRUE((std::is_same_v<decltype(byteArrayToUint32(nullptr)), uint32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(byteArrayToUint64(nullptr)), uint64_t>));
    EXPECT_TRUE((std::is_same_v<decltype(uint8ToByteArray), void(uint8_t, uint8_t*)>));
    EXPECT_TRUE((std::is_same_v<decltype(uint16ToByteArray), void(uint16_t, uint8_t*)>));
    EXPECT_TRUE((std::is_same_v<decltype(uint32ToByteArray), void(uint32_t, uint8_t*)>));
    EXPECT_TRUE((std::is_same_v<decltype(uint64ToByteArray), void(uint64_t, uint8_t*)>));
}
