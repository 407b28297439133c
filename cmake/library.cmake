include(GenerateExportHeader)

# vextrace_library(NAME SOURCE...): adds a library, static or shared as BUILD_SHARED_LIBS says, with
# its headers' folder libNAME. A shared one shows what its public headers mark for export. For
# Debian's packages a static one, NAME_static, is built beside it.
function(vextrace_library name)
    add_library(${name} ${ARGN})
    add_library(vextrace::${name} ALIAS ${name})
    generate_export_header(${name}
                           EXPORT_FILE_NAME ${PROJECT_BINARY_DIR}/include/lib${name}/export.h)
    set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION}
                                             SOVERSION ${PROJECT_VERSION_MAJOR})
    vextrace_describe(${name})
    if(VEXTRACE_DEBIAN)
        add_library(${name}_static STATIC ${ARGN})
        set_target_properties(${name}_static PROPERTIES OUTPUT_NAME ${name} EXPORT_NAME ${name})
        vextrace_describe(${name}_static)
    endif()
endfunction()

function(vextrace_describe library)
    target_compile_features(${library} PUBLIC cxx_std_17)
    target_include_directories(${library}
                               PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                                      $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>
                                      $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    set_target_properties(${library} PROPERTIES CXX_VISIBILITY_PRESET hidden
                                                VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# vextrace_uses(NAME OTHER): one library needs another, and so do their users.
function(vextrace_uses name other)
    target_link_libraries(${name} PUBLIC ${other})
    if(VEXTRACE_DEBIAN)
        target_link_libraries(${name}_static PUBLIC ${other}_static)
    endif()
endfunction()

# vextrace_precompiles(NAME HEADER...): what most files of a library include. A parent that builds the
# library with others decides that itself; and it is no gain where units are put together.
function(vextrace_precompiles name)
    if(VEXTRACE_TOP_LEVEL AND NOT CMAKE_UNITY_BUILD)
        target_precompile_headers(${name} PRIVATE ${ARGN})
    endif()
endfunction()

# vextrace_needs_standard(NAME YEAR): a library, and those who use it, need a later C++.
function(vextrace_needs_standard name year)
    target_compile_features(${name} PUBLIC cxx_std_${year})
    if(VEXTRACE_DEBIAN)
        target_compile_features(${name}_static PUBLIC cxx_std_${year})
    endif()
endfunction()
