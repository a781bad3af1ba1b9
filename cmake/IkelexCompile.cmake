# The compile options every target of this project shares, in one place.

add_library(ikelex_options INTERFACE)
target_compile_features(ikelex_options INTERFACE cxx_std_20)

# Float results are fixed to the bit: a multiply and an add are never contracted into one operation,
# whatever instruction set a function is compiled for, and whatever flags a host's project hands down.
target_compile_options(ikelex_options INTERFACE -fno-fast-math -ffp-contract=off)

# 32-bit x86 computes floats with the x87 unit unless told otherwise, which rounds differently.
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "^(i[3-6]86|x86|x86_64|AMD64)$")
    target_compile_options(ikelex_options INTERFACE -msse2 -mfpmath=sse)
endif()

# g++ for Windows does not align vectors of 32 and 64 bytes on the stack, yet moves them as aligned;
# the assembler makes these moves unaligned ones, which cost the same.
if(MINGW)
    target_compile_options(ikelex_options INTERFACE -Wa,-muse-unaligned-vector-move)
endif()

# A parent project sees neither our warnings nor an error made of one.
option(IKELEX_WERROR "Treat warnings as errors" OFF)
if(PROJECT_IS_TOP_LEVEL)
    target_compile_options(ikelex_options INTERFACE -Wall -Wextra -Wconversion
        $<$<BOOL:${IKELEX_WERROR}>:-Werror>)
endif()

# Hidden by default: only what is marked IKELEX_API leaves the shared library.
function(ikelex_hide_symbols target)
    set_target_properties(${target} PROPERTIES
        CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endfunction()
