# Installs the libraries, their public headers, a CMake package and pkg-config files. What a program
# needs when it runs is one component, what a compiler needs is the other; libvexstream, whose
# interface still moves, has two of its own.
include(CMakePackageConfigHelpers)

set(VEXTRACE_GENERATED_HEADERS ${PROJECT_BINARY_DIR}/include)
set(VEXTRACE_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/vextrace)

# vextrace_install_kind(NAME KIND TARGET...): KIND is shared or static.
function(vextrace_install_kind name kind)
    install(TARGETS ${ARGN} EXPORT ${name}Targets_${kind}
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
                    COMPONENT ${name}_runtime NAMELINK_COMPONENT ${name}_development
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${name}_development
            RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${name}_runtime)
    install(EXPORT ${name}Targets_${kind} NAMESPACE vextrace::
            DESTINATION ${VEXTRACE_PACKAGE_DIR} COMPONENT ${name}_development)
endfunction()

# vextrace_install(NAME LIBRARY...): libraries in the kinds that are built, and their headers, of which
# every one is public but those in folders named internal.
function(vextrace_install name)
    if(BUILD_SHARED_LIBS)
        vextrace_install_kind(${name} shared ${ARGN})
    else()
        vextrace_install_kind(${name} static ${ARGN})
    endif()
    if(VEXTRACE_DEBIAN)
        list(TRANSFORM ARGN APPEND _static OUTPUT_VARIABLE static_libraries)
        vextrace_install_kind(${name} static ${static_libraries})
    endif()
    foreach(library ${ARGN})
        install(DIRECTORY lib${library} ${VEXTRACE_GENERATED_HEADERS}/lib${library}
                DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT ${name}_development
                FILES_MATCHING PATTERN "*.h" PATTERN internal EXCLUDE)
    endforeach()
endfunction()

vextrace_install(vextrace vexutil vextrace)
if(VEXTRACE_STREAM)
    vextrace_install(vexstream vexstream)
endif()

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

function(vextrace_install_pc name)
    foreach(library ${ARGN})
        configure_file(cmake/${library}.pc.in ${library}.pc @ONLY)
        install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${library}.pc
                DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${name}_development)
    endforeach()
endfunction()

vextrace_install_pc(vextrace vexutil vextrace)
if(VEXTRACE_STREAM)
    vextrace_install_pc(vexstream vexstream)
endif()
