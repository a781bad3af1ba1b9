# Cross-compiles for 32-bit x86 with Debian's compiler, over the packages that `tools/setup i386`
# unpacks into build/i386-root. The programs run as they are, through the cross compiler's own loader.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)
set(CMAKE_C_COMPILER i686-linux-gnu-gcc)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
get_filename_component(root "${CMAKE_CURRENT_LIST_DIR}/../build/i386-root" ABSOLUTE)
set(libraries ${root}/usr/lib/i386-linux-gnu)
set(CMAKE_FIND_ROOT_PATH ${root})
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_CXX_FLAGS_INIT "-isystem ${root}/usr/include/i386-linux-gnu")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,-rpath-link,${libraries}:${root}/lib/i386-linux-gnu")
set(CMAKE_CROSSCOMPILING_EMULATOR
    "/usr/i686-linux-gnu/lib/ld-linux.so.2;--library-path;${libraries}:${root}/lib/i386-linux-gnu:/usr/i686-linux-gnu/lib")
