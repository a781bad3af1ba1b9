# The target `docs`: the reference of every public name, from the headers. Doxygen is needed only to
# build this target.
find_program(IKELEX_DOXYGEN doxygen)
mark_as_advanced(IKELEX_DOXYGEN)
if(IKELEX_DOXYGEN AND PROJECT_IS_TOP_LEVEL)
    add_custom_target(docs
        COMMAND ${IKELEX_DOXYGEN} ${PROJECT_SOURCE_DIR}/Doxyfile
        WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
        COMMENT "Reference in build/reference/html/index.html" VERBATIM)
endif()
