/// \file
/// VEXUTIL_EXPORT marks what a shared library shows to its users. CMake generates its meaning;
/// compiled without CMake it means nothing.
#pragma once

#if __has_include("libvexutil/export.h")
#include "libvexutil/export.h"
#else
#define VEXUTIL_EXPORT
#endif
