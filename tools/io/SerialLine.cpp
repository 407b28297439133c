#include "tools/io/SerialLine.h"

#include <fmt/core.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "tools/io/errors.h"

namespace vextrace::tools {

namespace {

struct Rate {
    unsigned baud;
    speed_t code;
};

constexpr std::array RATES = {
    Rate{1200, B1200},       Rate{2400, B2400},       Rate{4800, B4800},
    Rate{9600, B9600},       Rate{19200, B19200},     Rate{38400, B38400},
    Rate{57600, B57600},     Rate{115200, B115200},   Rate{230400, B230400},
    Rate{460800, B460800},   Rate{500000, B500000},   Rate{576000, B576000},
    Rate{921600, B921600},   Rate{1000000, B1000000}, Rate{1152000, B1152000},
    Rate{1500000, B1500000}, Rate{2000000, B2000000}, Rate{2500000, B2500000},
    Rate{3000000, B3000000}, Rate{3500000, B3500000}, Rate{4000000, B4000000},
};

speed_t codeOf(unsigned baud) {
    const auto* const rate =
        std::find_if(RATES.begin(), RATES.end(), [&](const Rate& r) { return r.baud == baud; });
    if (rate == RATES.end()) {
        throw UsageError(fmt::format(
            "--baud: {} is no rate of a serial line, such as 4800, 9600, 38400, 115200", baud));
    }
    return rate->code;
}

bool isOwnTerminal(int fd) {
    return tcgetsid(fd) == getsid(0);
}

[[noreturn]] void refuse(const InputFile& input) {
    throw UsageError(fmt::format("{}: cannot be set up as a serial line: {}", input.name(),
                                 std::strerror(errno)));
}

}  // namespace

SerialLine::SerialLine(const InputFile& input, std::optional<unsigned> baud)
    : fd(input.descriptor()) {
    if (isatty(fd) == 0 || isOwnTerminal(fd)) {
        if (baud) {
            throw UsageError(
                fmt::format("{}: is no serial line, --baud is for these", input.name()));
        }
        return;
    }
    termios settings = {};
    if (tcgetattr(fd, &settings) != 0) {
        refuse(input);
    }
    const termios found = settings;
    cfmakeraw(&settings);
    settings.c_cflag |= CLOCAL | CREAD;
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
    if (baud) {
        cfsetispeed(&settings, codeOf(*baud));
        cfsetospeed(&settings, codeOf(*baud));
    }
    // The call succeeds when a part of the settings was taken; a rate may not have been.
    termios taken = {};
    before = found;
    if (tcsetattr(fd, TCSANOW, &settings) != 0 || tcgetattr(fd, &taken) != 0) {
        refuse(input);
    }
    if (baud && cfgetispeed(&taken) != codeOf(*baud)) {
        tcsetattr(fd, TCSANOW, &found);
        throw UsageError(fmt::format("{}: does not know the rate {}", input.name(), *baud));
    }
}

SerialLine::~SerialLine() {
    if (before) {
        tcsetattr(fd, TCSANOW, &*before);
    }
}

}  // namespace vextrace::tools
