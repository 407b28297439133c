// Both sides of a fork may register and decode, whatever the threads of the parent are doing.
#include <gtest/gtest.h>

#include <memory>

#include "libvextrace/GPSTraceMessage.h"
#include "tests/support/messages.h"

#if __has_include(<unistd.h>) && __has_include(<sys/wait.h>) && !defined(_WIN32)

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <thread>

namespace {

constexpr unsigned FORKS = 100;
constexpr unsigned WATCHDOG_SECONDS = 60;

constexpr auto PARENTS_ID = static_cast<msgid_t>(0xD001);
constexpr auto CHILDS_ID = static_cast<msgid_t>(0xD002);

MessageBase* readNothing(const uint8_t* /*psrc*/, size_t /*len*/) {
    return nullptr;
}

// Registers without a pause as long as it lives: what is registered, and what was taken back.
class RegisteringThread {
public:
    RegisteringThread()
        : thread([this] {
              while (!stop) {
                  MessageFactory::registerReader(PARENTS_ID, readNothing);
                  GPSTraceMessage::registerMessage();
                  MessageFactory::unregisterReader(PARENTS_ID, readNothing);
                  begun = true;
              }
          }) {
        while (!begun) {
            std::this_thread::yield();
        }
    }
    ~RegisteringThread() {
        stop = true;
        thread.join();
    }
    RegisteringThread(const RegisteringThread&) = delete;
    RegisteringThread(RegisteringThread&&) = delete;
    RegisteringThread& operator=(const RegisteringThread&) = delete;
    RegisteringThread& operator=(RegisteringThread&&) = delete;

private:
    std::atomic<bool> begun{false};
    std::atomic<bool> stop{false};
    std::thread thread;
};

bool registersAndDecodes(const Bytes& bytes) {
    const bool registered = MessageFactory::registerReader(CHILDS_ID, readNothing) &&
                            GPSTraceMessage::registerMessage() &&
                            MessageFactory::unregisterReader(CHILDS_ID, readNothing);
    return registered && MessageFactory::decode(bytes.data(), bytes.size()).message != nullptr;
}

// A child that hangs is ended by the alarm. Nothing of the test framework runs in it.
[[noreturn]] void runChild(const Bytes& bytes) {
    static_cast<void>(alarm(WATCHDOG_SECONDS));
    _exit(registersAndDecodes(bytes) ? 0 : 1);
}

std::string howItEnded(pid_t child) {
    int status = 0;
    if (waitpid(child, &status, 0) != child) {
        return "not found";
    }
    if (WIFSIGNALED(status)) {
        return WTERMSIG(status) == SIGALRM ? "hung" : "crashed";
    }
    return WEXITSTATUS(status) == 0 ? "well" : "refused";
}

}  // namespace

TEST(ForkTest, ChildRegistersAndDecodesWhileTheParentsThreadsRegister) {
    const Bytes bytes = serialised(0, 258, RMC_SENTENCE + '\n' + GGA_SENTENCE + '\n');
    const RegisteringThread registering;
    for (unsigned i = 0; i < FORKS; ++i) {
        const pid_t child = fork();
        ASSERT_NE(child, -1);
        if (child == 0) {
            runChild(bytes);
        }
        ASSERT_EQ(howItEnded(child), "well") << "child " << i;
    }
}

TEST(ForkTest, ParentRegistersAndDecodesBehindAFork) {
    const Bytes bytes = serialised(0, 258, RMC_SENTENCE + '\n');
    const RegisteringThread registering;
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        _exit(0);
    }
    EXPECT_EQ(howItEnded(child), "well");
    EXPECT_TRUE(registersAndDecodes(bytes));
}

#else

TEST(ForkTest, ChildRegistersAndDecodesWhileTheParentsThreadsRegister) {
    GTEST_SKIP() << "This system has no fork.";
}

#endif
