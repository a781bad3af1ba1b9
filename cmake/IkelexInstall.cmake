# What `cmake --install` puts where, the CMake package, the pkg-config file and the Debian package.
include(CMakePackageConfigHelpers)

install(TARGETS ikelex ikelex_static ikelex_platform ikelex_platform_static EXPORT ikelexTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ikelex/include/ikelex platform/include/platform
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

# The class headers name each other by room, so they keep their rooms.
set(class_headers
    kelbitmap/kelbitmap.h
    kelparameters/kelparameters.h
    kelimage/kelimage.h
    keldecoder/keldecoder.h keldecoder/keldecoderbase.h keldecoder/kelbmpdecoder.h
    keldecoder/keljpegdecoder.h keldecoder/kelpngdecoder.h
    kelencoder/kelencoder.h kelencoder/kelencoderbase.h kelencoder/kelbmpencoder.h
    kelencoder/keljpegencoder.h kelencoder/kelpngencoder.h
    kelscale/kelscale.h kelscale/kelfilter.h)
foreach(header ${class_headers})
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
configure_file(cmake/ikelex.pc.in ikelex.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ikelex.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(FILES LICENSE CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/ikelex)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ikelex)
set(CPACK_PACKAGE_VENDOR "ikelex")
set(CPACK_PACKAGE_CONTACT "ikelex maintainers <maintainers@ikelex.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libjpeg-dev, libpng-dev")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_CURRENT_BINARY_DIR}/platform)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
include(CPack)
