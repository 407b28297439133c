# End-to-end checks of the example programs.
if(VEXTRACE_EXAMPLES AND NOT CMAKE_CROSSCOMPILING)
    add_test(NAME examples
             COMMAND ${CMAKE_CURRENT_LIST_DIR}/examples.sh ${PROJECT_BINARY_DIR}
                     ${PROJECT_SOURCE_DIR} ${VEXTRACE_LOG_DIR})
endif()
