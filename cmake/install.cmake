# What a host finds after installation: library, headers, membership functions, find_package, pkg-config.
include(CMakePackageConfigHelpers)

install(TARGETS clutterclassifier EXPORT clutterclassifier-targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/clutterclassifier DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY share/membership/ DESTINATION ${CLUTTERCLASSIFIER_MEMBERSHIP_DIR}
        FILES_MATCHING PATTERN "*.dat" PATTERN "*.csv" PATTERN "*.py" PATTERN "README.md")
install(EXPORT clutterclassifier-targets NAMESPACE clutterclassifier::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/clutterclassifier)

configure_package_config_file(
  cmake/clutterclassifier-config.cmake.in clutterclassifier-config.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/clutterclassifier
  PATH_VARS CLUTTERCLASSIFIER_MEMBERSHIP_DIR)
write_basic_package_version_file(clutterclassifier-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/clutterclassifier-config.cmake
              ${PROJECT_BINARY_DIR}/clutterclassifier-config-version.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/clutterclassifier)

# The directories relative to that of the .pc file: an installed tree may be moved.
file(RELATIVE_PATH pc_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH pc_libdir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH pc_includedir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
file(RELATIVE_PATH pc_datadir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_DATADIR})
configure_file(cmake/clutterclassifier.pc.in clutterclassifier.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/clutterclassifier.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(PROJECT_IS_TOP_LEVEL)
  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGE_CONTACT "the clutterclassifier authors")
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
  include(CPack)
endif()
