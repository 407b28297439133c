# 64-bit Windows, whose long has 32 bits, by MinGW-w64 with POSIX threads. For static libraries only:
# programs bring all they need along and start from any folder. DLLs are not supported: they would
# want the compiler's runtime DLLs beside them, and bear no number to tell incompatible ones apart.
# Debian keeps Wine off the path.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
find_program(WINE NAMES wine64 wine PATHS /usr/lib/wine)
set(CMAKE_CROSSCOMPILING_EMULATOR ${WINE})
