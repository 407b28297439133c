include(GenerateExportHeader)

# vextrace_library(NAME SOURCE...): adds a library, static or shared as BUILD_SHARED_LIBS says, with
# its headers' folder libNAME. A shared one shows what its public headers mark for export.
function(vextrace_library name)
    add_library(${name} ${ARGN})
    add_library(vextrace::${name} ALIAS ${name})
    target_compile_features(${name} PUBLIC cxx_std_17)

    set(generated ${PROJECT_BINARY_DIR}/include)
    generate_export_header(${name} EXPORT_FILE_NAME ${generated}/lib${name}/export.h)
    target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                                              $<BUILD_INTERFACE:${generated}>
                                              $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    set_target_properties(${name} PROPERTIES CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON
                                             VERSION ${PROJECT_VERSION}
                                             SOVERSION ${PROJECT_VERSION_MAJOR})
endfunction()
