#include "tools/trace/TraceOutput.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/stream/traces.h"
#include "tests/tools/TemporaryFolder.h"
#include "tools/io/StopSignals.h"
#include "tools/io/errors.h"

using namespace vextrace;
using namespace vextrace::tools;
namespace fs = std::filesystem;
using std::string;

namespace {

string text(const TraceBytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

// Parts of epochs, told apart by stamp and size.
EpochBuilder::Part part(timeStamp_t stamp, const string& payload, bool beginsEpoch = true) {
    EpochBuilder::Part result;
    result.bytes = messageOf(MSGID_GPS, stamp, payload);
    result.messages = 1;
    result.sentences = 2;
    result.stamp = stamp;
    result.beginsEpoch = beginsEpoch;
    return result;
}

const EpochBuilder::Part FIRST = part(0x0102030405060708, "$GPABC,1\n");
const EpochBuilder::Part SECOND = part(0x1112131415161718, "$GPABC,2,longer\n");
const EpochBuilder::Part THIRD = part(0x2122232425262728, "$GPABC,3,longest of all\n", false);

string text(const std::vector<EpochBuilder::Part>& parts) {
    string result;
    for (const EpochBuilder::Part& p : parts) {
        result.append(p.bytes.begin(), p.bytes.end());
    }
    return result;
}

// No file becomes longer than that while this lives.
class SizeLimit {
public:
    explicit SizeLimit(size_t size) {
        static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limit = {size, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    SizeLimit(const SizeLimit&) = delete;
    SizeLimit& operator=(const SizeLimit&) = delete;
    ~SizeLimit() { setrlimit(RLIMIT_FSIZE, &before); }

private:
    rlimit before = {};
};

class TraceOutputTest : public testing::Test {
protected:
    TraceOutputTest() {
        write("log", "$GPABC\n");
        write("other", "another log\n");
    }

    string path(const string& name) const { return folder.path(name); }
    void write(const string& name, const string& content) const { folder.write(name, content); }
    string content(const string& name) const { return folder.content(name); }
    bool exists(const string& name) const { return folder.exists(name); }

    // Writes the parts, and tells what was told.
    string record(const string& name, ExistingTrace existing,
                  const std::vector<EpochBuilder::Part>& parts) const {
        const InputFile input(path("log"));
        TraceOutput output(path(name), existing, input);
        for (const EpochBuilder::Part& p : parts) {
            output.write(p);
        }
        output.close();
        return output.notice();
    }

    // What is said of an output that cannot be used, less its folder.
    string refusal(const string& name, ExistingTrace existing) const {
        const InputFile input(path("log"));
        try {
            const TraceOutput output(path(name), existing, input);
        } catch (const UsageError& error) {
            return string(error.what()).substr(folder.path().size() + 1);
        }
        return "none";
    }

    TemporaryFolder folder;
};

}  // namespace

TEST_F(TraceOutputTest, HasEachPartInTheFileAtOnce) {
    const InputFile input(path("log"));
    TraceOutput output(path("trace"), ExistingTrace::REFUSE, input);
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
    TraceOutput output(path("trace"), ExistingTrace::REFUSE, input);
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
    TraceOutput output(path("trace"), ExistingTrace::REFUSE, input);
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
    EXPECT_EQ(record("trace", ExistingTrace::REFUSE, {}), "");
    EXPECT_FALSE(exists("trace"));
    const InputFile input(path("log"));
    { const TraceOutput output(path("trace"), ExistingTrace::APPEND, input); }
    EXPECT_FALSE(exists("trace"));
}

TEST_F(TraceOutputTest, RefusesAFileThatExists) {
    EXPECT_EQ(refusal("other", ExistingTrace::REFUSE),
              "other: exists; --append goes on behind it, --force replaces it");
    EXPECT_EQ(content("other"), "another log\n");
    write("empty", "");
    EXPECT_NE(refusal("empty", ExistingTrace::REFUSE), "none");
    EXPECT_TRUE(exists("empty"));
}

TEST_F(TraceOutputTest, ReplacesAFileWhenThereIsSomethingToWrite) {
    record("other", ExistingTrace::REPLACE, {});
    EXPECT_EQ(content("other"), "another log\n");
    record("other", ExistingTrace::REPLACE, {FIRST, SECOND});
    EXPECT_EQ(content("other"), text({FIRST, SECOND}));
    record("new", ExistingTrace::REPLACE, {FIRST});
    EXPECT_EQ(content("new"), text({FIRST}));
}

TEST_F(TraceOutputTest, RefusesTheInputByEveryName) {
    fs::create_hard_link(path("log"), path("hard"));
    fs::create_symlink("log", path("soft"));
    for (const auto existing :
         {ExistingTrace::REFUSE, ExistingTrace::APPEND, ExistingTrace::REPLACE}) {
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
    EXPECT_THROW(TraceOutput(path("fifo"), ExistingTrace::REFUSE, input), UsageError);
    close(both);
}

TEST_F(TraceOutputTest, RefusesWhatIsNoPlaceForATrace) {
    EXPECT_EQ(refusal("", ExistingTrace::REPLACE), ": is a directory");
    EXPECT_EQ(refusal("none/trace", ExistingTrace::REFUSE),
              "none/trace: cannot be written: No such file or directory");
    EXPECT_EQ(refusal("log/trace", ExistingTrace::REFUSE),
              "log/trace: cannot be written: Not a directory");
    fs::create_symlink("nowhere", path("link"));
    EXPECT_EQ(refusal("link", ExistingTrace::REFUSE), "link: is a link that leads nowhere");
    EXPECT_FALSE(exists("nowhere"));
}

TEST_F(TraceOutputTest, LetsOneRecorderWriteAtATime) {
    const InputFile input(path("log"));
    TraceOutput output(path("trace"), ExistingTrace::REFUSE, input);
    output.write(FIRST);
    EXPECT_EQ(refusal("trace", ExistingTrace::APPEND),
              "trace: is being recorded by another program");
    EXPECT_EQ(refusal("trace", ExistingTrace::REPLACE),
              "trace: is being recorded by another program");
    output.write(SECOND);
    output.close();
    EXPECT_EQ(content("trace"), text({FIRST, SECOND}));
    EXPECT_EQ(refusal("trace", ExistingTrace::APPEND), "none");
}

TEST_F(TraceOutputTest, GoesOnBehindATrace) {
    EXPECT_EQ(record("trace", ExistingTrace::APPEND, {FIRST}), "");
    EXPECT_EQ(record("trace", ExistingTrace::APPEND, {SECOND}), "");
    EXPECT_EQ(record("trace", ExistingTrace::APPEND, {}), "");
    EXPECT_EQ(content("trace"), text({FIRST, SECOND}));
    write("empty", "");
    EXPECT_EQ(record("empty", ExistingTrace::APPEND, {FIRST}), "");
    EXPECT_EQ(content("empty"), text({FIRST}));
}

TEST_F(TraceOutputTest, MovesATornMessageAside) {
    const string second = text({SECOND});
    for (size_t size = 1; size < second.size(); ++size) {
        const string torn = second.substr(0, size);
        write("trace", text({FIRST}) + torn);
        fs::remove(path("trace.torn"));
        EXPECT_EQ(record("trace", ExistingTrace::APPEND, {THIRD}),
                  path("trace") + ": ended in a torn message; " + std::to_string(size) +
                      (size == 1 ? " byte" : " bytes") + " from byte " +
                      std::to_string(FIRST.bytes.size()) + " on moved to " + path("trace.torn"));
        EXPECT_EQ(content("trace"), text({FIRST, THIRD}));
        EXPECT_EQ(content("trace.torn"), torn);
    }
}

TEST_F(TraceOutputTest, MovesATornMessageAsideThatIsAllThereIs) {
    const string first = text({FIRST});
    for (size_t size = 1; size < first.size(); ++size) {
        write("trace", first.substr(0, size));
        fs::remove(path("trace.torn"));
        EXPECT_NE(record("trace", ExistingTrace::APPEND, {SECOND}), "");
        EXPECT_EQ(content("trace"), text({SECOND}));
        EXPECT_EQ(content("trace.torn"), first.substr(0, size));
    }
}

TEST_F(TraceOutputTest, OverwritesNoTornMessageThatLiesAside) {
    write("trace.torn", "one");
    write("trace.torn-2", "two");
    write("trace", text({FIRST}) + "\x01");
    record("trace", ExistingTrace::APPEND, {SECOND});
    EXPECT_EQ(content("trace.torn"), "one");
    EXPECT_EQ(content("trace.torn-2"), "two");
    EXPECT_EQ(content("trace.torn-3"), "\x01");
    EXPECT_EQ(content("trace"), text({FIRST, SECOND}));
}

TEST_F(TraceOutputTest, MovesZerosAsideThatAPowerFailureLeft) {
    const string zeros(100000, '\0');
    write("trace", text({FIRST}) + zeros);
    record("trace", ExistingTrace::APPEND, {SECOND});
    EXPECT_EQ(content("trace.torn"), zeros);
    EXPECT_EQ(content("trace"), text({FIRST, SECOND}));
}

TEST_F(TraceOutputTest, LeavesDamageInTheMiddleToOthers) {
    const string damaged = text({FIRST}) + string(20, '\0') + text({SECOND});
    write("trace", damaged);
    EXPECT_EQ(record("trace", ExistingTrace::APPEND, {THIRD}), "");
    EXPECT_EQ(content("trace"), damaged + text({THIRD}));
}

TEST_F(TraceOutputTest, GoesOnBehindMessagesOfOtherTypes) {
    const string can = text(messageOf(MSGID_CAN, 5, string("\1\2\3\0", 4)));
    write("trace", can);
    EXPECT_EQ(record("trace", ExistingTrace::APPEND, {FIRST}), "");
    EXPECT_EQ(content("trace"), can + text({FIRST}));
}

TEST_F(TraceOutputTest, DoesNotGoOnBehindWhatIsNoTrace) {
    EXPECT_EQ(refusal("other", ExistingTrace::APPEND), "other: is no trace that could go on");
    EXPECT_EQ(content("other"), "another log\n");
    write("zeros", string(1000, '\0'));
    EXPECT_EQ(refusal("zeros", ExistingTrace::APPEND), "zeros: is no trace that could go on");
    EXPECT_FALSE(exists("zeros.torn"));
}

TEST_F(TraceOutputTest, TakesBackWhatDidNotFit) {
    const InputFile input(path("log"));
    const string whole = text({FIRST, SECOND});
    for (size_t room = whole.size(); room < whole.size() + THIRD.bytes.size(); ++room) {
        fs::remove(path("trace"));
        TraceOutput output(path("trace"), ExistingTrace::REFUSE, input);
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
        TraceOutput output(path("trace"), ExistingTrace::REFUSE, input);
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

TEST_F(TraceOutputTest, TakesNothingBackThatWasThereBefore) {
    write("trace", text({FIRST}));
    const InputFile input(path("log"));
    TraceOutput output(path("trace"), ExistingTrace::APPEND, input);
    const SizeLimit limit(FIRST.bytes.size() + 10);
    EXPECT_THROW(output.write(SECOND), DataError);
    EXPECT_EQ(content("trace"), text({FIRST}));
}

TEST_F(TraceOutputTest, LeavesTheTraceAloneWhenTheTornMessageCannotBeMoved) {
    const string torn = text({FIRST}) + text({SECOND}).substr(0, 20);
    write("trace", torn);
    const SizeLimit limit(10);
    EXPECT_EQ(refusal("trace", ExistingTrace::APPEND), "trace: cannot be written: File too large");
    EXPECT_EQ(content("trace"), torn);
    EXPECT_FALSE(exists("trace.torn"));
}

TEST_F(TraceOutputTest, TakesBackWhatDidNotFitBehindATornMessageThatWasMoved) {
    write("trace", text({FIRST}) + text({SECOND}).substr(0, 20));
    const InputFile input(path("log"));
    TraceOutput output(path("trace"), ExistingTrace::APPEND, input);
    const SizeLimit limit(FIRST.bytes.size() + 10);
    EXPECT_THROW(output.write(THIRD), DataError);
    EXPECT_EQ(content("trace"), text({FIRST}));
}

TEST_F(TraceOutputTest, EndsWhenTheTraceIsRemoved) {
    const InputFile input(path("log"));
    TraceOutput output(path("trace"), ExistingTrace::REFUSE, input);
    output.write(FIRST);
    fs::remove(path("trace"));
    EXPECT_THROW(output.write(SECOND), DataError);
    EXPECT_EQ(output.written().messages, 1U);
    EXPECT_FALSE(exists("trace"));
}

TEST_F(TraceOutputTest, DoesNotGoOnBehindShortTexts) {
    for (const string& other : {string("a"), string("no"), string("$GP"), string("{}\n"),
                                string("\n"), string("\r\n"), string("\x01\x10\x16", 3)}) {
        write("other", other);
        EXPECT_EQ(refusal("other", ExistingTrace::APPEND), "other: is no trace that could go on");
        EXPECT_EQ(content("other"), other);
        EXPECT_FALSE(exists("other.torn"));
    }
}

TEST_F(TraceOutputTest, StopsReadingATraceWhenASignalComes) {
    const string torn = text({FIRST, SECOND}) + "\x01";
    write("trace", torn);
    const StopSignals signals;
    raise(SIGTERM);
    EXPECT_EQ(refusal("trace", ExistingTrace::REPLACE), "none");
    const InputFile input(path("log"));
    EXPECT_THROW(TraceOutput(path("trace"), ExistingTrace::APPEND, input), Interrupted);
    EXPECT_EQ(content("trace"), torn);
}

TEST_F(TraceOutputTest, WritesToDevicesAsTheyAre) {
    const string null = folder.makeDevice("null", 3);
    const string full = folder.makeDevice("full", 7);
    if (null.empty() || full.empty()) {
        GTEST_SKIP() << "no device can be made here";
    }
    const InputFile input(path("log"));
    TraceOutput toNull(null, ExistingTrace::REFUSE, input);
    toNull.setSync(true);
    toNull.write(FIRST);
    toNull.close();
    EXPECT_EQ(toNull.written().messages, 1U);
    EXPECT_TRUE(fs::exists(null));
    TraceOutput toFull(full, ExistingTrace::REFUSE, input);
    EXPECT_THROW(toFull.write(FIRST), DataError);
}

TEST_F(TraceOutputTest, TellsABrokenPipe) {
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
    const int reader = open(path("fifo").c_str(), O_RDONLY | O_NONBLOCK);
    const InputFile input(path("log"));
    TraceOutput output(path("fifo"), ExistingTrace::REFUSE, input);
    output.write(FIRST);
    close(reader);
    EXPECT_THROW(output.write(SECOND), BrokenPipe);
}
