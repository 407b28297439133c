# "cpack" makes the Debian packages, each of what is installed as one component. A further package is
# a further component: install() its files as that, and describe it at the end of this file.
set(VEXTRACE_MAINTAINER "vextrace maintainers <vextrace@example.org>" CACHE STRING
    "Who answers for the Debian packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vextrace)
set(CPACK_PACKAGE_VENDOR vextrace)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has one of its own
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
                                                GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL "")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${VEXTRACE_ARCHITECTURE})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${VEXTRACE_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
# Programs need at least the version that they were linked with.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/libvexutil
                                                ${PROJECT_BINARY_DIR}/libvextrace
                                                ${PROJECT_BINARY_DIR}/libvexstream)

set(VEXTRACE_DEBIAN_VERSION ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(VEXTRACE_DEBIAN_DIR ${PROJECT_BINARY_DIR}/debian)
set(VEXTRACE_DESCRIPTION
"vextrace keeps the NMEA 0183 sentences of a GPS receiver byte for byte under
one time stamp, gives them as fields and numbers, and writes and reads them as
messages of a vehicle data logger's trace.
.")

# vextrace_package(COMPONENT NAME SECTION SUMMARY DESCRIPTION): the package NAME holds COMPONENT and
# the two changelogs that every package has.
macro(vextrace_package component name section summary description)
    string(TOUPPER ${component} upper)
    list(APPEND CPACK_COMPONENTS_ALL ${component})
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${VEXTRACE_DESCRIPTION}\n${description}")
    install(FILES ${VEXTRACE_DEBIAN_DIR}/changelog.gz ${VEXTRACE_DEBIAN_DIR}/changelog.Debian.gz
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
endmacro()

# vextrace_package_needs(COMPONENT PACKAGE...): its package depends on these.
macro(vextrace_package_needs component)
    string(TOUPPER ${component} upper)
    string(JOIN ", " CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS ${ARGN})
endmacro()

# vextrace_package_links(COMPONENT PACKAGE...): the same for what is linked with the system's
# libraries. Nobody can look up here which packages these are of on another processor; but those of
# the compiler's versions will do.
macro(vextrace_package_links component)
    if(CMAKE_CROSSCOMPILING)
        vextrace_package_needs(${component} ${VEXTRACE_SYSTEM_LIBRARIES} ${ARGN})
    else()
        vextrace_package_needs(${component} ${ARGN})
        set(CPACK_DEBIAN_${upper}_PACKAGE_SHLIBDEPS ON)
    endif()
endmacro()

if(CMAKE_CROSSCOMPILING)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -E -dM -include features.h -x c++ /dev/null
                    OUTPUT_VARIABLE macros)
    string(REGEX REPLACE ".*__GLIBC__ ([0-9]+).*" "\\1" major "${macros}")
    string(REGEX REPLACE ".*__GLIBC_MINOR__ ([0-9]+).*" "\\1" minor "${macros}")
    string(REGEX MATCH "^[0-9]+" compiler ${CMAKE_CXX_COMPILER_VERSION})
    set(VEXTRACE_SYSTEM_LIBRARIES "libc6 (>= ${major}.${minor})" "libgcc-s1 (>= ${compiler})"
                                  "libstdc++6 (>= ${compiler})")
endif()

# vextrace_compress(FILE): packs it into FILE.gz, the same on every day.
function(vextrace_compress file)
    execute_process(COMMAND gzip --best --no-name --stdout ${file} OUTPUT_FILE ${file}.gz
                    RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "gzip cannot pack ${file}: ${status}")
    endif()
endfunction()

string(TIMESTAMP VEXTRACE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(cmake/changelog.Debian.in ${VEXTRACE_DEBIAN_DIR}/changelog.Debian @ONLY)
configure_file(CHANGELOG.md ${VEXTRACE_DEBIAN_DIR}/changelog COPYONLY)
vextrace_compress(${VEXTRACE_DEBIAN_DIR}/changelog.Debian)
vextrace_compress(${VEXTRACE_DEBIAN_DIR}/changelog)
file(WRITE ${VEXTRACE_DEBIAN_DIR}/triggers "activate-noawait ldconfig\n")

set(VEXTRACE_RUNTIME_PACKAGE libvextrace${PROJECT_VERSION_MAJOR})
vextrace_package(vextrace_runtime ${VEXTRACE_RUNTIME_PACKAGE} libs
    "GPS trace messages for vehicle data loggers"
    "These are the libraries that programs run with.")
vextrace_package_links(vextrace_runtime)
set(CPACK_DEBIAN_VEXTRACE_RUNTIME_PACKAGE_CONTROL_EXTRA ${VEXTRACE_DEBIAN_DIR}/triggers)

vextrace_package(vextrace_development libvextrace-dev libdevel
    "GPS trace messages for vehicle data loggers - development"
    "This is what programs are built with: headers, shared and static libraries, the
CMake package and the pkg-config files.")
vextrace_package_needs(vextrace_development
                       "${VEXTRACE_RUNTIME_PACKAGE} (= ${VEXTRACE_DEBIAN_VERSION})")
set(CPACK_DEBIAN_VEXTRACE_DEVELOPMENT_PACKAGE_SUGGESTS "cmake, pkg-config")

if(VEXTRACE_STREAM)
    get_target_property(soversion vexstream SOVERSION)
    set(VEXSTREAM_RUNTIME_PACKAGE libvexstream${soversion})
    vextrace_package(vexstream_runtime ${VEXSTREAM_RUNTIME_PACKAGE} libs
        "road from GPS receivers to traces of vehicle data loggers"
        "This is the library that programs run with which find sentences in what a
receiver sends, make messages of them, and read traces over damage.")
    vextrace_package_links(vexstream_runtime
                           "${VEXTRACE_RUNTIME_PACKAGE} (>= ${VEXTRACE_DEBIAN_VERSION})")
    set(CPACK_DEBIAN_VEXSTREAM_RUNTIME_PACKAGE_CONTROL_EXTRA ${VEXTRACE_DEBIAN_DIR}/triggers)

    vextrace_package(vexstream_development libvexstream-dev libdevel
        "road from GPS receivers to traces of vehicle data loggers - development"
        "This is what programs are built with: headers, the shared and the static
library, the targets of the CMake package and the pkg-config file. The interface
still moves.")
    vextrace_package_needs(vexstream_development
                           "${VEXSTREAM_RUNTIME_PACKAGE} (= ${VEXTRACE_DEBIAN_VERSION})"
                           "libvextrace-dev (= ${VEXTRACE_DEBIAN_VERSION})")
endif()

if(VEXTRACE_TOOLS)
    configure_file(docs/vextrace.1 ${VEXTRACE_DEBIAN_DIR}/vextrace.1 COPYONLY)
    vextrace_compress(${VEXTRACE_DEBIAN_DIR}/vextrace.1)
    vextrace_package(vextrace_tools vextrace-tools utils
        "GPS receivers as traces of vehicle data loggers - program"
        "This is the program vextrace. It records GPS receivers, and shows, sums up,
draws, exports, checks and mends traces.")
    vextrace_package_links(vextrace_tools)
endif()

if(VEXTRACE_PYTHON)
    vextrace_package(vextrace_python python3-vextrace python
        "traces of vehicle data loggers for Python"
        "This is the Python module vextrace. It reads the fixes of traces into numpy
arrays and pandas tables, and with Dask those of a fleet on many machines.")
    vextrace_package_links(vextrace_python "python3 (>= 3.11)" "python3 (<< 3.12)" python3-numpy
                           python3-pandas)
    set(CPACK_DEBIAN_VEXTRACE_PYTHON_PACKAGE_RECOMMENDS
        "python3-dask, python3-distributed, python3-fsspec")
endif()

include(CPack)
