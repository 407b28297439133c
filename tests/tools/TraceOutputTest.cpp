#include "tools/trace/TraceOutput.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "tests/tools/traceParts.h"
#include "tools/io/errors.h"

using namespace vextrace;
using namespace vextrace::tools;
namespace fs = std::filesystem;
using std::string;

TEST_F(TraceOutputTest, HasEachPartInTheFileAtOnce) {
    const InputFile input(path("log"));
    TraceOutput output(path("trace"), ExistingFile::REFUSE, input);
    EXPECT_EQ(content("trace"), "");
    output.write(FIRST);
    EXPECT_EQ(content("trace"), text({FIRST}));
    output.write(SECOND);
    EXPECT_EQ(content("trace"), text({FIRST, SECOND}));
    output.close();
    EXPECT_EQ(content("trace"), text({FIRST, SECOND}));
}

TEST_F(TraceOutputTest, CountsWhatIsInTheFile) {
    const InputFile input(path("log"));
    TraceOutput output(path("trace"), ExistingFile::REFUSE, input);
    output.write(EpochBuilder::Part());
    EXPECT_EQ(output.written().messages, 0U);
    output.write(FIRST);
    output.write(SECOND);
    output.write(THIRD);
    EXPECT_EQ(output.written().epochs, 2U);
    EXPECT_EQ(output.written().messages, 3U);
    EXPECT_EQ(output.written().sentences, 6U);
    EXPECT_EQ(output.written().bytes, text({FIRST, SECOND, THIRD}).size());
    EXPECT_EQ(output.written().first, FIRST.stamp);
    EXPECT_EQ(output.written().last, THIRD.stamp);
}

TEST_F(TraceOutputTest, WritesManyPartsTogetherWhenToldTo) {
    const InputFile input(path("log"));
    TraceOutput output(path("trace"), ExistingFile::REFUSE, input);
    output.setTogether(true);
    output.write(FIRST);
    output.write(SECOND);
    EXPECT_EQ(content("trace"), "");
    EXPECT_EQ(output.written().messages, 0U);
    output.close();
    EXPECT_EQ(content("trace"), text({FIRST, SECOND}));
    EXPECT_EQ(output.written().messages, 2U);
}

TEST_F(TraceOutputTest, LeavesNoEmptyFile) {
    EXPECT_EQ(record("trace", ExistingFile::REFUSE, {}), "");
    EXPECT_FALSE(exists("trace"));
    const InputFile input(path("log"));
    { const TraceOutput output(path("trace"), ExistingFile::APPEND, input); }
    EXPECT_FALSE(exists("trace"));
}

TEST_F(TraceOutputTest, RefusesAFileThatExists) {
    EXPECT_EQ(refusal("other", ExistingFile::REFUSE),
              "other: exists; --append goes on behind it, --force replaces it");
    EXPECT_EQ(content("other"), "another log\n");
    write("empty", "");
    EXPECT_NE(refusal("empty", ExistingFile::REFUSE), "none");
    EXPECT_TRUE(exists("empty"));
}

TEST_F(TraceOutputTest, ReplacesAFileWhenThereIsSomethingToWrite) {
    record("other", ExistingFile::REPLACE, {});
    EXPECT_EQ(content("other"), "another log\n");
    record("other", ExistingFile::REPLACE, {FIRST, SECOND});
    EXPECT_EQ(content("other"), text({FIRST, SECOND}));
    record("new", ExistingFile::REPLACE, {FIRST});
    EXPECT_EQ(content("new"), text({FIRST}));
}

TEST_F(TraceOutputTest, RefusesTheInputByEveryName) {
    fs::create_hard_link(path("log"), path("hard"));
    fs::create_symlink("log", path("soft"));
    for (const auto existing :
         {ExistingFile::REFUSE, ExistingFile::APPEND, ExistingFile::REPLACE}) {
        EXPECT_EQ(refusal("log", existing), "log: is the input itself");
        EXPECT_EQ(refusal("hard", existing), "hard: is the input itself");
        EXPECT_EQ(refusal("soft", existing), "soft: is the input itself");
        EXPECT_EQ(
            refusal("./../" + fs::path(folder.path()).filename().string() + "/log", existing),
            "./../" + fs::path(folder.path()).filename().string() + "/log: is the input itself");
    }
    EXPECT_EQ(content("log"), "$GPABC\n");
}

TEST_F(TraceOutputTest, RefusesAnInputThatIsAFifo) {
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
    const int both = open(path("fifo").c_str(), O_RDWR);
    const InputFile input(path("fifo"));
    EXPECT_THROW(TraceOutput(path("fifo"), ExistingFile::REFUSE, input), UsageError);
    close(both);
}

TEST_F(TraceOutputTest, RefusesWhatIsNoPlaceForATrace) {
    EXPECT_EQ(refusal("", ExistingFile::REPLACE), ": is a directory");
    EXPECT_EQ(refusal("none/trace", ExistingFile::REFUSE),
              "none/trace: cannot be written: No such file or directory");
    EXPECT_EQ(refusal("log/trace", ExistingFile::REFUSE),
              "log/trace: cannot be written: Not a directory");
    fs::create_symlink("nowhere", path("link"));
    EXPECT_EQ(refusal("link", ExistingFile::REFUSE), "link: is a link that leads nowhere");
    EXPECT_FALSE(exists("nowhere"));
}

TEST_F(TraceOutputTest, LetsOneRecorderWriteAtATime) {
    const InputFile input(path("log"));
    TraceOutput output(path("trace"), ExistingFile::REFUSE, input);
    output.write(FIRST);
    EXPECT_EQ(refusal("trace", ExistingFile::APPEND),
              "trace: is being recorded by another program");
    EXPECT_EQ(refusal("trace", ExistingFile::REPLACE),
              "trace: is being recorded by another program");
    output.write(SECOND);
    output.close();
    EXPECT_EQ(content("trace"), text({FIRST, SECOND}));
    EXPECT_EQ(refusal("trace", ExistingFile::APPEND), "none");
}

TEST_F(TraceOutputTest, TakesBackWhatDidNotFit) {
    const InputFile input(path("log"));
    const string whole = text({FIRST, SECOND});
    for (size_t room = whole.size(); room < whole.size() + THIRD.bytes.size(); ++room) {
        fs::remove(path("trace"));
        TraceOutput output(path("trace"), ExistingFile::REFUSE, input);
        const SizeLimit limit(room);
        output.write(FIRST);
        output.write(SECOND);
        try {
            output.write(THIRD);
            FAIL();
        } catch (const DataError& error) {
            EXPECT_EQ(error.what(), path("trace") + ": cannot be written: File too large");
        }
        EXPECT_EQ(content("trace"), whole);
        EXPECT_EQ(output.written().messages, 2U);
        EXPECT_EQ(output.written().bytes, whole.size());
        output.close();
        EXPECT_EQ(content("trace"), whole);
    }
}

TEST_F(TraceOutputTest, KeepsTheWholePartsOfThoseWrittenTogether) {
    const InputFile input(path("log"));
    const size_t first = FIRST.bytes.size();
    const size_t second = first + SECOND.bytes.size();
    for (const size_t room :
         {size_t{0}, size_t{1}, first - 1, first, first + 1, second - 1, second, second + 1}) {
        fs::remove(path("trace"));
        TraceOutput output(path("trace"), ExistingFile::REFUSE, input);
        output.setTogether(true);
        const SizeLimit limit(room);
        output.write(FIRST);
        output.write(SECOND);
        output.write(THIRD);
        EXPECT_THROW(output.close(), DataError);
        const size_t kept = room < first ? 0 : room < second ? first : second;
        EXPECT_EQ(content("trace"), text({FIRST, SECOND}).substr(0, kept)) << room;
        EXPECT_EQ(output.written().messages, kept == 0 ? 0U : kept == first ? 1U : 2U);
    }
}

TEST_F(TraceOutputTest, EndsWhenTheTraceIsRemoved) {
    const InputFile input(path("log"));
    TraceOutput output(path("trace"), ExistingFile::REFUSE, input);
    output.write(FIRST);
    fs::remove(path("trace"));
    EXPECT_THROW(output.write(SECOND), DataError);
    EXPECT_EQ(output.written().messages, 1U);
    EXPECT_FALSE(exists("trace"));
}

TEST_F(TraceOutputTest, WritesToDevicesAsTheyAre) {
    const string null = folder.makeDevice("null", 3);
    const string full = folder.makeDevice("full", 7);
    if (null.empty() || full.empty()) {
        GTEST_SKIP() << "no device can be made here";
    }
    const InputFile input(path("log"));
    TraceOutput toNull(null, ExistingFile::REFUSE, input);
    toNull.setSync(true);
    toNull.write(FIRST);
    toNull.close();
    EXPECT_EQ(toNull.written().messages, 1U);
    EXPECT_TRUE(fs::exists(null));
    TraceOutput toFull(full, ExistingFile::REFUSE, input);
    EXPECT_THROW(toFull.write(FIRST), DataError);
}

TEST_F(TraceOutputTest, TellsABrokenPipe) {
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
    const int reader = open(path("fifo").c_str(), O_RDONLY | O_NONBLOCK);
    const InputFile input(path("log"));
    TraceOutput output(path("fifo"), ExistingFile::REFUSE, input);
    output.write(FIRST);
    close(reader);
    EXPECT_THROW(output.write(SECOND), BrokenPipe);
}
