# Installs the library, its headers, the CMake package, the pkg-config file and the files for debuggers, in
# the components tova-runtime, tova-development and tova-tools.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/tova)

install(TARGETS tova EXPORT tova
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT tova-runtime NAMELINK_COMPONENT tova-development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tova DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT tova-development)
install(EXPORT tova NAMESPACE tova:: FILE tovaTargets.cmake DESTINATION ${package_folder}
  COMPONENT tova-development)

# find_package accepts every version from 2.0 to this one. 2.18 is the first release of the major
# version 2, so there is no older interface that it could lack. What binds a program that is already
# compiled is stricter: the SONAME and the namespace carry 2.18.
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/tovaConfig.cmake.in
  ${PROJECT_BINARY_DIR}/tovaConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tovaConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tovaConfig.cmake ${PROJECT_BINARY_DIR}/tovaConfigVersion.cmake
  DESTINATION ${package_folder} COMPONENT tova-development)

# The pkg-config file derives its prefix from its own location, so `cmake --install --prefix` works.
file(RELATIVE_PATH TOVA_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/tova.pc.in ${PROJECT_BINARY_DIR}/tova.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tova.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT tova-development)

# gdb automatically loads the printers from the folder that mirrors the library's own path. The prefix is
# known only during the installation, and an archive has none.
install(CODE "
  if(NOT CMAKE_INSTALL_PREFIX MATCHES _CPack_Packages)
    file(INSTALL TYPE FILE RENAME libtova.so.${PROJECT_VERSION}-gdb.py
      DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/gdb/auto-load\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}\"
      FILES \"${PROJECT_SOURCE_DIR}/tools/debugger/tova_printers.py\")
  endif()"
  COMPONENT tova-runtime)
install(FILES ${PROJECT_SOURCE_DIR}/tools/debugger/tova_printers.py
    ${PROJECT_SOURCE_DIR}/tools/debugger/tova.natvis
  DESTINATION ${CMAKE_INSTALL_DATADIR}/tova COMPONENT tova-development)

# tova-new does what ./run new does, without the source tree.
install(PROGRAMS ${PROJECT_SOURCE_DIR}/tools/new_project.sh RENAME tova-new
  DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tova-tools)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/tools/new_project DESTINATION ${CMAKE_INSTALL_DATADIR}/tova
  COMPONENT tova-tools)
install(FILES ${PROJECT_SOURCE_DIR}/tools/tova-new.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
  COMPONENT tova-tools)

# The archive made by `cpack` contains all components below one directory.
if(PROJECT_IS_TOP_LEVEL)
  set(CPACK_GENERATOR TGZ)
  set(CPACK_PACKAGE_VENDOR "The tova authors")
  set(CPACK_PACKAGE_FILE_NAME
    ${PROJECT_NAME}-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR})
  set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
  set(CPACK_STRIP_FILES ON)
  set(CPACK_VERBATIM_VARIABLES ON)
  include(CPack)
endif()
