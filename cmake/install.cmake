# Installs the libraries, their public headers, a CMake package and pkg-config files. What a program
# needs when it runs is one component, what a compiler needs is the other.
include(CMakePackageConfigHelpers)

set(VEXTRACE_GENERATED_HEADERS ${PROJECT_BINARY_DIR}/include)
set(VEXTRACE_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/vextrace)

# vextrace_install(KIND LIBRARY...): KIND is shared or static.
function(vextrace_install kind)
    install(TARGETS ${ARGN} EXPORT vextraceTargets_${kind}
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
                    COMPONENT vextrace_runtime NAMELINK_COMPONENT vextrace_development
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT vextrace_development
            RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT vextrace_runtime)
    install(EXPORT vextraceTargets_${kind} NAMESPACE vextrace::
            DESTINATION ${VEXTRACE_PACKAGE_DIR} COMPONENT vextrace_development)
endfunction()

set(VEXTRACE_LIBRARIES vexutil vextrace)
if(VEXTRACE_STREAM)
    list(APPEND VEXTRACE_LIBRARIES vexstream)
endif()
if(BUILD_SHARED_LIBS)
    vextrace_install(shared ${VEXTRACE_LIBRARIES})
else()
    vextrace_install(static ${VEXTRACE_LIBRARIES})
endif()
if(VEXTRACE_DEBIAN)
    list(TRANSFORM VEXTRACE_LIBRARIES APPEND _static OUTPUT_VARIABLE static_libraries)
    vextrace_install(static ${static_libraries})
endif()

# Every header is public but those in folders named internal.
foreach(library ${VEXTRACE_LIBRARIES})
    install(DIRECTORY lib${library} ${VEXTRACE_GENERATED_HEADERS}/lib${library}
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT vextrace_development
            FILES_MATCHING PATTERN "*.h" PATTERN internal EXCLUDE)
endforeach()

configure_package_config_file(cmake/vextraceConfig.cmake.in vextraceConfig.cmake
                              INSTALL_DESTINATION ${VEXTRACE_PACKAGE_DIR}
                              NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(vextraceConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vextraceConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/vextraceConfigVersion.cmake
        DESTINATION ${VEXTRACE_PACKAGE_DIR} COMPONENT vextrace_development)

# The pkg-config files find the prefix from where they lie, so that it can be moved. Debian's is
# not moved; and where the library folder is absolute, it says nothing about the prefix.
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    set(PC_PREFIX ${CMAKE_INSTALL_PREFIX})
    set(PC_LIBDIR ${CMAKE_INSTALL_LIBDIR})
elseif(VEXTRACE_DEBIAN)
    set(PC_PREFIX ${CMAKE_INSTALL_PREFIX})
    set(PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
else()
    file(RELATIVE_PATH PC_UP /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
    string(REGEX REPLACE "/$" "" PC_UP ${PC_UP})
    set(PC_PREFIX "\${pcfiledir}/${PC_UP}")
    set(PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(IS_ABSOLUTE ${CMAKE_INSTALL_INCLUDEDIR})
    set(PC_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})
else()
    set(PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()

foreach(library ${VEXTRACE_LIBRARIES})
    configure_file(cmake/${library}.pc.in ${library}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${library}.pc
            DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT vextrace_development)
endforeach()
