# The compile options every target of this project shares, in one place.

add_library(ikelex_options INTERFACE)
target_compile_features(ikelex_options INTERFACE cxx_std_20)

# Float results are fixed to the bit: a multiply and an add are never contracted into one operation,
# whatever instruction set a function is compiled for, and whatever flags a host's project hands down.
target_compile_options(ikelex_options INTERFACE -fno-fast-math -ffp-contract=off)

option(IKELEX_WERROR "Treat warnings as errors" OFF)
target_compile_options(ikelex_options INTERFACE -Wall -Wextra -Wconversion
    $<$<BOOL:${IKELEX_WERROR}>:-Werror>)

# Hidden by default: only what is marked IKELEX_API leaves the shared library.
function(ikelex_hide_symbols target)
    set_target_properties(${target} PROPERTIES
        CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endfunction()
