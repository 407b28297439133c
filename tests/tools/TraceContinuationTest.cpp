#include "tools/trace/TraceOutput.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/tools/traceParts.h"
#include "tools/io/errors.h"
#include "tools/io/signals.h"

using namespace vextrace;
using namespace vextrace::tools;
namespace fs = std::filesystem;
using std::string;

using TraceContinuationTest = TraceOutputTest;

TEST_F(TraceContinuationTest, GoesOnBehindATrace) {
    EXPECT_EQ(record("trace", ExistingFile::APPEND, {FIRST}), "");
    EXPECT_EQ(record("trace", ExistingFile::APPEND, {SECOND}), "");
    EXPECT_EQ(record("trace", ExistingFile::APPEND, {}), "");
    EXPECT_EQ(content("trace"), text({FIRST, SECOND}));
    write("empty", "");
    EXPECT_EQ(record("empty", ExistingFile::APPEND, {FIRST}), "");
    EXPECT_EQ(content("empty"), text({FIRST}));
}

TEST_F(TraceContinuationTest, MovesATornMessageAside) {
    const string second = text({SECOND});
    for (size_t size = 1; size < second.size(); ++size) {
        const string torn = second.substr(0, size);
        write("trace", text({FIRST}) + torn);
        fs::remove(path("trace.torn"));
        EXPECT_EQ(record("trace", ExistingFile::APPEND, {THIRD}),
                  path("trace") + ": ended in a torn message; " + std::to_string(size) +
                      (size == 1 ? " byte" : " bytes") + " from byte " +
                      std::to_string(FIRST.bytes.size()) + " on moved to " + path("trace.torn"));
        EXPECT_EQ(content("trace"), text({FIRST, THIRD}));
        EXPECT_EQ(content("trace.torn"), torn);
    }
}

TEST_F(TraceContinuationTest, MovesATornMessageAsideThatIsAllThereIs) {
    const string first = text({FIRST});
    for (size_t size = 1; size < first.size(); ++size) {
        write("trace", first.substr(0, size));
        fs::remove(path("trace.torn"));
        EXPECT_NE(record("trace", ExistingFile::APPEND, {SECOND}), "");
        EXPECT_EQ(content("trace"), text({SECOND}));
        EXPECT_EQ(content("trace.torn"), first.substr(0, size));
    }
}

TEST_F(TraceContinuationTest, OverwritesNoTornMessageThatLiesAside) {
    write("trace.torn", "one");
    write("trace.torn-2", "two");
    write("trace", text({FIRST}) + "\x01");
    record("trace", ExistingFile::APPEND, {SECOND});
    EXPECT_EQ(content("trace.torn"), "one");
    EXPECT_EQ(content("trace.torn-2"), "two");
    EXPECT_EQ(content("trace.torn-3"), "\x01");
    EXPECT_EQ(content("trace"), text({FIRST, SECOND}));
}

TEST_F(TraceContinuationTest, MovesZerosAsideThatAPowerFailureLeft) {
    const string zeros(100000, '\0');
    write("trace", text({FIRST}) + zeros);
    record("trace", ExistingFile::APPEND, {SECOND});
    EXPECT_EQ(content("trace.torn"), zeros);
    EXPECT_EQ(content("trace"), text({FIRST, SECOND}));
}

TEST_F(TraceContinuationTest, LeavesDamageInTheMiddleToOthers) {
    const string damaged = text({FIRST}) + string(20, '\0') + text({SECOND});
    write("trace", damaged);
    EXPECT_EQ(record("trace", ExistingFile::APPEND, {THIRD}), "");
    EXPECT_EQ(content("trace"), damaged + text({THIRD}));
}

TEST_F(TraceContinuationTest, GoesOnBehindMessagesOfOtherTypes) {
    const string can = text(messageOf(MSGID_CAN, 5, string("\1\2\3\0", 4)));
    write("trace", can);
    EXPECT_EQ(record("trace", ExistingFile::APPEND, {FIRST}), "");
    EXPECT_EQ(content("trace"), can + text({FIRST}));
}

TEST_F(TraceContinuationTest, DoesNotGoOnBehindWhatIsNoTrace) {
    EXPECT_EQ(refusal("other", ExistingFile::APPEND), "other: is no trace that could go on");
    EXPECT_EQ(content("other"), "another log\n");
    write("zeros", string(1000, '\0'));
    EXPECT_EQ(refusal("zeros", ExistingFile::APPEND), "zeros: is no trace that could go on");
    EXPECT_FALSE(exists("zeros.torn"));
}

TEST_F(TraceContinuationTest, TakesNothingBackThatWasThereBefore) {
    write("trace", text({FIRST}));
    const InputFile input(path("log"));
    TraceOutput output(path("trace"), ExistingFile::APPEND, input);
    const SizeLimit limit(FIRST.bytes.size() + 10);
    EXPECT_THROW(output.write(SECOND), DataError);
    EXPECT_EQ(content("trace"), text({FIRST}));
}

TEST_F(TraceContinuationTest, LeavesTheTraceAloneWhenTheTornMessageCannotBeMoved) {
    const string torn = text({FIRST}) + text({SECOND}).substr(0, 20);
    write("trace", torn);
    const SizeLimit limit(10);
    EXPECT_EQ(refusal("trace", ExistingFile::APPEND), "trace: cannot be written: File too large");
    EXPECT_EQ(content("trace"), torn);
    EXPECT_FALSE(exists("trace.torn"));
}

TEST_F(TraceContinuationTest, TakesBackWhatDidNotFitBehindATornMessageThatWasMoved) {
    write("trace", text({FIRST}) + text({SECOND}).substr(0, 20));
    const InputFile input(path("log"));
    TraceOutput output(path("trace"), ExistingFile::APPEND, input);
    const SizeLimit limit(FIRST.bytes.size() + 10);
    EXPECT_THROW(output.write(THIRD), DataError);
    EXPECT_EQ(content("trace"), text({FIRST}));
}

TEST_F(TraceContinuationTest, DoesNotGoOnBehindShortTexts) {
    for (const string& other :
         std::vector<string>{"a", "no", "$GP", "{}\n", "\n", "\r\n", string("\x01\x10\x16", 3)}) {
        write("other", other);
        EXPECT_EQ(refusal("other", ExistingFile::APPEND), "other: is no trace that could go on");
        EXPECT_EQ(content("other"), other);
        EXPECT_FALSE(exists("other.torn"));
    }
}

TEST_F(TraceContinuationTest, StopsReadingATraceWhenASignalComes) {
    const string torn = text({FIRST, SECOND}) + "\x01";
    write("trace", torn);
    const StopSignals signals;
    ASSERT_EQ(raise(SIGTERM), 0);
    EXPECT_EQ(refusal("trace", ExistingFile::REPLACE), "none");
    const InputFile input(path("log"));
    EXPECT_THROW(TraceOutput(path("trace"), ExistingFile::APPEND, input), Interrupted);
    EXPECT_EQ(content("trace"), torn);
}
