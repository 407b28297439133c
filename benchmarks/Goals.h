#pragma once

#include <cstdlib>
#include <cstring>

/// Compares what is measured with what is wanted. Only where the command line asks for it, with
/// "--check" as first argument, does a goal that is missed make the program fail: what else the
/// machine does can spoil any measurement.
class Goals {
public:
    /// Takes "--check" out of the arguments.
    Goals(int& argc, char** argv) : checked(argc > 1 && std::strcmp(argv[1], "--check") == 0) {
        if (checked) {
            for (int i = 1; i < argc; ++i) {
                argv[i] = argv[i + 1];
            }
            --argc;
        }
    }

    /// What to print behind the figure.
    const char* verdict(double measured, double wanted) {
        return mark(measured >= wanted, "  below what is wanted");
    }

    /// The same where less is better.
    const char* atMost(double measured, double wanted) {
        return mark(measured <= wanted, "  above what is wanted");
    }

    int exitStatus() const { return checked && missed ? EXIT_FAILURE : EXIT_SUCCESS; }

private:
    const char* mark(bool reached, const char* text) {
        missed = missed || !reached;
        return reached ? "" : text;
    }

    bool checked;
    bool missed = false;
};
