# Checks of the README and of what is in docs. Like package.cmake, once is enough.
if(NOT CMAKE_CROSSCOMPILING)
    add_test(NAME documents COMMAND ${CMAKE_CURRENT_LIST_DIR}/documents.sh ${PROJECT_SOURCE_DIR}
                                    ${CMAKE_CXX_COMPILER}
                                    $<$<TARGET_EXISTS:vextrace_program>:$<TARGET_FILE:vextrace_program>>)
    set_tests_properties(documents PROPERTIES LABELS once)
    if(VEXTRACE_EXAMPLES)
        add_test(NAME readme COMMAND ${CMAKE_CURRENT_LIST_DIR}/readme.sh ${PROJECT_SOURCE_DIR}
                                     $<TARGET_FILE:firstSteps>)
        add_test(NAME walkTrace COMMAND ${CMAKE_CURRENT_LIST_DIR}/walkTrace.sh ${PROJECT_SOURCE_DIR}
                                        $<TARGET_FILE:walkTrace>)
    endif()
endif()
