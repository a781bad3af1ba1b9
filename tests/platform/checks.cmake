# What is seen from a host's side: its own functions before ours, its own platform layer, its compiler.

add_executable(ikelex_test_interpose platform/interpose.cpp)
target_link_libraries(ikelex_test_interpose PRIVATE ikelex_options ikelex::ikelex)
add_test(NAME interpose COMMAND ikelex_test_interpose)

add_test(NAME hostplatform COMMAND ${CMAKE_CTEST_COMMAND}
    --build-and-test ${CMAKE_CURRENT_SOURCE_DIR}/hostplatform ${CMAKE_CURRENT_BINARY_DIR}/hostplatform
    --build-generator ${CMAKE_GENERATOR} --build-target hostprogram
    --build-options
        -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER}
        -DCMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER}
        -DCMAKE_CXX_FLAGS=${CMAKE_CXX_FLAGS}
        -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0
        -DCMAKE_PREFIX_PATH=${CMAKE_PREFIX_PATH}
        -DCMAKE_TOOLCHAIN_FILE=${CMAKE_TOOLCHAIN_FILE}
        -DCMAKE_JOB_POOLS=compilers=2 -DCMAKE_JOB_POOL_COMPILE=compilers
    --test-command hostprogram)
set_tests_properties(hostplatform PROPERTIES LABELS slow)

# Each header a host may include, alone and as C++11.
file(GLOB host_headers CONFIGURE_DEPENDS
    ${PROJECT_SOURCE_DIR}/platform/include/platform/*.h
    ${PROJECT_SOURCE_DIR}/ikelex/include/ikelex/*.h
    ${PROJECT_SOURCE_DIR}/ikelex/src/kelparameters/kelparameters.h
    ${PROJECT_SOURCE_DIR}/ikelex/src/kelimage/kelimage.h
    ${PROJECT_SOURCE_DIR}/ikelex/src/keldecoder/kel*decoder*.h
    ${PROJECT_SOURCE_DIR}/ikelex/src/kelencoder/kel*encoder*.h
    ${PROJECT_SOURCE_DIR}/ikelex/src/kelscale/kelscale.h
    ${PROJECT_SOURCE_DIR}/ikelex/src/kelscale/kelfilter.h)
add_test(NAME headers COMMAND ${CMAKE_CXX_COMPILER} -std=c++11 -fsyntax-only -Wall -Wextra -Werror
    -I ${PROJECT_SOURCE_DIR}/platform/include -I ${PROJECT_SOURCE_DIR}/ikelex/include
    -x c++ ${host_headers})
