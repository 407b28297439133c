# The target uninstall removes what was installed from this build folder.
if(NOT CMAKE_SCRIPT_MODE_FILE)
    add_custom_target(uninstall
        COMMAND ${CMAKE_COMMAND} -D BUILD_DIR=${PROJECT_BINARY_DIR} -P ${CMAKE_CURRENT_LIST_FILE}
        COMMENT "Removing what was installed from here"
        VERBATIM)
    return()
endif()

# Each installation writes down its files, each of a single component into a list of its own.
file(GLOB manifests ${BUILD_DIR}/install_manifest*.txt)
if(NOT manifests)
    message(FATAL_ERROR "Nothing was installed from ${BUILD_DIR}.")
endif()
foreach(manifest ${manifests})
    file(STRINGS ${manifest} files)
    foreach(file ${files})
        set(file $ENV{DESTDIR}${file})
        message(STATUS "Removing ${file}")
        file(REMOVE ${file})
        # Folders that bear the library's name are its own; but others may have put files there.
        get_filename_component(folder ${file} DIRECTORY)
        get_filename_component(name ${folder} NAME)
        file(GLOB rest LIST_DIRECTORIES true ${folder}/*)
        if(name MATCHES "^(lib)?vex(trace|util|stream)$" AND NOT rest)
            file(REMOVE_RECURSE ${folder})
        endif()
    endforeach()
    file(REMOVE ${manifest})
endforeach()
