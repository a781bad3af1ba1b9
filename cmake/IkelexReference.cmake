# The target `docs`: the reference of every public name, from the headers. Doxygen is looked for when the
# target is built, so it may be installed after the project was configured.
add_custom_target(docs
    COMMAND ${CMAKE_COMMAND} -P ${PROJECT_SOURCE_DIR}/cmake/reference.cmake
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    COMMENT "Reference in build/reference/html/index.html" VERBATIM)
