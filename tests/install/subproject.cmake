# Adds the library as a part of this project and checks that it builds nothing but itself and leaves
# everything here as it was.
set(SETTINGS BUILD_SHARED_LIBS BUILD_TESTING CMAKE_BUILD_TYPE CMAKE_CXX_EXTENSIONS CMAKE_CXX_FLAGS
             CMAKE_CXX_STANDARD CMAKE_CXX_STANDARD_REQUIRED CMAKE_CXX_VISIBILITY_PRESET
             CMAKE_INSTALL_RPATH CMAKE_POSITION_INDEPENDENT_CODE)
set(FOLDER_SETTINGS COMPILE_DEFINITIONS COMPILE_OPTIONS INCLUDE_DIRECTORIES LINK_LIBRARIES
                    LINK_OPTIONS)

function(take_settings result)
    set(settings "")
    foreach(name ${SETTINGS})
        string(APPEND settings "${name}='${${name}}' ")
    endforeach()
    foreach(name ${FOLDER_SETTINGS})
        get_directory_property(value ${name})
        string(APPEND settings "${name}='${value}' ")
    endforeach()
    set(${result} "${settings}" PARENT_SCOPE)
endfunction()

function(take_targets folder result)
    get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
    get_property(folders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
    foreach(folder ${folders})
        take_targets(${folder} more)
        list(APPEND targets ${more})
    endforeach()
    set(${result} "${targets}" PARENT_SCOPE)
endfunction()

take_settings(before)
if(VEXTRACE_WAY STREQUAL subdirectory)
    add_subdirectory(${VEXTRACE_SOURCE} vextrace)
else()
    include(FetchContent)
    FetchContent_Declare(vextrace SOURCE_DIR ${VEXTRACE_SOURCE})
    FetchContent_MakeAvailable(vextrace)
endif()
take_settings(after)
if(NOT after STREQUAL before)
    message(FATAL_ERROR "The settings\n${before}\nbecame\n${after}")
endif()

take_targets(${vextrace_SOURCE_DIR} targets)
if(NOT targets STREQUAL "vexutil;vextrace")
    message(FATAL_ERROR "The library builds ${targets}.")
endif()
