/// \file
/// vextrace: records GPS receivers, shows, sums up, converts, checks and mends traces.
#include <algorithm>
#include <string>
#include <vector>

#include "libvextrace/GPSTraceMessage.h"
#include "tools/commands/commandLine.h"
#include "tools/io/errors.h"
#include "tools/io/standardStreams.h"

using namespace vextrace::tools;

int main(int argc, char* argv[]) {
    holdStandardStreams();
    keepFailingWrites();
    GPSTraceMessage::registerMessage();
    return outcomeOf([&] {
        return runCommandLine(std::vector<std::string>(argv + std::min(argc, 1), argv + argc));
    });
}
