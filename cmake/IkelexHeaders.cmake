# The headers a host may include, once for all who need the list: the install rules, the reference
# (cmake/reference.cmake) and the test that compiles each of them alone.
#
#   IKELEX_PUBLIC_HEADERS  every header of the two public folders
#   IKELEX_CLASS_HEADERS   the classes behind the interface, by room
#   IKELEX_CLASS_ROOMS     their rooms
#   IKELEX_HOST_HEADERS    all of them, with full paths
get_filename_component(IKELEX_ROOT "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)

file(GLOB IKELEX_PUBLIC_HEADERS
    ${IKELEX_ROOT}/platform/include/platform/*.h ${IKELEX_ROOT}/ikelex/include/ikelex/*.h)

# Every reader and writer has a public class, so that these two rooms need no list.
file(GLOB IKELEX_CLASS_HEADERS RELATIVE ${IKELEX_ROOT}/ikelex/src
    ${IKELEX_ROOT}/ikelex/src/keldecoder/*.h ${IKELEX_ROOT}/ikelex/src/kelencoder/*.h)
list(APPEND IKELEX_CLASS_HEADERS
    kelbitmap/kelbitmap.h
    kelparameters/kelparameters.h
    kelimage/kelimage.h
    kelscale/kelscale.h
    kelscale/kelfilter.h)

set(IKELEX_CLASS_ROOMS)
set(IKELEX_HOST_HEADERS ${IKELEX_PUBLIC_HEADERS})
foreach(header ${IKELEX_CLASS_HEADERS})
    get_filename_component(room ${header} DIRECTORY)
    list(APPEND IKELEX_CLASS_ROOMS ${room})
    list(APPEND IKELEX_HOST_HEADERS ${IKELEX_ROOT}/ikelex/src/${header})
endforeach()
list(REMOVE_DUPLICATES IKELEX_CLASS_ROOMS)
