# What Debian's packages hold and where: shared libraries and static ones beside them, in the
# folders of the processor that is built for.
find_program(DPKG_ARCHITECTURE dpkg-architecture)
if(NOT DPKG_ARCHITECTURE)
    message(FATAL_ERROR "VEXTRACE_DEBIAN needs dpkg-architecture, of the package dpkg-dev.")
endif()
# It says on standard error when a name of the processor is not the preferred one.
execute_process(COMMAND ${DPKG_ARCHITECTURE} --host-type ${CMAKE_CXX_LIBRARY_ARCHITECTURE}
                        --query DEB_HOST_ARCH
                OUTPUT_VARIABLE VEXTRACE_ARCHITECTURE OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
if(NOT VEXTRACE_ARCHITECTURE)
    message(FATAL_ERROR "Debian has no architecture for \"${CMAKE_CXX_LIBRARY_ARCHITECTURE}\".")
endif()

set(BUILD_SHARED_LIBS ON)
set(CMAKE_INSTALL_PREFIX /usr)
set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_CXX_LIBRARY_ARCHITECTURE})
# There the linker finds the libraries by itself.
set(CMAKE_SKIP_INSTALL_RPATH ON)
