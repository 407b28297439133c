#include "tests/tools/commandRuns.h"

#include <unistd.h>

#include "tools/io/errors.h"

using namespace vextrace;
using namespace vextrace::tools;

namespace {

/// Lets a standard stream write to another file.
class Redirection {
public:
    Redirection(int redirected, const TemporaryFile& file)
        : stream(redirected), before(dup(redirected)) {
        EXPECT_GE(before, 0);
        EXPECT_EQ(dup2(file.descriptor(), stream), stream);
    }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;
    ~Redirection() {
        dup2(before, stream);
        close(before);
    }

private:
    int stream;
    int before;
};

}  // namespace

CommandResult Command::run() {
    CommandResult result;
    {
        const Redirection toOutput(STDOUT_FILENO, output);
        const Redirection toTold(STDERR_FILENO, told);
        result.status = outcomeOf(command);
    }
    result.output = output.take();
    result.told = told.take();
    return result;
}
