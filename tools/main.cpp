/// \file
/// vextrace: records GPS receivers, shows, sums up, converts, checks and mends traces.
#include <algorithm>
#include <exception>
#include <string>
#include <vector>

#include "libvextrace/GPSTraceMessage.h"
#include "tools/commands/commandLine.h"
#include "tools/io/errors.h"
#include "tools/io/standardStreams.h"

using namespace vextrace;
using namespace vextrace::tools;

namespace {

int fail(Status status, const std::exception& error) {
    tell(error.what());
    return status;
}

}  // namespace

int main(int argc, char* argv[]) {
    holdStandardStreams();
    keepFailingWrites();
    GPSTraceMessage::registerMessage();
    try {
        return runCommandLine(std::vector<std::string>(argv + std::min(argc, 1), argv + argc));
    } catch (const BrokenPipe&) {
        return STATUS_OK;
    } catch (const UsageError& error) {
        return fail(STATUS_USAGE, error);
    } catch (const std::exception& error) {
        return fail(STATUS_DATA, error);
    }
}
