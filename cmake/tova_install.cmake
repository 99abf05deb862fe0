# Installs the library, its headers, the CMake package and the pkg-config file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/tova)

install(TARGETS tova EXPORT tova
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tova DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT tova NAMESPACE tova:: FILE tovaTargets.cmake DESTINATION ${package_folder})

# find_package accepts every version from 2.0 to this one. 2.18 is the first release of the major
# version 2, so there is no older interface that it could lack. What binds a program that is already
# compiled is stricter: the SONAME and the namespace carry 2.18.
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/tovaConfig.cmake.in
  ${PROJECT_BINARY_DIR}/tovaConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tovaConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tovaConfig.cmake ${PROJECT_BINARY_DIR}/tovaConfigVersion.cmake
  DESTINATION ${package_folder})

# The pkg-config file derives its prefix from its own location, so `cmake --install --prefix` works.
file(RELATIVE_PATH TOVA_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/tova.pc.in ${PROJECT_BINARY_DIR}/tova.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tova.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# gdb loads the printers by itself from the folder that mirrors the library's own path. The prefix is
# known only when the files are installed.
install(FILES ${PROJECT_SOURCE_DIR}/tools/debugger/tova_printers.py
  DESTINATION "${CMAKE_INSTALL_DATADIR}/gdb/auto-load\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}"
  RENAME libtova.so.${PROJECT_VERSION}-gdb.py)
install(FILES ${PROJECT_SOURCE_DIR}/tools/debugger/tova.natvis DESTINATION ${CMAKE_INSTALL_DATADIR}/tova)
