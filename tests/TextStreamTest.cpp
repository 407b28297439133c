#include "libvextrace/internal/TextStream.h"

#include <gtest/gtest.h>

#include <ios>

namespace {

// Shows what streams call.
class OpenBuffer : public vextrace::internal::TextBuffer {
public:
    using TextBuffer::overflow;
};

}  // namespace

TEST(TextStreamTest, CollectsCharactersTextsAndNumbers) {
    vextrace::internal::TextStream text;
    text.os.put('a') << "bc" << 42 << std::hex << 255 << ' ' << std::flush << '\0';
    EXPECT_EQ(text.takeText(), std::string("abc42ff \0", 9));
}

TEST(TextStreamTest, TakesTheEndOfAFileForNoCharacter) {
    OpenBuffer buffer;
    const int end = std::char_traits<char>::eof();
    EXPECT_NE(buffer.overflow(end), end);
    EXPECT_EQ(buffer.text, "");
    EXPECT_EQ(buffer.overflow('x'), 'x');
    EXPECT_EQ(buffer.text, "x");
    EXPECT_NE(buffer.overflow(0xFF), end);
    EXPECT_EQ(buffer.text, "x\xFF");
}
