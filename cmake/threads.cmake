# Tests and benchmarks start threads; the libraries do not.
include(CheckCXXSourceCompiles)
find_package(Threads REQUIRED)
set(CMAKE_REQUIRED_LIBRARIES Threads::Threads)
check_cxx_source_compiles("
    #include <thread>
    int main() { std::thread([] {}).join(); }" VEXTRACE_HAS_THREADS)
unset(CMAKE_REQUIRED_LIBRARIES)
if(NOT VEXTRACE_HAS_THREADS)
    message(FATAL_ERROR
        "The tests and benchmarks need std::thread, which ${CMAKE_CXX_COMPILER} does not have. Of "
        "MinGW-w64 take the variant with POSIX threads, such as x86_64-w64-mingw32-g++-posix.")
endif()
