/// \file
/// The version of the library: that of the headers, as macros, and that of the library at hand. For
/// programs that must build with several of them:
///
///     #include "libvextrace/MessageBase.h"
///     #if __has_include("libvextrace/version.h")  // since 1.1.0
///     #include "libvextrace/version.h"
///     #endif
///
/// What a step of each number promises is in CHANGELOG.md. The numbers are macros, because the
/// preprocessor must be able to compare them. The build takes its own version from here.
#pragma once

#include "libvextrace/visibility.h"

#define VEXTRACE_VERSION_MAJOR 1  ///< a program may have to be changed or compiled again
#define VEXTRACE_VERSION_MINOR 1  ///< something was added
#define VEXTRACE_VERSION_PATCH 0  ///< a mistake was mended

/// All three in one number that grows with them: 10203 is version 1.2.3.
#define VEXTRACE_VERSION \
    (VEXTRACE_VERSION_MAJOR * 10000 + VEXTRACE_VERSION_MINOR * 100 + VEXTRACE_VERSION_PATCH)

namespace vextrace {

/// The version of the library that the program runs with, as VEXTRACE_VERSION counts. Where it is a
/// shared library, that may be a later version than the one whose headers the program was compiled
/// with.
VEXTRACE_EXPORT int version();

}  // namespace vextrace
