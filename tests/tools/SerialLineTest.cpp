#include "tools/io/SerialLine.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "tools/io/InputFile.h"

using namespace vextrace::tools;

namespace {

constexpr tcflag_t OF_A_RECEIVER = CLOCAL | CREAD;

// A pseudo terminal always says that both are set; other lines do not.
bool saysThatNothingIsSet = false;

tcflag_t lastSet = 0;

using Getter = int (*)(int, termios*);
using Setter = int (*)(int, int, const termios*);

}  // namespace

// These take the place of the system's, whose parameters have reserved names.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" int tcgetattr(int fd, termios* settings) {
    static const auto ofTheSystem = reinterpret_cast<Getter>(dlsym(RTLD_NEXT, "tcgetattr"));
    const int result = ofTheSystem(fd, settings);
    if (saysThatNothingIsSet) {
        settings->c_cflag &= ~OF_A_RECEIVER;
    }
    return result;
}

extern "C" int tcsetattr(int fd, int when, const termios* settings) {
    static const auto ofTheSystem = reinterpret_cast<Setter>(dlsym(RTLD_NEXT, "tcsetattr"));
    lastSet = settings->c_cflag;
    return ofTheSystem(fd, when, settings);
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

// Without the one a line without a modem is never there, without the other it gives nothing.
TEST(SerialLineTest, ReceivesFromALineWithoutAModem) {
    const int receiver = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(receiver >= 0 && grantpt(receiver) == 0 && unlockpt(receiver) == 0);
    const std::string name = ptsname(receiver);
    const InputFile input(name);
    saysThatNothingIsSet = true;
    {
        const SerialLine line(input, 9600U);
        EXPECT_TRUE(line.isLine());
        EXPECT_EQ(lastSet & OF_A_RECEIVER, OF_A_RECEIVER);
    }
    EXPECT_EQ(lastSet & OF_A_RECEIVER, 0U);  // as it was found
    saysThatNothingIsSet = false;
    close(receiver);
}
