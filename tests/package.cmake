# The library as its users get it. Builds it anew in every way, so other builds of the tests, which
# differ in their flags alone, leave this out with -LE once.
if(NOT CMAKE_CROSSCOMPILING)
    add_test(NAME configure
             COMMAND ${CMAKE_CURRENT_LIST_DIR}/configure.sh ${PROJECT_SOURCE_DIR}
                     ${CMAKE_CXX_COMPILER} $<$<BOOL:${VEXTRACE_TOOLS}>:presets>)
    set_tests_properties(configure PROPERTIES LABELS once
                                               ENVIRONMENT "CMAKE_GENERATOR=${CMAKE_GENERATOR}")
    add_test(NAME install
             COMMAND ${CMAKE_CURRENT_LIST_DIR}/install.sh ${PROJECT_SOURCE_DIR}
                     ${CMAKE_CXX_COMPILER})
    set_tests_properties(install PROPERTIES LABELS once
                                               ENVIRONMENT "CMAKE_GENERATOR=${CMAKE_GENERATOR}")
endif()
