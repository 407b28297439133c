#include "tools/io/OutputFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tests/tools/TemporaryFolder.h"
#include "tools/io/descriptors.h"
#include "tools/io/errors.h"

using namespace vextrace;
using namespace vextrace::tools;
namespace fs = std::filesystem;

namespace outputFileTest {

// Whether the next file systems do not know how to rename to a free name alone.
bool renamesPlainly = false;

class OutputFileTest : public testing::Test {
protected:
    void TearDown() override { renamesPlainly = false; }

    std::string in(const std::string& name) const { return folder.path(name); }

    std::string make(const std::string& name, const std::string& text) const {
        return folder.write(name, text);
    }

    std::set<std::string> names() const {
        std::set<std::string> found;
        for (const auto& entry : fs::directory_iterator(folder.path())) {
            found.insert(entry.path().filename().string());
        }
        return found;
    }

    TemporaryFolder folder;
};

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

FileStatus statusOf(const std::string& path) {
    return fileStatus(path).value();
}

void writeAll(const std::string& path, bool force, const std::string& text) {
    OutputFile out(path, force, {});
    out.write(text);
    out.commit();
}

// What the refusal says; empty where the output is not refused.
std::string refusalOf(const std::string& path, bool force = false,
                      const std::vector<FileStatus>& inputs = {}) {
    try {
        OutputFile out(path, force, inputs);
        return "";
    } catch (const UsageError& error) {
        return error.what();
    }
}

using Names = std::set<std::string>;

// Takes the place of the system's.
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the system's are reserved
extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
                         unsigned flags) {
    if (renamesPlainly) {
        errno = EINVAL;
        return -1;
    }
    return static_cast<int>(syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}

TEST_F(OutputFileTest, AppearsUnderItsNameWhenItIsCommitted) {
    OutputFile out(in("track.gpx"), false, {});
    out.write("first ");
    out.write(std::string(200'000, 'x'));
    out.write(" last");
    EXPECT_FALSE(fs::exists(in("track.gpx")));
    out.commit();
    EXPECT_EQ(contentOf(in("track.gpx")), "first " + std::string(200'000, 'x') + " last");
    EXPECT_EQ(names(), Names{"track.gpx"});
}

TEST_F(OutputFileTest, IsReadAndTakenBackBeforeItIsCommitted) {
    const std::string front(100'000, 'a');
    OutputFile out(in("mended"), false, {});
    ASSERT_TRUE(out.canTakeBack());
    out.write(front + "bc" + front);
    const std::unique_ptr<ByteSource> written = out.written();
    std::vector<uint8_t> read(100'001);
    ASSERT_EQ(written->read(read.data(), read.size()), read.size());
    EXPECT_EQ(read.front(), 'a');
    EXPECT_EQ(read.back(), 'b');
    out.goBackTo(100'000);
    out.write("d");
    ASSERT_EQ(written->read(read.data(), 2), 2U);
    EXPECT_EQ(read[0], 'c');
    EXPECT_EQ(read[1], 'a');
    out.endHere();
    out.commit();
    EXPECT_EQ(contentOf(in("mended")), front + "d");
}

TEST_F(OutputFileTest, TakesNothingBackFromWhereItIsWrittenDirectly) {
    EXPECT_FALSE(OutputFile("/dev/null", false, {}).canTakeBack());
}

TEST_F(OutputFileTest, AppearsWithoutAnyText) {
    writeAll(in("empty"), false, "");
    EXPECT_TRUE(fs::exists(in("empty")));
    EXPECT_EQ(contentOf(in("empty")), "");
}

TEST_F(OutputFileTest, LeavesNothingBehindWithoutCommit) {
    {
        OutputFile out(in("track.gpx"), false, {});
        out.write(std::string(200'000, 'x'));
        EXPECT_EQ(names().size(), 1U);
    }
    EXPECT_EQ(names(), Names{});
}

TEST_F(OutputFileTest, RefusesAnExistingFile) {
    const std::string path = make("old", "old text");
    EXPECT_EQ(refusalOf(path), path + ": exists; --force replaces it");
    EXPECT_EQ(contentOf(path), "old text");
}

TEST_F(OutputFileTest, ReplacesAnExistingFileWhenForced) {
    const std::string path = make("old", "old text");
    OutputFile out(path, true, {});
    out.write("new");
    EXPECT_EQ(contentOf(path), "old text");
    out.commit();
    EXPECT_EQ(contentOf(path), "new");
    EXPECT_EQ(names(), Names{"old"});
}

TEST_F(OutputFileTest, KeepsThePermissionsOfTheFileThatItReplaces) {
    const std::string path = make("old", "old text");
    ASSERT_EQ(chmod(path.c_str(), 0662), 0);
    writeAll(path, true, "new");
    EXPECT_EQ(statusOf(path).permissions, 0662U);
}

TEST_F(OutputFileTest, GivesANewFileThePermissionsThatTheUserWants) {
    const mode_t before = umask(027);
    writeAll(in("new"), false, "text");
    writeAll(in("forced"), true, "text");
    umask(before);
    EXPECT_EQ(statusOf(in("new")).permissions, 0640U);
    EXPECT_EQ(statusOf(in("forced")).permissions, 0640U);
}

TEST_F(OutputFileTest, RefusesItsInputsByEveryName) {
    const std::string path = make("trace", "precious");
    fs::create_hard_link(path, in("hard"));
    fs::create_symlink("trace", in("soft"));
    fs::create_symlink("soft", in("softer"));
    const std::vector<FileStatus> inputs = {statusOf(make("other", "")), statusOf(path)};
    for (const std::string name : {"trace", "hard", "soft", "softer", "./trace"}) {
        EXPECT_EQ(refusalOf(in(name), true, inputs), in(name) + ": is an input, too");
    }
    EXPECT_EQ(contentOf(path), "precious");
}

TEST_F(OutputFileTest, ReadsAndWritesTheSameDevice) {
    const std::string null = folder.makeDevice("null", 3);
    if (null.empty()) {
        GTEST_SKIP() << "no device can be made here";
    }
    EXPECT_EQ(refusalOf(null, false, {statusOf(null)}), "");
}

TEST_F(OutputFileTest, RefusesABlockDeviceUnlessForced) {
    const std::string disk = folder.makeBlockDevice("disk");
    if (disk.empty()) {
        GTEST_SKIP() << "no block device can be made here";
    }
    EXPECT_EQ(refusalOf(disk), disk + ": exists; --force replaces it");
}

// The superuser may write everything.
TEST_F(OutputFileTest, DoesNotReplaceAFileThatTheUserMayNotWrite) {
    const std::string path = make("old", "precious");
    fs::permissions(path, fs::perms(0444));
    fs::permissions(folder.path(), fs::perms(0777));
    const pid_t child = fork();
    if (child == 0) {
        constexpr uid_t NOBODY = 65534;
        const bool isOrdinary = geteuid() != 0 || setuid(NOBODY) == 0;
        _exit(isOrdinary && refusalOf(path, true) == path + ": cannot be written: Permission denied"
                  ? 0
                  : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(contentOf(path), "precious");
}

TEST_F(OutputFileTest, RefusesWhatCannotBeWritten) {
    EXPECT_EQ(refusalOf(folder.path()), folder.path() + ": is a directory");
    EXPECT_EQ(refusalOf(folder.path(), true), folder.path() + ": is a directory");
    EXPECT_EQ(refusalOf(""), ": cannot be written: No such file or directory");
    EXPECT_EQ(refusalOf(in("missing/out")),
              in("missing/out") + ": cannot be written: No such file or directory");
    EXPECT_EQ(refusalOf(in("missing/")),
              in("missing/") + ": cannot be written: No such file or directory");
    make("file", "");
    EXPECT_EQ(refusalOf(in("file/out")), in("file/out") + ": cannot be written: Not a directory");
    const std::string tooLong = in(std::string(256, 'n'));
    EXPECT_EQ(refusalOf(tooLong), tooLong + ": cannot be written: File name too long");
    EXPECT_EQ(refusalOf(in("a\x1b[2J/out")),
              folder.path() + "/a\\x1b[2J/out: cannot be written: No such file or directory");
}

TEST_F(OutputFileTest, WritesTheLongestName) {
    const std::string name(255, 'n');
    writeAll(in(name), false, "text");
    EXPECT_EQ(names(), Names{name});
}

TEST_F(OutputFileTest, ReplacesTheFileThatALinkLeadsTo) {
    fs::create_directory(in("elsewhere"));
    make("elsewhere/file", "old");
    fs::create_symlink("elsewhere/file", in("link"));
    writeAll(in("link"), true, "new");
    EXPECT_TRUE(fs::is_symlink(in("link")));
    EXPECT_EQ(contentOf(in("elsewhere/file")), "new");
    EXPECT_EQ(names(), (Names{"elsewhere", "link"}));
}

TEST_F(OutputFileTest, RefusesALinkThatLeadsNowhere) {
    fs::create_symlink("missing", in("link"));
    EXPECT_EQ(refusalOf(in("link")),
              in("link") + ": is a link that leads nowhere; --force replaces it");
    writeAll(in("link"), true, "new");
    EXPECT_FALSE(fs::is_symlink(in("link")));
    EXPECT_EQ(contentOf(in("link")), "new");
}

TEST_F(OutputFileTest, DoesNotReplaceAFileThatIsBeingRecorded) {
    make("out", "recorded");
    OutputFile out(in("out"), true, {});
    const int recorder = open(in("out").c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_TRUE(lockFile(recorder));
    EXPECT_EQ(refusalOf(in("out"), true), in("out") + ": is being recorded by another program");
    EXPECT_THROW(out.commit(), UsageError);
    EXPECT_EQ(contentOf(in("out")), "recorded");
    close(recorder);
    EXPECT_EQ(refusalOf(in("out"), true), "");
}

TEST_F(OutputFileTest, DoesNotReplaceAFileThatCameMeanwhile) {
    OutputFile out(in("out"), false, {});
    out.write("ours");
    make("out", "theirs");
    try {
        out.commit();
        FAIL() << "the file was replaced";
    } catch (const DataError& error) {
        EXPECT_EQ(error.what(), in("out") + ": cannot be written: File exists");
    }
    EXPECT_EQ(contentOf(in("out")), "theirs");
}

TEST_F(OutputFileTest, WritesWhereNoFileCanBeRenamedToAFreeNameAlone) {
    renamesPlainly = true;
    writeAll(in("out"), false, "ours");
    EXPECT_EQ(contentOf(in("out")), "ours");
    OutputFile out(in("other"), false, {});
    make("other", "theirs");
    EXPECT_THROW(out.commit(), DataError);
    EXPECT_EQ(contentOf(in("other")), "theirs");
}

TEST_F(OutputFileTest, SaysThatADeviceIsFull) {
    const std::string full = folder.makeDevice("full", 7);
    if (full.empty()) {
        GTEST_SKIP() << "no device can be made here";
    }
    OutputFile out(full, false, {});
    out.write("text");
    try {
        out.commit();
        FAIL() << "nothing was noticed";
    } catch (const DataError& error) {
        EXPECT_EQ(error.what(), full + ": cannot be written: No space left on device");
    }
}

TEST_F(OutputFileTest, WritesAFifoDirectlyAndEndsWithItsReader) {
    ASSERT_EQ(mkfifo(in("fifo").c_str(), 0600), 0);
    const int reader = open(in("fifo").c_str(), O_RDONLY | O_NONBLOCK);
    OutputFile out(in("fifo"), false, {});
    out.write("text");
    out.commit();
    char bytes[8] = {};
    EXPECT_EQ(read(reader, bytes, sizeof(bytes)), 4);
    EXPECT_STREQ(bytes, "text");
    close(reader);
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    out.write("more");
    EXPECT_THROW(out.commit(), BrokenPipe);
    static_cast<void>(std::signal(SIGPIPE, before));
    EXPECT_TRUE(fs::is_fifo(in("fifo")));
}

TEST_F(OutputFileTest, LeavesNothingBehindWhenASignalEndsTheProgram) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const pid_t child = fork();
        if (child == 0) {
            static_cast<void>(std::signal(signal, SIG_DFL));  // may be ignored here
            OutputFile out(in("out"), false, {});
            out.write(std::string(200'000, 'x'));
            static_cast<void>(raise(signal));
            _exit(0);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal);
        EXPECT_EQ(names(), Names{});
    }
}

TEST_F(OutputFileTest, LeavesIgnoredSignalsIgnored) {
    const auto before = std::signal(SIGHUP, SIG_IGN);
    {
        OutputFile out(in("out"), false, {});
        EXPECT_EQ(raise(SIGHUP), 0);
        out.commit();
    }
    EXPECT_TRUE(fs::exists(in("out")));
    EXPECT_EQ(std::signal(SIGHUP, before), SIG_IGN);
}

}  // namespace outputFileTest
