#include "libvexstream/messageNames.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <string>

using namespace vextrace;

TEST(MessageNamesTest, EveryIdOfTheLibraryHasItsName) {
    std::ifstream header(VEXTRACE_SOURCE_DIR "/libvextrace/messageID.h");
    std::map<int, std::string> named;
    const std::regex enumerator(R"(\s+(MSGID_\w+) = (\d+).*)");
    std::smatch match;
    for (std::string line; std::getline(header, line);) {
        if (std::regex_match(line, match, enumerator)) {
            named[std::stoi(match[2])] = match[1];
        }
    }
    EXPECT_EQ(named.size(), 82U);
    for (int id = 0; id <= 0xFFFF; ++id) {
        const auto place = named.find(id);
        EXPECT_EQ(messageName(static_cast<msgid_t>(id)), place != named.end() ? place->second : "")
            << id;
    }
}

TEST(MessageNamesTest, ExpectsNamedIdsThoseInUseElsewhereAndFreeOnes) {
    for (int id = 0; id <= 0xFFFF; ++id) {
        const bool expected = (!messageName(static_cast<msgid_t>(id)).empty() && id != 65535) ||
                              id == 7 || id == 256 || id == 61440 || id == 61441 || id == 65533 ||
                              (id >= 49152 && id <= 57343);
        EXPECT_EQ(isExpected(static_cast<msgid_t>(id)), expected) << id;
    }
}
