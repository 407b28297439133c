# What the tests need, or else what to install, by the names that Debian and Ubuntu give it.
if(VEXTRACE_GTEST_SOURCE)
    if(NOT EXISTS ${VEXTRACE_GTEST_SOURCE}/CMakeLists.txt)
        message(FATAL_ERROR
            "The tests need the sources of GoogleTest, and ${VEXTRACE_GTEST_SOURCE} does not hold "
            "them. Install the package googletest, or name their folder by VEXTRACE_GTEST_SOURCE.")
    endif()
else()
    find_package(GTest QUIET)
    if(NOT GTest_FOUND)
        message(FATAL_ERROR
            "The tests need GoogleTest. Install the package libgtest-dev, or name a folder with its "
            "sources by VEXTRACE_GTEST_SOURCE.")
    endif()
endif()

if(NOT CMAKE_CROSSCOMPILING)
    foreach(tool bash pkg-config xmllint)
        string(TOUPPER "VEXTRACE_${tool}" variable)
        find_program(${variable} ${tool})
        mark_as_advanced(${variable})
        if(NOT ${variable})
            message(FATAL_ERROR "The tests need ${tool}. "
                                "Install the packages bash, pkg-config and libxml2-utils.")
        endif()
    endforeach()
endif()

if(VEXTRACE_LOG_DIR)
    file(GLOB logs ${VEXTRACE_LOG_DIR}/*.nmea)
    if(NOT logs)
        message(FATAL_ERROR "VEXTRACE_LOG_DIR names ${VEXTRACE_LOG_DIR}, which holds no *.nmea.")
    endif()
endif()
