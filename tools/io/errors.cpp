#include "tools/io/errors.h"

#include <exception>
#include <new>
#include <string_view>

#include "tools/io/standardStreams.h"

namespace vextrace::tools {

namespace {

int fail(Status status, std::string_view reason) {
    tell(reason);
    return status;
}

}  // namespace

int outcomeOf(const std::function<int()>& command) {
    try {
        return command();
    } catch (const BrokenPipe&) {
        return STATUS_OK;
    } catch (const UsageError& error) {
        return fail(STATUS_USAGE, error.what());
    } catch (const std::bad_alloc&) {
        return fail(STATUS_DATA, "there is not enough memory");
    } catch (const std::exception& error) {
        return fail(STATUS_DATA, error.what());
    }
}

}  // namespace vextrace::tools
