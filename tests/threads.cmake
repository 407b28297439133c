# The tests that start threads, once more in an executable of their own: the thread sanitizer needs no
# others. "make all" and ctest leave it out.
file(GLOB THREAD_TEST_CANDIDATES CONFIGURE_DEPENDS *Test.cpp memory/*Test.cpp)
if(VEXTRACE_STREAM)
    file(GLOB STREAM_CANDIDATES CONFIGURE_DEPENDS stream/*Test.cpp)
    list(APPEND THREAD_TEST_CANDIDATES ${STREAM_CANDIDATES})
endif()
set(THREAD_TESTS "")
foreach(file ${THREAD_TEST_CANDIDATES})
    file(STRINGS ${file} lines REGEX "<thread>|runAtOnce\\.h" LIMIT_COUNT 1)
    if(lines)
        list(APPEND THREAD_TESTS ${file})
    endif()
endforeach()
file(GLOB SUPPORT_SOURCES CONFIGURE_DEPENDS support/*.cpp)
add_executable(vextrace_thread_tests EXCLUDE_FROM_ALL ${THREAD_TESTS} ${SUPPORT_SOURCES}
                                                      memory/failingMemory.cpp)
set_target_properties(vextrace_thread_tests PROPERTIES UNITY_BUILD OFF)
target_include_directories(vextrace_thread_tests PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(vextrace_thread_tests PRIVATE GTest::gtest_main
                                                    $<IF:$<BOOL:${VEXTRACE_STREAM}>,vexstream,vextrace>)
