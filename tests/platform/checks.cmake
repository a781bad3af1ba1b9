# What is seen from a host's side: its own functions before ours, its own platform layer, its compiler.

add_executable(ikelex_test_interpose platform/interpose.cpp)
# A Windows program's own functions come first only where it links statically.
target_link_libraries(ikelex_test_interpose PRIVATE ikelex_options
    $<IF:$<BOOL:${WIN32}>,ikelex::ikelex_static,ikelex::ikelex>)
add_test(NAME interpose COMMAND ikelex_test_interpose)

add_executable(ikelex_test_securemem platform/securemem.cpp)
target_link_libraries(ikelex_test_securemem PRIVATE ikelex_options ikelex::platform)
add_test(NAME securemem COMMAND ikelex_test_securemem)

# The host's own build of the library stays between runs, so that only the first takes its time. The
# flags of sanitizers and coverage would show nothing new there.
if(NOT CMAKE_CXX_FLAGS)
    add_test(NAME hostplatform COMMAND ${CMAKE_CTEST_COMMAND}
        --build-and-test ${CMAKE_CURRENT_SOURCE_DIR}/hostplatform ${CMAKE_CURRENT_BINARY_DIR}/hostplatform
        --build-generator ${CMAKE_GENERATOR} --build-target hostprogram --build-noclean
        --build-options
            -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER}
            -DCMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER}
            -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0
            -DCMAKE_PREFIX_PATH=${CMAKE_PREFIX_PATH}
            -DCMAKE_TOOLCHAIN_FILE=${CMAKE_TOOLCHAIN_FILE}
            -DCMAKE_JOB_POOLS=compilers=2 -DCMAKE_JOB_POOL_COMPILE=compilers
        --test-command ${CMAKE_CROSSCOMPILING_EMULATOR} hostprogram${CMAKE_EXECUTABLE_SUFFIX})
    set_tests_properties(hostplatform PROPERTIES LABELS slow)
endif()

# Each header a host may include, as C++11.
add_test(NAME headers COMMAND ${CMAKE_CXX_COMPILER} -std=c++11 -fsyntax-only -Wall -Wextra -Wno-unused-const-variable -Werror
    -I ${PROJECT_SOURCE_DIR}/platform/include -I ${PROJECT_SOURCE_DIR}/ikelex/include
    -I ${PROJECT_SOURCE_DIR}/ikelex/src -I ${JPEG_INCLUDE_DIR} -x c++ ${IKELEX_HOST_HEADERS})

if(NOT CMAKE_CROSSCOMPILING)
    add_test(NAME bitmaptypes COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/platform/bitmaptypes.sh)
    set_tests_properties(bitmaptypes PROPERTIES SKIP_RETURN_CODE 77)
endif()
