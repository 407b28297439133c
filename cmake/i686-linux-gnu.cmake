# A processor that computes with more precision than double's, to prove that numbers do not change.
# Linked statically, its programs run on an x86-64 as they are.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
if(NOT CMAKE_HOST_SYSTEM_PROCESSOR STREQUAL x86_64)
    set(CMAKE_CROSSCOMPILING_EMULATOR qemu-i386)
endif()
