#include "tools/io/errors.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

namespace {

using namespace vextrace::tools;

struct Told {
    int status;
    std::string line;
};

Told outcomeOfThrowing(const auto& error) {
    testing::internal::CaptureStderr();
    const int status = outcomeOf([&]() -> int { throw error; });
    return {status, testing::internal::GetCapturedStderr()};
}

TEST(ErrorsTest, TellsInWordsThatMemoryRanOut) {
    const Told told = outcomeOfThrowing(std::bad_alloc());
    EXPECT_EQ(told.status, STATUS_DATA);
    EXPECT_EQ(told.line, "vextrace: there is not enough memory\n");
}

TEST(ErrorsTest, GivesTheStatusOfWhatFailed) {
    const Told usage = outcomeOfThrowing(UsageError("a"));
    EXPECT_EQ(usage.status, STATUS_USAGE);
    EXPECT_EQ(usage.line, "vextrace: a\n");
    const Told data = outcomeOfThrowing(DataError("b"));
    EXPECT_EQ(data.status, STATUS_DATA);
    EXPECT_EQ(data.line, "vextrace: b\n");
    EXPECT_EQ(outcomeOf([] { return 7; }), 7);
}

}  // namespace
