# What `cmake --install` puts where, the CMake package and the pkg-config file.
include(CMakePackageConfigHelpers)

# The Debian packages take the components apart: runtime is what a program needs, devel what its maker does.
install(TARGETS ikelex ikelex_static ikelex_platform ikelex_platform_static EXPORT ikelexTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT devel
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT devel)

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME devel)
install(DIRECTORY ikelex/include/ikelex platform/include/platform
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

# The class headers name each other by room, so they keep their rooms.
foreach(header ${IKELEX_CLASS_HEADERS})
    get_filename_component(room ${header} DIRECTORY)
    install(FILES ikelex/src/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ikelex/classes/${room})
endforeach()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ikelex)
install(EXPORT ikelexTargets NAMESPACE ikelex:: DESTINATION ${package_dir})
configure_package_config_file(cmake/ikelexConfig.cmake.in ikelexConfig.cmake
    INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(ikelexConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ikelexConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/ikelexConfigVersion.cmake DESTINATION ${package_dir})

# The pkg-config file finds the prefix from where it lies itself, so the tree may be moved.
file(RELATIVE_PATH IKELEX_PC_UP "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" IKELEX_PC_UP "${IKELEX_PC_UP}")
list(TRANSFORM IKELEX_CLASS_ROOMS PREPEND " -I\${classes}/" OUTPUT_VARIABLE IKELEX_PC_CLASSES)
string(REPLACE ";" "" IKELEX_PC_CLASSES "${IKELEX_PC_CLASSES}")
configure_file(cmake/ikelex.pc.in ikelex.pc @ONLY)
if(NOT WIN32) # the codec libraries of the archive come without such files
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ikelex.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endif()
install(FILES LICENSE CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/ikelex COMPONENT license)

if(PROJECT_IS_TOP_LEVEL AND NOT WIN32)
    include(cmake/IkelexDebian.cmake)
endif()

# A Windows developer has neither the compiler's DLLs nor the codec libraries: both come along, and
# `cpack -G ZIP` makes one archive of everything.
if(MINGW AND CMAKE_CROSSCOMPILING AND PROJECT_IS_TOP_LEVEL)
    foreach(dll libstdc++-6 libgcc_s_seh-1 libwinpthread-1)
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}.dll
            OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE)
        install(FILES ${file} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
    endforeach()
    install(FILES /usr/share/doc/gcc-mingw-w64-x86-64-posix-runtime/copyright /usr/share/common-licenses/GPL-3
        DESTINATION share/doc/gcc COMPONENT license)
    install(FILES /usr/share/doc/mingw-w64-x86-64-dev/copyright DESTINATION share/doc/mingw-w64 COMPONENT license)
    foreach(part lib include share/doc)
        install(DIRECTORY ${PROJECT_SOURCE_DIR}/build/windows-codecs/prefix/${part}/ DESTINATION ${part}
            FILES_MATCHING PATTERN "*.a" PATTERN "*.h" PATTERN "copyright"
            PATTERN cmake EXCLUDE PATTERN pkgconfig EXCLUDE PATTERN libpng EXCLUDE)
    endforeach()
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_NAME ikelex)
    set(CPACK_PACKAGE_VENDOR ikelex)
    set(CPACK_PACKAGE_FILE_NAME ikelex-${PROJECT_VERSION}-windows-x86_64)
    include(CPack)
endif()
