/// \file
/// VEXSTREAM_EXPORT marks what a shared library shows to its users. CMake generates its meaning;
/// compiled without CMake it means nothing.
#pragma once

#if __has_include("libvexstream/export.h")
#include "libvexstream/export.h"
#else
#define VEXSTREAM_EXPORT
#endif
