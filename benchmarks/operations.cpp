#include "benchmarks/operations.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "benchmarks/PlainGps.h"

namespace {

template <class Message>
bool run(const char* name, long times) {
    for (const Operation<Message>& operation : OPERATIONS<Message>) {
        if (std::strcmp(operation.name, name) == 0) {
            Fix<Message> fix;
            for (long i = 0; i < times; ++i) {
                operation.run(fix);
            }
            return true;
        }
    }
    std::fprintf(stderr, "No operation %s.\n", name);
    return false;
}

void list() {
    for (const auto& operation : OPERATIONS<GPSTraceMessage>) {
        std::puts(operation.name);
    }
}

}  // namespace

// Without arguments: the names of the operations. With a name and a number: runs that operation so
// many times; with a third argument in the plain way.
int main(int argc, char** argv) {
    if (argc < 3) {
        list();
        return EXIT_SUCCESS;
    }
    const long times = std::strtol(argv[2], nullptr, 10);
    const bool known =
        argc == 3 ? run<GPSTraceMessage>(argv[1], times) : run<PlainGps>(argv[1], times);
    return known ? EXIT_SUCCESS : EXIT_FAILURE;
}
