#include "tools/io/outcome.h"

#include "tools/io/errors.h"
#include "tools/io/standardStreams.h"

namespace vextrace::tools {

namespace {

int fail(Status status, const std::exception& error) {
    tell(error.what());
    return status;
}

}  // namespace

int outcomeOf(const std::function<int()>& command) {
    try {
        return command();
    } catch (const BrokenPipe&) {
        return STATUS_OK;
    } catch (const UsageError& error) {
        return fail(STATUS_USAGE, error);
    } catch (const std::exception& error) {
        return fail(STATUS_DATA, error);
    }
}

}  // namespace vextrace::tools
