# Runs Doxygen over the headers a host may include, from the top of the repository.
include(${CMAKE_CURRENT_LIST_DIR}/IkelexHeaders.cmake)
find_program(doxygen doxygen)
if(NOT doxygen)
    message(FATAL_ERROR "The reference needs doxygen: apt install doxygen")
endif()
file(STRINGS ${IKELEX_ROOT}/CMakeLists.txt version REGEX "^project\\(ikelex VERSION ")
string(REGEX MATCH "[0-9.]+" version "${version}")
list(JOIN IKELEX_HOST_HEADERS "\" \"" headers)
file(READ ${IKELEX_ROOT}/Doxyfile settings)
file(WRITE ${IKELEX_ROOT}/build/Doxyfile
    "${settings}\nPROJECT_NUMBER = ${version}\nINPUT = docs/reference.dox \"${headers}\"\n")
execute_process(COMMAND ${doxygen} build/Doxyfile WORKING_DIRECTORY ${IKELEX_ROOT} COMMAND_ERROR_IS_FATAL ANY)
