# The target docs: docs/Doxyfile with this version's number, the pages in docs of the build folder.
find_package(Doxygen REQUIRED)
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/Doxyfile
     "@INCLUDE = docs/Doxyfile\n"
     "PROJECT_NUMBER = ${PROJECT_VERSION}\n"
     "OUTPUT_DIRECTORY = \"${CMAKE_CURRENT_BINARY_DIR}/docs\"\n")
add_custom_target(docs
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_CURRENT_BINARY_DIR}/docs
    COMMAND ${DOXYGEN_EXECUTABLE} ${CMAKE_CURRENT_BINARY_DIR}/Doxyfile
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    COMMENT "Making the manual's pages in ${CMAKE_CURRENT_BINARY_DIR}/docs"
    VERBATIM)
