#include "libvextrace/version.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace {

std::string versionText() {
    return std::to_string(VEXTRACE_VERSION_MAJOR) + '.' + std::to_string(VEXTRACE_VERSION_MINOR) +
           '.' + std::to_string(VEXTRACE_VERSION_PATCH);
}

// 10203 for "1.2.3": two digits for each number but the first.
int numberOf(const std::string& text) {
    std::istringstream numbers(text);
    std::string digits;
    for (std::string number; std::getline(numbers, number, '.');) {
        digits += (number.size() < 2 && !digits.empty() ? "0" : "") + number;
    }
    return std::stoi(digits);
}

struct Changelog {
    bool holdsUnreleased = false;
    std::string newestRelease;
};

// The headings are "## [Unreleased]" and "## [1.2.3] - date", the newest first.
Changelog readChangelog() {
    std::ifstream file(VEXTRACE_SOURCE_DIR "/CHANGELOG.md");
    Changelog changelog;
    for (std::string line; changelog.newestRelease.empty() && std::getline(file, line);) {
        if (line == "## [Unreleased]") {
            changelog.holdsUnreleased = true;
        } else if (line.rfind("## [", 0) == 0) {
            changelog.newestRelease = line.substr(4, line.find(']') - 4);
        }
    }
    return changelog;
}

#if VEXTRACE_VERSION >= 10100 && VEXTRACE_VERSION < 20000
constexpr bool COMPARED_BY_PREPROCESSOR = true;
#else
constexpr bool COMPARED_BY_PREPROCESSOR = false;
#endif

}  // namespace

TEST(VersionTest, IsThatOfTheBuild) {
    EXPECT_EQ(versionText(), VEXTRACE_BUILD_VERSION);
}

// What is not released yet has no number there, but comes after the newest that has one.
TEST(VersionTest, IsTheNewestOfTheChangelogOrComesAfterIt) {
    const Changelog changelog = readChangelog();
    const int released = numberOf(changelog.newestRelease);
    if (changelog.holdsUnreleased) {
        EXPECT_GT(VEXTRACE_VERSION, released);
    } else {
        EXPECT_EQ(VEXTRACE_VERSION, released);
    }
}

TEST(VersionTest, IsOneNumberThatThePreprocessorCompares) {
    EXPECT_TRUE(COMPARED_BY_PREPROCESSOR);
    EXPECT_EQ(VEXTRACE_VERSION, numberOf(VEXTRACE_BUILD_VERSION));
}

TEST(VersionTest, IsThatOfTheLibraryAtHand) {
    EXPECT_EQ(vextrace::version(), numberOf(VEXTRACE_BUILD_VERSION));
}
