#include "libvextrace/internal/NmeaFieldStream.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

using namespace std::string_literals;

using vextrace::internal::NmeaFieldStream;

namespace {

// What reading the text leaves in the item after each delimiter; the item starts as "before".
std::vector<std::string> readAll(const std::string& text, const std::string& delimiters) {
    NmeaFieldStream s(text);
    std::string_view item = "before";
    std::vector<std::string> items;
    for (const char delimiter : delimiters) {
        s.readField(item, delimiter);
        items.emplace_back(item);
    }
    return items;
}

std::vector<std::string> readAllWithGetline(const std::string& text,
                                            const std::string& delimiters) {
    std::stringstream s(text);
    std::string item = "before";
    std::vector<std::string> items;
    for (const char delimiter : delimiters) {
        std::getline(s, item, delimiter);
        items.push_back(item);
    }
    return items;
}

// All texts of this length over the alphabet.
std::vector<std::string> textsOver(const std::string& alphabet, size_t length) {
    std::vector<std::string> texts = {""};
    for (size_t i = 0; i < length; ++i) {
        std::vector<std::string> longer;
        for (const std::string& text : texts) {
            for (const char c : alphabet) {
                longer.push_back(text + c);
            }
        }
        texts = longer;
    }
    return texts;
}

using Items = std::vector<std::string>;

}  // namespace

TEST(NmeaFieldStreamTest, EndsEachFieldAtItsDelimiter) {
    EXPECT_EQ(readAll("$GPRMC,1,2*47\n", ",,*\n"), (Items{"$GPRMC", "1", "2", "47"}));
}

TEST(NmeaFieldStreamTest, KeepsOtherDelimitersInTheField) {
    EXPECT_EQ(readAll("a*b,c,d*e", ",*"), (Items{"a*b", "c,d"}));
}

TEST(NmeaFieldStreamTest, GivesAnEmptyFieldBetweenTwoDelimiters) {
    EXPECT_EQ(readAll(",,x", ",,,"), (Items{"", "", "x"}));
}

TEST(NmeaFieldStreamTest, GivesAllTheRestWithoutAFurtherDelimiter) {
    EXPECT_EQ(readAll("a,b*6A\r\n", ",,"), (Items{"a", "b*6A\r\n"}));
}

TEST(NmeaFieldStreamTest, LeavesTheItemOnceItHasRunIntoTheEnd) {
    EXPECT_EQ(readAll("all", ",,*"), (Items{"all", "all", "all"}));

    NmeaFieldStream s("all");
    std::string_view item;
    s.readField(item, ',');
    item = "kept";
    s.readField(item, ',');
    EXPECT_EQ(item, "kept");
}

TEST(NmeaFieldStreamTest, GivesAnEmptyFieldWhereTheReadBeginsAtTheEnd) {
    EXPECT_EQ(readAll("a,", ",,"), (Items{"a", ""}));
    EXPECT_EQ(readAll("", ","), (Items{""}));
}

TEST(NmeaFieldStreamTest, IsExhaustedBehindTheEmptyFieldAtTheEnd) {
    NmeaFieldStream s("a,");
    std::string_view item;
    s.readField(item, ',');
    s.readField(item, ',');
    item = "kept";
    s.readField(item, ',');
    EXPECT_EQ(item, "kept");
}

TEST(NmeaFieldStreamTest, TakesNulBytesAsAnyOther) {
    EXPECT_EQ(readAll("\0a,b\0,\0"s, ",,,"), (Items{"\0a"s, "b\0"s, "\0"s}));
    EXPECT_EQ(readAll("a\0b"s, "\0x"s), (Items{"a", "b"}));
}

TEST(NmeaFieldStreamTest, ReadsInPlace) {
    const std::string text = "first,second";
    NmeaFieldStream s(text);
    std::string_view item;
    s.readField(item, ',');
    s.readField(item, ',');
    EXPECT_EQ(static_cast<const void*>(item.data()), text.data() + 6);
}

TEST(NmeaFieldStreamTest, EqualsGetlineOnRealSentences) {
    const std::string rmcDelimiters = ",,,,,,,,,,,,*,";
    for (const std::string& text :
         {"$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W*6A\r\n"s,
          "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,003.1,W,A,V*6A\r\n"s,
          "$GPRMC,,V,,,,,,,,,,N*53\r\n"s, "$GPRMC\n"s, "$GPRMC,\n"s, "\n"s, ""s}) {
        EXPECT_EQ(readAll(text, rmcDelimiters), readAllWithGetline(text, rmcDelimiters)) << text;
    }
}

TEST(NmeaFieldStreamTest, EqualsGetlineOnAllShortTexts) {
    const std::vector<std::string> delimiterRows = textsOver(",*", 4);
    for (size_t length = 0; length <= 5; ++length) {
        for (const std::string& text : textsOver(",*x\0"s, length)) {
            for (const std::string& delimiters : delimiterRows) {
                ASSERT_EQ(readAll(text, delimiters), readAllWithGetline(text, delimiters))
                    << testing::PrintToString(text) << " read up to " << delimiters;
            }
        }
    }
}
