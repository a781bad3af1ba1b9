# The Debian packages: libikelex1 with what a program needs, libikelex-dev with what its maker needs.
# The preset `debian` installs below /usr, where Debian's folders carry the machine's name.
set(runtime_package libikelex${PROJECT_VERSION_MAJOR})
set(devel_package libikelex-dev)

# What Debian wants beside the files themselves; a plain `cmake --install` leaves it out. The
# changelog is compressed without a time stamp, so that packing twice gives the same bytes.
find_program(IKELEX_GZIP gzip)
mark_as_advanced(IKELEX_GZIP)
set(debian ${CMAKE_CURRENT_BINARY_DIR}/debian)
configure_file(cmake/debian/changelog.in ${debian}/changelog @ONLY)
configure_file(cmake/debian/shlibs.in ${debian}/shlibs @ONLY)
configure_file(cmake/debian/triggers ${debian}/triggers COPYONLY)
file(READ LICENSE licence)
file(CONFIGURE OUTPUT ${debian}/copyright @ONLY CONTENT
    "ikelex ${PROJECT_VERSION}, under the MIT licence:\n\n@licence@")
file(WRITE ${debian}/${runtime_package}
    "# CPack writes these scripts.\n${runtime_package}: maintscript-calls-ldconfig\n")
install(FILES ${debian}/${runtime_package} COMPONENT runtime EXCLUDE_FROM_ALL
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides)
if(IKELEX_GZIP)
    execute_process(COMMAND ${IKELEX_GZIP} -9nf ${debian}/changelog COMMAND_ERROR_IS_FATAL ANY)
endif()
foreach(component runtime devel)
    install(FILES ${debian}/changelog.gz ${debian}/copyright COMPONENT ${component} EXCLUDE_FROM_ALL
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${${component}_package})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ikelex)
set(CPACK_PACKAGE_VENDOR "ikelex")
set(CPACK_PACKAGE_CONTACT "ikelex maintainers <maintainers@ikelex.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "image library for desktop applications")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime devel)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(description "It opens BMP, JPEG and PNG, scales, mirrors, transposes and crops, and saves\nBMP, JPEG and PNG.")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "${description}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_CURRENT_BINARY_DIR}/platform)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${debian}/shlibs ${debian}/triggers)

set(CPACK_COMPONENT_DEVEL_DESCRIPTION
    "${description}\n\nHeaders, static libraries, the CMake package and the pkg-config file.")
set(CPACK_DEBIAN_DEVEL_PACKAGE_NAME ${devel_package})
set(CPACK_DEBIAN_DEVEL_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVEL_PACKAGE_DEPENDS
    "${runtime_package} (= ${PROJECT_VERSION}), libjpeg-dev, libpng-dev")
include(CPack)
