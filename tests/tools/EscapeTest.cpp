#include "tools/io/escape.h"

#include <gtest/gtest.h>

using namespace vextrace;
using namespace vextrace::tools;

TEST(EscapeTest, PrintableAsciiStaysAsItIs) {
    std::string text;
    for (char c = ' '; c <= '~'; ++c) {
        text += c == '\\' ? ' ' : c;
    }
    EXPECT_EQ(escaped(text), text);
    EXPECT_EQ(escaped(""), "");
}

TEST(EscapeTest, ControlCharactersBecomeEscapes) {
    for (int c = 0; c < 0x20; ++c) {
        const char digits[] = {"0123456789abcdef"[c >> 4], "0123456789abcdef"[c & 15], '\0'};
        EXPECT_EQ(escaped(std::string{'a', static_cast<char>(c), 'b'}),
                  std::string("a\\x") + digits + "b");
    }
    EXPECT_EQ(escaped("\x7F"), "\\x7f");
    EXPECT_EQ(escaped("\x1B[31m"), "\\x1b[31m");
}

TEST(EscapeTest, ABackslashIsDoubledSoThatEscapesAreClear) {
    EXPECT_EQ(escaped("a\\x1b"), "a\\\\x1b");
}

TEST(EscapeTest, Utf8StaysAsItIs) {
    // The first and last characters of each length, but for the C1 controls.
    for (const char* text :
         {"\xC2\xA0", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBF",
          "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF", "48\xC2\xB0"}) {
        EXPECT_EQ(escaped(text), text);
    }
}

TEST(EscapeTest, C1ControlsBecomeEscapes) {
    EXPECT_EQ(escaped("\xC2\x80"), "\\xc2\\x80");
    EXPECT_EQ(escaped("\xC2\x9B"
                      "31m"),
              "\\xc2\\x9b31m");
    EXPECT_EQ(escaped("\xC2\x9F"), "\\xc2\\x9f");
}

// The first and the last of each kind.
TEST(EscapeTest, CharactersThatHideOrTurnOthersRoundBecomeEscapes) {
    const struct {
        const char* text;
        const char* expected;
    } cases[] = {
        {"a\xC2\xAD", R"(a\xc2\xad)"},        // soft hyphen
        {"\xD8\x9C", R"(\xd8\x9c)"},          // Arabic letter mark
        {"\xE2\x80\x8B", R"(\xe2\x80\x8b)"},  // zero width space
        {"\xE2\x80\x8F", R"(\xe2\x80\x8f)"},  // right-to-left mark
        // NOLINTBEGIN(misc-misleading-bidirectional): they are what is tested
        {"\xE2\x80\xAA", R"(\xe2\x80\xaa)"},  // left-to-right embedding
        {"\xE2\x80\xAE", R"(\xe2\x80\xae)"},  // right-to-left override
        // NOLINTEND(misc-misleading-bidirectional)
        {"\xE2\x81\xA0", R"(\xe2\x81\xa0)"},          // word joiner
        {"\xE2\x81\xA9", R"(\xe2\x81\xa9)"},          // end of an isolate
        {"\xEF\xBB\xBF", R"(\xef\xbb\xbf)"},          // byte order mark
        {"\xEF\xBF\xBB", R"(\xef\xbf\xbb)"},          // end of an annotation
        {"\xE3\x85\xA4", R"(\xe3\x85\xa4)"},          // Hangul filler
        {"\xF3\xA0\x80\x80", R"(\xf3\xa0\x80\x80)"},  // tags
        {"\xF3\xA0\xBF\xBF", R"(\xf3\xa0\xbf\xbf)"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(escaped(text), expected);
    }
    for (const char* text : {"\xC2\xAE", "\xE2\x80\x90", "\xE2\x80\xA7", "\xE2\x81\xB0",
                             "\xE2\x80\xAF", "\xD7\xA9", "\xF3\xB0\x80\x80"}) {
        EXPECT_EQ(escaped(text), text);
    }
}

TEST(EscapeTest, BytesThatAreNoUtf8BecomeEscapes) {
    const struct {
        const char* text;
        const char* expected;
    } cases[] = {
        {"\x80", R"(\x80)"},
        {"\xFF", R"(\xff)"},
        {"\xC0\xAF", R"(\xc0\xaf)"},                  // overlong
        {"\xC1\xBF", R"(\xc1\xbf)"},                  //
        {"\xE0\x9F\xBF", R"(\xe0\x9f\xbf)"},          //
        {"\xF0\x8F\xBF\xBF", R"(\xf0\x8f\xbf\xbf)"},  //
        {"\xED\xA0\x80", R"(\xed\xa0\x80)"},          // a surrogate
        {"\xF4\x90\x80\x80", R"(\xf4\x90\x80\x80)"},  // beyond the last character
        {"\xF5\x80\x80\x80", R"(\xf5\x80\x80\x80)"},  //
        {"\xC3", R"(\xc3)"},                          // cut off
        {"\xE2\x82", R"(\xe2\x82)"},                  //
        {"\xE2\x82z", R"(\xe2\x82z)"},                //
        {"\xC3\xC3\xA4", "\\xc3\xC3\xA4"},            // and one that is whole
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(escaped(text), expected);
    }
}

TEST(EscapeTest, AppendsToWhatIsThere) {
    std::string text = "a\n";
    appendEscaped(text, "b\n");
    appendEscaped(text, "c");
    EXPECT_EQ(text, "a\nb\\x0ac");
}

TEST(EscapeTest, StandardInputHasAName) {
    EXPECT_EQ(shownName("-"), "standard input");
    EXPECT_EQ(shownName("--"), "--");
    EXPECT_EQ(shownName("a\nb"), "a\\x0ab");
}

TEST(EscapeTest, HtmlShowsTextAsText) {
    EXPECT_EQ(html("<script>alert('a' & \"b\")</script>"),
              "&lt;script&gt;alert(&#39;a&#39; &amp; &quot;b&quot;)&lt;/script&gt;");
    EXPECT_EQ(html("48°7.038 N"), "48°7.038 N");
}
