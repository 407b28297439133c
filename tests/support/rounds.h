#pragma once

/// How often a test compares that takes other inputs each time: as often as it says in one build,
/// and in a tenth of that in builds for other compilers, processors or sanitizers.
constexpr int rounds(int all) {
#ifdef VEXTRACE_BRIEF_TESTS
    return all / 10;
#else
    return all;
#endif
}
