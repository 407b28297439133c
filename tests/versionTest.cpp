#include "libvextrace/version.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace {

std::string versionText() {
    return std::to_string(VEXTRACE_VERSION_MAJOR) + '.' + std::to_string(VEXTRACE_VERSION_MINOR) +
           '.' + std::to_string(VEXTRACE_VERSION_PATCH);
}

// The number in the first heading "## [1.2.3] - date".
std::string newestOfChangelog() {
    std::ifstream changelog(VEXTRACE_SOURCE_DIR "/CHANGELOG.md");
    std::string line;
    while (std::getline(changelog, line)) {
        if (line.rfind("## [", 0) == 0 && line.rfind("## [Unreleased]", 0) != 0) {
            return line.substr(4, line.find(']') - 4);
        }
    }
    return "no version";
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

TEST(VersionTest, IsTheNewestOfTheChangelog) {
    EXPECT_EQ(versionText(), newestOfChangelog());
}

TEST(VersionTest, IsOneNumberThatThePreprocessorCompares) {
    EXPECT_TRUE(COMPARED_BY_PREPROCESSOR);
    EXPECT_EQ(VEXTRACE_VERSION, VEXTRACE_VERSION_MAJOR * 10000 + VEXTRACE_VERSION_MINOR * 100 +
                                    VEXTRACE_VERSION_PATCH);
}
