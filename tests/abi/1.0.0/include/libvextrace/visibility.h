/// \file
/// VEXTRACE_EXPORT marks what a shared library shows to its users. CMake generates its meaning;
/// compiled without CMake it means nothing.
#pragma once

#if __has_include("libvextrace/export.h")
#include "libvextrace/export.h"
#else
#define VEXTRACE_EXPORT
#endif
