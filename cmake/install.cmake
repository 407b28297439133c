# Installs the libraries, their public headers, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS vexutil vextrace EXPORT vextraceTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES libvexutil/datablock.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/libvexutil)
install(FILES libvextrace/GPSTraceMessage.h
              libvextrace/InvalidMessageException.h
              libvextrace/MessageBase.h
              libvextrace/MessageFactory.h
              libvextrace/busID.h
              libvextrace/messageID.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/libvextrace)

set(VEXTRACE_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/vextrace)
install(EXPORT vextraceTargets NAMESPACE vextrace:: DESTINATION ${VEXTRACE_PACKAGE_DIR})
configure_package_config_file(cmake/vextraceConfig.cmake.in vextraceConfig.cmake
                              INSTALL_DESTINATION ${VEXTRACE_PACKAGE_DIR})
write_basic_package_version_file(vextraceConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vextraceConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/vextraceConfigVersion.cmake
        DESTINATION ${VEXTRACE_PACKAGE_DIR})

configure_file(cmake/vextrace.pc.in vextrace.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vextrace.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
