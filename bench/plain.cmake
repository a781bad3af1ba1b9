# The plain loops: the benchmark's yardsticks, and the judges of tests and fuzz targets. They are
# compiled at -O2 whatever the build type says.
find_package(JPEG REQUIRED)
find_package(PNG 1.6 REQUIRED)

add_library(ikelex_plain STATIC ${CMAKE_CURRENT_LIST_DIR}/plain.cpp
    ${CMAKE_CURRENT_LIST_DIR}/plaincodecs.cpp)
target_include_directories(ikelex_plain PUBLIC ${CMAKE_CURRENT_LIST_DIR})
target_link_libraries(ikelex_plain PRIVATE ikelex_options PUBLIC JPEG::JPEG PNG::PNG)
target_compile_options(ikelex_plain PRIVATE -O2)
